// What the tests of variables share: owners made of next to nothing, values and failures in a form that
// compares and prints.
#pragma once

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "moxel/identifiers.h"
#include "moxel/variant.h"
#include "tests/support/product_test.h"
#include "tests/support/raised_error.h"
#include "tests/support/stored_records.h"

namespace moxel::test {

inline constexpr std::int32_t kApplication = static_cast<std::int32_t>(0x80040000);

// An object of the component with the name given; nothing is written.
template <class Object>
ObjectPtr<Object> Keyed(std::u16string_view name) {
  ObjectPtr<Object> object = Object::Create();
  object->key = name;
  return object;
}

// A failure, or the absence of one (number 0).
struct Failure {
  std::int32_t number = 0;
  std::u16string source = {};
  bool operator==(const Failure&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Failure& failure) {
  return out << failure.number << " from " << std::string(failure.source.begin(), failure.source.end());
}

inline Failure Runtime(std::int32_t number) { return {number, u"MOXEL"}; }

template <class Body>
Failure FailureOf(Body&& body) {
  const auto error = RaisedBy(body);
  return error ? Failure{error->number(), error->source()} : Failure{};
}

template <class Body>
std::u16string DescriptionOf(Body&& body) {
  const auto error = RaisedBy(body);
  return error ? error->description() : u"(no failure)";
}

// Tag and content of a value, so that 1, 1.0 and "1" show apart.
inline std::string Shown(const VARIANT& value) {
  char number[40];
  switch (value.vt) {
    case VT_EMPTY: return "empty";
    case VT_NULL: return "null";
    case VT_I2: return "I2 " + std::to_string(value.iVal);
    case VT_I4: return "I4 " + std::to_string(value.lVal);
    case VT_R8: std::snprintf(number, sizeof number, "R8 %.17g", value.dblVal); return number;
    case VT_DATE: std::snprintf(number, sizeof number, "date %.17g", value.date); return number;
    case VT_BOOL: return value.boolVal == VARIANT_TRUE ? "true" : "false";
    case VT_ERROR: return "error " + std::to_string(value.scode);
    case VT_DISPATCH: return value.pdispVal ? "object" : "no object";
    case VT_BSTR: {
      std::string text;
      for (char16_t unit : ViewOf(value.bstrVal))
        text += unit < 0x7F ? std::string(1, static_cast<char>(unit)) : "\\" + std::to_string(unit);
      return "'" + text + "'";
    }
    default: return "tag " + std::to_string(value.vt);
  }
}

// Kind, data type, value and initial value of a variable.
template <class AnyVariable>
std::string FieldsOf(const AnyVariable& variable) {
  return Shown(variable.VarType()) + " " + std::to_string(variable.DataType()) + " " +
         Shown(variable.Value()) + " " + Shown(variable.Init());
}

// An owner as any program may bring one: a property `key`, and interfaces that say which kind it is.
class Owner final : public IDispatch {
 public:
  Owner(std::vector<IID> kinds, Variant key) : kinds_(std::move(kinds)), key_(std::move(key)) {
    kinds_.push_back(IID_IUnknown);
    kinds_.push_back(IID_IDispatch);
  }
  Owner(const Owner&) = delete;
  ~Owner() { EXPECT_EQ(references_, 1u) << "references to the owner do not balance"; }

  // Reading `key` fails from now on: with this result and, for DISP_E_EXCEPTION, with this number.
  void Fail(HRESULT result, SCODE number = 0) {
    failure_ = result;
    number_ = number;
  }

  HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
    const bool known = std::find(kinds_.begin(), kinds_.end(), riid) != kinds_.end();
    *ppvObject = known ? this : nullptr;
    return known ? AddRef(), S_OK : E_NOINTERFACE;
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override { return --references_; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR* rgszNames, UINT, LCID, DISPID* rgDispId) override {
    if (std::u16string_view(rgszNames[0]) != u"key") return DISP_E_UNKNOWNNAME;
    *rgDispId = 77;
    return failure_ == DISP_E_UNKNOWNNAME ? failure_ : S_OK;
  }
  HRESULT Invoke(DISPID dispIdMember, REFIID, LCID, WORD wFlags, DISPPARAMS*, VARIANT* pVarResult,
                 EXCEPINFO* pExcepInfo, UINT*) override {
    if (dispIdMember != 77 || !(wFlags & DISPATCH_PROPERTYGET)) return DISP_E_MEMBERNOTFOUND;
    if (failure_ == DISP_E_EXCEPTION) {
      pExcepInfo->scode = number_;
      pExcepInfo->bstrSource = SysAllocString(u"Owner:key");
      pExcepInfo->bstrDescription = SysAllocString(u"The owner has gone");
    }
    if (FAILED(failure_)) return failure_;
    return VariantCopy(pVarResult, &key_);
  }

 private:
  std::vector<IID> kinds_;
  Variant key_;
  HRESULT failure_ = S_OK;
  SCODE number_ = 0;
  ULONG references_ = 1;
};

}  // namespace moxel::test
