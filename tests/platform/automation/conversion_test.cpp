#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <map>
#include <string>

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
  return std::map<HRESULT, std::string>{{DISP_E_OVERFLOW, "over"},
                                        {DISP_E_TYPEMISMATCH, "type"},
                                        {DISP_E_BADVARTYPE, "tag"},
                                        {E_INVALIDARG, "argument"}}[result];
}

// As a short, a long and a double; one word if they agree.
std::string Numbers(std::u16string_view text) {
  const ScopedVariant source = Text(text);
  const std::string i2 = Converted(source, VT_I2);
  const std::string i4 = Converted(source, VT_I4);
  const std::string r8 = Converted(source, VT_R8);
  return i2 == i4 && i4 == r8 ? r8 : i2 + " " + i4 + " " + r8;
}

constexpr std::string_view kTags[] = {
    "EMPTY",   "NULL",    "I2",      "I4", "R4", "R8",  "CY",  "DATE", "BSTR", "DISPATCH", "ERROR", "BOOL",
    "VARIANT", "UNKNOWN", "DECIMAL", "15", "I1", "UI1", "UI2", "UI4",  "I8",   "UI8",      "INT",   "UINT"};

VARTYPE Tag(const std::string& name) {
  return static_cast<VARTYPE>(std::ranges::find(kTags, name) - std::begin(kTags));
}

ScopedVariant From(VARTYPE tag, std::u16string_view value) {
  if (tag == VT_BSTR) return Text(value);
  const std::string number = Show(value);
  if (tag == VT_R4) return Make(tag, std::stof(number));
  if (tag == VT_R8 || tag == VT_DATE) return Make(tag, std::strtod(number.c_str(), nullptr));
  return Make(tag, number[0] == '-' ? std::stoll(number) : static_cast<LONGLONG>(std::stoull(number)));
}

// Rows as "R8>I2 2.5: 2|3.5: 4": the types hold until others are named.
void Check(const char* locale, std::u16string_view table) {
  const ScopedLocale user(locale);
  VARTYPE from = VT_EMPTY, to = VT_EMPTY;
  for (auto& [value, expected] : Rows(table)) {
    if (const std::size_t sign = value.find(u'>'), blank = value.find(u' '); sign != value.npos) {
      from = Tag(Show(value.substr(0, sign)));
      to = Tag(Show(value.substr(sign + 1, blank - sign - 1)));
      value.erase(0, blank + 1);
    }
    EXPECT_EQ(Converted(From(from, value), to), expected) << from << " to " << to << ": " << Show(value);
  }
}

void CheckTexts(const char* locale, std::u16string_view rows) {
  const ScopedLocale user(locale);
  for (const auto& [text, expected] : Rows(rows)) EXPECT_EQ(Numbers(text), expected) << Show(text) << locale;
}

TEST(TextToNumber, EveryLocale) {
  // The locale's decimal separator takes the place of the underscore.
  constexpr std::u16string_view kRows =
      u"12: 12| 12 : 12|\t12\n: 12|\u00A012\u202F: 12|00012: 12|+ 1: 1|- 1: -1|1+: 1|-0: 0|5_: 5|-_5e1: -5"
      u"|1E+3: 1000|1e3-: -1000|0e99999999: 0|1e-400: 0|-1e400: over|_5: 0 0 0.5|0_05: 0 0 0.05"
      u"|1_5e-1: 0 0 0.15|3_5: 4 4 3.5|-2_5: -2 -2 -2.5|2_50000000000000000000000000000001: 3 3 2.5"
      u"|32767_5: over 32768 32767.5|-32768_5: -32768 -32768 -32768.5|-32768_51: over -32769 -32768.51"
      u"|2147483647_5: over over 2147483647.5|-2147483648_5: over -2147483648 -2147483648.5"
      u"|1e-99999999999999999999999999999999999: 0|1e99999999999999999999999999999999999: over"
      u"|4_9406564584124654e-324: 0 0 5e-324|1_7976931348623158e308: over over 1.7976931348623157e+308"
      u"|1_7976931348623159e308: over|: type| : type|abc: type|1e+: type|1e 3: type|1 e3: type|_: type"
      u"|-: type|1_2_3: type|--1: type|-1-: type|1--: type|0x10: type|True: type|inf: type|nan: type"
      u"|1\0: type|1\0002: type|\u0661: type"sv;
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
  const ScopedEnvironment all("LC_ALL", ""), language("LANG", "fr_FR.UTF-8"), category("LC_NUMERIC", "C");
  EXPECT_EQ(Numbers(u"1.0"), "1");
}

