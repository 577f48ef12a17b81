// What the user's locale says about numbers, dates and times. It is named by the environment: LC_ALL, else
// the category's own variable, else LANG. It is looked up at every call, so a change of the environment shows
// at once; the data of a name is derived once in a process. The C library's own locale is neither read nor
// changed.
#pragma once

#include <array>
#include <string>

namespace moxel {

struct NumericLocale {
  char16_t decimal = u'.';
  char16_t group = 0;  // thousands separator; 0: none

  bool IsGroup(char16_t character) const;
};

struct TimeLocale {
  std::u16string date_picture = u"MM/dd/yyyy";
  std::u16string time_picture = u"HH:mm:ss";
  std::array<std::u16string, 12> months;
  std::array<std::u16string, 12> short_months;
  std::array<std::u16string, 7> days;  // from Sunday
  std::array<std::u16string, 7> short_days;
  std::u16string am;
  std::u16string pm;
};

// The references stay valid for the life of the process. Both throw std::bad_alloc only.
const NumericLocale& UserNumericLocale();
const TimeLocale& UserTimeLocale();

// A blank of any kind that may surround a number or group its digits.
constexpr bool IsBlank(char16_t character) {
  return character == u' ' || (character >= u'\t' && character <= u'\r') || character == 0xA0 ||
         character == 0x202F;
}

}  // namespace moxel
