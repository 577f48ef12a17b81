#include "platform/automation/keyed_collection.h"

#include <gtest/gtest.h>

#include <limits>

#include "component/boundary.h"
#include "platform/automation/collection.h"
#include "tests/component/calls.h"

namespace moxel::test {
namespace {

using Numbers = KeyedCollection<int>;

TEST(KeyedCollectionTest, KeysDifferByMoreThanLetterCase) {
  const std::u16string_view lower = u"sales \u00E9\u00E0\u00FE \u0161\u0153\u017E\u00FF",
                            upper = u"SALES \u00C9\u00C0\u00DE \u0160\u0152\u017D\u0178";
  Numbers numbers;
  numbers.Add(1, lower);
  numbers.Add(2, u"");
  EXPECT_EQ(FailureOf([&] { numbers.Add(3, upper); }), Runtime(457));
  EXPECT_EQ(FailureOf([&] { numbers.Add(3, u""); }), Runtime(457));
  EXPECT_EQ(numbers.Item(upper), 1);
  // Signs of division and multiplication, letters without a capital, signs beside the letters, blanks.
  for (char16_t key : std::u16string_view(u"\u00F7\u00D7\u00DF\u00FFe\u00E9@`[{1A")) {
    numbers.Add(numbers.Count() + 1, std::u16string(1, key));
    EXPECT_EQ(numbers.Item(std::u16string(1, key)), numbers.Count());
  }
  for (const char16_t* key : {u"01", u"A "}) EXPECT_NO_THROW(numbers.Add(0, key));
}

TEST(KeyedCollectionTest, AnIndexIsAKeyOrAPosition) {
  Numbers numbers;
  numbers.Add(30, u"1");
  numbers.Add(20);
  numbers.Add(10, u"first");
  const double no_number = std::numeric_limits<double>::quiet_NaN();
  const struct {
    int found;  // 0: an error
    std::int32_t error;
    std::vector<Variant> indices;
  } cases[] = {
      {30, 0, {std::int16_t{1}, 0.51, u"1"}},
      {20, 0, {1.5, 2.5}},  // ties go to the even neighbour
      {10, 0, {std::int32_t{3}, 3.49, u"FIRST"}},
      {0, 5, {u"2", u"", u"second"}},
      {0, 9, {std::int16_t{0}, std::int16_t{-1}, std::int32_t{4}, 0.5, 3.5, 1e300, no_number}},
      {0, 13, {{}, Variant::Null(), true, Variant::Missing(), static_cast<IDispatch*>(nullptr)}},
  };
  for (const auto& c : cases)
    for (const Variant& index : c.indices) {
      int found = 0;
      const Failure expected = c.error ? Runtime(c.error) : Failure{};
      EXPECT_EQ(FailureOf([&] { found = numbers.Item(index); }), expected) << Shown(index);
      EXPECT_EQ(found, c.found) << Shown(index);
      EXPECT_EQ(FailureOf([&] { c.error ? numbers.Remove(index) : void(); }), expected) << Shown(index);
    }
  EXPECT_EQ(numbers.Count(), 3);
}

TEST(KeyedCollectionTest, RemovingMovesTheRestUpAndFreesTheKey) {
  Numbers numbers;
  for (const char16_t* key : {u"a", u"b", u"c", u"d"}) numbers.Add(numbers.Count() + 1, key);
  numbers.Remove(u"B");
  numbers.Remove(std::int16_t{1});
  EXPECT_EQ(numbers.Item(std::int16_t{1}), 3);
  EXPECT_EQ(numbers.Item(u"d"), 4);
  EXPECT_EQ(FailureOf([&] { numbers.Item(u"b"); }), Runtime(5));
  numbers.Add(22, u"b");
  EXPECT_EQ(numbers.Item(u"B"), 22);
}

// The same as an automation object.
class CollectionTest : public ProductTest {};

TEST_F(CollectionTest, ItHoldsValuesOfAnyKind) {
  ObjectPtr<Collection> collection = Collection::Create();
  Variant missing = Variant::Missing(), key(u"Key"), one(std::int16_t{1}), object(collection.get());
  VARIANT last = Bare(VT_UI1), reference = ByReference(VT_VARIANT, &last);
  last.bVal = 4;
  const struct {
    VARIANT* item;
    VARIANT* key;
    HRESULT result;
  } cases[] = {
      {&key, &missing, S_OK},
      {&reference, &key, S_OK},
      {&key, &key, component::WireNumber(457)},
      {&key, &one, component::WireNumber(13)},
      {nullptr, &missing, E_POINTER},
      {&one, nullptr, E_POINTER},
  };
  for (const auto& c : cases) EXPECT_EQ(collection->raw_Add(c.item, c.key), c.result);
  EXPECT_EQ(Call(collection.get(), 1, DISPATCH_METHOD, {missing}).result, S_OK);
  EXPECT_EQ(Call(collection.get(), 1, DISPATCH_METHOD, {}, {{1, Variant(u"K")}, {0, object}}).result, S_OK);
  EXPECT_EQ(collection->raw_Remove(&reference), S_OK) << "holding itself, it would never go";
  std::string held;
  for (std::int32_t i = 1; i <= collection->Count(); ++i) held += Shown(collection->Item(i)) + " ";
  EXPECT_EQ(held, "'Key' I2 4 " + Shown(missing) + " ");
  EXPECT_EQ(Shown(Call(collection.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {key}).value), "I2 4");
}

}  // namespace
}  // namespace moxel::test
