#include <gtest/gtest.h>
#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_str.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <limits>
#include <locale>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "reference_dates.h"
#include "reference_engine.h"
#include "samples.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using namespace std::string_literals;
using Julian = unsigned long long;

constexpr Julian kDay = 86400000;
constexpr Julian kSample = 212576407629000;  // 5 March 2024 14:07:09

/// Starts each test with all settings zero, as at the start of a program.
class DateTime : public testing::Test {
 protected:
  DateTime() {
    zn_lib::setDateTimeFormat(zn_lib::MONTH_DAY_YEAR, zn_lib::MONTH_NUMBER, '\0', '\0', '\0',
                              false);
  }
};

std::string fieldsOf(const zn_lib::date_time_record& r) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << r.year << '-' << r.month << '-' << r.day << ' ' << r.hour << ':' << r.minute << ':'
       << r.second;
  return text.str();
}

TEST_F(DateTime, HeaderExamples) {
  zn_lib::defaultDateTimeFormat();
  const Julian julian = zn_lib::dateToJulian("2024-03-05T14:07:09");
  EXPECT_EQ(julian, 212576407629000u);
  EXPECT_EQ(zn_lib::julianToISO(julian), "2024-03-05 14:07:09");
  EXPECT_EQ(zn_lib::julianToISO(julian + 86400000), "2024-03-06 14:07:09");
}

// ---- Settings

// Initialised before any test changes the settings.
const zn_lib::date_time_set settingsAtLoad = zn_lib::getDateTimeFormat();

TEST(DateTimeAtLoad, SettingsAreAllZero) {
  EXPECT_EQ(settingsAtLoad.dateFormat, 0);
  EXPECT_EQ(settingsAtLoad.monthFormat, 0);
  EXPECT_EQ(settingsAtLoad.dateSeparator, '\0');
  EXPECT_EQ(settingsAtLoad.dateTimeSeparator, '\0');
  EXPECT_EQ(settingsAtLoad.timeSeparator, '\0');
  EXPECT_FALSE(settingsAtLoad.useTime);
}

TEST_F(DateTime, SettersAndGettersAgree) {
  zn_lib::setDateFormat(zn_lib::YEAR_MONTH_DAY);
  zn_lib::setMonthFormat(zn_lib::MONTH_SHORT_NAME);
  zn_lib::setDateSeparator('a');
  zn_lib::setDateTimeSeparator('b');
  zn_lib::setTimeSeparator('c');
  zn_lib::setUseTime(true);
  EXPECT_EQ(zn_lib::getDateFormat(), zn_lib::YEAR_MONTH_DAY);
  EXPECT_EQ(zn_lib::getMonthFormat(), zn_lib::MONTH_SHORT_NAME);
  EXPECT_EQ(zn_lib::getDateSeparator(), 'a');
  EXPECT_EQ(zn_lib::getDateTimeSeparator(), 'b');
  EXPECT_EQ(zn_lib::getTimeSeparator(), 'c');
  EXPECT_TRUE(zn_lib::isUseTime());
  const zn_lib::date_time_set all = zn_lib::getDateTimeFormat();
  EXPECT_EQ(all.dateFormat, zn_lib::YEAR_MONTH_DAY);
  EXPECT_EQ(all.monthFormat, zn_lib::MONTH_SHORT_NAME);
  EXPECT_EQ(std::string({all.dateSeparator, all.dateTimeSeparator, all.timeSeparator}), "abc");
  EXPECT_TRUE(all.useTime);

  zn_lib::setDateFormat(static_cast<zn_lib::DATE_FORMAT>(-7));
  EXPECT_EQ(zn_lib::getDateFormat(), -7) << "setters check nothing";
}

TEST_F(DateTime, DefaultFormat) {
  zn_lib::defaultDateTimeFormat();
  const zn_lib::date_time_set all = zn_lib::getDateTimeFormat();
  EXPECT_EQ(all.dateFormat, 2);
  EXPECT_EQ(all.monthFormat, 0);
  EXPECT_EQ(std::string({all.dateSeparator, all.dateTimeSeparator, all.timeSeparator}), "- :");
  EXPECT_TRUE(all.useTime);
}

TEST_F(DateTime, EnumerationsHoldAnyInt) {
  static_assert(sizeof(zn_lib::DATE_FORMAT) == 4 && sizeof(zn_lib::MONTH_FORMAT) == 4,
                "32 bits each");
  EXPECT_EQ(zn_lib::MONTH_DAY_YEAR, 0);
  EXPECT_EQ(zn_lib::DAY_MONTH_YEAR, 1);
  EXPECT_EQ(zn_lib::YEAR_MONTH_DAY, 2);
  EXPECT_EQ(zn_lib::MONTH_NUMBER, 0);
  EXPECT_EQ(zn_lib::MONTH_SHORT_NAME, 1);
  EXPECT_EQ(zn_lib::MONTH_FULL_NAME, 2);
}

// ---- Records

TEST_F(DateTime, ResetDateTimeSetsNoon) {
  zn_lib::date_time_record record = {1, 2, 3, 4, 5, 6.5};
  zn_lib::resetDateTime(record);
  EXPECT_EQ(fieldsOf(record), "0-0-0 12:0:0");
}

TEST_F(DateTime, IsValidDate) {
  const struct {
    unsigned short day, month, year;
    bool valid;
  } cases[] = {
      {29, 2, 1900, false},         {29, 2, 2000, true},  {29, 2, 2023, false},
      {29, 2, 2024, true},          {30, 2, 2024, false}, {28, 2, 2023, true},
      {31, 4, 2024, false},         {30, 4, 2024, true},  {31, 12, 0, true},
      {31, 12, 65535, true},        {0, 1, 2024, false},  {32, 1, 2024, false},
      {1, 0, 2024, false},          {1, 13, 2024, false}, {29, 2, 0, true},
      {65535, 65535, 65535, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::isValidDate(c.day, c.month, c.year), c.valid)
        << c.day << '.' << c.month << '.' << c.year;
  }
}

