// The message table in French and English, and the message of an id in the current language.
#pragma once

#include <cstdint>
#include <string>

namespace moxel {

// Words that a boolean value is recognised by. Both languages hold both pairs.
inline constexpr std::int32_t kMessageVrai = 1046;
inline constexpr std::int32_t kMessageFaux = 1047;
inline constexpr std::int32_t kMessageTrue = 1048;
inline constexpr std::int32_t kMessageFalse = 1049;

// The message of an id. The language is read anew at each call, so a change takes effect at the next message.
// Error 13 or 6 when the language setting is not a number that fits, 6 when id and offset do not fit
// together, 326 when there is no such message.
std::u16string LoadMessage(std::int32_t id);

// The same, but "An unknown error has occurred!" whatever fails.
std::u16string GetErrorMessage(std::int32_t id);

}  // namespace moxel
