// Texts as numbers and numbers as text, in several locales.
//
// An input is the kind of check and the locale, then a text ("t0 12.5", or "t0*" with the forms to accept),
// or the bytes and the tag of a value.
#include <cmath>
#include <limits>
#include <optional>

#include "fuzz/input.h"
#include "fuzz/user_locale.h"
#include "moxel/variant.h"

namespace moxel::fuzz {
namespace {

constexpr VARTYPE kTags[] = {VT_R8,   VT_R4,      VT_I1,   VT_UI1,   VT_I2,   VT_UI2,   VT_I4,
                             VT_UI4,  VT_INT,     VT_UINT, VT_I8,    VT_UI8,  VT_CY,    VT_DATE,
                             VT_BOOL, VT_DECIMAL, VT_BSTR, VT_EMPTY, VT_NULL, VT_ERROR, VT_DISPATCH};
constexpr std::size_t kPlainTags = 16;  // the first ones, whose values are nothing but bytes

struct Converted {
  HRESULT result;
  Variant value;
};

Converted To(VARTYPE tag, const Variant& source) {
  Converted converted{};
  converted.result = VariantChangeType(&converted.value, &source, VARIANT_ALPHABOOL, tag);
  Require(converted.value.vt == (converted.result == S_OK ? tag : VARTYPE{VT_EMPTY}),
          "a failed conversion leaves nothing");
  return converted;
}

// Also without anything to compare with, a conversion answers with one of its results.
void ConvertToAll(const Variant& source) {
  for (const VARTYPE tag : kTags) {
    const HRESULT result = To(tag, source).result;
    const bool known = result == S_OK || result == DISP_E_OVERFLOW || result == DISP_E_TYPEMISMATCH;
    const bool refused = (tag == VT_DECIMAL && result == DISP_E_BADVARTYPE) || result == E_INVALIDARG;
    Require(known || (refused && (tag == VT_DECIMAL || source.vt == VT_DECIMAL)),
            "a conversion has three results");
  }
}

struct Parsed {
  HRESULT result;
  NUMPARSE found;
  std::string digits;
};

Parsed Parse(const std::u16string& text, ULONG flags, std::size_t room) {
  constexpr char kUntouched = '\x7F';
  Parsed parsed{S_OK, {}, std::string(room + 1, kUntouched)};
  parsed.found.cDig = static_cast<INT>(room);
  parsed.found.dwInFlags = flags;
  auto* digits = reinterpret_cast<BYTE*>(parsed.digits.data());
  parsed.result = VarParseNumFromStr(text.c_str(), 0, 0, &parsed.found, digits);
  Require(parsed.digits[room] == kUntouched, "nothing is written behind the room for digits");
  Require(parsed.found.cDig >= 0 && parsed.found.cDig <= static_cast<INT>(room), "the digits fit their room");
  Require(parsed.found.cchUsed >= 0 && parsed.found.cchUsed <= std::ssize(text),
          "no more is used than there is");
  parsed.digits.resize(static_cast<std::size_t>(parsed.found.cDig));
  for (char& digit : parsed.digits) digit = static_cast<char>(digit + '0');
  Require(parsed.digits.find_first_not_of("0123456789") == parsed.digits.npos, "digits are digits");
  return parsed;
}

// What the C library makes of a whole text; nothing when it does not take all of it.
std::optional<double> LibraryNumber(const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  return end == text.c_str() || *end != '\0' ? std::nullopt : std::optional(number);
}

void CheckAgainstLibrary(std::string_view text, const Converted& real) {
  if (text.find_first_not_of("0123456789.+-eE") != text.npos) return;
  if (text.ends_with('+') || text.ends_with('-')) return;  // a sign behind the number is ours alone
  const std::optional<double> expected = LibraryNumber(std::string(text));
  Require(expected.has_value() == (real.result != DISP_E_TYPEMISMATCH), "the library takes the same texts");
  if (!expected) return;
  Require(std::isinf(*expected) == (real.result == DISP_E_OVERFLOW),
          "the library overflows for the same texts");
  if (real.result == S_OK) RequireEqual(real.value.dblVal, *expected, "number of a text");
}

// The parser's digits and power are the number, and what it takes of a longer text is a number by itself.
void CheckParser(const std::u16string& text, const Converted& real) {
  const Parsed parsed = Parse(text, NUMPRS_STD, 40);
  const bool whole = parsed.result == S_OK && parsed.found.cchUsed == std::ssize(text);
  RequireEqual(whole && text.find(u'\0') == text.npos, real.result != DISP_E_TYPEMISMATCH,
               "parsed as a whole");
  if (parsed.result != S_OK) return;
  const Variant used(std::u16string_view(text).substr(0, static_cast<std::size_t>(parsed.found.cchUsed)));
  Require(used.IsNumeric(), "what is used of a text is a number");
  if (!whole || real.result != S_OK || (parsed.found.dwOutFlags & NUMPRS_INEXACT) != 0) return;
  const auto magnitude = LibraryNumber(parsed.digits + "e" + std::to_string(parsed.found.nPwr10));
  RequireEqual(magnitude.value_or(-1), std::abs(real.value.dblVal), "number of the digits");
}

template <class Integer>
void CheckRounding(VARTYPE tag, const Variant& text, const Converted& real, Integer VARIANT::*member) {
  const Converted rounded = To(tag, text);
  if (real.result != S_OK) return RequireEqual(rounded.result, real.result, "result of rounding what fails");
  using Limits = std::numeric_limits<Integer>;
  const double nearest = std::nearbyint(real.value.dblVal);
  const bool in_range = nearest >= Limits::min() && nearest <= Limits::max();
  RequireEqual(rounded.result, in_range ? S_OK : DISP_E_OVERFLOW, "result of rounding");
  if (in_range) RequireEqual(static_cast<double>(rounded.value.*member), nearest, "rounded number");
}

void CheckTruth(const Variant& text, const Converted& real) {
  std::string word;
  for (const char16_t unit : text.text()) word += static_cast<char>(unit < 0x80 ? std::tolower(unit) : '?');
  const Converted truth = To(VT_BOOL, text);
  if (word == "true" || word == "false") {
    RequireEqual(truth.value.boolVal, word == "true" ? VARIANT_TRUE : VARIANT_FALSE, "truth of a word");
  } else {
    RequireEqual(truth.result, real.result, "result of a truth");
    const bool is_true = truth.value.boolVal != VARIANT_FALSE;
    if (real.result == S_OK) RequireEqual(is_true, real.value.dblVal != 0, "truth of a number");
  }
}

void CheckText(std::string_view bytes, UserLocale locale) {
  const std::u16string wide = WideText(bytes);
  const Variant text(wide);
  const Converted real = To(VT_R8, text);
  RequireEqual(text.IsNumeric(), real.result == S_OK || real.result == DISP_E_OVERFLOW, "numeric");
  CheckParser(wide, real);
  CheckTruth(text, real);
  if (locale.point) CheckAgainstLibrary(bytes, real);
  // With more digits, the number may round where the double nearest to it does not.
  const auto digits = std::count_if(bytes.begin(), bytes.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (digits <= 15 || real.result != S_OK) {
    CheckRounding(VT_I2, text, real, &VARIANT::iVal);
    CheckRounding(VT_I4, text, real, &VARIANT::lVal);
  }
  const Converted date = To(VT_DATE, text);
  const bool is_day = real.result == S_OK && real.value.dblVal > -657435.0 && real.value.dblVal < 2958466.0;
  if (real.result == S_OK) RequireEqual(date.result, is_day ? S_OK : DISP_E_OVERFLOW, "date of a number");
  ConvertToAll(text);
}

void CheckRoundTrip(double real) {
  const Converted text = To(VT_BSTR, real);
  Require(text.result == S_OK, "every number has a text");
  constexpr double kSmallest = 1e-300, kLargest = 1.797693134862315e308;  // between which 15 digits identify
  const Converted back = To(VT_R8, text.value);
  if (real != 0 && !(std::abs(real) > kSmallest && std::abs(real) < kLargest)) return;
  Require(back.result == S_OK, "the text of a number is a number");
  Require(std::abs(back.value.dblVal - real) <= std::abs(real) * 5.1e-15, "a text keeps 15 digits");
  Require(To(VT_BSTR, back.value).value.text() == text.value.text(), "15 digits survive the way back");
  if (std::abs(real) > 2e9) return;
  const auto integer = static_cast<std::int32_t>(real);
  const Converted digits = To(VT_BSTR, integer);
  RequireEqual(To(VT_I4, digits.value).value.lVal, integer, "integer from its text");
}

Variant TakeValue(Input& input) {
  Variant value;
  if (input.Rarely(4))
    static_cast<VARIANT&>(value) = input.Raw<VARIANT>();  // a decimal takes all its bytes
  else
    value.llVal = input.Raw<LONGLONG>();
  value.vt = kTags[input.Choose(kPlainTags)];
  return value;
}

}  // namespace
}  // namespace moxel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace moxel::fuzz;
  Input input(data, size);
  const char kind = input.Step("tv");
  const UserLocale locale = ChooseLocale(input);
  if (kind == 't') {
    const auto flags = input.Byte() == '*' ? input.Raw<std::uint16_t>() : NUMPRS_STD;
    const std::string_view text = input.TakeRest();
    Parse(WideText(text), flags, text.size() % 5);
    CheckText(text, locale);
  } else {
    const moxel::Variant value = TakeValue(input);
    ConvertToAll(value);
    CheckRoundTrip(value.dblVal);
  }
  return 0;
}
