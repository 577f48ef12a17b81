#include <gtest/gtest.h>

#include "tests/platform/automation/variant_fixture.h"

namespace {

using namespace moxel::test;

constexpr VARTYPE kUnsupported[] = {VT_VARIANT,
                                    15,
                                    VT_VOID,
                                    VT_PTR,
                                    VT_USERDEFINED,
                                    36,
                                    VT_TYPEMASK,
                                    0xFFFF,
                                    0x8000,
                                    VT_ARRAY | VT_UI1,
                                    VT_ARRAY | VT_VARIANT,
                                    VT_BYREF | VT_ARRAY | VT_I4,
                                    VT_BYREF,
                                    VT_BYREF | VT_NULL,
                                    VT_BYREF | 36};

template <class Value>
ScopedVariant Ref(VARTYPE tag, Value* value) {
  return Make(static_cast<VARTYPE>(VT_BYREF | tag), static_cast<void*>(value));
}

TEST(Variant, ClearReleasesWhatIsHeldAndNothingElse) {
  CountedObject object;
  for (const VARTYPE tag : {VT_DISPATCH, VT_UNKNOWN}) {
    object.AddRef();
    ScopedVariant held = Make(tag, static_cast<IDispatch*>(&object));
    EXPECT_EQ(VariantClear(&held), S_OK);
    EXPECT_EQ(held.vt, VT_EMPTY);
    EXPECT_EQ(object.references, 1u);
  }

  IDispatch* pointer = &object;
  ScopedVariant reference = Ref(VT_DISPATCH, &pointer);
  EXPECT_EQ(VariantClear(&reference), S_OK);
  EXPECT_EQ(object.references, 1u);

  ScopedVariant text = Text(u"kept");
  ScopedVariant text_reference = Ref(VT_BSTR, &text.bstrVal);
  EXPECT_EQ(VariantClear(&text_reference), S_OK);
  EXPECT_EQ(TextOf(text), u"kept");
}

TEST(Variant, CopyDuplicatesTextsAndSharesObjects) {
  using namespace std::string_view_literals;
  const ScopedVariant text = Text(u"a\0b"sv);
  ScopedVariant copy = Text(u"previous");
  ASSERT_EQ(VariantCopy(&copy, &text), S_OK);
  EXPECT_EQ(TextOf(copy), u"a\0b"sv);
  EXPECT_NE(copy.bstrVal, text.bstrVal);
  ASSERT_EQ(VariantCopy(&copy, &copy), S_OK);
  EXPECT_EQ(TextOf(copy), u"a\0b"sv);
  ASSERT_EQ(VariantCopyInd(&copy, &copy), S_OK);
  EXPECT_EQ(TextOf(copy), u"a\0b"sv);

  CountedObject object;
  {
    ScopedVariant held = Make(VT_UNKNOWN, static_cast<IUnknown*>(&object));
    object.AddRef();
    ASSERT_EQ(VariantCopy(&copy, &held), S_OK);
    EXPECT_EQ(object.references, 3u);
    ASSERT_EQ(VariantCopy(&copy, &copy), S_OK);
    EXPECT_EQ(object.references, 3u);
    ASSERT_EQ(VariantClear(&copy), S_OK);
  }
  EXPECT_EQ(object.references, 1u);
}

TEST(Variant, CopyOfAReferenceCopiesThePointerOnly) {
  ScopedVariant text = Text(u"abc");
  const ScopedVariant reference = Ref(VT_BSTR, &text.bstrVal);
  ScopedVariant copy;
  ASSERT_EQ(VariantCopy(&copy, &reference), S_OK);
  EXPECT_EQ(copy.vt, VT_BYREF | VT_BSTR);
  EXPECT_EQ(copy.pbstrVal, &text.bstrVal);
}

TEST(Variant, CopyIndFollowsReferences) {
  ScopedVariant text = Text(u"abc");
  const ScopedVariant to_text = Ref(VT_BSTR, &text.bstrVal);
  ScopedVariant inner = Ref(VT_BSTR, &text.bstrVal);
  const ScopedVariant to_variant = Ref(VT_VARIANT, static_cast<VARIANT*>(&text));
  const ScopedVariant to_reference = Ref(VT_VARIANT, static_cast<VARIANT*>(&inner));
  for (const VARIANT* source :
       {static_cast<const VARIANT*>(&text), static_cast<const VARIANT*>(&to_text),
        static_cast<const VARIANT*>(&to_variant), static_cast<const VARIANT*>(&to_reference)}) {
    ScopedVariant copy;
    ASSERT_EQ(VariantCopyInd(&copy, source), S_OK) << source->vt;
    EXPECT_EQ(TextOf(copy), u"abc") << source->vt;
    EXPECT_NE(copy.bstrVal, text.bstrVal);
  }

  BYTE bytes[] = {200, 255};
  const ScopedVariant to_byte = Ref(VT_UI1, bytes);
  ScopedVariant byte;
  ASSERT_EQ(VariantCopyInd(&byte, &to_byte), S_OK);
  EXPECT_EQ(byte.vt, VT_UI1);
  EXPECT_EQ(byte.llVal, 200);

  DECIMAL decimal{0, 1, 0, 0, 25};
  const ScopedVariant to_decimal = Ref(VT_DECIMAL, &decimal);
  ScopedVariant exact;
  ASSERT_EQ(VariantCopyInd(&exact, &to_decimal), S_OK);
  EXPECT_EQ(exact.vt, VT_DECIMAL);
  ASSERT_EQ(VariantChangeType(&exact, &exact, 0, VT_BSTR), S_OK);
  EXPECT_EQ(TextOf(exact).size(), 3u);  // "2.5" in any locale
}

TEST(Variant, HostileReferencesAreRefused) {
  ScopedVariant own;
  own.vt = VT_BYREF | VT_VARIANT;
  own.pvarVal = &own;
  ScopedVariant target = Text(u"kept");
  EXPECT_EQ(VariantCopyInd(&target, &own), E_INVALIDARG);
  EXPECT_EQ(VariantChangeType(&target, &own, 0, VT_I4), E_INVALIDARG);
  for (const VARTYPE tag : {VT_I4, VT_BSTR, VT_VARIANT, VT_DECIMAL, VT_UNKNOWN}) {
    const ScopedVariant null_reference = Ref(tag, static_cast<void*>(nullptr));
    EXPECT_EQ(VariantCopyInd(&target, &null_reference), E_INVALIDARG) << tag;
    EXPECT_EQ(VariantChangeType(&target, &null_reference, 0, VT_I4), E_INVALIDARG) << tag;
  }
  EXPECT_EQ(TextOf(target), u"kept");
}

TEST(Variant, UnsupportedTagsAreRefused) {
  for (const VARTYPE tag : kUnsupported) {
    VARIANT bad{};
    bad.vt = tag;
    ScopedVariant target = Text(u"kept");
    const ScopedVariant number = Make(VT_I4, LONG{1});
    EXPECT_EQ(VariantClear(&bad), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantCopy(&target, &bad), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantCopyInd(&target, &bad), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantChangeType(&target, &bad, 0, VT_I4), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(VariantChangeType(&target, &number, 0, tag), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(TextOf(target), u"kept") << tag;
    EXPECT_EQ(VariantCopy(&bad, &target), DISP_E_BADVARTYPE) << tag;
    EXPECT_EQ(bad.vt, tag);
  }
  ScopedVariant target;
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(nullptr, &target), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(&target, nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantCopyInd(&target, nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantChangeType(nullptr, &target, 0, VT_I4), E_INVALIDARG);
  EXPECT_EQ(VariantChangeType(&target, nullptr, 0, VT_I4), E_INVALIDARG);
  VariantInit(nullptr);
}

// An object whose release looks at the variant that held it.
struct Watcher final : IUnknown {
  HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG AddRef() override { return 2; }
  ULONG Release() override {
    seen = holder->vt;
    return 1;
  }
  const VARIANT* holder = nullptr;
  VARTYPE seen = VT_ERROR;
};

TEST(Variant, ReleaseSeesTheVariantAlreadyEmpty) {
  Watcher watcher;
  ScopedVariant held = Make(VT_UNKNOWN, static_cast<IUnknown*>(&watcher));
  watcher.holder = &held;
  EXPECT_EQ(VariantClear(&held), S_OK);
  EXPECT_EQ(watcher.seen, VT_EMPTY);
}

}  // namespace
