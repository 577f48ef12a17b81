#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/automation/variant_fixture.h"
#include "tests/platform/locale/scoped_locale.h"

namespace {

using namespace moxel::test;

constexpr std::string_view kForms = "wWpPmM##.,#e####-~##############";  // a letter a bit

// Digits, power of ten, units used and forms met, as "125e-1 of 7 W.", or "none".
std::string Parse(const char16_t* text, INT room = 30, ULONG accepted = NUMPRS_STD) {
  std::vector<BYTE> digits(static_cast<std::size_t>(room) + 1, 0xCC);
  NUMPARSE info{room, accepted, 1, 1, 1, 1};
  const HRESULT result = VarParseNumFromStr(text, LOCALE_USER_DEFAULT, 0, &info, digits.data());
  EXPECT_EQ(digits.back(), 0xCC) << "wrote beyond the room given";
  EXPECT_EQ(info.nBaseShift, 0);
  std::string parsed;
  for (std::size_t i = 0; i < static_cast<std::size_t>(info.cDig); ++i) parsed += std::to_string(digits[i]);
  parsed += "e" + std::to_string(info.nPwr10) + " of " + std::to_string(info.cchUsed) + " ";
  for (unsigned bit = 0; bit < 32; ++bit) parsed.append(info.dwOutFlags >> bit & 1, kForms[bit]);
  if (result == DISP_E_TYPEMISMATCH && parsed == "e0 of 0 ") return "none";
  return result == S_OK ? parsed : "failure";
}

TEST(ParseNumber, DigitsPowerAndForms) {
  const ScopedLocale user("en_US.UTF-8");
  // From 1e+x on, what follows the number is left to the caller.
  for (const auto& [text, expected] :
       Rows(u" 0012.50\t: 125e-1 of 9 wW.|- 1: 1e0 of 3 wm-|+7: 7e0 of 2 p|1-: 1e0 of 2 M-|1+ : 1e0 of 3 WP"
            u"|1,234: 1234e0 of 5 ,|0.00025e2: 25e-3 of 9 .e|0.000e55: 0e0 of 8 .e|abc: none|: none| -.: none"
            u"|1e9999999999999999: 1e2147483647 of 18 e|1e-9999999999999999: 1e-2147483647 of 19 e"
            u"|1e+x: 1e0 of 1 |12 abc: 12e0 of 3 W|1.2.3: 12e-1 of 3 .|1,,2: 1e0 of 1 ")) {
    EXPECT_EQ(Parse(text.c_str()), expected) << Show(text);
  }
  EXPECT_EQ(Parse(nullptr), "none");
  EXPECT_EQ(Parse(u"123456", 4), "1234e2 of 6 ~");
  EXPECT_EQ(Parse(u"1200000000", 4), "12e8 of 10 ");
  EXPECT_EQ(Parse(u"12", 0), "e2 of 2 ~");
  NUMPARSE positive{1, NUMPRS_STD, 0, 0, 0, 0}, negative{-1, NUMPRS_STD, 0, 0, 0, 0};
  EXPECT_EQ(VarParseNumFromStr(u"1", 0, 0, &positive, nullptr), E_INVALIDARG);
  EXPECT_EQ(VarParseNumFromStr(u"1", 0, 0, &negative, nullptr), E_INVALIDARG);
}

// A row begins with the letter of the form that is refused.
TEST(ParseNumber, FormsNotAcceptedEndTheNumber) {
  const ScopedLocale user("en_US.UTF-8");
  for (const auto& [text, expected] :
       Rows(u"w 1: none|W1 : 1e0 of 1 |m-1: none|p+1: none|M1-: 1e0 of 1 |P1+: 1e0 of 1 "
            u"|.1.5: 1e0 of 1 |..5: none|,1,000: 1e0 of 1 |e1e3: 1e0 of 1 ")) {
    const ULONG refused = 1u << kForms.find(static_cast<char>(text[0]));
    EXPECT_EQ(Parse(text.c_str() + 1, 30, NUMPRS_STD & ~refused), expected) << Show(text);
  }
}

}  // namespace
