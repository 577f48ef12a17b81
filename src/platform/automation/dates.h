// The automation date: days since 30 December 1899, the time of day in the fraction, whose sign plays no
// part.
#pragma once

#include <optional>
#include <string>

#include "moxel/platform.h"
#include "platform/locale/user_locale.h"

namespace moxel {

// From the year 100 to the year 9999.
bool IsDateInRange(DATE date);

// The date, and the time unless it is midnight; a time alone on day 0. To the nearest second. Nothing out of
// range.
std::optional<std::u16string> DateText(DATE date, const TimeLocale& locale);

}  // namespace moxel
