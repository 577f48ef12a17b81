// Raising the component's numbered errors.
#pragma once

#include <cstdint>
#include <string_view>

namespace moxel {

// The number of an application error is this base plus the id of its message.
inline constexpr std::int32_t kErrorBase = -2147221504;  // 0x80040000

// Raises the error of a message id: number kErrorBase + id, the given Source, the message in the current
// language. Error 6 instead when the number does not fit, as for an id that is itself an error number.
[[noreturn]] void HandleError(std::int32_t id, std::u16string_view source);

}  // namespace moxel
