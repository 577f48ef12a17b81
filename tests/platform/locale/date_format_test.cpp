#include <gtest/gtest.h>
#include <time.h>

#include <string>

#include "moxel/platform.h"
#include "tests/platform/locale/scoped_locale.h"

namespace {

using moxel::test::ScopedEnvironment;
using moxel::test::ScopedLocale;

// The fields that a record's format does not ask for are wrong.
SYSTEMTIME Date(WORD year, WORD month, WORD day) { return {year, month, 99, day, 99, 99, 99, 9999}; }
SYSTEMTIME Time(WORD hour, WORD minute, WORD second, WORD millisecond = 0) {
  return {0, 0, 99, 0, hour, minute, second, millisecond};
}

std::string Format(decltype(GetDateFormatA) format, const SYSTEMTIME* record, const char* picture) {
  char buffer[200];
  const INT size = format(0, 0, record, picture, buffer, sizeof buffer);
  if (size == 0) return "(refused)";
  EXPECT_EQ(static_cast<std::size_t>(size), std::string(buffer).size() + 1);
  EXPECT_EQ(format(0, 0, record, picture, nullptr, 0), size);
  return buffer;
}

std::string DateText(const SYSTEMTIME& day, const char* form) { return Format(GetDateFormatA, &day, form); }
std::string TimeText(const SYSTEMTIME& time, const char* form) { return Format(GetTimeFormatA, &time, form); }

TEST(DateFormat, AcceptsExactlyRealDatesAndTimes) {
  for (const WORD leap : {WORD{2024}, WORD{2000}})
    EXPECT_EQ(DateText(Date(leap, 2, 29), "MMdd"), "0229") << leap;
  const SYSTEMTIME dates[] = {Date(1600, 12, 31),   Date(30828, 1, 1), Date(65535, 1, 1),
                              Date(2023, 2, 29),    Date(1900, 2, 29), Date(2024, 4, 31),
                              Date(2024, 13, 1),    Date(2024, 0, 1),  Date(2024, 257, 1),
                              Date(2024, 65535, 1), Date(2024, 1, 0),  Date(2024, 1, 257)};
  const SYSTEMTIME times[] = {Time(24, 0, 0), Time(0, 60, 0), Time(0, 0, 60), Time(0, 0, 0, 1000)};
  for (const auto& date : dates) EXPECT_EQ(DateText(date, "yyyy"), "(refused)") << date.wMonth;
  for (const auto& time : times) EXPECT_EQ(TimeText(time, "H"), "(refused)") << time.wHour;
  EXPECT_EQ(TimeText(Time(23, 59, 59, 999), "H m s"), "23 59 59");
}

TEST(DateFormat, Pictures) {
  const ScopedLocale locale("C");
  const SYSTEMTIME date = Date(2009, 3, 5);
  EXPECT_EQ(DateText(date, "d dd ddd dddd ddddd"), "5 05 Thu Thursday Thursday");
  EXPECT_EQ(DateText(date, "M MM MMM MMMM"), "3 03 Mar March");
  EXPECT_EQ(DateText(date, "y yy yyyy yyyyy yyyyMMdd"), "9 09 2009 2009 20090305");
  EXPECT_EQ(DateText(date, "'d''d' d h:m \xE9 %s 'unclosed d"), "d'd 5 h:m \xE9 %s unclosed d");
  EXPECT_EQ(DateText(date, ""), "");
  EXPECT_EQ(DateText(Date(1601, 1, 1), "dddd yy"), "Monday 01");
  EXPECT_EQ(DateText(Date(30827, 12, 31), "yyyy dddd"), "30827 Friday");
  EXPECT_EQ(TimeText(Time(0, 5, 9), "h hh H HH m mm s ss t tt"), "12 12 0 00 5 05 9 09 A AM");
  EXPECT_EQ(TimeText(Time(17, 45, 30), "h hh H HH mm 'h' t tt"), "5 05 17 17 45 h P PM");
  EXPECT_EQ(TimeText(Time(12, 0, 0), "hh tt yy"), "12 PM yy");
}

TEST(DateFormat, ShortFormsOfTheLocaleThatTheEnvironmentNames) {
  const auto forms = [](const char* all, const char* category, const char* language) {
    const ScopedEnvironment first("LC_ALL", all), second("LC_TIME", category), third("LANG", language);
    return DateText(Date(2009, 3, 5), nullptr) + " " + TimeText(Time(17, 45, 30), nullptr);
  };
  EXPECT_EQ(forms("C", "fr_FR.UTF-8", "de_DE.UTF-8"), "03/05/2009 17:45:30");
  EXPECT_EQ(forms("", "fr_FR.UTF-8", "de_DE.UTF-8"), "05/03/2009 17:45:30");
  EXPECT_EQ(forms("", "", "de_DE.UTF-8"), "05.03.2009 17:45:30");
  EXPECT_EQ(forms("", "", ""), "03/05/2009 17:45:30");
  EXPECT_EQ(forms("POSIX", "", ""), "03/05/2009 17:45:30");
  EXPECT_EQ(forms("xx_YY", "", ""), "03/05/2009 17:45:30");
  EXPECT_EQ(forms("en_US.UTF-8", "", ""), "03/05/2009 05:45:30 PM");
}

TEST(DateFormat, Buffers) {
  const SYSTEMTIME date = Date(2009, 3, 5);
  char buffer[8];
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", buffer, 7), 7);
  EXPECT_STREQ(buffer, "200903");
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", buffer, 6), 0);
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", buffer, -1), 0);
  EXPECT_EQ(GetDateFormatA(0, 0, &date, "yyyyMM", nullptr, 7), 0);
}

TEST(DateFormat, WithoutARecordTheClockCounts) {
  const time_t before = time(nullptr);
  const std::string text = Format(GetDateFormatA, nullptr, "yyyyMMdd");
  bool found = false;
  for (const time_t moment : {before, time(nullptr)}) {
    char day[16];
    found |= strftime(day, sizeof day, "%Y%m%d", localtime(&moment)) == 8 && text == day;
  }
  EXPECT_TRUE(found) << text;
  EXPECT_EQ(Format(GetTimeFormatA, nullptr, "HHmmss").size(), 6u);
}

}  // namespace
