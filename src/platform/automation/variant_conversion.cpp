#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "platform/automation/bstr.h"
#include "platform/automation/dates.h"
#include "platform/automation/numbers.h"
#include "platform/automation/variants.h"

namespace moxel {
namespace {

constexpr std::u16string_view kTrue = u"True";
constexpr std::u16string_view kFalse = u"False";
constexpr BYTE kMaxScale = 28;

bool EqualsIgnoringCase(std::u16string_view text, std::u16string_view word) {
  const auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
  return std::ranges::equal(text, word, {}, lower, lower);
}

// A decimal covers its variant from the first byte on.
DECIMAL DecimalOf(const VARIANT& value) {
  DECIMAL decimal;
  std::memcpy(&decimal, &value, sizeof decimal);
  return decimal;
}

// Calls `visit` with the number that a value stands for: std::int64_t, std::uint64_t, double or
// DecimalNumber.
template <class Visit>
HRESULT VisitNumber(const VARIANT& value, Visit visit) {
  switch (value.vt) {
    case VT_EMPTY: return visit(std::int64_t{0});
    case VT_BOOL: return visit(std::int64_t{value.boolVal != 0 ? VARIANT_TRUE : VARIANT_FALSE});
    case VT_I1: return visit(std::int64_t{static_cast<signed char>(value.cVal)});
    case VT_UI1: return visit(std::int64_t{value.bVal});
    case VT_I2: return visit(std::int64_t{value.iVal});
    case VT_UI2: return visit(std::int64_t{value.uiVal});
    case VT_I4:
    case VT_INT: return visit(std::int64_t{value.lVal});
    case VT_UI4:
    case VT_UINT: return visit(std::int64_t{value.ulVal});
    case VT_I8: return visit(std::int64_t{value.llVal});
    case VT_UI8: return visit(std::uint64_t{value.ullVal});
    case VT_R4: return visit(double{value.fltVal});
    case VT_R8:
    case VT_DATE: return visit(value.dblVal);
    case VT_CY: return visit(ExactDecimal(value.cyVal));
    case VT_DECIMAL: {
      const DECIMAL decimal = DecimalOf(value);
      return decimal.scale > kMaxScale ? E_INVALIDARG : visit(ExactDecimal(decimal));
    }
    case VT_BSTR: {
      const std::u16string_view text = View(value.bstrVal);
      const ParsedNumber parsed = ParseNumber(text, UserNumericLocale(), NUMPRS_STD);
      return parsed.used == 0 || parsed.used != text.size() ? DISP_E_TYPEMISMATCH : visit(parsed.number);
    }
    default: return DISP_E_TYPEMISMATCH;
  }
}

std::optional<WideInteger> Round(std::int64_t number) { return number; }
std::optional<WideInteger> Round(std::uint64_t number) { return number; }
std::optional<WideInteger> Round(double number) { return RoundToInteger(number); }
std::optional<WideInteger> Round(const DecimalNumber& number) { return RoundToInteger(number); }

std::optional<double> Real(std::int64_t number) { return static_cast<double>(number); }
std::optional<double> Real(std::uint64_t number) { return static_cast<double>(number); }
std::optional<double> Real(double number) { return number; }
std::optional<double> Real(const DecimalNumber& number) { return ToReal(number); }

// The number in units of the currency's fourth decimal place.
std::optional<WideInteger> CurrencyUnits(std::int64_t number) { return WideInteger{number} * 10000; }
std::optional<WideInteger> CurrencyUnits(std::uint64_t number) { return WideInteger{number} * 10000; }
std::optional<WideInteger> CurrencyUnits(double number) {
  constexpr double kBeyondAnyAmount = 1e15;
  if (!(std::abs(number) < kBeyondAnyAmount)) return std::nullopt;
  return static_cast<WideInteger>(std::nearbyint(static_cast<long double>(number) * 10000));
}
std::optional<WideInteger> CurrencyUnits(DecimalNumber number) {
  number.exponent += 4;
  return RoundToInteger(number);
}

template <class Integer>
HRESULT StoreInRange(const std::optional<WideInteger>& number, Integer& target) {
  using Limits = std::numeric_limits<Integer>;
  if (!number || *number < Limits::min() || *number > Limits::max()) return DISP_E_OVERFLOW;
  target = static_cast<Integer>(*number);
  return S_OK;
}

template <class Integer>
HRESULT ToInteger(const VARIANT& source, Integer& target) {
  return VisitNumber(source, [&](const auto& number) { return StoreInRange(Round(number), target); });
}

HRESULT ToSignedByte(const VARIANT& source, CHAR& target) {
  signed char number = 0;
  const HRESULT result = ToInteger(source, number);
  target = static_cast<CHAR>(number);
  return result;
}

HRESULT ToCurrency(const VARIANT& source, CY& target) {
  return VisitNumber(source,
                     [&](const auto& number) { return StoreInRange(CurrencyUnits(number), target.int64); });
}

HRESULT ToReal(const VARIANT& source, double& target) {
  return VisitNumber(source, [&](const auto& number) {
    const std::optional<double> real = Real(number);
    target = real.value_or(0);
    return real ? S_OK : DISP_E_OVERFLOW;
  });
}

HRESULT ToSingle(const VARIANT& source, float& target) {
  double real = 0;
  if (const HRESULT result = ToReal(source, real); FAILED(result)) return result;
  // Half a unit in the last place above the largest one: from there on, nearest is no longer finite.
  constexpr double kFirstBeyond = 0x1.ffffffp127;
  if (std::abs(real) >= kFirstBeyond) return DISP_E_OVERFLOW;
  target = static_cast<float>(real);
  return S_OK;
}

HRESULT ToDate(const VARIANT& source, DATE& target) {
  const HRESULT result = ToReal(source, target);
  if (FAILED(result)) return result;
  return IsDateInRange(target) ? S_OK : DISP_E_OVERFLOW;
}

HRESULT ToBool(const VARIANT& source, VARIANT_BOOL& target) {
  const std::u16string_view text = source.vt == VT_BSTR ? View(source.bstrVal) : std::u16string_view();
  if (EqualsIgnoringCase(text, kTrue) || EqualsIgnoringCase(text, kFalse)) {
    target = EqualsIgnoringCase(text, kTrue) ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  double real = 0;
  const HRESULT result = ToReal(source, real);
  target = real != 0 ? VARIANT_TRUE : VARIANT_FALSE;
  return result;
}

HRESULT DateToText(DATE date, BSTR& target) {
  const auto text = DateText(date, UserTimeLocale());
  if (!text) return DISP_E_OVERFLOW;
  target = MakeBstr(*text);
  return target == nullptr ? E_OUTOFMEMORY : S_OK;
}

BSTR NumberText(std::int64_t number) { return IntegerText(number); }
BSTR NumberText(std::uint64_t number) { return IntegerText(number); }
BSTR NumberText(double number) { return RealText(number, 15, UserNumericLocale().decimal); }
BSTR NumberText(const DecimalNumber& number) { return ExactText(number, UserNumericLocale().decimal); }

HRESULT ToText(const VARIANT& source, BSTR& target) {
  if (source.vt == VT_DATE) return DateToText(source.date, target);
  HRESULT result = S_OK;
  if (source.vt == VT_EMPTY) {
    target = MakeBstr(u"");
  } else if (source.vt == VT_BOOL) {
    target = MakeBstr(source.boolVal != 0 ? kTrue : kFalse);
  } else if (source.vt == VT_R4) {
    target = RealText(double{source.fltVal}, 7, UserNumericLocale().decimal);
  } else {
    result = VisitNumber(source, [&](const auto& number) {
      target = NumberText(number);
      return S_OK;
    });
  }
  return SUCCEEDED(result) && target == nullptr ? E_OUTOFMEMORY : result;
}

HRESULT ToObject(const VARIANT& source, REFIID iid, void** target) {
  if (source.vt != VT_DISPATCH && source.vt != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
  if (source.punkVal == nullptr) return S_OK;
  return FAILED(source.punkVal->QueryInterface(iid, target)) ? DISP_E_TYPEMISMATCH : S_OK;
}

// Fills the value of `target`, whose tag says what is wanted; the source has another tag.
HRESULT Convert(const VARIANT& source, VARIANT& target) {
  switch (target.vt) {
    case VT_I1: return ToSignedByte(source, target.cVal);
    case VT_UI1: return ToInteger(source, target.bVal);
    case VT_I2: return ToInteger(source, target.iVal);
    case VT_UI2: return ToInteger(source, target.uiVal);
    case VT_I4:
    case VT_INT: return ToInteger(source, target.lVal);
    case VT_UI4:
    case VT_UINT: return ToInteger(source, target.ulVal);
    case VT_I8: return ToInteger(source, target.llVal);
    case VT_UI8: return ToInteger(source, target.ullVal);
    case VT_R4: return ToSingle(source, target.fltVal);
    case VT_R8: return ToReal(source, target.dblVal);
    case VT_CY: return ToCurrency(source, target.cyVal);
    case VT_DATE: return ToDate(source, target.date);
    case VT_BOOL: return ToBool(source, target.boolVal);
    case VT_BSTR: return ToText(source, target.bstrVal);
    case VT_DISPATCH: return ToObject(source, IID_IDispatch, reinterpret_cast<void**>(&target.pdispVal));
    case VT_UNKNOWN: return ToObject(source, IID_IUnknown, reinterpret_cast<void**>(&target.punkVal));
    case VT_EMPTY:
    case VT_NULL:
    case VT_ERROR: return DISP_E_TYPEMISMATCH;
    default: return DISP_E_BADVARTYPE;
  }
}

}  // namespace
}  // namespace moxel

HRESULT VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT, VARTYPE vt) try {
  using namespace moxel;
  if (pvargDest == nullptr || pvarSrc == nullptr) return E_INVALIDARG;
  VARIANT source{};
  if (const HRESULT result = Resolve(*pvarSrc, source); FAILED(result)) return result;
  if (source.vt == vt) {
    if (const HRESULT result = TakeOwnership(source); FAILED(result)) return result;
    return Replace(*pvargDest, source);
  }
  VARIANT converted{};
  converted.vt = vt;
  if (const HRESULT result = Convert(source, converted); FAILED(result)) return result;
  return Replace(*pvargDest, converted);
} catch (...) {
  return E_OUTOFMEMORY;
}
