#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>

#include "tests/platform/automation/variant_fixture.h"
#include "tests/platform/locale/scoped_locale.h"

namespace {

using namespace moxel::test;
using namespace std::string_view_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr const char* kLocales[] = {"C", "en_US.UTF-8", "fr_FR.UTF-8", "de_DE.UTF-8"};

char16_t DecimalOf(std::string_view locale) {
  return locale.starts_with("fr") || locale.starts_with("de") ? u',' : u'.';
}

// Cases are written with a point; the locale's decimal separator takes its place.
std::u16string Localized(std::u16string_view text, char16_t decimal) {
  std::u16string result(text);
  for (char16_t& unit : result) unit = unit == u'.' ? decimal : unit;
  return result;
}

// A failed conversion leaves its target as it was.
template <class Value>
void ExpectConversion(const VARIANT& source, VARTYPE tag, HRESULT result, Value value,
                      const std::string& name) {
  ScopedVariant target = Text(u"kept");
  EXPECT_EQ(VariantChangeType(&target, &source, 0, tag), result) << name << " to " << tag;
  if (FAILED(result)) {
    EXPECT_EQ(TextOf(target), u"kept") << name << " to " << tag;
  } else {
    EXPECT_EQ(target.vt, tag) << name;
    EXPECT_EQ(Get<Value>(target), value) << name << " to " << tag;
  }
}

struct Outcome {
  HRESULT result = S_OK;
  double value = 0;

  Outcome(double number) : value(number) {}
  static Outcome Failure(HRESULT code) {
    Outcome outcome(0);
    outcome.result = code;
    return outcome;
  }
};

const Outcome kOverflow = Outcome::Failure(DISP_E_OVERFLOW);
const Outcome kMismatch = Outcome::Failure(DISP_E_TYPEMISMATCH);

struct TextCase {
  std::u16string_view text;
  Outcome i2, i4, r8;

