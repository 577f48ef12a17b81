// The values that the store hands out: what equals a text, what counts as a number.
#include "moxel/variant.h"

#include <gtest/gtest.h>

namespace moxel::test {
namespace {

TEST(Variants, EqualATextExactlyAndAreNumericAsNumbersOfAnyWidthOrTextsOfOne) {
  EXPECT_TRUE(Variant(u"Sales").Equals(u"Sales"));
  EXPECT_TRUE(Variant().Equals(u"")) << "nothing equals the empty text";
  EXPECT_FALSE(Variant(u"Sales").Equals(u"sales"));
  EXPECT_FALSE(Variant(std::int32_t{5}).Equals(u"5")) << "a number never equals a text";
  for (VARENUM type : {VT_EMPTY, VT_BOOL, VT_UI1, VT_I2, VT_I8, VT_UINT, VT_R4, VT_CY, VT_DECIMAL}) {
    Variant value;
    value.vt = type;
    EXPECT_TRUE(value.IsNumeric()) << type;
  }
  for (const char16_t* text : {u" 12 ", u"99999999999"}) EXPECT_TRUE(Variant(text).IsNumeric());
  for (const Variant& value : {Variant::Null(), Variant::Missing(), Variant::Date(45000), Variant(u""),
                               Variant(u"12x"), Variant(std::u16string(u"12\0", 3))})
    EXPECT_FALSE(value.IsNumeric()) << value.vt;
}

}  // namespace
}  // namespace moxel::test