TEST_F(DateTime, IsValidDateTime) {
  const struct {
    zn_lib::date_time_record record;
    bool valid;
  } cases[] = {
      {{5, 3, 2024, 23, 59, 59.999}, true},
      {{5, 3, 2024, 24, 0, 0.0}, false},
      {{5, 3, 2024, 0, 60, 0.0}, false},
      {{5, 3, 2024, 0, 0, 60.0}, false},
      {{5, 3, 2024, 0, 0, -1.0}, true},
      {{31, 4, 2024, 0, 0, 0.0}, false},
      {{5, 3, 2024, 0, 0, std::nan("")}, false},
      {{65535, 65535, 65535, 65535, 65535, 1e300}, false},
  };
  for (const auto& c : cases) {
    zn_lib::date_time_record record = c.record;
    EXPECT_EQ(zn_lib::isValidDateTime(record), c.valid) << fieldsOf(record);
  }
}

TEST_F(DateTime, ValidDateRepairsRecords) {
  const struct {
    unsigned short day, month, year, repairedDay, repairedMonth;
  } cases[] = {
      {30, 2, 2023, 28, 2},         {30, 2, 2024, 29, 2}, {29, 2, 2023, 28, 2},
      {29, 2, 2024, 29, 2},         {5, 14, 2024, 5, 2},  {40, 24, 2024, 31, 0},
      {31, 36, 2024, 31, 0},        {5, 13, 2024, 5, 1},  {5, 23, 2024, 5, 11},
      {31, 23, 2024, 30, 11},       {0, 0, 2024, 1, 1},   {31, 4, 2024, 30, 4},
      {32, 12, 2024, 31, 12},       {0, 24, 2024, 1, 0},  {31, 26, 1900, 28, 2},
      {65535, 65535, 65535, 31, 3},
  };
  for (const auto& c : cases) {
    zn_lib::date_time_record record = {c.day, c.month, c.year, 99, 98, 97.5};
    zn_lib::validDate(record);
    EXPECT_EQ(record.day, c.repairedDay) << c.day << '.' << c.month << '.' << c.year;
    EXPECT_EQ(record.month, c.repairedMonth) << c.day << '.' << c.month << '.' << c.year;
    EXPECT_EQ(record.year, c.year);
    EXPECT_EQ(record.hour, 99);
    EXPECT_EQ(record.minute, 98);
    EXPECT_EQ(record.second, 97.5);
  }
}

TEST_F(DateTime, GetMonthDays) {
  const unsigned short expected[] = {0, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 0, 0};
  for (unsigned short month = 0; month < 15; ++month) {
    EXPECT_EQ(zn_lib::getMonthDays(month), expected[month]) << month;
  }
  EXPECT_EQ(zn_lib::getMonthDays(65535), 0);
}

TEST_F(DateTime, GetDayOfYear) {
  const struct {
    unsigned short day, month, year, dayOfYear;
  } cases[] = {
      {1, 3, 2024, 61},     {1, 3, 2023, 60},       {31, 12, 2023, 365},   {31, 12, 2024, 366},
      {40, 3, 2023, 99},    {7, 1, 2024, 7},        {7, 0, 2024, 7},       {5, 2, 2024, 36},
      {1, 13, 2023, 335},   {1, 14, 2024, 336},     {1, 65535, 2023, 335}, {65535, 1, 2024, 65535},
      {65535, 2, 2024, 30}, {65535, 12, 2023, 333},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::getDayOfYear(c.day, c.month, c.year), c.dayOfYear)
        << c.day << '.' << c.month << '.' << c.year;
    zn_lib::date_time_record record = {c.day, c.month, c.year, 0, 0, 0.0};
    EXPECT_EQ(zn_lib::getDayOfYear(record), c.dayOfYear);
  }
}

TEST_F(DateTime, GetAstronomicDay) {
  const struct {
    unsigned short day, month, year, astronomicDay;
  } cases[] = {
      {21, 12, 2023, 0},        {22, 12, 2023, 1},   {31, 12, 2023, 10},
      {1, 1, 2024, 11},         {20, 12, 2023, 364}, {20, 12, 2024, 365},
      {65535, 12, 2023, 65514}, {65530, 1, 2024, 4}, {21, 11, 2023, 335},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::getAstronomicDay(c.day, c.month, c.year), c.astronomicDay)
        << c.day << '.' << c.month;
    zn_lib::date_time_record record = {c.day, c.month, c.year, 0, 0, 0.0};
    EXPECT_EQ(zn_lib::getAstronomicDay(record), c.astronomicDay);
  }
}

TEST_F(DateTime, MonthNamesAndNumbers) {
  const char* const names[] = {"January",   "February", "March",    "April",
                               "May",       "June",     "July",     "August",
                               "September", "October",  "November", "December"};
  for (unsigned short month = 1; month <= 12; ++month) {
    const std::string name = names[month - 1];
    EXPECT_EQ(zn_lib::getMonthName(month, false), name);
    EXPECT_EQ(zn_lib::getMonthName(month, true), name.substr(0, 3));
    EXPECT_EQ(zn_lib::getMonthNumber(name), month);
    EXPECT_EQ(zn_lib::getMonthNumber(name.substr(0, 3)), month);
  }
  EXPECT_EQ(zn_lib::getMonthName(0, false), "");
  EXPECT_EQ(zn_lib::getMonthName(13, true), "");
  EXPECT_EQ(zn_lib::getMonthName(65535, true), "");

  for (const char* text : {"Sept", "SEP", "september", "Sepulchre"})
    EXPECT_EQ(zn_lib::getMonthNumber(text), 9) << text;
  EXPECT_EQ(zn_lib::getMonthNumber("MARCH"), 3);
  for (const std::string& text : {"ma"s, "xyz"s, "07"s, ""s, " jan"s, "ja\0"s, "\xC4pr"s}) {
    EXPECT_EQ(zn_lib::getMonthNumber(text), 12) << text;
  }
}

