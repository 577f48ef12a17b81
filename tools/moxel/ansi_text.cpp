#include "moxel/ansi_text.h"

#include <algorithm>

namespace moxel::tool {
namespace {

constexpr UINT kAnsi = 1252;

bool IsSurrogatePair(std::u16string_view text, size_t at) {
  return (text[at] & 0xFC00) == 0xD800 && at + 1 < text.size() && (text[at + 1] & 0xFC00) == 0xDC00;
}

std::string HexDigits(std::uint32_t value, int digits) {
  std::string text;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
    text += "0123456789ABCDEF"[(value >> shift) & 15];
  return text;
}

bool HasAnsiCode(std::u16string_view character) {
  BOOL replaced = 0;
  Narrow(kAnsi, character, &replaced);
  return replaced == 0;
}

[[noreturn]] void ThrowForeignCharacter(std::u16string_view text) {
  for (size_t at = 0; at < text.size();) {
    const bool pair = IsSurrogatePair(text, at);
    const std::u16string_view character = text.substr(at, pair ? 2 : 1);
    if (!HasAnsiCode(character)) {
      const std::uint32_t code =
          pair ? 0x10000u + ((text[at] & 0x3FFu) << 10) + (text[at + 1] & 0x3FFu) : text[at];
      throw CodePageError("character U+" + HexDigits(code, code > 0xFFFF ? 6 : 4) +
                          " is not in code page 1252");
    }
    at += character.size();
  }
  throw CodePageError("text cannot be converted to code page 1252");
}

unsigned char UpperCase(unsigned char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 0xE0 && c != 0xF7 && c != 0xFF))
    return static_cast<unsigned char>(c - 0x20);
  if (c == 0x9A || c == 0x9C || c == 0x9E) return static_cast<unsigned char>(c - 0x10);
  return c == 0xFF ? 0x9F : c;
}

// The five codes that 1252 leaves unassigned, the soft hyphen and what ASCII calls control characters.
bool IsInvisible(unsigned char c) {
  return c < 0x20 || c == 0x7F || c == 0x81 || c == 0x8D || c == 0x8F || c == 0x90 || c == 0x9D || c == 0xAD;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  for (size_t at = 0; at < text.size();) {
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned lead = byte(at);
    const size_t length = lead < 0x80   ? 1
                          : lead < 0xC2 ? 0
                          : lead < 0xE0 ? 2
                          : lead < 0xF0 ? 3
                          : lead < 0xF5 ? 4
                                        : 0;
    if (length == 0) return false;
    for (size_t i = 1; i < length; ++i) {
      if ((byte(at + i) & 0xC0) != 0x80) return false;
    }
    const unsigned second = byte(at + 1);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F)) return false;
    if ((lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) return false;
    at += length;
  }
  return true;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::u16string Utf16FromAnsi(std::string_view text) { return Widen(kAnsi, text); }

std::string Utf8FromAnsi(std::string_view text) {
  return IsAscii(text) ? std::string(text) : ToUtf8(Utf16FromAnsi(text));
}

std::string AnsiFromUtf16(std::u16string_view text) {
  BOOL replaced = 0;
  std::string ansi = Narrow(kAnsi, text, &replaced);
  if (ansi.size() != text.size() || replaced != 0) ThrowForeignCharacter(text);
  return ansi;
}

std::string AnsiFromUtf8(std::string_view text) {
  if (!IsUtf8(text)) throw CodePageError("text is not valid UTF-8");
  return AnsiFromUtf16(FromUtf8(text));
}

std::string PrintableFromAnsi(std::string_view text) {
  std::string printable;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '\n') {
      printable += "\\n";
    } else if (c == '\r') {
      printable += "\\r";
    } else if (c == '\t') {
      printable += "\\t";
    } else if (IsInvisible(code)) {
      printable += "\\x" + HexDigits(code, 2);
    } else {
      printable += c;
    }
  }
  return Utf8FromAnsi(printable);
}

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return UpperCase(static_cast<unsigned char>(x)) == UpperCase(static_cast<unsigned char>(y));
  });
}

}  // namespace moxel::tool
