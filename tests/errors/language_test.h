// What the tests of errors share: the language setting and the text of an unknown error.
#pragma once

#include <limits>
#include <string_view>

#include "registry/schema.h"
#include "registry/store.h"
#include "tests/support/product_test.h"
#include "tests/support/raised_error.h"

namespace moxel::test {

inline constexpr const char16_t* kUnknown = u"An unknown error has occurred!";
inline constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
inline constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

class LanguageTest : public ProductTest {
 protected:
  static void SetLanguage(DWORD type, std::u16string_view text) {
    RegWriteValue(schema::kConfiguration, schema::kLang, type, text);
  }
};

}  // namespace moxel::test