// ---- Julian values

TEST_F(DateTime, DateToJulianReferenceValues) {
  EXPECT_EQ(zn_lib::dateToJulian(2000, 1, 1, 0, 0, 0.0), 211813488000000u) << "noon without time";
  EXPECT_EQ(zn_lib::dateToJulian(2000, 1, 1, 23, 59, 59.0), 211813488000000u);
  zn_lib::setUseTime(true);
  EXPECT_EQ(zn_lib::dateToJulian(2000, 1, 1, 0, 0, 0.0), 211813444800000u);
  EXPECT_EQ(zn_lib::dateToJulian(1970, 1, 1, 0, 0, 0.0), 210866760000000u);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 14, 7, 9.0), kSample);
  zn_lib::date_time_record record = {5, 3, 2024, 14, 7, 9.0};
  EXPECT_EQ(zn_lib::dateToJulian(record), kSample);
}

TEST_F(DateTime, DateToJulianRejectsInvalidDates) {
  EXPECT_EQ(zn_lib::dateToJulian(2023, 2, 29, 0, 0, 0.0), 0u);
  EXPECT_NE(zn_lib::dateToJulian(2024, 2, 29, 0, 0, 0.0), 0u);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 0, 1, 0, 0, 0.0), 0u);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 13, 1, 0, 0, 0.0), 0u);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 1, 32, 0, 0, 0.0), 0u);
}

TEST_F(DateTime, DateToJulianDoesNotCheckTheTime) {
  zn_lib::setUseTime(true);
  const Julian midnight = zn_lib::dateToJulian(2024, 3, 5, 0, 0, 0.0);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 25, 0, 0.0), midnight + 25 * 3600000);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, 61, 0.0), midnight + 61 * 60000);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, 0, 61.0), midnight + 61000);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, -1, 0, 0.0), midnight - 3600000);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, 0, -1.5), midnight - 1500);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, 0, 9.9999), midnight + 9999) << "cut, not rounded";
}

TEST_F(DateTime, DateToJulianIsExactForEveryHourAndMinute) {
  zn_lib::setUseTime(true);
  const Julian midnight = zn_lib::dateToJulian(2024, 3, 5, 0, 0, 0.0);
  for (const int count : {600, 40000, 65535, 1 << 30, std::numeric_limits<int>::max(),
                          std::numeric_limits<int>::min()}) {
    const Julian times = static_cast<Julian>(count);
    EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, count, 0, 0.0), midnight + times * 3600000);
    EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, count, 0.0), midnight + times * 60000);
  }
  zn_lib::date_time_record record = {5, 3, 2024, 65535, 65535, 65535.0};
  EXPECT_EQ(zn_lib::dateToJulian(record), midnight + 65535ull * (3600000 + 60000 + 1000));
}

TEST_F(DateTime, LaterYearsAreCheckedByTheirLow16Bits) {
  constexpr Julian cycle = 146097;  // days in 400 years
  const Julian earlier = zn_lib::dateToJulian(2, 1, 1, 0, 0, 0.0);
  // The last value is just below the end of the 64 bits.
  for (const int times : {1, 65, 300, 356}) {
    const Julian later = zn_lib::dateToJulian(2 + 400 * 4096 * times, 1, 1, 0, 0, 0.0);
    EXPECT_EQ(later, earlier + static_cast<Julian>(times) * 4096 * cycle * kDay)
        << "and count in full";
  }
  const Julian later = zn_lib::dateToJulian(2 + 400 * 4096, 1, 1, 0, 0, 0.0);
  EXPECT_EQ(fieldsOf(zn_lib::julianToDate(later)), "2-1-1 12:0:0");
  EXPECT_EQ(zn_lib::dateToJulian(65537, 2, 29, 0, 0, 0.0), 0u) << "year 1 has none";
}

TEST_F(DateTime, ANegativeYearCountsAsTheYearAfterIt) {
  // The year -4 counts as -3, a common year. The check sees the low 16 bits of the year.
  EXPECT_EQ(zn_lib::dateToJulian(-1, 6, 1, 0, 0, 0.0), zn_lib::dateToJulian(0, 6, 1, 0, 0, 0.0));
  EXPECT_EQ(zn_lib::dateToJulian(-5, 6, 1, 0, 0, 0.0) + 365 * kDay,
            zn_lib::dateToJulian(-4, 6, 1, 0, 0, 0.0));
}

TEST_F(DateTime, DateToJulianOfText) {
  EXPECT_EQ(zn_lib::dateToJulian(""), 0u);
  EXPECT_EQ(zn_lib::dateToJulian("2023-02-29"), 0u);
  for (const bool useTime : {false, true}) {
    zn_lib::setUseTime(useTime);
    EXPECT_EQ(zn_lib::dateToJulian("hello"), 148699584000000u);
    EXPECT_EQ(zn_lib::dateToJulian("\0"s), 148699584000000u);
  }
  EXPECT_EQ(zn_lib::dateToJulian("2024-03-05 14:07:09"), kSample);
}

TEST_F(DateTime, JulianToDate) {
  EXPECT_EQ(fieldsOf(zn_lib::julianToDate(kSample)), "2024-3-5 14:7:9");
  EXPECT_EQ(fieldsOf(zn_lib::julianToDate(211813444799999)), "1999-12-31 23:59:59.999");
  EXPECT_EQ(fieldsOf(zn_lib::julianToDate(0)), "60823-11-24 12:0:0") << "-4713 cut to 16 bits";
  EXPECT_EQ(zn_lib::julianToDate(kSample + 250).second, 9.25);
  EXPECT_EQ(fieldsOf(zn_lib::julianToDate(zn_lib::dateToJulian(2024, 3, 5, 14, 7, 9.0))),
            "2024-3-5 12:0:0")
      << "without time";
}

