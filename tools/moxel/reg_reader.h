#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "moxel/reg_document.h"

namespace moxel::tool {

// The first thing in a .reg file that cannot be understood: its line, counted from 1, and the reason.
class RegSyntaxError : public std::runtime_error {
 public:
  RegSyntaxError(size_t line, const std::string& reason) : std::runtime_error(reason), line_(line) {}

  size_t line() const { return line_; }

 private:
  size_t line_;
};

// Reads a whole .reg file, "REGEDIT4" or "Windows Registry Editor Version 5.00", in UTF-16 or UTF-8 with a
// byte order mark, in UTF-8 without one, or, where the bytes are no UTF-8, in code page 1252. Throws
// RegSyntaxError.
RegDocument ReadRegFile(std::string_view file);

}  // namespace moxel::tool
