#pragma once

#include <optional>
#include <string>

#include "moxel/console.h"
#include "moxel/variant.h"

namespace moxel::tool {

// Passwords as a user gives them, never as arguments: typed at a terminal without echo, after a prompt on the
// error stream, else one a line from standard input. Throws ToolError, which never shows a password, when one
// cannot be stored.
class PasswordInput {
 public:
  // `plain_lines`: lines of standard input even when it is a terminal.
  explicit PasswordInput(const Console& console, bool plain_lines = false);

  // Throws ToolError when there is none.
  Variant Ask(const std::string& prompt);
  // The password once more: at a terminal it is typed again; a further line of standard input is taken where
  // there is one.
  Variant AskAgain(const std::string& prompt, const Variant& first);
  // Nothing when the answer at a terminal is empty, or when standard input has ended.
  std::optional<Variant> AskIfAny(const std::string& prompt);

 private:
  std::optional<std::string> Read(const std::string& prompt);

  const Console& console_;
  bool terminal_;
};

}  // namespace moxel::tool