TEST(TextToNumber, AnyLengthIsExact) {
  const ScopedLocale user("C");
  // Halfway between 1 and its successor; whatever follows, however far away, decides.
  const std::u16string halfway = u"1.00000000000000011102230246251565404236316680908203125";
  const std::u16string zeros(100000, u'0');
  EXPECT_EQ(Numbers(halfway), "1");
  EXPECT_EQ(Numbers(halfway + zeros.substr(0, 5000) + u"1"), "1 1 1.0000000000000002");
  for (const auto& seven :
       {zeros + u"7", u"7." + zeros, u"0." + zeros + u"7e100001", u"7" + zeros + u"e-100000"}) {
    EXPECT_EQ(Numbers(seven), "7") << seven.size();
  }
  EXPECT_EQ(Numbers(u"7" + zeros), "over");
  EXPECT_EQ(Numbers(std::u16string(100000, u'9') + u"e-99999"), "10");
}

TEST(Conversion, OfEveryType) {
  Check("de_DE.UTF-8",
        u"R8>BSTR 0.1: 0,1|-0: 0|123456789012345: 123456789012345|1e15: 1E+15|999999999999999.9: 1E+15"
        u"|1234567890123456: 1,23456789012346E+15|0.0001: 0,0001|0.00001234: 1,234E-05"
        u"|5e-324: 4,94065645841247E-324|inf: 1,#INF|-inf: -1,#INF|R4>BSTR 0.1: 0,1|16777216: 1,677722E+07"
        u"|CY>BSTR -1: -0,0001|0: 0|-9223372036854775808: -922337203685477,5808|BOOL>BSTR -1: True|0: False"
        u"|I1>BSTR -1: -1|I2>BSTR -1: -1|I4>BSTR -1: -1|INT>BSTR -1: -1|I8>BSTR -1: -1|UI1>BSTR 255: 255"
        u"|UI2>BSTR 65535: 65535|UI4>BSTR 4294967295: 4294967295|UINT>BSTR 4294967295: 4294967295"
        u"|UI8>BSTR 18446744073709551615: 18446744073709551615|EMPTY>BSTR 0: ");
  Check("de_DE.UTF-8",
        u"DATE>BSTR 36526.75: 01.01.2000 18:00:00|0.5: 12:00:00|-0.25: 06:00:00|60: 28.02.1900"
        u"|-1.25: 29.12.1899 06:00:00|36526.9999999: 02.01.2000|-657434: 01.01.0100"
        u"|2958465.5: 31.12.9999 12:00:00|-657435: over|2958466: over|2958465.9999999: over|inf: over"
        u"|nan: over");
  Check("C",
        u"R8>I2 2.5: 2|32767.49: 32767|32767.5: over|-32768.5: -32768|R8>I4 3.5: 4|-2.5: -2"
        u"|2147483647.5: over|inf: over|nan: over|R8>I8 0x1p63: over|1e300: over|R8>CY 1e15: over"
        u"|1e300: over|R8>DATE 3e6: over|nan: over|R8>R4 0x1.fffffe8p127: 3.4028235e+38|0x1.ffffffp127: over"
        u"|R4>R8 1.5: 1.5|EMPTY>BOOL 0: 0|BOOL>R8 -1: -1|BOOL>UI1 -1: over|I1>I4 -1: -1|I1>UI4 -1: over"
        u"|UI1>I1 255: over|UI8>I8 18446744073709551615: over|CY>I4 25000: 2|25001: 3|CY>R8 25000: 2.5"
        u"|DATE>I4 36527.5: 36528|BSTR>DATE 36526: 36526|01/01/2000: type|3000000: over"
        u"|BSTR>I8 9223372036854775807: 9223372036854775807|9223372036854775807.5: over"
        u"|-9223372036854775808: -9223372036854775808|BSTR>UI8 18446744073709551614.5: 18446744073709551614"
        u"|18446744073709551616: over|100000000000000000000: over|-0.5: 0|-1: over"
        u"|BSTR>CY 922337203685477.5807: 9223372036854775807|922337203685477.5808: over|0.00025: 2"
        u"|0.00035: 4");
  Check("fr_FR.UTF-8",
        u"BSTR>BOOL True: -1|tRUE: -1|FALSE: 0|-0e5: 0|2: -1|1e-5: -1|Vrai: type|: type|True\0: type"
        u"|1e400: over|NULL>I4 7: type|NULL>BSTR 7: type|NULL>BOOL 7: type|ERROR>I4 7: type"
        u"|ERROR>BSTR 7: type|I4>ERROR 7: type|I4>EMPTY 7: type|I4>NULL 7: type|I4>DISPATCH 7: type"
        u"|I4>DECIMAL 7: tag|ERROR>ERROR 7: 7|EMPTY>EMPTY 7: 7|NULL>NULL 7: 7"sv);
  EXPECT_EQ(Converted(Make(VT_BSTR, BSTR{}), VT_BOOL), "type");
}

