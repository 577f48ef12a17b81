#include "moxel/progress_bar.h"

#include <algorithm>
#include <string>

namespace moxel::tool {
namespace {

using namespace std::chrono_literals;

constexpr size_t kCells = 40;

std::string Bar(size_t done, size_t total) {
  const size_t all = std::max<size_t>(total, 1);
  const size_t filled = done * kCells / all;
  const std::string percent = std::to_string(done * 100 / all);
  return '[' + std::string(filled, '#') + std::string(kCells - filled, ' ') + "] " +
         std::string(3 - percent.size(), ' ') + percent + " %";
}

}  // namespace

ProgressBar::ProgressBar(const Console& console)
    : console_(console), draws_(console.RedrawsErr()), next_(console.now() + 1s) {}

ProgressBar::~ProgressBar() {
  if (drawn_) console_.err << '\r' << std::string(Bar(0, 1).size(), ' ') << '\r' << std::flush;
}

void ProgressBar::Show(size_t done, size_t total) {
  if (!draws_) return;
  const auto now = console_.now();
  if (now < next_) return;
  next_ = now + 100ms;
  drawn_ = true;
  console_.err << '\r' << Bar(done, total) << std::flush;
}

}  // namespace moxel::tool
