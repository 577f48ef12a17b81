#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string>
#include <utility>

#include "tests/platform/automation/variant_fixture.h"
#include "tests/platform/locale/scoped_locale.h"

namespace {

using namespace moxel::test;
using namespace std::string_view_literals;

std::string Value(const VARIANT& variant) {
  char text[32];
  const auto digits = [&](auto number) {
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
  };
  switch (variant.vt) {
    case VT_BSTR: return Show(TextOf(variant));
    case VT_BOOL:
    case VT_I2: return digits(variant.iVal);
    case VT_I4: return digits(variant.lVal);
    case VT_R4: return digits(variant.fltVal);
    case VT_R8:
    case VT_DATE: return digits(variant.dblVal);
    case VT_UI8: return digits(variant.ullVal);
    default: return digits(variant.llVal);
  }
}

// The value after a conversion, or the kind of failure, which leaves the target as it was.
std::string Converted(const VARIANT& source, VARTYPE tag) {
  ScopedVariant target = Text(u"kept");
  const HRESULT result = VariantChangeType(&target, &source, 0, tag);
  if (result == S_OK && target.vt == tag) return Value(target);
  EXPECT_EQ(TextOf(target), u"kept");
  switch (result) {
    case DISP_E_OVERFLOW: return "over";
    case DISP_E_TYPEMISMATCH: return "type";
    case DISP_E_BADVARTYPE: return "tag";
    case E_INVALIDARG: return "argument";
    default: return "another failure";
  }
}

// As a short, a long and a double; one word if they agree.
std::string Numbers(std::u16string_view text) {
  const ScopedVariant source = Text(text);
  const std::string i2 = Converted(source, VT_I2);
  const std::string i4 = Converted(source, VT_I4);
  const std::string r8 = Converted(source, VT_R8);
  return i2 == i4 && i4 == r8 ? r8 : i2 + " " + i4 + " " + r8;
}

ScopedVariant From(VARTYPE tag, std::u16string_view value) {
  if (tag == VT_BSTR) return Text(value);
  const std::string number = Show(value);
  if (tag == VT_R4) return Make(tag, std::stof(number));
  if (tag == VT_R8 || tag == VT_DATE) return Make(tag, std::strtod(number.c_str(), nullptr));
  return Make(tag, number[0] == '-' ? std::stoll(number) : static_cast<LONGLONG>(std::stoull(number)));
}

void Check(VARTYPE from, VARTYPE to, std::u16string_view rows) {
  for (const auto& [value, expected] : Rows(rows)) {
    EXPECT_EQ(Converted(From(from, value), to), expected) << from << " to " << to << ": " << Show(value);
  }
}

void CheckTexts(const char* locale, std::u16string_view rows) {
  const ScopedLocale user(locale);
  for (const Row& row : Rows(rows)) EXPECT_EQ(Numbers(row.text), row.expected) << Show(row.text) << locale;
}

TEST(TextToNumber, EveryLocale) {
  // The locale's decimal separator takes the place of the underscore.
  constexpr std::u16string_view kRows =
      u"12: 12| 12 : 12|\t12\n: 12|\u00A012\u202F: 12|00012: 12|+ 1: 1|- 1: -1|1 - : -1|1+: 1|-0: 0|5_: 5"
      u"|-_5e1: -5|1E+3: 1000|1e3-: -1000|0e99999999: 0|1e-400: 0|-1e400: over|_5: 0 0 0.5|0_05: 0 0 0.05"
      u"|1_5e-1: 0 0 0.15|3_5: 4 4 3.5|-2_5: -2 -2 -2.5|2_50000000000000000000000000000001: 3 3 2.5"
      u"|32767_49: 32767 32767 32767.49|32767_5: over 32768 32767.5|-32768_5: -32768 -32768 -32768.5"
      u"|-32768_51: over -32769 -32768.51|2147483647_49: over 2147483647 2147483647.49"
      u"|2147483647_5: over over 2147483647.5|-2147483648_5: over -2147483648 -2147483648.5"
      u"|99999999999999999999999999: over over 1e+26|1e-99999999999999999999999999999999999: 0"
      u"|1e99999999999999999999999999999999999: over|4_9406564584124654e-324: 0 0 5e-324"
      u"|1_7976931348623158e308: over over 1.7976931348623157e+308|1_7976931348623159e308: over"
      u"|: type| : type|abc: type|1e+: type|1e 3: type|1 e3: type|e5: type|_: type|-: type|_e1: type"
      u"|1_2_3: type|--1: type|-1-: type|1--: type|0x10: type|&H10: type|(1): type|1d3: type"
      u"|True: type|inf: type|nan: type|1\0: type|1\0002: type|\u0661: type"sv;
  std::u16string points(kRows), commas(kRows);
  std::ranges::replace(points, u'_', u'.');
  std::ranges::replace(commas, u'_', u',');
  for (const char* locale : {"C", "en_US.UTF-8"}) CheckTexts(locale, points);
  for (const char* locale : {"fr_FR.UTF-8", "de_DE.UTF-8"}) CheckTexts(locale, commas);
}

TEST(TextToNumber, SeparatorsOfTheLocale) {
  for (const char* portable : {"C", "C.UTF-8", "POSIX", "xx_YY.UTF-8"}) {
    CheckTexts(portable, u"12.5: 12 12 12.5|1,000: type|1 000: type|12,5: type");
  }
  CheckTexts("en_US.UTF-8",
             u"1,000: 1000|12,5: 125|1,000.5: 1000 1000 1000.5|1 000: type|1, 000: type|1,.5: type|,000: "
             u"type|1,: type|1,,000: type|0.1,000: type|1e1,0: type");
  CheckTexts("fr_FR.UTF-8",
             u"1 000: 1000|1\u00A0000: 1000|1\u202F000 : 1000|1  000: type|1\t000: type|1.5: type");
  CheckTexts("de_DE.UTF-8", u"1.000: 1000|1.000,5: 1000 1000 1000.5|1 000: type");
  // The locale follows the environment at once.
  const ScopedEnvironment all("LC_ALL", nullptr), language("LANG", "fr_FR.UTF-8"), category("LC_NUMERIC", "");
  EXPECT_EQ(Numbers(u"1,0"), "1");
  const ScopedEnvironment english("LC_NUMERIC", "en_US.UTF-8");
  EXPECT_EQ(Numbers(u"1,0"), "10");
}

TEST(TextToNumber, AnyLengthIsExact) {
  const ScopedLocale user("C");
  // Halfway between 1 and its successor; whatever follows, however far away, decides.
  const std::u16string halfway = u"1.00000000000000011102230246251565404236316680908203125";
  const std::u16string zeros(100000, u'0');
  EXPECT_EQ(Numbers(halfway), "1");
  EXPECT_EQ(Numbers(halfway + zeros.substr(0, 5000) + u"1"), "1 1 1.0000000000000002");
  EXPECT_EQ(Numbers(zeros + u"7"), "7");
  EXPECT_EQ(Numbers(u"7." + zeros), "7");
  EXPECT_EQ(Numbers(u"0." + zeros + u"7e100001"), "7");
  EXPECT_EQ(Numbers(u"7" + zeros + u"e-100000"), "7");
  EXPECT_EQ(Numbers(u"7" + zeros), "over");
  EXPECT_EQ(Numbers(std::u16string(100000, u'9') + u"e-99999"), "10");
}

TEST(Conversion, ToText) {
  const ScopedLocale user("de_DE.UTF-8");
  Check(VT_R8, VT_BSTR,
        u"0.1: 0,1|-0: 0|123456789012345: 123456789012345|1e15: 1E+15|999999999999999.9: 1E+15"
        u"|1234567890123456: 1,23456789012346E+15|0.0001: 0,0001|0.00001234: 1,234E-05"
        u"|5e-324: 4,94065645841247E-324|inf: 1,#INF|-inf: -1,#INF");
  Check(VT_R4, VT_BSTR, u"0.1: 0,1|16777216: 1,677722E+07");
  Check(VT_CY, VT_BSTR, u"-1: -0,0001|0: 0|-9223372036854775808: -922337203685477,5808");
  Check(VT_BOOL, VT_BSTR, u"-1: True|0: False");
  for (const VARTYPE tag : {VT_I1, VT_I2, VT_I4, VT_INT, VT_I8}) Check(tag, VT_BSTR, u"-1: -1");
  for (const VARTYPE tag : {VT_UI2, VT_UI4, VT_UINT, VT_UI8}) Check(tag, VT_BSTR, u"65535: 65535");
  Check(VT_UI1, VT_BSTR, u"255: 255");
  Check(VT_UI8, VT_BSTR, u"18446744073709551615: 18446744073709551615");
  Check(VT_EMPTY, VT_BSTR, u"0: ");
  Check(VT_DATE, VT_BSTR,
        u"36526.75: 01.01.2000 18:00:00|0.5: 12:00:00|-0.25: 06:00:00|60: 28.02.1900"
        u"|-1.25: 29.12.1899 06:00:00|36526.9999999: 02.01.2000|-657434: 01.01.0100"
        u"|2958465.5: 31.12.9999 12:00:00|-657435: over|2958466: over"
        u"|2958465.9999999: over|inf: over|nan: over");
  EXPECT_EQ(Converted(Decimal(UINT32_MAX, UINT64_MAX, 28, true), VT_BSTR), "-7,9228162514264337593543950335");
  EXPECT_EQ(Converted(Decimal(0, 1500, 0), VT_BSTR), "1500");
  EXPECT_EQ(Converted(Decimal(0, 0, 5, true), VT_BSTR), "0");
}

TEST(Conversion, ToNumbers) {
  const ScopedLocale user("C");
  Check(VT_R8, VT_I2, u"2.5: 2|32767.49: 32767|32767.5: over|-32768.5: -32768");
  Check(VT_R8, VT_I4, u"3.5: 4|-2.5: -2|2147483647.5: over|inf: over|nan: over");
  Check(VT_R8, VT_I8, u"0x1p63: over|1e300: over");
  Check(VT_R8, VT_CY, u"1e15: over|1e300: over");
  Check(VT_R8, VT_DATE, u"3e6: over|nan: over");
  Check(VT_R8, VT_R4, u"0x1.fffffe8p127: 3.4028235e+38|0x1.ffffffp127: over");
  Check(VT_R4, VT_R8, u"1.5: 1.5");
  Check(VT_EMPTY, VT_BOOL, u"0: 0");
  Check(VT_BOOL, VT_R8, u"-1: -1");
  Check(VT_BOOL, VT_UI1, u"-1: over");
  Check(VT_I1, VT_I4, u"-1: -1");
  Check(VT_I1, VT_UI4, u"-1: over");
  Check(VT_UI1, VT_I1, u"255: over");
  Check(VT_UI8, VT_I8, u"18446744073709551615: over");
  Check(VT_CY, VT_I4, u"25000: 2|25001: 3");
  Check(VT_CY, VT_R8, u"25000: 2.5");
  Check(VT_DATE, VT_I4, u"36527.5: 36528");
  Check(VT_BSTR, VT_DATE, u"36526: 36526|01/01/2000: type|3000000: over");
  Check(VT_BSTR, VT_I8,
        u"9223372036854775807: 9223372036854775807|9223372036854775807.5: over"
        u"|-9223372036854775808: -9223372036854775808");
  Check(VT_BSTR, VT_UI8,
        u"18446744073709551614.5: 18446744073709551614|18446744073709551616: over"
        u"|100000000000000000000: over|-0.5: 0|-1: over");
  Check(VT_BSTR, VT_CY,
        u"922337203685477.5807: 9223372036854775807|922337203685477.5808: over"
        u"|0.00025: 2|0.00035: 4");
  EXPECT_EQ(Converted(Decimal(0, 35, 1, true), VT_R8), "-3.5");
  EXPECT_EQ(Converted(Decimal(UINT32_MAX, 0, 0), VT_I8), "over");
  EXPECT_EQ(Converted(Decimal(0, 1, 29), VT_I4), "argument");
}

TEST(Conversion, ToBooleansAndWithoutANumber) {
  const ScopedLocale user("fr_FR.UTF-8");
  Check(VT_BSTR, VT_BOOL,
        u"True: -1|tRUE: -1|FALSE: 0|-0e5: 0|2: -1|1e-5: -1|Vrai: type|: type"
        u"|True\0: type|1e400: over"sv);
  EXPECT_EQ(Converted(Make(VT_BSTR, BSTR{}), VT_BOOL), "type");
  for (const VARTYPE from : {VT_NULL, VT_ERROR}) {
    for (const VARTYPE to : {VT_I4, VT_BSTR, VT_BOOL}) Check(from, to, u"7: type");
  }
  for (const VARTYPE to : {VT_ERROR, VT_EMPTY, VT_NULL, VT_DISPATCH}) Check(VT_I4, to, u"1: type");
  for (const VARTYPE tag : {VT_ERROR, VT_EMPTY, VT_NULL}) Check(tag, tag, u"7: 7");
  Check(VT_I4, VT_DECIMAL, u"1: tag");
}

TEST(Conversion, InPlaceAndOfObjects) {
  LONG number = 42;
  ScopedVariant target = Make(VT_BYREF | VT_I4, &number);
  for (int round = 0; round < 2; ++round) ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_BSTR), S_OK);
  EXPECT_EQ(TextOf(target), u"42");

  CountedObject object, plain(false);
  ScopedVariant held = Make(VT_UNKNOWN, static_cast<IDispatch*>(&object));
  ScopedVariant held_plain = Make(VT_UNKNOWN, static_cast<IDispatch*>(&plain));
  ASSERT_EQ(VariantChangeType(&target, &held, 0, VT_DISPATCH), S_OK);
  EXPECT_EQ(target.pdispVal, &object);
  EXPECT_EQ(object.references, 2u);
  ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_UNKNOWN), S_OK);
  EXPECT_EQ(object.references, 2u);
  for (const VARTYPE tag : {VT_I4, VT_BSTR}) EXPECT_EQ(Converted(target, tag), "type");
  EXPECT_EQ(Converted(held_plain, VT_DISPATCH), "type");
  EXPECT_EQ(plain.references, 1u);
  EXPECT_EQ(Converted(Make(VT_UNKNOWN, static_cast<IUnknown*>(nullptr)), VT_DISPATCH), "0");
  held.vt = held_plain.vt = VT_EMPTY;
}

}  // namespace
