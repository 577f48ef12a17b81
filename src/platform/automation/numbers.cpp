#include "platform/automation/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

namespace moxel {
namespace {

constexpr int kWideDigits = 20;  // of the largest 64-bit integer

bool IsDigit(char16_t character) { return character >= u'0' && character <= u'9'; }

class NumberParser {
 public:
  NumberParser(std::u16string_view text, const NumericLocale& locale, ULONG accepted)
      : text_(text), locale_(locale), accepted_(accepted) {}

  ParsedNumber Parse() {
    ParsedNumber result;
    DecimalNumber& number = result.number;
    SkipBlanks(NUMPRS_LEADING_WHITE);
    const bool leading_sign = TakeSign(number, NUMPRS_LEADING_PLUS, NUMPRS_LEADING_MINUS);
    if (leading_sign) SkipBlanks(NUMPRS_LEADING_WHITE);
    if (!TakeMantissa(number)) return result;
    TakeExponent(number);
    SkipBlanks(NUMPRS_TRAILING_WHITE);
    if (!leading_sign && TakeSign(number, NUMPRS_TRAILING_PLUS, NUMPRS_TRAILING_MINUS)) {
      SkipBlanks(NUMPRS_TRAILING_WHITE);
    }
    number.Normalize();
    result.used = position_;
    result.forms = forms_ | (number.negative ? NUMPRS_NEG : 0);
    return result;
  }

 private:
  char16_t At(std::size_t position) const { return position < text_.size() ? text_[position] : u'\0'; }
  char16_t Next() const { return At(position_); }

  bool Accept(ULONG form) {
    if ((accepted_ & form) == 0) return false;
    forms_ |= form;
    return true;
  }

  void SkipBlanks(ULONG form) {
    while (IsBlank(Next()) && Accept(form)) ++position_;
  }

  bool TakeSign(DecimalNumber& number, ULONG plus, ULONG minus) {
    const char16_t sign = Next();
    const bool taken = (sign == u'+' && Accept(plus)) || (sign == u'-' && Accept(minus));
    if (!taken) return false;
    number.negative = sign == u'-';
    ++position_;
    return true;
  }

  bool TakeMantissa(DecimalNumber& number) {
    const bool whole = TakeWholePart(number);
    const bool fraction_follows = Next() == locale_.decimal && (whole || IsDigit(At(position_ + 1)));
    if (!fraction_follows || !Accept(NUMPRS_DECIMAL)) return whole;
    for (++position_; IsDigit(Next()); ++position_) {
      number.Append(static_cast<char>(Next()));
      --number.exponent;
    }
    return true;
  }

  bool TakeWholePart(DecimalNumber& number) {
    bool any = false;
    for (;; ++position_) {
      if (IsDigit(Next())) {
        number.Append(static_cast<char>(Next()));
        any = true;
      } else if (!any || !locale_.IsGroup(Next()) || !IsDigit(At(position_ + 1)) ||
                 !Accept(NUMPRS_THOUSANDS)) {
        return any;
      }
    }
  }

  // Without digits behind it, the letter is no part of the number.
  void TakeExponent(DecimalNumber& number) {
    if (Next() != u'e' && Next() != u'E') return;
    std::size_t position = position_ + 1;
    const char16_t sign = At(position);
    if (sign == u'+' || sign == u'-') ++position;
    if (!IsDigit(At(position)) || !Accept(NUMPRS_EXPONENT)) return;
    constexpr std::int64_t kEnough = 1'000'000'000'000;  // beyond what any length of digits can make up for
    std::int64_t exponent = 0;
    for (; IsDigit(At(position)); ++position) {
      if (exponent < kEnough) exponent = exponent * 10 + (At(position) - u'0');
    }
    number.exponent += sign == u'-' ? -exponent : exponent;
    position_ = position;
  }