TEST(Conversion, Decimals) {
  const ScopedLocale user("de_DE.UTF-8");
  EXPECT_EQ(Converted(Decimal(UINT32_MAX, UINT64_MAX, 28, true), VT_BSTR), "-7,9228162514264337593543950335");
  EXPECT_EQ(Converted(Decimal(0, 1500, 0), VT_BSTR), "1500");
  EXPECT_EQ(Converted(Decimal(0, 0, 5, true), VT_BSTR), "0");
  EXPECT_EQ(Converted(Decimal(0, 35, 1, true), VT_R8), "-3.5");
  EXPECT_EQ(Converted(Decimal(UINT32_MAX, 0, 0), VT_I8), "over");
  EXPECT_EQ(Converted(Decimal(0, 1, 29), VT_I4), "argument");
}

TEST(Conversion, InPlaceAndOfObjects) {
  LONG number = 42;
  ScopedVariant target = Make(VT_BYREF | VT_I4, &number);
  for (int round = 0; round < 2; ++round) ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_BSTR), S_OK);
  EXPECT_EQ(TextOf(target), u"42");

  CountedObject object;
  ScopedVariant held = Make(VT_UNKNOWN, static_cast<IDispatch*>(&object));
  ASSERT_EQ(VariantChangeType(&target, &held, 0, VT_DISPATCH), S_OK);
  EXPECT_TRUE(target.pdispVal == &object && object.references == 2);
  ASSERT_EQ(VariantChangeType(&target, &target, 0, VT_UNKNOWN), S_OK);
  EXPECT_TRUE(target.punkVal == &object && object.references == 2);
  for (const VARTYPE tag : {VT_I4, VT_BSTR}) EXPECT_EQ(Converted(target, tag), "type");
  held.vt = VT_EMPTY;

  EXPECT_EQ(Converted(Make(VT_UNKNOWN, static_cast<IUnknown*>(nullptr)), VT_DISPATCH), "0");
  ICreateErrorInfo* no_dispatch = nullptr;
  ASSERT_EQ(CreateErrorInfo(&no_dispatch), S_OK);
  EXPECT_EQ(Converted(Make(VT_UNKNOWN, no_dispatch), VT_DISPATCH), "type");
}

}  // namespace
