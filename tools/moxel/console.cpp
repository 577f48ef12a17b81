#include "moxel/console.h"

#include <cstdlib>
#include <string_view>

namespace moxel::tool {
namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

bool ObeysControls(bool is_terminal) {
  const std::string_view kind = Environment("TERM");
  return is_terminal && !kind.empty() && kind != "dumb";
}

bool HasColors(ColorUse use, bool is_terminal) {
  if (use != ColorUse::kAuto) return use == ColorUse::kAlways;
  return ObeysControls(is_terminal) && Environment("NO_COLOR").empty();
}

}  // namespace

bool Console::ColorsOut() const { return HasColors(color, out_is_terminal); }
bool Console::ColorsErr() const { return HasColors(color, err_is_terminal); }
bool Console::RedrawsErr() const { return ObeysControls(err_is_terminal); }

}  // namespace moxel::tool
