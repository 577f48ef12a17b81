// Texts on their way between the terminal or a file (UTF-8, UTF-16) and the registry, which holds bytes of
// code page 1252 ("ANSI" below). Between UTF-8 and UTF-16: moxel/text.h.
#pragma once

#include <string>
#include <string_view>

#include "moxel/error.h"
#include "moxel/text.h"

namespace moxel::tool {

// A text holds a character that code page 1252 lacks; the message names it. Nothing is ever replaced by "?".
class CodePageError : public ToolError {
 public:
  explicit CodePageError(const std::string& message) : ToolError(message) {}
};

// Well-formed UTF-8: no overlong forms, no surrogates, nothing beyond U+10FFFF.
bool IsUtf8(std::string_view text);
bool IsAscii(std::string_view text);

std::u16string Utf16FromAnsi(std::string_view text);
std::string Utf8FromAnsi(std::string_view text);

// Throw CodePageError; so does AnsiFromUtf8 for a text that is not UTF-8.
std::string AnsiFromUtf16(std::u16string_view text);
std::string AnsiFromUtf8(std::string_view text);

// UTF-8 for a terminal: control and invisible characters become \n, \r, \t or \xNN.
std::string PrintableFromAnsi(std::string_view text);

// As the registry compares names: letter case aside, accented letters included.
bool SameName(std::string_view a, std::string_view b);

}  // namespace moxel::tool
