#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/automation/variant_fixture.h"
#include "tests/platform/locale/scoped_locale.h"

namespace {

using namespace moxel::test;

struct Parsed {
  HRESULT result = S_OK;
  NUMPARSE info{};
  std::string digits;
};

Parsed Parse(const char16_t* text, INT room = 30, ULONG accepted = NUMPRS_STD) {
  Parsed parsed;
  std::vector<BYTE> digits(static_cast<std::size_t>(room) + 1, 0xCC);
  parsed.info.cDig = room;
  parsed.info.dwInFlags = accepted;
  parsed.result = VarParseNumFromStr(text, LOCALE_USER_DEFAULT, 0, &parsed.info, digits.data());
  for (INT i = 0; i < parsed.info.cDig; ++i) {
    parsed.digits += static_cast<char>('0' + digits[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(digits.back(), 0xCC) << "wrote beyond the room given";
  return parsed;
}

TEST(ParseNumber, DigitsPowerAndForms) {
  const ScopedLocale user("en_US.UTF-8");
  const struct {
    const char16_t* text;
    const char* digits;
    INT power;
    INT used;
    ULONG forms;
  } cases[] = {
      {u"12", "12", 0, 2, 0},
      {u" 0012.50\t", "125", -1, 9, NUMPRS_LEADING_WHITE | NUMPRS_DECIMAL | NUMPRS_TRAILING_WHITE},
      {u"- 1", "1", 0, 3, NUMPRS_LEADING_MINUS | NUMPRS_LEADING_WHITE | NUMPRS_NEG},
      {u"+7", "7", 0, 2, NUMPRS_LEADING_PLUS},
      {u"1-", "1", 0, 2, NUMPRS_TRAILING_MINUS | NUMPRS_NEG},
      {u"1+ ", "1", 0, 3, NUMPRS_TRAILING_PLUS | NUMPRS_TRAILING_WHITE},
      {u"1,234", "1234", 0, 5, NUMPRS_THOUSANDS},
      {u"0.00025e2", "25", -3, 9, NUMPRS_DECIMAL | NUMPRS_EXPONENT},
      {u"1e400", "1", 400, 5, NUMPRS_EXPONENT},
      {u"0", "0", 0, 1, 0},
      {u"0.000e55", "0", 0, 8, NUMPRS_DECIMAL | NUMPRS_EXPONENT},
      {u"1e9999999999999999", "1", 2147483647, 18, NUMPRS_EXPONENT},
      {u"1e-9999999999999999", "1", -2147483647, 19, NUMPRS_EXPONENT},
      // What follows the number is left to the caller.
      {u"1e", "1", 0, 1, 0},
      {u"1e+x", "1", 0, 1, 0},
      {u"12abc", "12", 0, 2, 0},
      {u"12 abc", "12", 0, 3, NUMPRS_TRAILING_WHITE},
      {u"0x10", "0", 0, 1, 0},
      {u"1.2.3", "12", -1, 3, NUMPRS_DECIMAL},
      {u"1,,2", "1", 0, 1, 0},
  };
  for (const auto& c : cases) {
    const Parsed parsed = Parse(c.text);
    ASSERT_EQ(parsed.result, S_OK) << Show(c.text);
    EXPECT_EQ(parsed.digits, c.digits) << Show(c.text);
    EXPECT_EQ(parsed.info.nPwr10, c.power) << Show(c.text);
    EXPECT_EQ(parsed.info.cchUsed, c.used) << Show(c.text);
    EXPECT_EQ(parsed.info.dwOutFlags, c.forms) << Show(c.text);
    EXPECT_EQ(parsed.info.nBaseShift, 0);
  }
}

TEST(ParseNumber, NoNumberAtTheStart) {
  for (const char16_t* text : {u"", u" ", u"abc", u"e5", u"--1", u"+", u".", u"-.", u",1", u"True"}) {
    const Parsed parsed = Parse(text);
    EXPECT_EQ(parsed.result, DISP_E_TYPEMISMATCH) << Show(text);
    EXPECT_EQ(parsed.info.cDig, 0) << Show(text);
    EXPECT_EQ(parsed.info.cchUsed, 0) << Show(text);
  }
  EXPECT_EQ(Parse(nullptr).result, DISP_E_TYPEMISMATCH);
}

TEST(ParseNumber, RoomForDigits) {
  const ScopedLocale user("C");
  const Parsed cut = Parse(u"123456", 4);
  EXPECT_EQ(cut.digits, "1234");
  EXPECT_EQ(cut.info.nPwr10, 2);
  EXPECT_NE(cut.info.dwOutFlags & NUMPRS_INEXACT, 0u);
  const Parsed zeros = Parse(u"1200000000", 4);
  EXPECT_EQ(zeros.digits, "12");
  EXPECT_EQ(zeros.info.nPwr10, 8);
  EXPECT_EQ(zeros.info.dwOutFlags & NUMPRS_INEXACT, 0u);
  EXPECT_EQ(Parse(u"12", 0).info.nPwr10, 2);
  EXPECT_EQ(Parse(u"12", 0).info.cchUsed, 2);
}

TEST(ParseNumber, FormsNotAcceptedEndTheNumber) {
  const ScopedLocale user("en_US.UTF-8");
  const struct {
    const char16_t* text;
    ULONG form;
    INT used;  // 0: no number
  } cases[] = {
      {u" 1", NUMPRS_LEADING_WHITE, 0}, {u"1 ", NUMPRS_TRAILING_WHITE, 1}, {u"-1", NUMPRS_LEADING_MINUS, 0},
      {u"+1", NUMPRS_LEADING_PLUS, 0},  {u"1-", NUMPRS_TRAILING_MINUS, 1}, {u"1+", NUMPRS_TRAILING_PLUS, 1},
      {u"1.5", NUMPRS_DECIMAL, 1},      {u".5", NUMPRS_DECIMAL, 0},        {u"1,000", NUMPRS_THOUSANDS, 1},
      {u"1e3", NUMPRS_EXPONENT, 1},
  };
  for (const auto& c : cases) {
    const Parsed parsed = Parse(c.text, 30, NUMPRS_STD & ~c.form);
    EXPECT_EQ(parsed.result, c.used == 0 ? DISP_E_TYPEMISMATCH : S_OK) << Show(c.text);
    EXPECT_EQ(parsed.info.cchUsed, c.used) << Show(c.text);
  }
}

TEST(ParseNumber, InvalidArguments) {
  NUMPARSE info{};
  info.cDig = 1;
  BYTE digit = 0;
  EXPECT_EQ(VarParseNumFromStr(u"1", 0, 0, nullptr, &digit), E_INVALIDARG);
  EXPECT_EQ(VarParseNumFromStr(u"1", 0, 0, &info, nullptr), E_INVALIDARG);
  info.cDig = -1;
  EXPECT_EQ(VarParseNumFromStr(u"1", 0, 0, &info, &digit), E_INVALIDARG);
}

}  // namespace
