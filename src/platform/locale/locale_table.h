// Conventions of common locales, for systems on which the C library's own locales are not installed.
#pragma once

#include <string_view>

namespace moxel {

struct LocaleConventions {
  std::string_view name;  // language, or language and territory
  char16_t decimal;
  char16_t group;  // 0: none
  std::u16string_view date_picture;
  std::u16string_view time_picture;
};

// The entry of "fr_CH", else that of "fr", else that of "C"; what follows "." or "@" in the name plays no
// part.
const LocaleConventions& FindConventions(std::string_view locale_name);

}  // namespace moxel
