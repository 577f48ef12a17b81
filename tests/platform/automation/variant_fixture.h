// Variants for tests: made in one line, cleared at the end, shown in failures.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

// What is no plain ASCII is written as a number.
inline std::string Show(std::u16string_view text) {
  std::string shown;
  for (const char16_t unit : text) {
    const bool plain = unit < 0x7F && unit >= 0x20;
    shown += plain ? std::string(1, static_cast<char>(unit)) : "\\u" + std::to_string(unit);
  }
  return shown;
}

using Row = std::pair<std::u16string, std::string>;

// Reads "text: expected|text: expected".
inline std::vector<Row> Rows(std::u16string_view table) {
  std::vector<Row> rows;
  for (std::size_t begin = 0, end = 0; begin < table.size(); begin = end + 1) {
    end = std::min(table.find(u'|', begin), table.size());
    const auto row = table.substr(begin, end - begin);
    const std::size_t colon = row.rfind(u": ");
    rows.emplace_back(row.substr(0, colon), Show(row.substr(colon + 2)));
  }
  return rows;
}

// Counts its references, and looks, when released, at the variant that holds it.
struct CountedObject final : IDispatch {
  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    if (riid != IID_IUnknown && riid != IID_IDispatch) return E_NOINTERFACE;
    AddRef();
    *ppvObject = this;
    return S_OK;
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override {
    if (holder != nullptr) seen = holder->vt;
    return --references;
  }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }

  ULONG references = 1;
  const VARIANT* holder = nullptr;
  VARTYPE seen = VT_ERROR;
};

}  // namespace moxel::test