  TextCase(std::u16string_view from, Outcome all) : text(from), i2(all), i4(all), r8(all) {}
  TextCase(std::u16string_view from, Outcome as_i2, Outcome as_i4, Outcome as_r8)
      : text(from), i2(as_i2), i4(as_i4), r8(as_r8) {}
};

void ExpectText(const TextCase& c, std::u16string_view text, const char* locale) {
  const ScopedVariant source = Text(text);
  const std::string name = Show(text) + " in " + locale;
  ExpectConversion(source, VT_I2, c.i2.result, static_cast<SHORT>(c.i2.value), name);
  ExpectConversion(source, VT_I4, c.i4.result, static_cast<LONG>(c.i4.value), name);
  ExpectConversion(source, VT_R8, c.r8.result, c.r8.value, name);
}

TEST(TextToNumber, EveryLocale) {
  const TextCase cases[] = {
      {u"12", 12},
      {u" 12 ", 12},
      {u"\t12\n", 12},
      {u"\u00A012\u202F", 12},
      {u"00012", 12},
      {u"+1", 1},
      {u"+ 1", 1},
      {u"- 1", -1},
      {u"1-", -1},
      {u"1 - ", -1},
      {u"1+", 1},
      {u"0", 0},
      {u"-0", 0},
      {u"12.5", 12, 12, 12.5},
      {u"13.5", 14, 14, 13.5},
      {u".5", 0, 0, 0.5},
      {u"5.", 5},
      {u"-.5e1", -5},
      {u"2.5", 2, 2, 2.5},
      {u"3.5", 4, 4, 3.5},
      {u"-2.5", -2, -2, -2.5},
      {u"2.50000000000000000000000000000000001", 3, 3, 2.5},
      {u"0.5000", 0, 0, 0.5},
      {u"0.05", 0, 0, 0.05},
      {u"1e3", 1000},
      {u"1E3", 1000},
      {u"1E+3", 1000},
      {u"1.5e-1", 0, 0, 0.15},
      {u"1e3-", -1000},
      {u"32767", 32767},
      {u"32767.49", 32767, 32767, 32767.49},
      {u"32767.5", kOverflow, 32768, 32767.5},
      {u"32768", kOverflow, 32768, 32768},
      {u"-32768", -32768},
      {u"-32768.5", -32768, -32768, -32768.5},
      {u"-32768.51", kOverflow, -32769, -32768.51},
      {u"2147483647.49", kOverflow, 2147483647, 2147483647.49},
      {u"2147483647.5", kOverflow, kOverflow, 2147483647.5},
      {u"2147483648", kOverflow, kOverflow, 2147483648.0},
      {u"-2147483648.5", kOverflow, -2147483648.0, -2147483648.5},
      {u"99999999999999999999999999", kOverflow, kOverflow, 1e26},
      {u"1e308", kOverflow, kOverflow, 1e308},
      {u"1.7976931348623158e308", kOverflow, kOverflow, DBL_MAX},
      {u"1.7976931348623159e308", kOverflow},
      {u"1e400", kOverflow},
      {u"-1e400", kOverflow},
      {u"1e99999999999", kOverflow},
      {u"1e99999999999999999999999999999999999", kOverflow},
      {u"1e-99999999999999999999999999999999999", 0},
      {u"0e99999999", 0},
      {u"4.9406564584124654e-324", 0, 0, 4.9406564584124654e-324},
      {u"1e-400", 0},
      {u"", kMismatch},
      {u" ", kMismatch},
      {u"abc", kMismatch},
      {u"1e", kMismatch},
      {u"1e+", kMismatch},
      {u"1e 3", kMismatch},
      {u"1 e3", kMismatch},
      {u"e5", kMismatch},
      {u".", kMismatch},
      {u"-", kMismatch},
      {u".e1", kMismatch},
      {u"1.2.3", kMismatch},
      {u"--1", kMismatch},
      {u"+-1", kMismatch},
      {u"-1-", kMismatch},
      {u"1--", kMismatch},
      {u"0x10", kMismatch},
      {u"&H10", kMismatch},
      {u"(1)", kMismatch},
      {u"1d3", kMismatch},
      {u"True", kMismatch},
      {u"inf", kMismatch},
      {u"nan", kMismatch},
      {u"1\0"sv, kMismatch},
      {u"1\0002"sv, kMismatch},
      {u"\u0661", kMismatch},
  };
  for (const char* locale : kLocales) {
    const ScopedLocale user(locale);
    for (const TextCase& c : cases) ExpectText(c, Localized(c.text, DecimalOf(locale)), locale);
  }
}

TEST(TextToNumber, SeparatorsOfTheLocale) {
  const struct {
    const char* locale;
    TextCase c;
  } cases[] = {
      {"C", {u"1,000", kMismatch}},
      {"C", {u"1 000", kMismatch}},
      {"C", {u"12,5", kMismatch}},
      {"C.UTF-8", {u"1,000", kMismatch}},
      {"POSIX", {u"12.5", 12, 12, 12.5}},
      {"nowhere_XX.UTF-8", {u"12.5", 12, 12, 12.5}},
      {"nowhere_XX.UTF-8", {u"1,000", kMismatch}},
      {"en_US.UTF-8", {u"1,000", 1000}},
      {"en_US.UTF-8", {u"1,234,567", kOverflow, 1234567, 1234567}},
      {"en_US.UTF-8", {u"12,5", 125}},
      {"en_US.UTF-8", {u"1,000.5", 1000, 1000, 1000.5}},
      {"en_US.UTF-8", {u",000", kMismatch}},
      {"en_US.UTF-8", {u"1,", kMismatch}},
      {"en_US.UTF-8", {u"1,,000", kMismatch}},
      {"en_US.UTF-8", {u"1, 000", kMismatch}},
      {"en_US.UTF-8", {u"1,.5", kMismatch}},
      {"en_US.UTF-8", {u"0.1,000", kMismatch}},
      {"en_US.UTF-8", {u"1e1,0", kMismatch}},
      {"en_US.UTF-8", {u"1 000", kMismatch}},
      {"fr_FR.UTF-8", {u"1 000", 1000}},
      {"fr_FR.UTF-8", {u"1\u00A0000", 1000}},
      {"fr_FR.UTF-8", {u"1\u202F000,5 ", 1000, 1000, 1000.5}},
      {"fr_FR.UTF-8", {u"1  000", kMismatch}},
      {"fr_FR.UTF-8", {u"1\t000", kMismatch}},
      {"fr_FR.UTF-8", {u"12.5", kMismatch}},
      {"fr_FR.UTF-8", {u"1,000", 1}},
      {"de_DE.UTF-8", {u"1.000", 1000}},
      {"de_DE.UTF-8", {u"1.000,5", 1000, 1000, 1000.5}},
      {"de_DE.UTF-8", {u"1 000", kMismatch}},
  };
  for (const auto& [locale, c] : cases) {
    const ScopedLocale user(locale);
    ExpectText(c, c.text, locale);
  }
}

TEST(TextToNumber, LocaleFollowsTheEnvironmentAtOnce) {
  const ScopedVariant text = Text(u"1,5");
  const ScopedEnvironment all("LC_ALL", nullptr);
  const ScopedEnvironment language("LANG", "fr_FR.UTF-8");
  const ScopedEnvironment category("LC_NUMERIC", "");
  ExpectConversion(text, VT_R8, S_OK, 1.5, "LANG");
  const ScopedEnvironment english("LC_NUMERIC", "en_US.UTF-8");
  ExpectConversion(text, VT_R8, S_OK, 15.0, "LC_NUMERIC");
  const ScopedEnvironment portable("LC_ALL", "C");
  ExpectConversion(text, VT_R8, DISP_E_TYPEMISMATCH, 0.0, "LC_ALL");
}

TEST(TextToNumber, WideIntegersAndCurrencyAreExact) {
  const ScopedLocale user("C");
  const struct {
    const char16_t* text;
    VARTYPE tag;
    HRESULT result;
    ULONGLONG bits;
  } cases[] = {
      {u"9223372036854775807", VT_I8, S_OK, 9223372036854775807u},
      {u"-9223372036854775808", VT_I8, S_OK, 0x8000000000000000u},
      {u"9223372036854775807.5", VT_I8, DISP_E_OVERFLOW, 0},
      {u"9007199254740993", VT_I8, S_OK, 9007199254740993u},
      {u"18446744073709551615", VT_UI8, S_OK, 18446744073709551615u},
      {u"18446744073709551614.5", VT_UI8, S_OK, 18446744073709551614u},
      {u"18446744073709551616", VT_UI8, DISP_E_OVERFLOW, 0},
      {u"99999999999999999999", VT_UI8, DISP_E_OVERFLOW, 0},
      {u"100000000000000000000", VT_UI8, DISP_E_OVERFLOW, 0},
      {u"-0.5", VT_UI8, S_OK, 0},
      {u"-1", VT_UI8, DISP_E_OVERFLOW, 0},
      {u"922337203685477.5807", VT_CY, S_OK, 9223372036854775807u},
      {u"922337203685477.5808", VT_CY, DISP_E_OVERFLOW, 0},
      {u"0.00025", VT_CY, S_OK, 2},
      {u"0.00035", VT_CY, S_OK, 4},
  };
  for (const auto& c : cases) ExpectConversion(Text(c.text), c.tag, c.result, c.bits, Show(c.text));
}

TEST(TextToNumber, AnyLengthIsRoundedCorrectly) {
  const ScopedLocale user("C");
  // Halfway between 1 and its successor; whatever follows, however far away, decides.
  const std::u16string halfway = u"1.00000000000000011102230246251565404236316680908203125";
  ExpectConversion(Text(halfway), VT_R8, S_OK, 1.0, "halfway");
  ExpectConversion(Text(halfway + std::u16string(5000, u'0') + u"1"), VT_R8, S_OK, 1.0 + DBL_EPSILON,
                   "above halfway");

  const std::u16string zeros(100000, u'0');
  ExpectConversion(Text(zeros + u"7"), VT_I4, S_OK, LONG{7}, "leading zeros");
  ExpectConversion(Text(u"7." + zeros), VT_I4, S_OK, LONG{7}, "trailing zeros");
  ExpectConversion(Text(u"0." + zeros + u"7e100001"), VT_I4, S_OK, LONG{7}, "zeros and exponent");
  ExpectConversion(Text(u"7" + zeros + u"e-100000"), VT_I4, S_OK, LONG{7}, "digits and exponent");
  ExpectConversion(Text(std::u16string(100000, u'9') + u"e-99999"), VT_R8, S_OK, 10.0, "nines");
  ExpectConversion(Text(u"7" + zeros), VT_R8, DISP_E_OVERFLOW, 0.0, "too large");
}

TEST(NumberToText, DoublesInEveryLocale) {
  const struct {
    double number;
    const char16_t* text;
  } cases[] = {
      {0.1, u"0.1"},
      {2.5, u"2.5"},
      {-2.5, u"-2.5"},
      {100, u"100"},
      {0.0, u"0"},
      {-0.0, u"0"},
      {1e14, u"100000000000000"},
      {123456789012345, u"123456789012345"},
      {1e15, u"1E+15"},
      {1e16, u"1E+16"},
      {1e300, u"1E+300"},
      {1234567890123456, u"1.23456789012346E+15"},
      {999999999999999.9, u"1E+15"},
      {0.0001, u"0.0001"},
      {0.00001, u"1E-05"},
      {0.00001234, u"1.234E-05"},
      {1.0 / 3, u"0.333333333333333"},
      {2.0 / 3, u"0.666666666666667"},
      {-DBL_MAX, u"-1.79769313486232E+308"},
      {5e-324, u"4.94065645841247E-324"},
      {kInfinity, u"1.#INF"},
      {-kInfinity, u"-1.#INF"},
  };
  for (const char* locale : kLocales) {
    const ScopedLocale user(locale);
    for (const auto& c : cases) {
      ScopedVariant value = Make(VT_R8, c.number);
      ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
      EXPECT_EQ(TextOf(value), Localized(c.text, DecimalOf(locale))) << c.number << " in " << locale;
    }
  }
}

TEST(NumberToText, OtherTypes) {
  const ScopedLocale user("de_DE.UTF-8");
  const struct {
    ScopedVariant value;
    const char16_t* text;
  } cases[] = {
      {ScopedVariant(VT_EMPTY), u""},
      {Make(VT_BOOL, VARIANT_TRUE), u"True"},
      {Make(VT_BOOL, VARIANT_FALSE), u"False"},
      {Make(VT_I1, static_cast<signed char>(-128)), u"-128"},
      {Make(VT_UI1, BYTE{255}), u"255"},
      {Make(VT_I2, SHORT{-32768}), u"-32768"},
      {Make(VT_UI2, USHORT{65535}), u"65535"},
      {Make(VT_I4, std::numeric_limits<LONG>::min()), u"-2147483648"},
      {Make(VT_UINT, 4294967295u), u"4294967295"},
      {Make(VT_I8, std::numeric_limits<LONGLONG>::min()), u"-9223372036854775808"},
      {Make(VT_UI8, std::numeric_limits<ULONGLONG>::max()), u"18446744073709551615"},
      {Make(VT_R4, 0.1f), u"0,1"},
      {Make(VT_R4, 16777216.0f), u"1,677722E+07"},
      {Make(VT_CY, LONGLONG{15000}), u"1,5"},
      {Make(VT_CY, LONGLONG{-1}), u"-0,0001"},
      {Make(VT_CY, LONGLONG{0}), u"0"},
      {Make(VT_CY, std::numeric_limits<LONGLONG>::min()), u"-922337203685477,5808"},
      {Decimal(0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF, 0), u"79228162514264337593543950335"},
      {Decimal(0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF, 28, true), u"-7,9228162514264337593543950335"},
      {Decimal(0, 1, 28), u"0,0000000000000000000000000001"},
      {Decimal(0, 1500, 2), u"15"},
      {Decimal(0, 0, 5, true), u"0"},
  };
  for (const auto& c : cases) {
    ScopedVariant text;
    ASSERT_EQ(VariantChangeType(&text, &c.value, 0, VT_BSTR), S_OK) << Show(c.text);
    EXPECT_EQ(TextOf(text), c.text);
  }
}

TEST(DateToText, PicturesOfTheLocale) {
  const struct {
    double date;
    const char16_t* text;
  } cases[] = {
      {36526, u"01.01.2000"},
      {36526.75, u"01.01.2000 18:00:00"},
      {0.5, u"12:00:00"},
      {-0.25, u"06:00:00"},
      {-1.25, u"29.12.1899 06:00:00"},
      {2, u"01.01.1900"},
      {60, u"28.02.1900"},
      {61, u"01.03.1900"},
      {36526.9999999, u"02.01.2000"},
      {-657434, u"01.01.0100"},
      {2958465.5, u"31.12.9999 12:00:00"},
  };
  const ScopedLocale user("de_DE.UTF-8");
  for (const auto& c : cases) {
    ScopedVariant date = Make(VT_DATE, c.date);
    ASSERT_EQ(VariantChangeType(&date, &date, 0, VT_BSTR), S_OK) << c.date;
    EXPECT_EQ(TextOf(date), c.text);
  }
  for (const double beyond : {-657435.0, 2958466.0, 2958465.9999999, kInfinity, std::nan("")}) {
    ScopedVariant date = Make(VT_DATE, beyond);
    EXPECT_EQ(VariantChangeType(&date, &date, 0, VT_BSTR), DISP_E_OVERFLOW) << beyond;
    EXPECT_EQ(date.vt, VT_DATE);
  }
}

TEST(Conversion, NumbersToNumbers) {
  const struct {
    ScopedVariant source;
    VARTYPE tag;
    Outcome outcome;
  } cases[] = {
      {ScopedVariant(VT_EMPTY), VT_I4, 0},
      {ScopedVariant(VT_EMPTY), VT_R8, 0},
      {Make(VT_BOOL, VARIANT_TRUE), VT_I2, -1},
      {Make(VT_BOOL, VARIANT_TRUE), VT_R8, -1},
      {Make(VT_BOOL, VARIANT_TRUE), VT_UI1, kOverflow},
      {Make(VT_R8, 2.5), VT_I2, 2},
      {Make(VT_R8, 3.5), VT_I4, 4},
      {Make(VT_R8, -2.5), VT_I4, -2},
      {Make(VT_R8, 32767.49), VT_I2, 32767},
      {Make(VT_R8, 32767.5), VT_I2, kOverflow},
      {Make(VT_R8, -32768.5), VT_I2, -32768},
      {Make(VT_R8, 2147483647.5), VT_I4, kOverflow},
      {Make(VT_R8, kInfinity), VT_I4, kOverflow},
      {Make(VT_R8, std::nan("")), VT_I4, kOverflow},
      {Make(VT_R8, 1e300), VT_I8, kOverflow},
      {Make(VT_R8, 0x1p63), VT_I8, kOverflow},
      {Make(VT_R8, 1e39), VT_R4, kOverflow},
      {Make(VT_R8, 1e300), VT_CY, kOverflow},
      {Make(VT_R8, 1e15), VT_CY, kOverflow},
      {Make(VT_R4, 1.5f), VT_R8, 1.5},
      {Make(VT_I1, static_cast<signed char>(-1)), VT_I4, -1},
      {Make(VT_I1, static_cast<signed char>(-1)), VT_UI4, kOverflow},
      {Make(VT_UI1, BYTE{255}), VT_I1, kOverflow},
      {Make(VT_UI8, std::numeric_limits<ULONGLONG>::max()), VT_I8, kOverflow},
      {Make(VT_CY, LONGLONG{25000}), VT_I4, 2},
      {Make(VT_CY, LONGLONG{25001}), VT_I4, 3},
      {Make(VT_CY, LONGLONG{25000}), VT_R8, 2.5},
      {Make(VT_DATE, 36526.5), VT_R8, 36526.5},
      {Make(VT_DATE, 36527.5), VT_I4, 36528},
      {Make(VT_R8, 3e6), VT_DATE, kOverflow},
      {Make(VT_R8, std::nan("")), VT_DATE, kOverflow},
      {Decimal(0, 35, 1), VT_I4, 4},
      {Decimal(0, 35, 1, true), VT_R8, -3.5},
      {Decimal(0xFFFFFFFF, 0, 0), VT_I8, kOverflow},
      {Decimal(0, 1, 29), VT_I4, Outcome::Failure(E_INVALIDARG)},
      {ScopedVariant(VT_NULL), VT_I4, kMismatch},
      {ScopedVariant(VT_NULL), VT_BSTR, kMismatch},
      {ScopedVariant(VT_NULL), VT_BOOL, kMismatch},
      {Make(VT_ERROR, DISP_E_PARAMNOTFOUND), VT_I4, kMismatch},
      {Make(VT_ERROR, DISP_E_PARAMNOTFOUND), VT_BSTR, kMismatch},
      {Make(VT_I4, LONG{1}), VT_ERROR, kMismatch},
      {Make(VT_I4, LONG{1}), VT_EMPTY, kMismatch},
      {Make(VT_I4, LONG{1}), VT_NULL, kMismatch},
      {Make(VT_I4, LONG{1}), VT_DISPATCH, kMismatch},
      {Make(VT_I4, LONG{1}), VT_DECIMAL, Outcome::Failure(DISP_E_BADVARTYPE)},
      {Text(u"36526"), VT_DATE, 36526},
      {Text(u"01/01/2000"), VT_DATE, kMismatch},
      {Text(u"3000000"), VT_DATE, kOverflow},
  };
  const ScopedLocale user("C");
  for (const auto& c : cases) {
    ScopedVariant target = Text(u"kept");
    const std::string name = std::to_string(c.source.vt) + " to " + std::to_string(c.tag);
    ASSERT_EQ(VariantChangeType(&target, &c.source, 0, c.tag), c.outcome.result) << name;
    if (FAILED(c.outcome.result)) {
      EXPECT_EQ(TextOf(target), u"kept") << name;
      continue;
    }
    EXPECT_EQ(target.vt, c.tag);
    ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_R8), S_OK);
    EXPECT_EQ(target.dblVal, c.outcome.value) << name;
  }
}