TEST_F(DateTime, RoundTripKeepsEveryMillisecondOfADay) {
  zn_lib::setUseTime(true);
  const Julian midnight = zn_lib::dateToJulian(2024, 3, 5, 0, 0, 0.0);
  for (Julian ms = 0; ms < kDay; ms += 7) {
    const zn_lib::date_time_record r = zn_lib::julianToDate(midnight + ms);
    ASSERT_EQ(r.hour, ms / 3600000) << ms;
    ASSERT_EQ(r.minute, ms / 60000 % 60) << ms;
    ASSERT_NEAR(r.second, static_cast<double>(ms % 60000) / 1000.0, 1e-10) << ms;
    ASSERT_EQ(r.day, 5) << ms;
  }
  const zn_lib::date_time_record quarter = {5, 3, 2024, 14, 7, 9.25};
  zn_lib::date_time_record record = quarter;
  record = zn_lib::julianToDate(zn_lib::dateToJulian(record));
  EXPECT_EQ(record.second, 9.25);
}

/// Reference model of the calendar, which advances by days from 1 January of year 1.
class Calendar {
 public:
  unsigned short day = 1, month = 1, year = 1;
  bool isLeapYear() const { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }
  void next() {
    const int lengths[] = {31, isLeapYear() ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (++day <= lengths[month - 1]) return;
    day = 1;
    if (++month <= 12) return;
    month = 1;
    ++year;
  }
};

TEST_F(DateTime, EveryDateOfTheYears1To65535) {
  const zn_lib::date_time_record february29 = {29, 2, 300, 12, 0, 0.0};
  const Julian first =
      211813488000000 - 730119 * kDay;  // 1 January 2000 is day 730119 from the start
  int dates = 0;
  int exceptions = 0;
  // The year after 65535 wraps to 0.
  for (Calendar date; date.year != 0; date.next(), ++dates) {
    const Julian julian = zn_lib::dateToJulian(date.year, date.month, date.day, 0, 0, 0.0);
    ASSERT_EQ(julian, first + static_cast<Julian>(dates) * kDay)
        << date.year << '-' << date.month << '-' << date.day;
    const zn_lib::date_time_record back = zn_lib::julianToDate(julian);
    if (date.year == 300 && date.month == 3 && date.day == 1) {
      ++exceptions;
      EXPECT_EQ(fieldsOf(back), fieldsOf(february29));
      continue;
    }
    ASSERT_TRUE(back.year == date.year && back.month == date.month && back.day == date.day &&
                back.hour == 12 && back.minute == 0 && back.second == 0.0)
        << fieldsOf(back) << " for " << date.year << '-' << date.month << '-' << date.day;
    const zn_lib::date_time_record last = zn_lib::julianToDate(julian + kDay / 2 - 1);
    ASSERT_TRUE(last.year == date.year && last.month == date.month && last.day == date.day &&
                last.hour == 23 && last.minute == 59 && last.second >= 59.998)
        << fieldsOf(last) << " for " << date.year << '-' << date.month << '-' << date.day;
  }
  EXPECT_EQ(dates, 23936166);
  EXPECT_EQ(exceptions, 1);
}

TEST_F(DateTime, FiveDigitYearsHaveATimeOfDay) {
  zn_lib::defaultDateTimeFormat();
  for (const int year : {10000, 54078, 54079, 60000, 65535}) {
    const Julian julian = zn_lib::dateToJulian(year, 3, 5, 14, 7, 9.25);
    EXPECT_EQ(fieldsOf(zn_lib::julianToDate(julian)), std::to_string(year) + "-3-5 14:7:9.25");
    EXPECT_EQ(zn_lib::julianToISO(julian), std::to_string(year) + "-03-05 14:07:9.25");
  }
}

TEST_F(DateTime, ConvertingBackMayLoseAMillisecond) {
  zn_lib::setUseTime(true);
  const Julian midnight = zn_lib::dateToJulian(2024, 3, 5, 0, 0, 0.0);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, 0, 1.001), midnight + 1000);
  EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 0, 0, 1.001 + 0.0005), midnight + 1001);
  Julian changed = 0;
  Julian instants = 0;
  for (Julian ms = 0; ms < kDay; ms += 7, ++instants) {
    zn_lib::date_time_record record = zn_lib::julianToDate(midnight + ms);
    const Julian back = zn_lib::dateToJulian(record);
    ASSERT_TRUE(back == midnight + ms || (back == midnight + ms - 1 && ms % 1000 != 0)) << ms;
    changed += back != midnight + ms ? 1 : 0;
    record.second += 0.0005;
    ASSERT_EQ(zn_lib::dateToJulian(record), midnight + ms) << "with half a millisecond more";
  }
  EXPECT_NEAR(static_cast<double>(changed) / static_cast<double>(instants), 0.5, 0.01);
}

