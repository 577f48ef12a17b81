#pragma once

#include <chrono>
#include <cstddef>

#include "moxel/console.h"

namespace moxel::tool {

// A bar on the error stream for work that turns out to take longer than a second. It appears only on a
// terminal and is gone, whatever became of the work, when this object is.
class ProgressBar {
 public:
  explicit ProgressBar(const Console& console);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Cheap enough for every step: it draws at most ten times a second.
  void Show(size_t done, size_t total);

 private:
  const Console& console_;
  const bool draws_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace moxel::tool
