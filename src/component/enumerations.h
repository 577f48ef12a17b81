// The enumerations as the type library publishes them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace moxel::component {

struct EnumerationInfo {
  struct Constant {
    std::u16string_view name;
    std::int32_t value;
  };

  std::u16string_view name;
  std::u16string_view help;
  std::vector<Constant> constants;
};

std::span<const EnumerationInfo> Enumerations();

}  // namespace moxel::component
