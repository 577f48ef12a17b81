// The code pages behind the ANSI entry points, for the platform layer's own use.
#pragma once

#include <string>
#include <string_view>

namespace moxel {

std::u16string DecodeAnsi(std::string_view bytes);

// Malformed sequences become U+FFFD.
std::u16string DecodeUtf8(std::string_view bytes);

// Characters outside the code page become "?".
std::string EncodeAnsi(std::u16string_view text);

}  // namespace moxel
