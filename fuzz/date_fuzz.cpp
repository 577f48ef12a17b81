// The rule for dates of variables and the formatters behind it, against a calendar of our own.
//
// An input is the locale, then the text of a date ("02024-03-15 08:30:00.000").
#include <optional>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/user_locale.h"
#include "moxel/variant.h"
#include "variables/date_time.h"

namespace moxel::fuzz {
namespace {

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysOf(int year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

bool IsDate(const SYSTEMTIME& time) {
  return time.wYear >= 1601 && time.wYear <= 30827 && time.wMonth >= 1 && time.wMonth <= 12 &&
         time.wDay >= 1 && time.wDay <= DaysOf(time.wYear, time.wMonth);
}

bool IsTime(const SYSTEMTIME& time) {
  return time.wHour <= 23 && time.wMinute <= 59 && time.wSecond <= 59 && time.wMilliseconds <= 999;
}

// The first day of the year 1 was a Monday.
const char* DayOfTheWeek(const SYSTEMTIME& date) {
  constexpr const char* kDays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                   "Friday", "Saturday", "Sunday"};
  const int years = date.wYear - 1;
  int number = years * 365 + years / 4 - years / 100 + years / 400 + date.wDay - 1;
  for (int month = 1; month < date.wMonth; ++month) number += DaysOf(date.wYear, month);
  return kDays[number % 7];
}

// The fields of a text in the form of a date; nothing for any other text. Overflow: one is too large.
struct Fields {
  SYSTEMTIME time{};
  bool overflow = false;
};

std::optional<Fields> FieldsOf(std::u16string_view text) {
  constexpr std::u16string_view kForm = u"0000-00-00 00:00:00.000";
  constexpr WORD SYSTEMTIME::*kMembers[] = {
      &SYSTEMTIME::wYear,   &SYSTEMTIME::wMonth,  &SYSTEMTIME::wDay,         &SYSTEMTIME::wHour,
      &SYSTEMTIME::wMinute, &SYSTEMTIME::wSecond, &SYSTEMTIME::wMilliseconds};
  if (text.size() != kForm.size()) return std::nullopt;
  Fields fields;
  std::size_t begin = 0;
  for (const auto member : kMembers) {
    const std::size_t end = std::min(kForm.find_first_not_of(u'0', begin), kForm.size());
    const Variant field(text.substr(begin, end - begin));
    Variant number;
    if (!field.IsNumeric() || (end < kForm.size() && text[end] != kForm[end])) return std::nullopt;
    fields.overflow |= VariantChangeType(&number, &field, 0, VT_I2) == DISP_E_OVERFLOW;
    fields.time.*member = static_cast<WORD>(number.iVal);
    begin = end + 1;
  }
  return fields;
}

std::string Verdict(std::u16string_view text) {
  try {
    return IsDateTimeText(text) ? "a date" : "no date";
  } catch (const AutomationError& error) {
    return "error " + std::to_string(error.number());
  }
}

void CheckFormatters(const SYSTEMTIME& time, bool english) {
  char day[20];
  const INT length = GetDateFormatA(0, 0, &time, "dddd", day, sizeof day);
  RequireEqual(length != 0, IsDate(time), "date formatted");
  RequireEqual(GetTimeFormatA(0, 0, &time, nullptr, nullptr, 0) != 0, IsTime(time), "time formatted");
  if (length != 0 && english) RequireEqual(std::string(day), DayOfTheWeek(time), "day of the week");
}

}  // namespace
}  // namespace moxel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace moxel::fuzz;
  Input input(data, size);
  const UserLocale locale = ChooseLocale(input);
  const std::u16string text = WideText(input.TakeRest());
  const auto fields = FieldsOf(text);
  const char* expected = !fields                                        ? "no date"
                         : fields->overflow                             ? "error 6"
                         : IsDate(fields->time) && IsTime(fields->time) ? "a date"
                                                                        : "no date";
  RequireEqual(Verdict(text), expected, "verdict");
  if (fields) CheckFormatters(fields->time, locale.english);
  return 0;
}