TEST_F(DateTime, DateToJulianDays) {
  const auto days = [](unsigned short year, unsigned short month, unsigned short day,
                       unsigned short hour, unsigned short minute = 0, double second = 0.0) {
    return zn_lib::dateToJulianDays({day, month, year, hour, minute, second});
  };
  EXPECT_EQ(days(2000, 1, 1, 12), 2451545.0);
  EXPECT_DOUBLE_EQ(days(2000, 1, 1, 0, 30), 2451544.5 + 30 / 3600.0);
  EXPECT_DOUBLE_EQ(days(2000, 1, 1, 0, 0, 43.2), 2451544.5 + 0.0005);
  EXPECT_EQ(days(1582, 10, 4, 12), 2299160.0);
  EXPECT_EQ(days(1582, 10, 15, 0), 2299170.5) << "still the Julian calendar";
  EXPECT_EQ(days(1582, 7, 1, 0), 2299064.5);
  EXPECT_NEAR(days(1582, 10, 15, 0, 0, 0.001), 2299160.5, 1e-6)
      << "Gregorian from the first instant after it";
  EXPECT_EQ(days(1582, 11, 1, 0), 2299177.5);
  EXPECT_EQ(days(1582, 2, 1, 0), 2298914.5 + 0.0) << "January and February of 1582 belong to 1581";
  EXPECT_EQ(days(1582, 9, 1, 0), 2299126.5);
  for (const unsigned short year : std::array<unsigned short, 2>{2000, 2001}) {
    for (unsigned short month = 1; month <= 12; ++month) {
      const auto next = static_cast<unsigned short>(month + 1);
      const double length = month == 12 ? 31 : days(year, next, 1, 0) - days(year, month, 1, 0);
      const bool isShortFebruary = month == 2 && year == 2001;
      EXPECT_EQ(length, zn_lib::getMonthDays(month) - (isShortFebruary ? 1 : 0)) << year << month;
    }
  }
  EXPECT_EQ(days(0, 1, 1, 0), 65535 * 365.25 - 0.75 + (2 - 655 + 163) + 428 + 1 + 1720994.5)
      << "year -1 is 65535";
  EXPECT_TRUE(std::isnan(days(2000, 1, 1, 0, 0, std::nan(""))));
  EXPECT_DOUBLE_EQ(days(65535, 65535, 65535, 65535, 65535, 8640000.0),
                   65535 + 65535 / 24.0 + 65535 / 3600.0 + 100.0 + 23936658 + (2 - 655 + 163) +
                       2005408 + 1720994.5)
      << "the largest fields";

  zn_lib::setUseTime(true);
  for (int day = 1; day <= 28; ++day) {
    for (const int year : {1583, 1700, 1900, 2024, 9999}) {
      const Julian julian = zn_lib::dateToJulian(year, 7, day, 6, 0, 0.0);
      EXPECT_EQ(days(static_cast<unsigned short>(year), 7, static_cast<unsigned short>(day), 6),
                static_cast<double>(julian) / static_cast<double>(kDay));
    }
  }
}

// ---- ISO 8601

TEST_F(DateTime, ParseISOdate) {
  const std::string noDate = "0-1-1 12:0:0";
  const struct {
    std::string text, fields;
  } cases[] = {
      {"2024", "2024-1-1 12:0:0"},
      {"2024-03", "2024-3-1 12:0:0"},
      {"2024-03-05", "2024-3-5 12:0:0"},
      {"20240305", "2024-3-5 12:0:0"},
      {"2024-0305", "2024-3-5 12:0:0"},
      {"2024-03-05T14:07:09", "2024-3-5 14:7:9"},
      {"2024-03-05 14:07:09", "2024-3-5 14:7:9"},
      {"2024-03-05\t14:07:09", "2024-3-5 14:7:9"},
      {"2024-03-05\n14:07", "2024-3-5 14:7:0"},
      {"20240305T1407", "2024-3-5 14:7:0"},
      {"20240305140709", "2024-3-5 14:7:9"},
      {"2024-03-05 14", "2024-3-5 14:0:0"},
      {"2024T14", "2024-1-1 14:0:0"},
      {"2024:30", "2024-1-1 12:30:0"},
      {"2024::30", "2024-1-1 12:0:30"},
      {"2024--05", "2024-1-5 12:0:0"},
      {"2024-", "2024-1-1 12:0:0"},
      {"2024-00-00", "2024-1-1 12:0:0"},
      {"0000", "0-1-1 12:0:0"},
      {"2024-03-05 00:00:00", "2024-3-5 0:0:0"},
      {"2024-13-45", "2024-13-45 12:0:0"},
      {"2024-03-05 99:99:99", "2024-3-5 99:99:99"},
      {"", noDate},
      {"hello", noDate},
      {"05/03/2024", noDate},
      {"2024-03-05Z", noDate},
      {"2024-03-05t14:07:09", noDate},
      {"2024-03-05T14:07:09.5", noDate},
      {" 2024-03-05", noDate},
      {"2024-03-05 ", "2024-3-5 12:0:0"},
      {"2024-3-5", noDate},
      {"202", noDate},
      {"2024-03-05\0"s, noDate},
      {"2024---05", noDate},
      {"2024-03-05  14", noDate},
  };
  for (const auto& c : cases) {
    zn_lib::date_time_record record = {9, 9, 9, 9, 9, 9.0};
    zn_lib::parseISOdate(c.text, record);
    EXPECT_EQ(fieldsOf(record), c.fields) << c.text;
  }
}

TEST_F(DateTime, ParseISOdateAgreesWithItsDefinition) {
  static const reference::Engine isoDateTime = reference::engine(definitions::isoDateTime);
  const auto agrees = [](const std::string& text) {
    zn_lib::date_time_record record;
    zn_lib::parseISOdate(text, record);
    ASSERT_EQ(reference::fieldsOf(record), reference::fieldsByPattern(text, isoDateTime)) << text;
  };
  forEveryText("2-T :\t", 6, agrees);
  forEveryText("0-T:x\n\0\xB2"s, 5, agrees);
  // Every order of parts after the year.
  const std::string parts[] = {"-", "12", ":", "T", " ", "\n", "3"};
  forEveryText("0123456"s, 6, [&](const std::string& order) {
    std::string text = "2024";
    for (const char part : order) text += parts[part - '0'];
    agrees(text);
  });
  std::mt19937 random(5);
  for (int i = 0; i < 100000; ++i) {
    std::string text = randomText(random, "0123456789", 4 + random() % 16);
    for (int changes = static_cast<int>(random() % 7); changes > 0; --changes) {
      text[random() % text.size()] = "-:T \v-:x"[random() % 8];
    }
    agrees(text);
    agrees(std::to_string(1000 + random() % 9000) + randomText(random, "-:T 0123", random() % 40));
  }
}

TEST_F(DateTime, IsValidISOdate) {
  for (const char* text :
       {"2024-02-29", "hello", "", "2024", "05/03/2024", "2024-03-05 23:59:59", "0000-12-31"}) {
    EXPECT_TRUE(zn_lib::isValidISOdate(text)) << text;
  }
  for (const char* text : {"2024-02-30", "2023-02-29", "2024-13-01", "2024-04-31",
                           "2024-03-05 24:00", "2024-03-05 23:60", "2024-03-05 23:59:60"}) {
    EXPECT_FALSE(zn_lib::isValidISOdate(text)) << text;
  }
}

