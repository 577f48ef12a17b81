// Texts on their way between UTF-16, which the component speaks, and the bytes that a program has.
#pragma once

#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

#include "moxel/platform.h"

namespace moxel {

namespace text_detail {

inline INT PlatformLength(std::size_t length) {
  if (length > static_cast<std::size_t>(std::numeric_limits<INT>::max()))
    throw std::length_error("text too long");
  return static_cast<INT>(length);
}

inline std::size_t Converted(INT length) {
  if (length <= 0) throw std::invalid_argument("text cannot be converted");
  return static_cast<std::size_t>(length);
}

}  // namespace text_detail

// From a code page and to one: CP_UTF8, CP_ACP or 1252. What the target lacks is replaced, by U+FFFD or "?";
// for a single-byte page `replaced` tells so. Throw std::length_error for a text beyond the platform's 32-bit
// lengths, std::invalid_argument for a code page that the platform does not know.
inline std::u16string Widen(UINT code_page, std::string_view bytes) {
  if (bytes.empty()) return {};
  const INT length = text_detail::PlatformLength(bytes.size());
  std::u16string text(bytes.size(), u'\0');  // no code page needs more units than bytes
  const INT count = MultiByteToWideChar(code_page, 0, bytes.data(), length, text.data(), length);
  text.resize(text_detail::Converted(count));
  return text;
}

inline std::string Narrow(UINT code_page, std::u16string_view text, BOOL* replaced = nullptr) {
  if (text.empty()) return {};
  const INT room = text_detail::PlatformLength(3 * text.size());  // and none more than three bytes a unit
  std::string bytes(3 * text.size(), '\0');
  const INT count =
      WideCharToMultiByte(code_page, 0, text.data(), room / 3, bytes.data(), room, nullptr, replaced);
  bytes.resize(text_detail::Converted(count));
  return bytes;
}

// A lone surrogate becomes U+FFFD.
inline std::string ToUtf8(std::u16string_view text) { return Narrow(CP_UTF8, text); }

// Each malformed sequence becomes U+FFFD.
inline std::u16string FromUtf8(std::string_view text) { return Widen(CP_UTF8, text); }

}  // namespace moxel
