// Numbers: the one parser of number texts, the exact decimal form behind it, rounding, and numbers as text.
// Rounding is to nearest, ties to even, and comes before every range test.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "moxel/platform.h"
#include "platform/locale/user_locale.h"

namespace moxel {

// Wide enough for every integer type together; a number beyond 20 digits has none.
__extension__ typedef __int128 WideInteger;

// digits * 10^exponent. No leading and no trailing zeros: zero has no digits at all.
struct DecimalNumber {
  // More than the 767 digits that can decide how a text rounds to a double.
  static constexpr std::size_t kMaxDigits = 800;

  bool negative = false;
  bool truncated = false;  // digits that are not all zero follow those kept
  std::size_t count = 0;
  std::int64_t exponent = 0;
  std::array<char, kMaxDigits> digits;  // '0' to '9', the first `count` of them set

  void Append(char digit);
  // Drops trailing zeros; to be called once after the last digit.
  void Normalize();
};

struct ParsedNumber {
  DecimalNumber number;
  std::size_t used = 0;  // characters consumed; 0: the text does not begin with a number
  ULONG forms = 0;       // NUMPRS_ forms met
};

// Reads the longest number at the start of a text. `accepted` are the NUMPRS_ forms allowed.
ParsedNumber ParseNumber(std::u16string_view text, const NumericLocale& locale, ULONG accepted);

DecimalNumber ExactDecimal(CY value);
// The scale must be at most 28.
DecimalNumber ExactDecimal(const DECIMAL& value);

// Nothing: out of range, or not a number.
std::optional<double> ToReal(const DecimalNumber& number);
std::optional<WideInteger> RoundToInteger(const DecimalNumber& number);
std::optional<WideInteger> RoundToInteger(double number);

// Null on lack of memory.
BSTR RealText(double number, int significant_digits, char16_t decimal);
BSTR ExactText(const DecimalNumber& number, char16_t decimal);
BSTR IntegerText(std::int64_t number);
BSTR IntegerText(std::uint64_t number);

}  // namespace moxel
