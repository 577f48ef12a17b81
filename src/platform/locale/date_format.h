// Dates and times as text, by pictures.
//   date: d dd ddd dddd  M MM MMM MMMM  y yy yyyy        time: h hh  H HH  m mm  s ss  t tt
// A text between apostrophes stands for itself ('' for one apostrophe), and so does every other character.
#pragma once

#include <string>
#include <string_view>

#include "moxel/platform.h"
#include "platform/locale/user_locale.h"

namespace moxel {

// The date must be a real one of the Gregorian calendar, the time one of a day; nothing else of the record is
// read.
std::u16string FormatDate(const SYSTEMTIME& date, std::u16string_view picture, const TimeLocale& locale);
std::u16string FormatTime(const SYSTEMTIME& time, std::u16string_view picture, const TimeLocale& locale);

}  // namespace moxel
