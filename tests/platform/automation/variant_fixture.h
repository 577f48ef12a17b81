// Variants for tests: made in one line, cleared at the end, shown in failures.
#pragma once

#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include "moxel/platform.h"

namespace moxel::test {

struct ScopedVariant : VARIANT {
  explicit ScopedVariant(VARTYPE tag = VT_EMPTY)
      : VARIANT{tag, 0, 0, 0, {}} {}  // NOLINT(*UninitializedObject)
  ScopedVariant(ScopedVariant&& other) noexcept : VARIANT(other) { other.vt = VT_EMPTY; }
  ~ScopedVariant() { VariantClear(this); }
};

// NOLINTBEGIN(bugprone-sizeof-expression): values may be pointers to objects.
template <class Value>
ScopedVariant Make(VARTYPE tag, Value value) {
  ScopedVariant variant(tag);
  static_assert(sizeof(Value) <= sizeof variant.llVal);
  std::memcpy(&variant.llVal, &value, sizeof(Value));
  return variant;
}

template <class Value>
Value Get(const VARIANT& variant) {
  Value value;
  std::memcpy(&value, &variant.llVal, sizeof(Value));
  return value;
}
// NOLINTEND(bugprone-sizeof-expression)

inline ScopedVariant Text(std::u16string_view text) {
  return Make(VT_BSTR, SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

inline ScopedVariant Decimal(ULONG high, ULONGLONG low, BYTE scale, bool negative = false) {
  ScopedVariant variant;
  const DECIMAL decimal{VT_DECIMAL, scale, static_cast<BYTE>(negative ? 0x80 : 0), high, low};
  std::memcpy(static_cast<VARIANT*>(&variant), &decimal, sizeof decimal);
  return variant;
}

inline std::u16string_view TextOf(const VARIANT& variant) {
  return variant.vt == VT_BSTR ? std::u16string_view(variant.bstrVal, SysStringLen(variant.bstrVal))
                               : u"(no text)";
}

// For messages only.
inline std::string Show(std::u16string_view text) {
  std::string shown = "\"";
  for (const char16_t unit : text) {
    shown +=
        unit < 0x7F && unit >= 0x20 ? std::string(1, static_cast<char>(unit)) : "\\u" + std::to_string(unit);
  }
  return shown + "\"";
}

// Counts its references; answers IUnknown, and IDispatch if made so.
class CountedObject final : public IDispatch {
 public:
  explicit CountedObject(bool dispatch = true) : dispatch_(dispatch) {}

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (riid != IID_IUnknown && !(dispatch_ && riid == IID_IDispatch)) return E_NOINTERFACE;
    AddRef();
    *ppvObject = this;
    return S_OK;
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }

  ULONG references = 1;

 private:
  bool dispatch_;
};

}  // namespace moxel::test
