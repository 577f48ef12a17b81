#include "platform/locale/code_pages.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "moxel/platform.h"

namespace moxel {
namespace {

constexpr UINT kWindows1252 = 1252;
constexpr char16_t kReplacement = 0xFFFD;

// Codes 0x80 to 0x9F; all others stand for the character of the same number.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::array<char16_t, 256> kAnsiToWide = [] {
  std::array<char16_t, 256> table{};
  for (std::size_t code = 0; code < table.size(); ++code) table[code] = static_cast<char16_t>(code);
  for (std::size_t i = 0; i < kHighControls.size(); ++i) table[0x80 + i] = kHighControls[i];
  return table;
}();

// The code of a character beyond ASCII, or -1 when the page has none.
int AnsiCode(char16_t character) {
  if (character >= 0xA0 && character <= 0xFF) return character;
  const auto* found = std::find(kHighControls.begin(), kHighControls.end(), character);
  return found == kHighControls.end() ? -1 : static_cast<int>(0x80 + (found - kHighControls.begin()));
}

// Counts what is written; stores it too while there is room.
template <class Unit>
class Sink {
 public:
  Sink(Unit* buffer, std::size_t room) : buffer_(buffer), room_(room) {}

  void Put(Unit unit) {
    if (size_ < room_) buffer_[size_] = unit;
    ++size_;
  }
  template <class Source>
  void PutAscii(const Source* source, std::size_t count) {
    const std::size_t stored = size_ < room_ ? std::min(count, room_ - size_) : 0;
    for (std::size_t i = 0; i < stored; ++i) buffer_[size_ + i] = static_cast<Unit>(source[i]);
    size_ += count;
  }
  std::size_t size() const { return size_; }
  std::size_t room() const { return room_; }

 private:
  Unit* buffer_;
  std::size_t room_;
  std::size_t size_ = 0;
};

// The length of the text's part before its first character beyond ASCII.
template <class Unit>
std::size_t AsciiPrefix(std::basic_string_view<Unit> text) {
  constexpr std::uint64_t kBeyond = sizeof(Unit) == 1 ? 0x8080808080808080u : 0xFF80FF80FF80FF80u;
  std::size_t length = 0;
  std::uint64_t block = 0;
  constexpr std::size_t kUnits = sizeof block / sizeof(Unit);
  for (; text.size() - length >= kUnits; length += kUnits) {
    std::memcpy(&block, text.data() + length, sizeof block);
    if ((block & kBeyond) != 0) break;
  }
  while (length < text.size() && static_cast<std::make_unsigned_t<Unit>>(text[length]) < 0x80) ++length;
  return length;
}

// Moves the leading ASCII part of a text over; true while something is left.
template <class Unit, class Target>
bool TakeAscii(std::basic_string_view<Unit>& text, Sink<Target>& sink) {
  const std::size_t ascii = AsciiPrefix(text);
  sink.PutAscii(text.data(), ascii);
  text.remove_prefix(ascii);
  return !text.empty();
}

struct CodePoint {
  char32_t value;
  std::size_t length;  // bytes it takes
};

// One character beyond ASCII. A malformed sequence gives U+FFFD for its longest part that could have begun a
// well-formed one, so that the text after it is never swallowed.
CodePoint NextUtf8(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned lead = at(0);
  if (lead < 0xC2 || lead > 0xF4) return {kReplacement, 1};
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte alone rules out overlong forms, surrogates and codes above U+10FFFF.
  const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t value = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if (i >= bytes.size()) return {kReplacement, i};
    const unsigned trail = at(i);
    if (trail < (i == 1 ? lowest : 0x80) || trail > (i == 1 ? highest : 0xBF)) return {kReplacement, i};
    value = (value << 6) | (trail & 0x3F);
  }
  return {value, length};
}

void PutUtf16(Sink<char16_t>& sink, char32_t value) {
  if (value < 0x10000) return sink.Put(static_cast<char16_t>(value));
  sink.Put(static_cast<char16_t>(0xD7C0 + (value >> 10)));
  sink.Put(static_cast<char16_t>(0xDC00 + (value & 0x3FF)));
}

void FromUtf8(std::string_view bytes, Sink<char16_t>& sink) {
  while (TakeAscii(bytes, sink)) {
    const CodePoint next = NextUtf8(bytes);
    PutUtf16(sink, next.value);
    bytes.remove_prefix(next.length);
  }
}

void FromAnsi(std::string_view bytes, Sink<char16_t>& sink) {
  for (const char byte : bytes) sink.Put(kAnsiToWide[static_cast<unsigned char>(byte)]);
}

// For characters beyond ASCII.
void PutUtf8(Sink<char>& sink, char32_t value) {
  const auto put = [&](char32_t byte) { sink.Put(static_cast<char>(byte)); };
  const auto put_trail = [&](int shift) { put(0x80 | ((value >> shift) & 0x3F)); };
  if (value < 0x800) {
    put(0xC0 | (value >> 6));
  } else if (value < 0x10000) {
    put(0xE0 | (value >> 12));
    put_trail(6);
  } else {
    put(0xF0 | (value >> 18));
    put_trail(12);
    put_trail(6);
  }
  put_trail(0);
}

