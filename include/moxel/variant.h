// The tagged value that crosses every interface, as a C++ value.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "moxel/automation_error.h"
#include "moxel/bstr.h"
#include "moxel/object_ptr.h"
#include "moxel/platform.h"
#include "moxel/text.h"

namespace moxel {

// A VARIANT that frees what it holds. It has the same layout, so it is handed over at the interface as it is.
//
// Conversions follow the user's locale and fail with the runtime errors 6 (overflow), 13 (type mismatch) and
// 94 (null).
class Variant : public VARIANT {
 public:
  Variant() : VARIANT() {}
  Variant(std::int16_t value) : Variant(VT_I2) { iVal = value; }
  Variant(std::int32_t value) : Variant(VT_I4) { lVal = value; }
  Variant(double value) : Variant(VT_R8) { dblVal = value; }
  Variant(std::same_as<bool> auto value) : Variant(VT_BOOL) {
    boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  }
  Variant(std::u16string_view text) : Variant() {
    bstrVal = Bstr(text).Detach();
    vt = VT_BSTR;
  }
  Variant(const std::u16string& text) : Variant(std::u16string_view(text)) {}
  Variant(const char16_t* text) : Variant(std::u16string_view(text)) {}
  // Takes a reference of its own; null is "no object".
  Variant(IDispatch* object) : Variant(VT_DISPATCH) {
    pdispVal = object;
    if (object) object->AddRef();
  }
  Variant(const Variant& other) : Variant() { Check(VariantCopy(this, &other)); }
  Variant(Variant&& other) noexcept : VARIANT(other.Detach()) {}
  // Numbers and dates, whose tags come first, own nothing.
  ~Variant() {
    if (vt > VT_DATE) VariantClear(this);
  }

  Variant& operator=(Variant other) noexcept {
    std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
    return *this;
  }

  static Variant Null() { return Variant(VT_NULL); }
  // The marker of an omitted optional argument.
  static Variant Missing() {
    Variant missing(VT_ERROR);
    missing.scode = DISP_E_PARAMNOTFOUND;
    return missing;
  }
  static Variant Date(DATE value) {
    Variant date(VT_DATE);
    date.date = value;
    return date;
  }
  // A copy of a bare variant; by-reference ones are followed.
  static Variant CopyOf(const VARIANT& bare) {
    Variant copy;
    Check(VariantCopyInd(&copy, &bare));
    return copy;
  }
  // A bare variant seen as a value, for as long as it lives.
  static const Variant& View(const VARIANT& bare) { return reinterpret_cast<const Variant&>(bare); }

  bool is_empty() const { return vt == VT_EMPTY; }
  bool is_null() const { return vt == VT_NULL; }
  bool is_text() const { return vt == VT_BSTR; }
  bool is_missing() const { return vt == VT_ERROR && scode == DISP_E_PARAMNOTFOUND; }

  // The text held; empty for anything that is not a text.
  std::u16string_view text() const { return is_text() ? ViewOf(bstrVal) : std::u16string_view(); }

  // Exact and case-sensitive. The empty variant equals the empty text; a number never equals a text.
  bool Equals(std::u16string_view other) const {
    return is_text() ? text() == other : is_empty() && other.empty();
  }

  // Texts are equal exactly and case-sensitively, nothing at all like the empty text; numbers by their value.
  // Values of different kinds never are.
  bool SameAs(const Variant& other) const {
    if (other.is_text() || other.is_empty()) return Equals(other.text());
    return IsNumber() && other.IsNumber() && ToR8() == other.ToR8();
  }

  std::u16string ToText() const {
    return is_text() ? std::u16string(text()) : std::u16string(As(VT_BSTR).text());
  }
  std::string ToUtf8() const { return moxel::ToUtf8(ToText()); }
  std::int16_t ToI2() const { return vt == VT_I2 ? iVal : As(VT_I2).iVal; }
  std::int32_t ToI4() const { return vt == VT_I4 ? lVal : As(VT_I4).lVal; }
  double ToR8() const { return vt == VT_R8 ? dblVal : As(VT_R8).dblVal; }

  // A number of any width, a boolean, nothing at all, or a text that is a number in the user's locale.
  bool IsNumeric() const;

  // Hands the content to the caller.
  VARIANT Detach() { return std::exchange(static_cast<VARIANT&>(*this), VARIANT()); }

 private:
  bool IsNumber() const {
    return vt == VT_I2 || vt == VT_I4 || vt == VT_R8 || vt == VT_DATE || vt == VT_BOOL;
  }

  explicit Variant(VARENUM tag) : VARIANT() { vt = tag; }

  static void Check(HRESULT result) {
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    if (result == DISP_E_OVERFLOW) throw AutomationError::Overflow();
    if (FAILED(result)) throw AutomationError::TypeMismatch();
  }

  Variant As(VARTYPE type) const {
    if (is_null()) throw AutomationError::InvalidUseOfNull();
    Variant converted;
    Check(VariantChangeType(&converted, this, VARIANT_ALPHABOOL, type));
    return converted;
  }
};
static_assert(sizeof(Variant) == sizeof(VARIANT));

inline bool Variant::IsNumeric() const {
  switch (vt) {
    case VT_EMPTY:
    case VT_BOOL:
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DECIMAL: return true;
    case VT_BSTR: {
      BYTE digits[1];
      NUMPARSE found{};
      found.cDig = sizeof digits;
      found.dwInFlags = NUMPRS_STD;
      std::u16string_view whole = text();
      return SUCCEEDED(VarParseNumFromStr(whole.data(), 0, 0, &found, digits)) &&
             found.cchUsed == static_cast<INT>(whole.size());
    }
    default: return false;
  }
}

}  // namespace moxel
