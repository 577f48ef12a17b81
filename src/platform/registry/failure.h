// How a registry call fails inside the layer: the platform's code and, for failures of the file, the cause in
// words.
#pragma once

#include <stdexcept>
#include <string>

#include "moxel/platform.h"

namespace moxel::platform {

class RegistryFailure : public std::runtime_error {
 public:
  explicit RegistryFailure(LSTATUS code, const std::string& cause = {})
      : std::runtime_error(cause), code_(code) {}

  LSTATUS code() const { return code_; }

 private:
  LSTATUS code_;
};

}  // namespace moxel::platform