  std::u16string_view text_;
  const NumericLocale& locale_;
  ULONG accepted_;
  ULONG forms_ = 0;
  std::size_t position_ = 0;
};

// Whether the digits from `position` on, taken as a fraction, round the integer before them up.
bool RoundsUp(const DecimalNumber& number, std::size_t position, bool odd) {
  if (position >= number.count) return false;
  const char first = number.digits[position];
  if (first != '5') return first > '5';
  return odd || position + 1 < number.count || number.truncated;
}

template <class Unsigned>
DecimalNumber FromMagnitude(Unsigned magnitude, bool negative, int scale) {
  std::array<char, 40> reversed;
  std::size_t count = 0;
  for (; magnitude != 0; magnitude /= 10) {
    reversed[count++] = static_cast<char>('0' + static_cast<int>(magnitude % 10));
  }
  DecimalNumber number;
  number.negative = negative;
  number.exponent = -scale;
  while (count != 0) number.Append(reversed[--count]);
  number.Normalize();
  return number;
}

// ASCII text of a number as it is shown to the user.
BSTR Localize(std::string_view text, char16_t decimal) {
  BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
  if (result == nullptr) return nullptr;
  std::ranges::transform(text, result, [&](char character) {
    if (character == '.') return decimal;
    return static_cast<char16_t>(character == 'e' ? 'E' : character);
  });
  return result;
}

std::string_view SpecialText(double number) {
  if (std::isnan(number)) return std::signbit(number) ? "-1.#IND" : "1.#QNAN";
  return number < 0 ? "-1.#INF" : "1.#INF";
}

template <class Integer>
BSTR PlainText(Integer number) {
  char text[24];
  const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
  return Localize({text, static_cast<std::size_t>(end - text)}, u'.');
}

}  // namespace

void DecimalNumber::Append(char digit) {
  if (count == 0 && digit == '0') return;
  if (count < kMaxDigits) {
    digits[count++] = digit;
  } else {
    ++exponent;
    truncated |= digit != '0';
  }
}

void DecimalNumber::Normalize() {
  while (!truncated && count != 0 && digits[count - 1] == '0') {
    --count;
    ++exponent;
  }
  if (count == 0) exponent = 0;
}

ParsedNumber ParseNumber(std::u16string_view text, const NumericLocale& locale, ULONG accepted) {
  return NumberParser(text, locale, accepted).Parse();
}

DecimalNumber ExactDecimal(CY value) {
  const auto bits = static_cast<std::uint64_t>(value.int64);
  return FromMagnitude(value.int64 < 0 ? 0 - bits : bits, value.int64 < 0, 4);
}

DecimalNumber ExactDecimal(const DECIMAL& value) {
  __extension__ using Wide = unsigned __int128;
  return FromMagnitude((Wide{value.Hi32} << 64) | value.Lo64, (value.sign & 0x80) != 0, value.scale);
}

std::optional<double> ToReal(const DecimalNumber& number) {
  if (number.count == 0) return 0.0;
  const std::int64_t magnitude = static_cast<std::int64_t>(number.count) + number.exponent;
  if (magnitude > std::numeric_limits<double>::max_exponent10 + 1) return std::nullopt;
  if (magnitude < -400) return 0.0;

  char text[DecimalNumber::kMaxDigits + 32];
  char* end = std::copy_n(number.digits.begin(), number.count, text);
  // Any digit stands for those cut off: they matter only as being not zero.
  if (number.truncated) *end++ = '1';
  *end++ = 'e';
  end = std::to_chars(end, std::end(text), number.exponent - (number.truncated ? 1 : 0)).ptr;

  double value = 0;
  const auto parsed = std::from_chars(text, end, value);
  if (parsed.ec == std::errc::result_out_of_range) {
    if (magnitude > 0) return std::nullopt;
    return 0.0;
  }
  if (!std::isfinite(value)) return std::nullopt;
  return number.negative ? -value : value;
}

std::optional<WideInteger> RoundToInteger(const DecimalNumber& number) {
  const std::int64_t whole_digits = static_cast<std::int64_t>(number.count) + number.exponent;
  if (number.count == 0 || whole_digits < 0) return WideInteger{0};
  if (whole_digits > kWideDigits) return std::nullopt;
  WideInteger value = 0;
  const auto whole = static_cast<std::size_t>(whole_digits);
  for (std::size_t i = 0; i < whole; ++i)
    value = value * 10 + (i < number.count ? number.digits[i] - '0' : 0);
  if (RoundsUp(number, whole, value % 2 != 0)) ++value;
  return number.negative ? -value : value;
}

std::optional<WideInteger> RoundToInteger(double number) {
  constexpr double kBeyondAnyInteger = 0x1p65;
  if (!(std::abs(number) < kBeyondAnyInteger)) return std::nullopt;
  return static_cast<WideInteger>(std::nearbyint(number));
}

BSTR RealText(double number, int significant_digits, char16_t decimal) {
  if (!std::isfinite(number)) return Localize(SpecialText(number), decimal);
  if (number == 0) return Localize("0", decimal);
  char text[32];
  const auto end =
      std::to_chars(std::begin(text), std::end(text), number, std::chars_format::general, significant_digits)
          .ptr;
  return Localize({text, static_cast<std::size_t>(end - text)}, decimal);
}

BSTR ExactText(const DecimalNumber& number, char16_t decimal) {
  if (number.count == 0) return Localize("0", decimal);
  std::string text(number.digits.begin(), number.digits.begin() + static_cast<std::ptrdiff_t>(number.count));
  if (number.exponent >= 0) {
    text.append(static_cast<std::size_t>(number.exponent), '0');
  } else {
    const auto fraction = static_cast<std::size_t>(-number.exponent);
    if (text.size() <= fraction) text.insert(0, fraction + 1 - text.size(), '0');
    text.insert(text.size() - fraction, 1, '.');
  }
  if (number.negative) text.insert(0, 1, '-');
  return Localize(text, decimal);
}

BSTR IntegerText(std::int64_t number) { return PlainText(number); }
BSTR IntegerText(std::uint64_t number) { return PlainText(number); }

}  // namespace moxel

