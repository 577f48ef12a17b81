#include "variables/date_time.h"

#include <array>
#include <cstdint>

#include "moxel/variant.h"

namespace moxel {
namespace {

struct Field {
  std::size_t offset;
  std::size_t length;
};

constexpr std::size_t kLength = 23;
// Year, month, day, hour, minute, second, millisecond.
constexpr std::array<Field, 7> kFields{{{0, 4}, {5, 2}, {8, 2}, {11, 2}, {14, 2}, {17, 2}, {20, 3}}};

struct Separator {
  std::size_t offset;
  char16_t character;
};
constexpr std::array<Separator, 6> kSeparators{
    {{4, u'-'}, {7, u'-'}, {10, u' '}, {13, u':'}, {16, u':'}, {19, u'.'}}};

// The platform's formatters know which dates and times exist; what they format is not used.
bool Exists(const SYSTEMTIME& time) {
  constexpr LCID kSystemLocale = 0;
  std::array<char, 40> formatted;
  constexpr auto kCapacity = static_cast<INT>(formatted.size());
  return GetDateFormatA(kSystemLocale, 0, &time, "dd MMMM yyyy", formatted.data(), kCapacity) != 0 &&
         GetTimeFormatA(kSystemLocale, 0, &time, "hh mm ss", formatted.data(), kCapacity) != 0;
}

}  // namespace

bool IsDateTimeText(std::u16string_view text) {
  if (text.size() != kLength) return false;
  std::array<Variant, kFields.size()> fields;
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    fields[i] = text.substr(kFields[i].offset, kFields[i].length);
    if (!fields[i].IsNumeric()) return false;
  }
  for (const Separator& separator : kSeparators)
    if (text[separator.offset] != separator.character) return false;
  auto number = [&](std::size_t i) { return static_cast<WORD>(fields[i].ToI2()); };
  SYSTEMTIME time{};
  time.wYear = number(0);
  time.wMonth = number(1);
  time.wDay = number(2);
  time.wHour = number(3);
  time.wMinute = number(4);
  time.wSecond = number(5);
  time.wMilliseconds = number(6);
  return Exists(time);
}

}  // namespace moxel
