#include "platform/automation/dates.h"

#include <chrono>
#include <cmath>

#include "platform/locale/date_format.h"

namespace moxel {
namespace {

constexpr int kSecondsPerDay = 86400;
constexpr double kBeforeFirst = -657435.0;  // 31 December 99
constexpr double kAfterLast = 2958466.0;    // 1 January 10000

SYSTEMTIME Record(int day, int second_of_day) {
  using namespace std::chrono;
  const year_month_day date = sys_days{year{1899} / 12 / 30} + days{day};
  SYSTEMTIME record{};
  record.wYear = static_cast<WORD>(static_cast<int>(date.year()));
  record.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  record.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  record.wHour = static_cast<WORD>(second_of_day / 3600);
  record.wMinute = static_cast<WORD>(second_of_day / 60 % 60);
  record.wSecond = static_cast<WORD>(second_of_day % 60);
  return record;
}

}  // namespace

bool IsDateInRange(DATE date) { return date > kBeforeFirst && date < kAfterLast; }

std::optional<std::u16string> DateText(DATE date, const TimeLocale& locale) {
  if (!IsDateInRange(date)) return std::nullopt;
  const double whole = std::trunc(date);
  int day = static_cast<int>(whole);
  int second = static_cast<int>(std::lround(std::abs(date - whole) * kSecondsPerDay));
  if (second == kSecondsPerDay) {
    ++day;
    second = 0;
  }
  if (!IsDateInRange(day)) return std::nullopt;
  const SYSTEMTIME record = Record(day, second);
  if (second == 0) return FormatDate(record, locale.date_picture, locale);
  const std::u16string time = FormatTime(record, locale.time_picture, locale);
  if (day == 0) return time;
  return FormatDate(record, locale.date_picture, locale) + u" " + time;
}

}  // namespace moxel