HRESULT VarParseNumFromStr(LPCOLESTR strIn, LCID, ULONG, NUMPARSE* pnumprs, BYTE* rgbDig) try {
  using namespace moxel;
  if (pnumprs == nullptr || pnumprs->cDig < 0 || (rgbDig == nullptr && pnumprs->cDig > 0))
    return E_INVALIDARG;
  const std::u16string_view text = strIn == nullptr ? std::u16string_view() : std::u16string_view(strIn);
  const ParsedNumber parsed = ParseNumber(text, UserNumericLocale(), pnumprs->dwInFlags);
  const DecimalNumber& number = parsed.number;
  const auto room = static_cast<std::size_t>(pnumprs->cDig);
  pnumprs->cDig = 0;
  pnumprs->dwOutFlags = 0;
  pnumprs->cchUsed = 0;
  pnumprs->nBaseShift = 0;
  pnumprs->nPwr10 = 0;
  constexpr auto kMaxInt = std::int64_t{std::numeric_limits<INT>::max()};
  if (parsed.used == 0 || parsed.used > static_cast<std::size_t>(kMaxInt)) return DISP_E_TYPEMISMATCH;

  const std::size_t stored = std::min(room, number.count);
  const std::int64_t excess = static_cast<std::int64_t>(number.count - stored);
  std::transform(number.digits.begin(), number.digits.begin() + static_cast<std::ptrdiff_t>(stored), rgbDig,
                 [](char digit) { return static_cast<BYTE>(digit - '0'); });
  pnumprs->cDig = static_cast<INT>(stored);
  if (number.count == 0 && room > 0) {
    *rgbDig = 0;
    pnumprs->cDig = 1;
  }
  pnumprs->dwOutFlags = parsed.forms | (excess > 0 || number.truncated ? NUMPRS_INEXACT : 0);
  pnumprs->cchUsed = static_cast<INT>(parsed.used);
  pnumprs->nPwr10 = static_cast<INT>(std::clamp(number.exponent + excess, -kMaxInt, kMaxInt));
  return S_OK;
} catch (...) {
  return E_OUTOFMEMORY;
}
