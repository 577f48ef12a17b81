// Text between UTF-16 in memory and the single-byte code page of the registry's entry points.
#pragma once

#include <string>
#include <string_view>

namespace moxel {

// Characters outside the code page become "?".
std::string ToAnsi(std::u16string_view text);
std::u16string FromAnsi(std::string_view bytes);

}  // namespace moxel