TEST(Conversion, SinglesRoundAtTheirLimit) {
  ExpectConversion(Make(VT_R8, double{FLT_MAX}), VT_R4, S_OK, FLT_MAX, "largest");
  ExpectConversion(Make(VT_R8, 0x1.fffffep127 + 0x1p102), VT_R4, S_OK, FLT_MAX, "rounds down to the largest");
  ExpectConversion(Make(VT_R8, 0x1.ffffffp127), VT_R4, DISP_E_OVERFLOW, 0.0f, "halfway beyond");
}

TEST(Conversion, TextsToBooleans) {
  const struct {
    std::u16string_view text;
    HRESULT result;
    VARIANT_BOOL value;
  } cases[] = {
      {u"True", S_OK, VARIANT_TRUE},
      {u"tRUE", S_OK, VARIANT_TRUE},
      {u"False", S_OK, VARIANT_FALSE},
      {u"FALSE", S_OK, VARIANT_FALSE},
      {u"0", S_OK, VARIANT_FALSE},
      {u"-0e5", S_OK, VARIANT_FALSE},
      {u"2", S_OK, VARIANT_TRUE},
      {u"1e-5", S_OK, VARIANT_TRUE},
      {u"Vrai", DISP_E_TYPEMISMATCH, 0},
      {u"", DISP_E_TYPEMISMATCH, 0},
      {u"True\0"sv, DISP_E_TYPEMISMATCH, 0},
      {u"1e400", DISP_E_OVERFLOW, 0},
  };
  for (const char* locale : kLocales) {
    const ScopedLocale user(locale);
    for (const auto& c : cases) ExpectConversion(Text(c.text), VT_BOOL, c.result, c.value, Show(c.text));
  }
  ExpectConversion(Make(VT_BSTR, BSTR{}), VT_BOOL, DISP_E_TYPEMISMATCH, VARIANT_FALSE, "null text");
  ExpectConversion(ScopedVariant(), VT_BOOL, S_OK, VARIANT_FALSE, "empty");
}

