#include <gtest/gtest.h>
#include <time.h>

#include <string>

#include "moxel/platform.h"
#include "tests/platform/locale/scoped_locale.h"

namespace {

using moxel::test::ScopedEnvironment;
using moxel::test::ScopedLocale;

constexpr WORD kWrongWeekday = 99;

SYSTEMTIME Date(int year, int month, int day) {
  return {static_cast<WORD>(year),
          static_cast<WORD>(month),
          kWrongWeekday,
          static_cast<WORD>(day),
          99,
          99,
          99,
          9999};
}

SYSTEMTIME Time(int hour, int minute, int second, int millisecond = 0) {
  return {0,
          0,
          kWrongWeekday,
          0,
          static_cast<WORD>(hour),
          static_cast<WORD>(minute),
          static_cast<WORD>(second),
          static_cast<WORD>(millisecond)};
}

std::string Format(decltype(GetDateFormatA) format, const SYSTEMTIME& record, const char* picture) {
  char buffer[200];
  const INT size = format(0, 0, &record, picture, buffer, sizeof buffer);
  if (size == 0) return "(refused)";
  EXPECT_EQ(static_cast<std::size_t>(size), std::string(buffer).size() + 1);
  EXPECT_EQ(format(0, 0, &record, picture, nullptr, 0), size);
  return buffer;
}

TEST(DateFormat, AcceptsExactlyRealDates) {
  const struct {
    int year, month, day;
    bool real;
  } cases[] = {
      {1601, 1, 1, true},    {1600, 12, 31, false},     {30827, 12, 31, true},   {30828, 1, 1, false},
      {0, 1, 1, false},      {65535, 1, 1, false},      {2024, 2, 29, true},     {2023, 2, 29, false},
      {1900, 2, 29, false},  {2000, 2, 29, true},       {2024, 4, 31, false},    {2024, 4, 30, true},
      {2024, 13, 1, false},  {2024, 0, 1, false},       {2024, 1, 0, false},     {2024, 1, 32, false},
      {2024, 257, 1, false}, {2024, 1, 256 + 1, false}, {2024, 65535, 1, false},
  };
  for (const auto& c : cases) {
    const SYSTEMTIME date = Date(c.year, c.month, c.day);
    char buffer[40];
    EXPECT_EQ(GetDateFormatA(0, 0, &date, "dd MMMM yyyy", buffer, 40) != 0, c.real)
        << c.year << '-' << c.month << '-' << c.day;
  }
}

TEST(DateFormat, AcceptsExactlyRealTimes) {
  const struct {
    int hour, minute, second, millisecond;
    bool real;
  } cases[] = {{0, 0, 0, 0, true},   {23, 59, 59, 999, true}, {24, 0, 0, 0, false},   {0, 60, 0, 0, false},
               {0, 0, 60, 0, false}, {0, 0, 0, 1000, false},  {65535, 0, 0, 0, false}};
  for (const auto& c : cases) {
    const SYSTEMTIME time = Time(c.hour, c.minute, c.second, c.millisecond);
    char buffer[40];
    EXPECT_EQ(GetTimeFormatA(0, 0, &time, "hh mm ss", buffer, 40) != 0, c.real)
        << c.hour << ':' << c.minute << ':' << c.second << '.' << c.millisecond;
  }
}

TEST(DateFormat, Pictures) {
  const ScopedLocale locale("C");
  const SYSTEMTIME date = Date(2009, 3, 5);
  const SYSTEMTIME morning = Time(0, 5, 9);
  const SYSTEMTIME evening = Time(17, 45, 30);
  const struct {
    decltype(GetDateFormatA)* format;
    const SYSTEMTIME& record;
    const char* picture;
    const char* text;
  } cases[] = {
      {GetDateFormatA, date, "d dd ddd dddd ddddd", "5 05 Thu Thursday Thursday"},
      {GetDateFormatA, date, "M MM MMM MMMM", "3 03 Mar March"},
      {GetDateFormatA, date, "y yy yyy yyyy yyyyy", "9 09 2009 2009 2009"},
      {GetDateFormatA, date, "yyyyMMdd", "20090305"},
      {GetDateFormatA, date, "'d''d' d 'unclosed d", "d'd 5 unclosed d"},
      {GetDateFormatA, date, "h:m \xE9 %s", "h:m \xE9 %s"},
      {GetDateFormatA, date, "", ""},
      {GetDateFormatA, Date(1601, 1, 1), "dddd yy", "Monday 01"},
      {GetDateFormatA, Date(30827, 12, 31), "yyyy dddd", "30827 Friday"},
      {GetTimeFormatA, morning, "h hh H HH", "12 12 0 00"},
      {GetTimeFormatA, evening, "h hh H HH", "5 05 17 17"},
      {GetTimeFormatA, morning, "m mm s ss t tt", "5 05 9 09 A AM"},
      {GetTimeFormatA, evening, "mm 'h' t tt", "45 h P PM"},
      {GetTimeFormatA, Time(12, 0, 0), "hh tt yy", "12 PM yy"},
  };
  for (const auto& c : cases) EXPECT_EQ(Format(*c.format, c.record, c.picture), c.text) << c.picture;
}

TEST(DateFormat, ShortFormsOfLocales) {
  const struct {
    const char* locale;
    const char* date;
    const char* time;
  } cases[] = {
      {"C", "03/05/2009", "17:45:30"},           {"POSIX", "03/05/2009", "17:45:30"},
      {"xx_YY", "03/05/2009", "17:45:30"},       {"fr_FR.UTF-8", "05/03/2009", "17:45:30"},
      {"de_DE.UTF-8", "05.03.2009", "17:45:30"}, {"en_US.UTF-8", "03/05/2009", "05:45:30 PM"},
  };
  for (const auto& c : cases) {
    const ScopedLocale locale(c.locale);
    EXPECT_EQ(Format(GetDateFormatA, Date(2009, 3, 5), nullptr), c.date) << c.locale;
    EXPECT_EQ(Format(GetTimeFormatA, Time(17, 45, 30), nullptr), c.time) << c.locale;
  }
}

TEST(DateFormat, LocaleIsNamedByTheEnvironment) {
  const SYSTEMTIME date = Date(2009, 3, 5);
  const ScopedEnvironment all("LC_ALL", "");
  const ScopedEnvironment language("LANG", "de_DE.UTF-8");
  {
    const ScopedEnvironment category("LC_TIME", "");
    EXPECT_EQ(Format(GetDateFormatA, date, nullptr), "05.03.2009");
  }
  const ScopedEnvironment category("LC_TIME", "fr_FR.UTF-8");
  EXPECT_EQ(Format(GetDateFormatA, date, nullptr), "05/03/2009");
  const ScopedEnvironment over_all("LC_ALL", "C");
  EXPECT_EQ(Format(GetDateFormatA, date, nullptr), "03/05/2009");
}

TEST(DateFormat, Buffers) {
  const ScopedLocale locale("C");
  const SYSTEMTIME date = Date(2009, 3, 5);
  char buffer[8];
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", buffer, 7), 7);
  EXPECT_STREQ(buffer, "200903");
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", buffer, 6), 0);
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", buffer, -1), 0);
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", nullptr, 7), 0);
}

TEST(DateFormat, WithoutARecordTheClockCounts) {
  const ScopedLocale locale("C");
  char before[16], text[16], after[16];
  const auto read_clock = [](char* target) {
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    strftime(target, 16, "%Y%m%d", &local);
  };
  read_clock(before);
  ASSERT_EQ(GetDateFormatA(0, 0, nullptr, "yyyyMMdd", text, 16), 9);
  read_clock(after);
  EXPECT_TRUE(std::string(text) == before || std::string(text) == after) << text;
  EXPECT_EQ(GetTimeFormatA(0, 0, nullptr, "HHmmss", text, 16), 7);
}

}  // namespace
