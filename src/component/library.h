// What the type library calls itself.
#pragma once

#include <cstdint>
#include <string_view>

namespace moxel::component {

inline constexpr std::u16string_view kLibraryName = u"MOXEL";
inline constexpr std::u16string_view kLibraryTitle = u"MOXEL Components";
inline constexpr std::uint16_t kMajorVersion = 1;
inline constexpr std::uint16_t kMinorVersion = 4;

}  // namespace moxel::component