bool IsHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool IsLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

// True when a lone surrogate was replaced.
bool ToUtf8(std::u16string_view text, Sink<char>& sink) {
  bool replaced = false;
  while (TakeAscii(text, sink)) {
    const char16_t unit = text.front();
    text.remove_prefix(1);
    if (IsHighSurrogate(unit) && !text.empty() && IsLowSurrogate(text.front())) {
      const char32_t high = unit & 0x3FFu;
      PutUtf8(sink, 0x10000 + (high << 10) + (text.front() & 0x3FFu));
      text.remove_prefix(1);
    } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
      PutUtf8(sink, kReplacement);
      replaced = true;
    } else {
      PutUtf8(sink, unit);
    }
  }
  return replaced;
}

// True when a character outside the page was replaced.
bool ToAnsi(std::u16string_view text, char replacement, Sink<char>& sink) {
  bool replaced = false;
  while (TakeAscii(text, sink)) {
    const int code = AnsiCode(text.front());
    replaced |= code < 0;
    sink.Put(code < 0 ? replacement : static_cast<char>(code));
    text.remove_prefix(1);
  }
  return replaced;
}

bool IsAnsi(UINT page) { return page == CP_ACP || page == kWindows1252; }
bool IsKnown(UINT page) { return IsAnsi(page) || page == CP_UTF8; }

template <class Unit>
std::basic_string_view<Unit> Input(const Unit* text, INT length) {
  if (length == -1) return {text, std::char_traits<Unit>::length(text) + 1};
  return {text, static_cast<std::size_t>(length)};
}

template <class Unit>
INT Result(const Sink<Unit>& sink) {
  const bool too_small = sink.room() != 0 && sink.size() > sink.room();
  const bool too_long = sink.size() > static_cast<std::size_t>(std::numeric_limits<INT>::max());
  return too_small || too_long ? 0 : static_cast<INT>(sink.size());
}

bool AreValid(const void* input, INT length, const void* output, INT room) {
  return input != nullptr && length >= -1 && length != 0 && room >= 0 && (room == 0 || output != nullptr);
}

}  // namespace

std::u16string DecodeAnsi(std::string_view bytes) {
  std::u16string text(bytes.size(), u'\0');
  Sink<char16_t> sink(text.data(), text.size());
  FromAnsi(bytes, sink);
  return text;
}

std::u16string DecodeUtf8(std::string_view bytes) {
  std::u16string text(bytes.size(), u'\0');
  Sink<char16_t> sink(text.data(), text.size());
  FromUtf8(bytes, sink);
  text.resize(sink.size());
  return text;
}

std::string EncodeAnsi(std::u16string_view text) {
  std::string bytes(text.size(), '\0');
  Sink<char> sink(bytes.data(), bytes.size());
  ToAnsi(text, '?', sink);
  return bytes;
}

}  // namespace moxel

INT MultiByteToWideChar(UINT CodePage, DWORD, LPCSTR lpMultiByteStr, INT cbMultiByte, LPOLESTR lpWideCharStr,
                        INT cchWideChar) {
  using namespace moxel;
  if (!IsKnown(CodePage) || !AreValid(lpMultiByteStr, cbMultiByte, lpWideCharStr, cchWideChar)) return 0;
  Sink<char16_t> sink(lpWideCharStr, static_cast<std::size_t>(cchWideChar));
  const std::string_view bytes = Input(lpMultiByteStr, cbMultiByte);
  IsAnsi(CodePage) ? FromAnsi(bytes, sink) : FromUtf8(bytes, sink);
  return Result(sink);
}

INT WideCharToMultiByte(UINT CodePage, DWORD, LPCOLESTR lpWideCharStr, INT cchWideChar, LPSTR lpMultiByteStr,
                        INT cbMultiByte, LPCSTR lpDefaultChar, BOOL* lpUsedDefaultChar) {
  using namespace moxel;
  if (lpUsedDefaultChar != nullptr) *lpUsedDefaultChar = 0;
  if (!IsKnown(CodePage) || !AreValid(lpWideCharStr, cchWideChar, lpMultiByteStr, cbMultiByte)) return 0;
  Sink<char> sink(lpMultiByteStr, static_cast<std::size_t>(cbMultiByte));
  const std::u16string_view text = Input(lpWideCharStr, cchWideChar);
  const char replacement = lpDefaultChar == nullptr ? '?' : *lpDefaultChar;
  const bool replaced = IsAnsi(CodePage) ? ToAnsi(text, replacement, sink) : ToUtf8(text, sink);
  if (lpUsedDefaultChar != nullptr) *lpUsedDefaultChar = replaced ? 1 : 0;
  return Result(sink);
}
