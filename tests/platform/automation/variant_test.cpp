#include <gtest/gtest.h>

#include "tests/platform/automation/variant_fixture.h"

namespace {

using namespace moxel::test;

template <class Value>
ScopedVariant Ref(VARTYPE tag, Value* value) {
  return Make(static_cast<VARTYPE>(VT_BYREF | tag), static_cast<void*>(value));
}

TEST(Variant, ClearReleasesWhatIsHeldAndNothingElse) {
  CountedObject object;
  IDispatch* pointer = &object;
  for (const VARTYPE tag : {VT_DISPATCH, VT_UNKNOWN}) {
    object.AddRef();
    ScopedVariant held = Make(tag, pointer);
    object.holder = &held;
    EXPECT_EQ(VariantClear(&held), S_OK);
    EXPECT_TRUE(held.vt == VT_EMPTY && object.references == 1);
    EXPECT_EQ(object.seen, VT_EMPTY);
  }
  ScopedVariant text = Text(u"kept");
  ScopedVariant references[] = {Ref(VT_DISPATCH, &pointer), Ref(VT_BSTR, &text.bstrVal)};
  for (ScopedVariant& reference : references) EXPECT_EQ(VariantClear(&reference), S_OK);
  EXPECT_EQ(object.references, 1u);
  EXPECT_EQ(TextOf(text), u"kept");
}

TEST(Variant, CopyDuplicatesTextsAndSharesObjects) {
  using namespace std::string_view_literals;
  const ScopedVariant text = Text(u"a\0b"sv);
  ScopedVariant copy = Text(u"previous");
  ASSERT_EQ(VariantCopy(&copy, &text), S_OK);
  EXPECT_NE(copy.bstrVal, text.bstrVal);
  for (const auto copy_to : {VariantCopy, VariantCopyInd}) {
    ASSERT_EQ(copy_to(&copy, &copy), S_OK);
    EXPECT_EQ(TextOf(copy), u"a\0b"sv);
  }
  CountedObject object;
  ScopedVariant held = Make(VT_UNKNOWN, static_cast<IUnknown*>(&object));
  for (const ScopedVariant* source : {&held, &copy}) {
    ASSERT_EQ(VariantCopy(&copy, source), S_OK);
    EXPECT_EQ(object.references, 2u);
  }
  held.vt = VT_EMPTY;
}

TEST(Variant, OnlyCopyIndFollowsReferences) {
  ScopedVariant text = Text(u"abc"), to_text = Ref(VT_BSTR, &text.bstrVal), copy;
  const auto follows = [&](const ScopedVariant& source, VARTYPE tag, std::u16string_view shown) {
    ASSERT_EQ(VariantCopyInd(&copy, &source), S_OK) << source.vt;
    EXPECT_EQ(copy.vt, tag);
    EXPECT_NE(copy.bstrVal, text.bstrVal);
    ASSERT_EQ(VariantChangeType(&copy, &copy, 0, VT_BSTR), S_OK);
    EXPECT_EQ(TextOf(copy), shown);
  };
  BYTE bytes[] = {200, 255};
  DECIMAL decimal{0, 1, 0, 0, 250};
  follows(text, VT_BSTR, u"abc");
  follows(to_text, VT_BSTR, u"abc");
  follows(Ref<VARIANT>(VT_VARIANT, &text), VT_BSTR, u"abc");
  follows(Ref<VARIANT>(VT_VARIANT, &to_text), VT_BSTR, u"abc");
  follows(Ref(VT_UI1, bytes), VT_UI1, u"200");
  follows(Ref(VT_DECIMAL, &decimal), VT_DECIMAL, u"25");
  ASSERT_EQ(VariantCopy(&copy, &to_text), S_OK);
  EXPECT_EQ(copy.vt, VT_BYREF | VT_BSTR);
  EXPECT_EQ(copy.pbstrVal, &text.bstrVal);
}

// What the calls that read a variant say about one; all leave their target as it was.
void ExpectRefused(const VARIANT& source, HRESULT expected) {
  ScopedVariant target = Text(u"kept");
  EXPECT_EQ(VariantCopyInd(&target, &source), expected) << source.vt;
  EXPECT_EQ(VariantChangeType(&target, &source, 0, VT_I4), expected) << source.vt;
  EXPECT_EQ(TextOf(target), u"kept");
}

TEST(Variant, HostileReferencesAndUnsupportedTagsAreRefused) {
  ScopedVariant own = Ref<VARIANT>(VT_VARIANT, &own);
  ExpectRefused(own, E_INVALIDARG);
  for (const int tag : {VT_I4, VT_BSTR, VT_VARIANT, VT_DECIMAL}) {
    ExpectRefused(Ref<void>(static_cast<VARTYPE>(tag), nullptr), E_INVALIDARG);
  }
  for (const int tag :
       {0 + VT_VARIANT, 15, 0 + VT_VOID, 36, 0xFFF, 0x8000, VT_ARRAY | VT_UI1, VT_BYREF | VT_ARRAY | VT_I4,
        VT_BYREF | VT_EMPTY, VT_BYREF | VT_NULL, VT_BYREF | 36}) {
    VARIANT bad{static_cast<VARTYPE>(tag), 0, 0, 0, {}};
    ScopedVariant number = Make(VT_I4, LONG{1});
    ExpectRefused(bad, DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantClear(&bad), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantCopy(&number, &bad), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantCopy(&bad, &number), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantChangeType(&number, &number, 0, bad.vt), DISP_E_BADVARTYPE) << tag;
    EXPECT_TRUE(bad.vt == tag && number.vt == VT_I4) << tag;
  }
  ScopedVariant target(VT_NULL);
  VariantInit(&target);
  EXPECT_EQ(target.vt, VT_EMPTY);
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(nullptr, &target), E_INVALIDARG);
  EXPECT_EQ(VariantCopyInd(&target, nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantChangeType(nullptr, &target, 0, VT_I4), E_INVALIDARG);
  EXPECT_EQ(VariantChangeType(&target, nullptr, 0, VT_I4), E_INVALIDARG);
}

}  // namespace
