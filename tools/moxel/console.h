#pragma once

#include <chrono>
#include <functional>
#include <istream>
#include <ostream>

namespace moxel::tool {

enum class ColorUse { kAuto, kAlways, kNever };

// The streams a command talks to, and what it may do with them beyond plain text.
struct Console {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  bool out_is_terminal = false;
  bool err_is_terminal = false;
  ColorUse color = ColorUse::kAuto;
  std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;

  // Of its own accord only a terminal has colours, unless NO_COLOR is set or TERM names none that could.
  bool ColorsOut() const;
  bool ColorsErr() const;
  // Whether a line of the error stream can be drawn again and again.
  bool RedrawsErr() const;
};

}  // namespace moxel::tool
