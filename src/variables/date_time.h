// The one form in which dates are kept.
#pragma once

#include <string_view>

namespace moxel {

// True for a text like "2024-03-15 08:30:00.000": exactly 23 characters, each field a number (blank-padded
// ones pass), and a date and time that exist. Error 6 when a field is a number too large for 16 bits.
bool IsDateTimeText(std::u16string_view text);

}  // namespace moxel