TEST(Conversion, ObjectsChangeByTheirInterfacesOnly) {
  CountedObject object;
  CountedObject plain(false);
  const auto holding = [](CountedObject& held) {
    held.AddRef();
    return Make(VT_UNKNOWN, static_cast<IDispatch*>(&held));
  };
  {
    const ScopedVariant held = holding(object);
    const ScopedVariant held_plain = holding(plain);
    ScopedVariant target;
    ASSERT_EQ(VariantChangeType(&target, &held, 0, VT_DISPATCH), S_OK);
    EXPECT_EQ(target.pdispVal, &object);
    EXPECT_EQ(object.references, 3u);
    ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_UNKNOWN), S_OK);
    EXPECT_EQ(object.references, 3u);
    EXPECT_EQ(VariantChangeType(&target, &target, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantChangeType(&target, &target, 0, VT_BSTR), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantChangeType(&target, &held_plain, 0, VT_DISPATCH), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(target.punkVal, &object);
  }
  EXPECT_EQ(object.references, 1u);
  EXPECT_EQ(plain.references, 1u);
  ExpectConversion(Make(VT_UNKNOWN, static_cast<IUnknown*>(nullptr)), VT_DISPATCH, S_OK,
                   static_cast<IDispatch*>(nullptr), "null object");
}

TEST(Conversion, FollowsReferencesAndCopiesTheSameType) {
  LONG number = 42;
  const ScopedVariant reference = Make(VT_BYREF | VT_I4, &number);
  ScopedVariant target;
  ASSERT_EQ(VariantChangeType(&target, &reference, 0, VT_BSTR), S_OK);
  EXPECT_EQ(TextOf(target), u"42");
  ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_BSTR), S_OK);
  EXPECT_EQ(TextOf(target), u"42");
  for (const VARTYPE tag : {VT_EMPTY, VT_NULL, VT_ERROR}) {
    const ScopedVariant same = Make(tag, LONG{7});
    EXPECT_EQ(VariantChangeType(&target, &same, 0, tag), S_OK) << tag;
    EXPECT_EQ(target.vt, tag);
  }
}

}  // namespace
