// The values that the store hands out: what equals a text, what counts as a number.
#include "moxel/variant.h"

#include <gtest/gtest.h>

namespace moxel::test {
namespace {

TEST(Variants, EqualATextExactlyOrNotAtAll) {
  EXPECT_TRUE(Variant(u"Sales").Equals(u"Sales"));
  EXPECT_FALSE(Variant(u"Sales").Equals(u"sales"));
  EXPECT_FALSE(Variant(u"Sales").Equals(u""));
  EXPECT_TRUE(Variant().Equals(u"")) << "nothing equals the empty text";
  EXPECT_FALSE(Variant().Equals(u"0"));
  EXPECT_FALSE(Variant(std::int32_t{5}).Equals(u"5")) << "a number never equals a text";
  EXPECT_FALSE(Variant(std::int32_t{0}).Equals(u""));
  EXPECT_FALSE(Variant::Null().Equals(u""));
}

TEST(Variants, ANumberOfAnyWidthIsNumeric) {
  for (VARENUM type : {VT_EMPTY, VT_BOOL, VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8,
                       VT_UI8, VT_R4, VT_R8, VT_CY, VT_DECIMAL}) {
    Variant value;
    value.vt = type;
    EXPECT_TRUE(value.IsNumeric()) << type;
  }
  for (const Variant& value :
       {Variant::Null(), Variant::Missing(), Variant::Date(45000), Variant(static_cast<IDispatch*>(nullptr))})
    EXPECT_FALSE(value.IsNumeric()) << value.vt;
}

TEST(Variants, ATextIsNumericWhereAllOfItIsANumber) {
  for (const char16_t* text : {u"12", u" 12 ", u"1-", u"1e3", u"99999999999"})
    EXPECT_TRUE(Variant(text).IsNumeric()) << ::testing::PrintToString(text);
  for (const char16_t* text : {u"", u" ", u"abc", u"12x", u"True"})
    EXPECT_FALSE(Variant(text).IsNumeric()) << ::testing::PrintToString(text);
  EXPECT_FALSE(Variant(std::u16string(u"12\0", 3)).IsNumeric());
}

}  // namespace
}  // namespace moxel::test