TEST_F(DateTime, DateToISO) {
  const struct {
    zn_lib::DATE_FORMAT format;
    bool useTime;
    std::string text, iso;
  } cases[] = {
      {zn_lib::DAY_MONTH_YEAR, true, "05/03/2024", "2024-03-05"},
      {zn_lib::DAY_MONTH_YEAR, true, "5 March 2024", "2024-03-5"},
      {zn_lib::DAY_MONTH_YEAR, true, "5.mar.2024 14:07", "2024-03-5 14:07"},
      {zn_lib::DAY_MONTH_YEAR, true, "5 March", ""},
      {zn_lib::DAY_MONTH_YEAR, true, "1-2", ""},
      {zn_lib::DAY_MONTH_YEAR, true, "", ""},
      {zn_lib::DAY_MONTH_YEAR, true, "xx/yy/2024", "2024-12-xx"},
      {zn_lib::DAY_MONTH_YEAR, true, "5 October 2024", "2024-10-5"},
      {zn_lib::DAY_MONTH_YEAR, true, "5//2024", "2024--5"},
      {zn_lib::DAY_MONTH_YEAR, true, "5/1e+1/24", "24-1e+1-5"},
      {zn_lib::MONTH_DAY_YEAR, true, "03/05/2024 14:07:09", "2024-03-05 14:07:09"},
      {zn_lib::MONTH_DAY_YEAR, true, "03/05/2024 14:07:09:10:11", "2024-03-05 14:07:09"},
      {zn_lib::MONTH_DAY_YEAR, true, "03/05/2024 14", "2024-03-05 14"},
      {zn_lib::MONTH_DAY_YEAR, true, "Dec/25/2024", "2024-12-25"},
      {zn_lib::MONTH_DAY_YEAR, true, "Dec 25, 2024", "-12-25 2024"},
      {zn_lib::MONTH_DAY_YEAR, false, "03/05/2024 14:07:09", "2024-03-05"},
      {zn_lib::YEAR_MONTH_DAY, true, "2024-03-05", "05-03-2024"},
      {static_cast<zn_lib::DATE_FORMAT>(7), true, "05/03/2024", "2024-03-05"},
      {zn_lib::DAY_MONTH_YEAR, true, "5\0/3/2024\0x"s, "2024\0x-3-5\0"s},
  };
  for (const auto& c : cases) {
    zn_lib::defaultDateTimeFormat();
    zn_lib::setDateFormat(c.format);
    zn_lib::setUseTime(c.useTime);
    EXPECT_EQ(zn_lib::dateToISO(c.text), c.iso) << c.text;
  }
}

/// Returns the tokens of `text`, arranged like those of a date whose month comes first, with
/// hyphens before the time, too.
std::string isoByTokens(const std::string& text) {
  const zn_lib::Tokenizer fields(text, "-/.,:; ");
  const std::vector<std::string>& tokens = fields.tokens;
  if (tokens.size() < 3) return "";
  std::ostringstream month;
  if (zn_lib::isNumber(tokens[0])) {
    month.write(tokens[0].data(), static_cast<std::streamsize>(tokens[0].size()));
  } else {
    month << std::setfill('0') << std::setw(2) << zn_lib::getMonthNumber(tokens[0]);
  }
  std::string iso = tokens[2] + "-" + month.str() + "-" + tokens[1];
  for (std::size_t i = 3; i < std::min<std::size_t>(tokens.size(), 6); ++i) iso += "-" + tokens[i];
  return iso;
}

TEST_F(DateTime, DateToISOReadsTokens) {
  zn_lib::setDateTimeFormat(zn_lib::MONTH_DAY_YEAR, zn_lib::MONTH_NUMBER, '-', '-', '-', true);
  const auto agrees = [](const std::string& text) {
    ASSERT_EQ(zn_lib::dateToISO(text), isoByTokens(text)) << text;
  };
  forEveryText("1x-: ", 6, agrees);
  forEveryText("-/.,:; <+3", 4, agrees);
  for (int c = 0; c < 256; ++c) agrees("may" + std::string(1, static_cast<char>(c)) + "1-2-3");
  std::mt19937 random(6);
  for (int i = 0; i < 20000; ++i) {
    agrees(randomText(random, "-/.,:; 2e+ebjun\0\xAD"s, random() % 60));
  }
}

TEST_F(DateTime, ZeroSeparatorsAreWrittenAsNuls) {
  EXPECT_EQ(zn_lib::dateToISO("03/05/2024 14:07"),
            "2024\0"
            "03\0"
            "05"s);
  EXPECT_EQ(zn_lib::formatJulianDate(kSample),
            "03\0"
            "05\0"
            "2024"s);
  zn_lib::setUseTime(true);
  EXPECT_EQ(zn_lib::dateToISO("03/05/2024 14:07"),
            "2024\0"
            "03\0"
            "05\0"
            "14\0"
            "07"s);
  EXPECT_EQ(zn_lib::julianToISO(kSample),
            "2024-03-05\0"
            "14:07:09"s);
}

// ---- Formatting

TEST_F(DateTime, JulianZeroIsFormattedAsAnEmptyText) {
  EXPECT_EQ(zn_lib::julianToISO(0), "");
  EXPECT_EQ(zn_lib::julianToYYYYMMDD(0), "");
  EXPECT_EQ(zn_lib::formatJulianDate(0), "");
  EXPECT_EQ(zn_lib::formatJulianDate(0, zn_lib::getDateTimeFormat()), "");
}

