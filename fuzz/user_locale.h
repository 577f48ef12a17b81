// The user's locale, chosen by the input.
#pragma once

#include <stdlib.h>

#include <string>

#include "fuzz/input.h"

namespace moxel::fuzz {

struct UserLocale {
  const char* name;
  bool point;    // the decimal separator is a point
  bool english;  // names of days and months are English
};

inline UserLocale ChooseLocale(Input& input) {
  static constexpr UserLocale kLocales[] = {{"C", true, true},       {"en_US", true, true},
                                            {"de_CH", true, false},  {"fr_FR", false, false},
                                            {"de_DE", false, false}, {"ru_RU", false, false}};
  const UserLocale& chosen = input.Pick(kLocales);
  ::setenv("LC_ALL", chosen.name, 1);
  return chosen;
}

// A text of UTF-16 from bytes, "_" and "`" standing for a blank and an apostrophe that group digits.
inline std::u16string WideText(std::string_view bytes) {
  std::u16string text;
  for (const char byte : bytes)
    text += byte == '_' ? u'\x202F' : byte == '`' ? u'\x2019' : char16_t{static_cast<unsigned char>(byte)};
  return text;
}

}  // namespace moxel::fuzz
