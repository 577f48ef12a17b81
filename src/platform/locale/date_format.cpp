#include "platform/locale/date_format.h"

#include <time.h>

#include <charconv>
#include <chrono>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/locale/code_pages.h"

namespace moxel {
namespace {

constexpr WORD kFirstYear = 1601;
constexpr WORD kLastYear = 30827;

std::chrono::year_month_day CalendarDate(const SYSTEMTIME& date) {
  return std::chrono::year(date.wYear) / date.wMonth / date.wDay;
}

void PutNumber(std::u16string& text, unsigned number, std::size_t least_digits) {
  char digits[16];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
  const auto count = static_cast<std::size_t>(end - digits);
  if (count < least_digits) text.append(least_digits - count, u'0');
  text.append(digits, end);
}

void PutYear(std::u16string& text, unsigned year, std::size_t run) {
  if (run <= 2) {
    PutNumber(text, year % 100, run);
  } else {
    PutNumber(text, year, 4);
  }
}

std::size_t Run(std::u16string_view picture) {
  const std::size_t end = picture.find_first_not_of(picture.front());
  return end == picture.npos ? picture.size() : end;
}

// Appends a text between apostrophes and gives the part of the picture it takes.
std::size_t PutQuoted(std::u16string& text, std::u16string_view picture) {
  std::size_t i = 1;
  for (; i < picture.size(); ++i) {
    if (picture[i] == u'\'') {
      if (i + 1 == picture.size() || picture[i + 1] != u'\'') return i + 1;
      ++i;
    }
    text += picture[i];
  }
  return i;
}

// `put_field` appends the field of a letter and its run, or answers false for a letter that is none.
template <class PutField>
std::u16string Format(std::u16string_view picture, PutField put_field) {
  std::u16string text;
  while (!picture.empty()) {
    std::size_t taken = 0;
    if (picture.front() == u'\'') {
      taken = PutQuoted(text, picture);
    } else {
      taken = Run(picture);
      if (!put_field(text, picture.front(), taken)) text += picture.substr(0, taken);
    }
    picture.remove_prefix(taken);
  }
  return text;
}

// The calendar's own types keep the low byte of a month or day only, so the ranges are tested first.
bool IsDate(const SYSTEMTIME& date) {
  return date.wYear >= kFirstYear && date.wYear <= kLastYear && date.wMonth <= 12 && date.wDay <= 31 &&
         CalendarDate(date).ok();
}

bool IsTime(const SYSTEMTIME& time) {
  return time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

SYSTEMTIME Now() {
  timespec now{};
  tm local{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  ::localtime_r(&now.tv_sec, &local);
  const auto word = [](long value) { return static_cast<WORD>(value); };
  return {word(local.tm_year + 1900L), word(local.tm_mon + 1L),      word(local.tm_wday),
          word(local.tm_mday),         word(local.tm_hour),          word(local.tm_min),
          word(local.tm_sec),          word(now.tv_nsec / 1'000'000)};
}

// The answer of both entry points for a finished text.
INT Deliver(const std::u16string& text, LPSTR buffer, INT room) {
  const std::string bytes = EncodeAnsi(text);
  const std::size_t needed = bytes.size() + 1;
  if (needed > static_cast<std::size_t>(std::numeric_limits<INT>::max())) return 0;
  if (room == 0) return static_cast<INT>(needed);
  if (room < 0 || buffer == nullptr || needed > static_cast<std::size_t>(room)) return 0;
  std::memcpy(buffer, bytes.c_str(), needed);
  return static_cast<INT>(needed);
}

}  // namespace

std::u16string FormatDate(const SYSTEMTIME& date, std::u16string_view picture, const TimeLocale& locale) {
  const std::size_t month = date.wMonth - 1u;
  const std::size_t day = std::chrono::weekday(CalendarDate(date)).c_encoding();
  return Format(picture, [&](std::u16string& text, char16_t letter, std::size_t run) {
    switch (letter) {
      case u'd':
        if (run <= 2) {
          PutNumber(text, date.wDay, run);
        } else {
          text += run == 3 ? locale.short_days[day] : locale.days[day];
        }
        return true;
      case u'M':
        if (run <= 2) {
          PutNumber(text, date.wMonth, run);
        } else {
          text += run == 3 ? locale.short_months[month] : locale.months[month];
        }
        return true;
      case u'y': PutYear(text, date.wYear, run); return true;
      default: return false;
    }
  });
}

std::u16string FormatTime(const SYSTEMTIME& time, std::u16string_view picture, const TimeLocale& locale) {
  return Format(picture, [&](std::u16string& text, char16_t letter, std::size_t run) {
    const std::size_t digits = run == 1 ? 1 : 2;
    const std::u16string& half = time.wHour < 12 ? locale.am : locale.pm;
    switch (letter) {
      case u'H': PutNumber(text, time.wHour, digits); return true;
      case u'h': PutNumber(text, time.wHour % 12 == 0 ? 12u : time.wHour % 12u, digits); return true;
      case u'm': PutNumber(text, time.wMinute, digits); return true;
      case u's': PutNumber(text, time.wSecond, digits); return true;
      case u't': text += run == 1 ? half.substr(0, 1) : half; return true;
      default: return false;
    }
  });
}

}  // namespace moxel

INT GetDateFormatA(LCID, DWORD, const SYSTEMTIME* lpDate, LPCSTR lpFormat, LPSTR lpDateStr, INT cchDate) try {
  using namespace moxel;
  const SYSTEMTIME date = lpDate == nullptr ? Now() : *lpDate;
  if (!IsDate(date)) return 0;
  const TimeLocale& locale = UserTimeLocale();
  const std::u16string picture = lpFormat == nullptr ? locale.date_picture : DecodeAnsi(lpFormat);
  return Deliver(FormatDate(date, picture, locale), lpDateStr, cchDate);
} catch (...) {
  return 0;
}

INT GetTimeFormatA(LCID, DWORD, const SYSTEMTIME* lpTime, LPCSTR lpFormat, LPSTR lpTimeStr, INT cchTime) try {
  using namespace moxel;
  const SYSTEMTIME time = lpTime == nullptr ? Now() : *lpTime;
  if (!IsTime(time)) return 0;
  const TimeLocale& locale = UserTimeLocale();
  const std::u16string picture = lpFormat == nullptr ? locale.time_picture : DecodeAnsi(lpFormat);
  return Deliver(FormatTime(time, picture, locale), lpTimeStr, cchTime);
} catch (...) {
  return 0;
}