TEST_F(DateTime, JulianToISO) {
  zn_lib::defaultDateTimeFormat();
  EXPECT_EQ(zn_lib::julianToISO(kSample), "2024-03-05 14:07:09");
  EXPECT_EQ(zn_lib::julianToISO(kSample + 500), "2024-03-05 14:07:9.5");
  EXPECT_EQ(zn_lib::julianToISO(kSample + 250), "2024-03-05 14:07:9.25");
  EXPECT_EQ(zn_lib::julianToISO(kSample + 51000), "2024-03-05 14:08:00");
  EXPECT_EQ(zn_lib::julianToISO(kSample + 50999), "2024-03-05 14:07:59.999");
  zn_lib::setDateTimeSeparator('T');
  zn_lib::setDateSeparator('/');
  zn_lib::setTimeSeparator('.');
  zn_lib::setDateFormat(zn_lib::DAY_MONTH_YEAR);
  EXPECT_EQ(zn_lib::julianToISO(kSample), "2024-03-05T14:07:09")
      << "hyphens and colons regardless of the settings";
  zn_lib::setUseTime(false);
  EXPECT_EQ(zn_lib::julianToISO(kSample), "2024-03-05");
}

TEST_F(DateTime, JulianToYYYYMMDD) {
  zn_lib::setUseTime(true);
  EXPECT_EQ(zn_lib::julianToYYYYMMDD(kSample), "20240305");
}

TEST_F(DateTime, YearsArePaddedAndNeverTruncated) {
  zn_lib::setDateTimeFormat(zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_NUMBER, '-', ' ', ':', false);
  const Julian early = zn_lib::dateToJulian(812, 3, 5, 0, 0, 0.0);
  EXPECT_EQ(zn_lib::julianToISO(early), "0812-03-05");
  EXPECT_EQ(zn_lib::julianToYYYYMMDD(early), "08120305");
  EXPECT_EQ(zn_lib::formatJulianDate(early), "05-03-0812");
  EXPECT_EQ(zn_lib::julianToYYYYMMDD(zn_lib::dateToJulian(12345, 3, 5, 0, 0, 0.0)), "123450305");
}

// Beyond the days that fit in 32 bits, months and days wrap to numbers of five digits.
TEST_F(DateTime, DistantDatesAreWrittenAsTheyAre) {
  const zn_lib::date_time_record record = zn_lib::julianToDate(576511234530656200);
  EXPECT_EQ(record.year, 54177);
  EXPECT_EQ(record.month, 65532);
  EXPECT_EQ(record.day, 65524);
  EXPECT_EQ(zn_lib::julianToYYYYMMDD(576511234530656200), "541776553265524");
}

TEST_F(DateTime, SecondsThatDoNotFitCountAsZero) {
  zn_lib::setUseTime(true);
  const Julian minute = zn_lib::dateToJulian(2024, 3, 5, 14, 7, 0.0);
  for (const double seconds : {std::nan(""), 1.9e16, 1e300, -1e300}) {
    EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 14, 7, seconds), minute) << seconds;
  }
  // The last numbers of milliseconds that fit in 64 bits, but not in a signed number.
  for (const double seconds : {9223372036854775.808, 9223372041854775.0, 1.8e16}) {
    EXPECT_EQ(zn_lib::dateToJulian(2024, 3, 5, 14, 7, seconds),
              minute + static_cast<Julian>(seconds * 1000.0))
        << seconds;
  }
}

TEST_F(DateTime, FormatJulianDate) {
  using zn_lib::DATE_FORMAT;
  using zn_lib::MONTH_FORMAT;
  const struct {
    zn_lib::date_time_set settings;
    const char* withTime;
    const char* withoutTime;
  } cases[] = {
      {{zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_SHORT_NAME, '/', ' ', ':', false},
       "05/Mar/2024 14:07:09",
       "05/Mar/2024"},
      {{zn_lib::MONTH_DAY_YEAR, zn_lib::MONTH_FULL_NAME, ' ', ',', '.', false},
       "March 05 2024,14.07.09",
       "March 05 2024"},
      {{zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_NUMBER, '.', 'T', ':', true},
       "05.03.2024T14:07:09",
       "05.03.2024"},
      {{zn_lib::YEAR_MONTH_DAY, zn_lib::MONTH_FULL_NAME, '-', ' ', ':', true},
       "2024-03-05 14:07:09",
       "2024-03-05"},
      {{static_cast<DATE_FORMAT>(7), zn_lib::MONTH_SHORT_NAME, '-', ' ', ':', true},
       "2024-03-05 14:07:09",
       "2024-03-05"},
      {{static_cast<DATE_FORMAT>(-1), zn_lib::MONTH_NUMBER, '-', ' ', ':', true},
       "2024-03-05 14:07:09",
       "2024-03-05"},
      {{zn_lib::MONTH_DAY_YEAR, static_cast<MONTH_FORMAT>(9), '-', ' ', ':', true},
       "03-05-2024 14:07:09",
       "03-05-2024"},
  };
  for (const auto& c : cases) {
    zn_lib::setUseTime(true);
    EXPECT_EQ(zn_lib::formatJulianDate(kSample, c.settings), c.withTime);
    zn_lib::setUseTime(false);
    EXPECT_EQ(zn_lib::formatJulianDate(kSample, c.settings), c.withoutTime)
        << "the argument's useTime has no say";
  }
  zn_lib::defaultDateTimeFormat();
  EXPECT_EQ(zn_lib::formatJulianDate(kSample), "2024-03-05 14:07:09");
}

TEST_F(DateTime, FormatsTheNameOfEachMonth) {
  for (unsigned short month = 1; month <= 12; ++month) {
    const Julian julian = zn_lib::dateToJulian(2024, month, 5, 0, 0, 0.0);
    const auto formatted = [julian](zn_lib::MONTH_FORMAT names) {
      return zn_lib::formatJulianDate(julian,
                                      {zn_lib::DAY_MONTH_YEAR, names, '-', ' ', ':', false});
    };
    zn_lib::setUseTime(false);
    EXPECT_EQ(formatted(zn_lib::MONTH_FULL_NAME),
              "05-" + zn_lib::getMonthName(month, false) + "-2024");
    EXPECT_EQ(formatted(zn_lib::MONTH_SHORT_NAME),
              "05-" + zn_lib::getMonthName(month, true) + "-2024");
  }
}

