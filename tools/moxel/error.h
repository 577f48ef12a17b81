#pragma once

#include <stdexcept>
#include <string>

#include "moxel/platform.h"

namespace moxel::tool {

// A failure that ends the command: one line for the user and the exit code of the process.
class ToolError : public std::runtime_error {
 public:
  // The command was understood and could not be carried out: exit code 1.
  explicit ToolError(const std::string& message) : ToolError(message, 1) {}

  // The command line itself, or what it gave to read, is wrong: exit code 2.
  static ToolError Usage(const std::string& message) { return ToolError(message, 2); }

  // A registry entry point answered `status` to `what`. Make it right after the failing call: the cause found
  // in the registry file is that of the thread's last failure.
  static ToolError Registry(const std::string& what, LSTATUS status);

  // A system call failed with errno `error`.
  static ToolError System(const std::string& what, int error);

  int exit_code() const { return exit_code_; }

 protected:
  ToolError(const std::string& message, int exit_code) : std::runtime_error(message), exit_code_(exit_code) {}

 private:
  int exit_code_;
};

// A file that cannot be understood, where and why, as "FILE:LINE: reason": editors find the place by that
// form, so the message stands alone on its line.
class MalformedFile : public ToolError {
 public:
  MalformedFile(const std::string& file, size_t line, const std::string& reason)
      : ToolError(file + ":" + std::to_string(line) + ": " + reason, 2) {}
};

}  // namespace moxel::tool