/// Returns `value` as a stream writes it, padded with zeros to a width of two.
std::string streamed(double value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << std::setfill('0') << std::setw(2) << value;
  return stream.str();
}

TEST_F(DateTime, SecondsMatchStreamOutput) {
  zn_lib::defaultDateTimeFormat();
  const Julian midnight = zn_lib::dateToJulian(2024, 3, 5, 0, 0, 0.0);
  for (Julian ms = 0; ms < kDay; ms += 997) {
    const std::string iso = zn_lib::julianToISO(midnight + ms);
    ASSERT_EQ(iso.substr(17), streamed(zn_lib::julianToDate(midnight + ms).second)) << iso;
  }
}

TEST_F(DateTime, HourFormat) {
  const struct {
    double hours;
    const char* text;
  } cases[] = {
      {7.5, "07:30"},    {12.25, "12:15"},  {0.999, "00:59"}, {7.3, "07:17"},
      {25.5, "25:30"},   {-1.5, "-1:30"},   {-0.25, "-0:45"}, {24.0, "24:00"},
      {100.5, "100:30"}, {-12.0, "-12:00"}, {0.0, "00:00"},   {1234567.0, "1.23457e+06:00"},
  };
  for (const auto& c : cases) EXPECT_EQ(zn_lib::hourFormat(c.hours), c.text) << c.hours;
}

TEST_F(DateTime, HourFormatMatchesStreamOutput) {
  const double infinity = std::numeric_limits<double>::infinity();
  std::vector<double> values = {0.0,
                                -0.0,
                                1e5,
                                999999.5,
                                1e6,
                                1e15,
                                1e300,
                                -1e300,
                                5e-324,
                                infinity,
                                -infinity,
                                std::nan(""),
                                std::numeric_limits<double>::max()};
  for (int i = -5000; i < 5000; ++i) values.push_back(i / 97.0);
  for (const double hours : values) {
    const volatile double minutes = (hours - std::floor(hours)) * 60;
    EXPECT_EQ(zn_lib::hourFormat(hours),
              streamed(std::trunc(hours)) + ":" + streamed(std::trunc(minutes)))
        << hours;
  }
}

// ---- Today

TEST_F(DateTime, TodayIsTheLocalDateAndTime) {
  for (const bool useTime : {false, true}) {
    zn_lib::setUseTime(useTime);
    zn_lib::setDateSeparator('/');
    const char* const format = useTime ? "%Y-%m-%d %H:%M:%S" : "%Y-%m-%d";
    const auto now = [format] {
      const std::time_t time = std::time(nullptr);
      std::tm local;
      localtime_r(&time, &local);
      char text[64];
      std::strftime(text, sizeof text, format, &local);
      return std::string(text);
    };
    // The clock may tick between two calls. The loop ends once both fall into the same second.
    std::string before, today, after;
    do {
      before = now();
      today = zn_lib::getTodayAsISO();
      after = now();
    } while (before != after);
    EXPECT_EQ(today, before);
  }

  zn_lib::defaultDateTimeFormat();
  std::string before, after;
  zn_lib::date_time_record record;
  do {
    before = zn_lib::getTodayAsISO();
    record = {99, 99, 9999, 99, 99, 99.5};
    zn_lib::getToday(record);
    after = zn_lib::getTodayAsISO();
  } while (before != after);
  EXPECT_EQ(zn_lib::julianToISO(zn_lib::dateToJulian(record)), before);
}

// ---- Extreme values

TEST_F(DateTime, ExtremeValuesReturn) {
  const int ints[] = {
      std::numeric_limits<int>::min(), -65536, -1, 0, 1, 2, 12, 28, 65535, 65537, 1 << 30,
      std::numeric_limits<int>::max()};
  const double seconds[] = {0.0,
                            -1e300,
                            1e300,
                            1.5e16,
                            1.9e16,
                            -1e16,
                            std::nan(""),
                            std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity()};
  for (const bool useTime : {false, true}) {
    zn_lib::setUseTime(useTime);
    for (const int a : ints) {
      for (const int b : ints) {
        for (const int c : ints) zn_lib::dateToJulian(a, b, c, a, b, 0.0);
      }
      for (const double second : seconds) zn_lib::dateToJulian(2024, 3, 5, a, a, second);
    }
  }
  for (int shift = 0; shift < 64; ++shift) {
    for (const Julian julian :
         {Julian{1} << shift, (Julian{1} << shift) - 1, ~(Julian{1} << shift)}) {
      const zn_lib::date_time_record record = zn_lib::julianToDate(julian);
      EXPECT_LT(record.hour, 24);
      EXPECT_LT(record.minute, 60);
      EXPECT_LT(record.second, 60.0);
      EXPECT_EQ(zn_lib::julianToISO(julian).empty(), julian == 0);
      zn_lib::formatJulianDate(
          julian, {zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_FULL_NAME, '-', ' ', ':', true});
    }
  }
}

TEST_F(DateTime, LongTextsReturn) {
  zn_lib::date_time_record record;
  for (const char c : {'2', '-', ' ', 'T', '\0', 'x'}) {
    const std::string text(kLongText, c);
    zn_lib::parseISOdate(text, record);
    EXPECT_EQ(fieldsOf(record), "0-1-1 12:0:0") << c;
    EXPECT_TRUE(zn_lib::isValidISOdate(text)) << c;
    EXPECT_EQ(zn_lib::dateToJulian(text), 148699584000000u) << c;
    EXPECT_EQ(zn_lib::getMonthNumber(text), 12) << c;
  }
  const std::string digits(kLongText, '2');
  EXPECT_EQ(zn_lib::dateToISO(digits), "");
  zn_lib::defaultDateTimeFormat();
  EXPECT_EQ(zn_lib::dateToISO(digits + "/" + digits + "/" + digits),
            digits + "-" + digits + "-" + digits);
  EXPECT_EQ(zn_lib::dateToISO(std::string(kLongText, '-')), "-- ::") << "empty fields";
}

}  // namespace
