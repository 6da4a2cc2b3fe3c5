#include <gtest/gtest.h>
#include <zn_datetime.h>
#include <zn_daylength.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "sky_reference.h"

namespace {

using zn_lib::DayLength;
using Julian = unsigned long long;
using Limits = std::numeric_limits<double>;

constexpr Julian kDay = 86400000;
constexpr Julian kHalfDay = kDay / 2;
constexpr Julian kFirstDay = 211813488000000;  // 1 January 2000 12:00
constexpr Julian kMidsummer = kFirstDay + 8938 * kDay;
constexpr Julian kMidwinter = kMidsummer + 183 * kDay;
constexpr Julian kLargestJulian = std::numeric_limits<Julian>::max();
constexpr double kTwoPi = 6.283185307179586;
constexpr double kRadians = 0.017453292519943295;  // per degree
constexpr double kHorizon = 0.014515321612419507;  // radians

DayLength dayAt(Julian julian, double latitude) {
  DayLength day;
  day.julian = julian;
  day.latitude = latitude;
  return day;
}

double hoursAt(Julian julian, double latitude) { return dayAt(julian, latitude).compute(); }

Julian noonOf(int year, int month, int date) {
  zn_lib::setUseTime(false);
  return zn_lib::dateToJulian(year, month, date, 0, 0, 0.0);
}

TEST(ZnDayLength, HeaderExamples) {
  zn_lib::setUseTime(true);
  zn_lib::DayLength day;
  day.julian = zn_lib::dateToJulian(2024, 6, 21, 12, 0, 0.0);
  day.latitude = 52.0;
  EXPECT_NEAR(day.compute(), 16.6986, 0.00005);
  EXPECT_EQ(zn_lib::hourFormat(day.dayLength), "16:41");
}

TEST(DayLength, IsInitiallyNotComputed) {
  static_assert(std::is_standard_layout_v<DayLength> && !std::is_polymorphic_v<DayLength>, "");
  static_assert(offsetof(DayLength, julian) == 0 && offsetof(DayLength, latitude) == 8 &&
                    offsetof(DayLength, meanLongitude) == 16 &&
                    offsetof(DayLength, meanAnomaly) == 24 && offsetof(DayLength, dayLength) == 32,
                "the order of the fields");
  const DayLength day;
  EXPECT_TRUE(std::isnan(day.dayLength));
  EXPECT_EQ(day.julian, 0u);
  EXPECT_EQ(day.latitude, 0.0);
  EXPECT_EQ(day.meanLongitude, 0.0);
  EXPECT_EQ(day.meanAnomaly, 0.0);
}

TEST(DayLength, KnownDays) {
  const double nan = Limits::quiet_NaN();
  const struct {
    const char* what;
    int year, month, date;
    double latitude;
    double hours;
    double tolerance;
  } cases[] = {
      {"52 N, midsummer", 2024, 6, 21, 52.0, 16.6986, 0.00005},
      {"52 N, midwinter", 2024, 12, 21, 52.0, 7.7066, 0.00005},
      {"80 N, polar day", 2024, 6, 21, 80.0, 24.0, 0.0},
      {"80 N, polar night", 2024, 12, 21, 80.0, nan, 0.0},
      {"80 S, polar night", 2024, 6, 21, -80.0, nan, 0.0},
      {"80 S, polar day", 2024, 12, 21, -80.0, 24.0, 0.0},
      {"north pole, polar day", 2024, 6, 21, 90.0, 24.0, 0.0},
      {"north pole, polar night", 2024, 12, 21, 90.0, nan, 0.0},
      {"south pole, polar day", 2024, 12, 21, -90.0, 24.0, 0.0},
      {"south pole, polar night", 2024, 6, 21, -90.0, nan, 0.0},
      {"equator", 2024, 6, 21, 0.0, 12.0, 0.0},
      {"equator, from the south", 2024, 6, 21, -0.0, 12.0, 0.0},
  };
  for (const auto& c : cases) {
    DayLength day = dayAt(noonOf(c.year, c.month, c.date), c.latitude);
    const double hours = day.compute();
    if (std::isnan(c.hours)) {
      EXPECT_TRUE(std::isnan(hours)) << c.what;
      EXPECT_TRUE(std::isnan(day.dayLength)) << c.what;
    } else {
      EXPECT_NEAR(hours, c.hours, c.tolerance) << c.what;
      EXPECT_EQ(day.dayLength, hours) << c.what;
    }
    EXPECT_EQ(day.julian, noonOf(c.year, c.month, c.date)) << c.what;
    EXPECT_EQ(day.latitude, c.latitude) << c.what;
  }
}

TEST(DayLength, TwelveHoursOnTheEquatorOnEveryDate) {
  for (Julian julian = kFirstDay - 40000 * kDay; julian < kFirstDay + 40000 * kDay;
       julian += kDay) {
    ASSERT_EQ(hoursAt(julian, 0.0), 12.0) << julian;
  }
  for (const Julian julian : {Julian{0}, Julian{1}, kLargestJulian}) {
    EXPECT_EQ(hoursAt(julian, 0.0), 12.0) << julian;
  }
}

TEST(DayLength, TimeOfDayDoesNotMatter) {
  const double hours = hoursAt(kMidsummer, 52.0);
  EXPECT_EQ(hoursAt(kMidsummer - kHalfDay, 52.0), hours);
  EXPECT_EQ(hoursAt(kMidsummer + kHalfDay - 1, 52.0), hours);
  EXPECT_NE(hoursAt(kMidsummer + kHalfDay, 52.0), hours);
  EXPECT_NE(hoursAt(kMidsummer - kHalfDay - 1, 52.0), hours);
}

TEST(DayLength, DateSettingsDoNotMatter) {
  zn_lib::setDateTimeFormat(zn_lib::MONTH_DAY_YEAR, zn_lib::MONTH_NUMBER, '\0', '\0', '\0', false);
  const double hours = hoursAt(kMidsummer, 52.0);
  const double sum = dayAt(kMidsummer, 52.0).cumulative(3);
  zn_lib::defaultDateTimeFormat();
  EXPECT_EQ(hoursAt(kMidsummer, 52.0), hours);
  EXPECT_EQ(dayAt(kMidsummer, 52.0).cumulative(3), sum);
}

TEST(DayLength, ObjectsAreIndependent) {
  DayLength north = dayAt(kMidsummer, 52.0);
  DayLength south = dayAt(kMidwinter, -30.0);
  const double hours = north.compute();
  const double meanLongitude = north.meanLongitude;
  south.compute();
  EXPECT_EQ(north.dayLength, hours);
  EXPECT_EQ(north.meanLongitude, meanLongitude);
  EXPECT_NE(south.meanLongitude, meanLongitude);
}

// ---- FNday

TEST(FNday, CountsFromTheYear2000) {
  const struct {
    int year, month, date;
    double days;
  } cases[] = {
      {2000, 1, 1, 0.0},  {2024, 6, 21, 8938.0}, {1999, 12, 31, -1.0},   {2000, 2, 29, 59.0},
      {2000, 3, 1, 60.0}, {2001, 1, 1, 366.0},   {1970, 1, 1, -10957.0}, {2000, 12, 31, 365.0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(dayAt(noonOf(c.year, c.month, c.date), 0.0).FNday(), c.days)
        << c.year << '-' << c.month << '-' << c.date;
  }
}

TEST(FNday, CountsEveryDayOfTwoCenturies) {
  const Julian first = noonOf(1900, 3, 1);
  const Julian last = noonOf(2100, 2, 28);
  for (Julian julian = first; julian <= last; julian += kDay) {
    const double days = (static_cast<double>(julian) - static_cast<double>(kFirstDay)) / kDay;
    ASSERT_EQ(dayAt(julian, 0.0).FNday(), days) << julian;
    ASSERT_EQ(dayAt(julian - kHalfDay, 0.0).FNday(), days) << julian;
    ASSERT_EQ(dayAt(julian + kHalfDay - 1, 0.0).FNday(), days) << julian;
  }
}

/// Returns the days from 1 January 2000 to a date, if every fourth year were a leap year.
int daysOfFourYearCycles(int year, int month, int date) {
  constexpr int daysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const int leapDay = year % 4 == 0 && month > 2 ? 1 : 0;
  const int years = year * 365 + (year + 3) / 4 - (2000 * 365 + 2003 / 4);
  return years + daysBefore[month - 1] + leapDay + date - 1;
}

// Before 1 March 1900 and after 28 February 2100 the result is off by the leap days that 1900, 2100
// and later centuries lack.
TEST(FNday, CountsEveryFourthYearAsALeapYear) {
  for (int year = 1; year <= 9999; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (const int date : {1, 28}) {
        // julianToDate never returns this date.
        const bool isDayBefore = year == 300 && month == 3 && date == 1;
        const int expected = isDayBefore ? daysOfFourYearCycles(year, 2, 29)
                                         : daysOfFourYearCycles(year, month, date);
        ASSERT_EQ(dayAt(noonOf(year, month, date), 0.0).FNday(), expected)
            << year << '-' << month << '-' << date;
      }
    }
  }
  EXPECT_EQ(dayAt(noonOf(2100, 3, 1), 0.0).FNday(), 36584.0 + 1.0);
  EXPECT_EQ(dayAt(noonOf(1900, 2, 28), 0.0).FNday(), -36466.0 - 1.0);
}

TEST(FNday, CountsTheYearsOfARecord) {
  for (int year = 1; year <= 65535; ++year) {
    for (const int month : {1, 2, 3, 12}) {
      if (year == 300 && month == 3) continue;  // julianToDate never returns this date
      ASSERT_EQ(dayAt(noonOf(year, month, 1), 0.0).FNday(), daysOfFourYearCycles(year, month, 1))
          << year << '-' << month;
    }
  }
}

TEST(FNday, FollowsTheRecordOfDistantJulianValues) {
  // A record holds the low 16 bits of the year.
  const Julian year0 = kFirstDay - 730485 * kDay;
  const Julian year65536 = year0 + Julian{65536 / 400} * 146097 * kDay +
                           (noonOf(336, 1, 1) - year0);  // 336 years after a leap cycle
  EXPECT_EQ(zn_lib::julianToDate(year0).year, 0);
  EXPECT_EQ(zn_lib::julianToDate(year0 - kDay).year, 65535);
  EXPECT_EQ(zn_lib::julianToDate(year65536).year, 0);
  EXPECT_EQ(zn_lib::julianToDate(year65536 - kDay).year, 65535);
  const auto expectDayOfRecord = [](Julian julian) {
    const zn_lib::date_time_record date = zn_lib::julianToDate(julian);
    EXPECT_EQ(dayAt(julian, 0.0).FNday(), daysOfFourYearCycles(date.year, date.month, date.day))
        << julian;
  };
  for (const Julian julian : {Julian{0}, Julian{1}, kHalfDay - 1, kHalfDay, kLargestJulian / 100000,
                              year0 - kHalfDay, year0 - kHalfDay - 1}) {
    expectDayOfRecord(julian);
  }
  for (Julian days = 0; days < 4 * 366; ++days) {
    expectDayOfRecord(year0 - days * kDay);
    expectDayOfRecord(year65536 - kDay + days * kDay);
  }
}

// ---- FNrange

TEST(FNrange, RemovesWholeTurns) {
  DayLength day;
  EXPECT_EQ(day.FNrange(0.0), 0.0);
  EXPECT_EQ(day.FNrange(kTwoPi), 0.0);
  EXPECT_EQ(day.FNrange(-kTwoPi), 0.0);
  EXPECT_NEAR(day.FNrange(-0.5), kTwoPi - 0.5, 1e-15);
  EXPECT_NEAR(day.FNrange(0.5), 0.5, 1e-15);
  EXPECT_NEAR(day.FNrange(7.0), 7.0 - kTwoPi, 1e-15);
  EXPECT_NEAR(day.FNrange(-7.0), 2 * kTwoPi - 7.0, 2e-15);
  for (int i = -100000; i <= 100000; ++i) {
    const double angle = i * 0.0173;
    const double reduced = day.FNrange(angle);
    ASSERT_GE(reduced, 0.0) << angle;
    ASSERT_LT(reduced, kTwoPi) << angle;
    ASSERT_NEAR(std::sin(reduced), std::sin(angle), 1e-12) << angle;
    ASSERT_NEAR(std::cos(reduced), std::cos(angle), 1e-12) << angle;
  }
}

TEST(FNrange, AcceptsAnyValue) {
  DayLength day;
  EXPECT_TRUE(std::isnan(day.FNrange(Limits::infinity())));
  EXPECT_TRUE(std::isnan(day.FNrange(-Limits::infinity())));
  EXPECT_TRUE(std::isnan(day.FNrange(Limits::quiet_NaN())));
  for (const double angle : {1e300, -1e300, Limits::max(), Limits::lowest()}) {
    EXPECT_EQ(day.FNrange(angle), 0.0) << "no fraction of a turn remains of " << angle;
  }
  EXPECT_EQ(day.FNrange(Limits::denorm_min()), 0.0);
  EXPECT_EQ(day.FNrange(-1e-20), kTwoPi) << "the difference to a whole turn is lost by rounding";
}

// ---- FNsun

/// Reference model of the sun by the formulas of the Astronomical Almanac, in degrees.
struct Almanac {
  double meanLongitude, meanAnomaly, longitude, obliquity;

  explicit Almanac(double d)
      : meanLongitude(turn(280.461 + 0.9856474 * d)),
        meanAnomaly(turn(357.528 + 0.9856003 * d)),
        longitude(turn(meanLongitude + 1.915 * std::sin(meanAnomaly * kRadians) +
                       0.020 * std::sin(2 * meanAnomaly * kRadians))),
        obliquity(23.439 - 0.0000004 * d) {}

  static double turn(double degrees) {
    const double rest = std::fmod(degrees, 360.0);
    return rest < 0.0 ? rest + 360.0 : rest;
  }
};

/// Expects the same angle in radians and in degrees, except for whole turns.
void expectSameAngle(double radians, double degrees, double d) {
  ASSERT_NEAR(std::remainder(radians - degrees * kRadians, kTwoPi), 0.0, 1e-10) << d;
  ASSERT_GE(radians, 0.0) << d;
  ASSERT_LE(radians, kTwoPi) << d;
}

TEST(FNsun, FollowsTheAlmanac) {
  DayLength day;
  for (int i = -60000; i <= 60000; ++i) {
    const double d = i * 0.5;
    const Almanac sun(d);
    const double longitude = day.FNsun(d);
    expectSameAngle(longitude, sun.longitude, d);
    expectSameAngle(day.meanLongitude, sun.meanLongitude, d);
    expectSameAngle(day.meanAnomaly, sun.meanAnomaly, d);
  }
  EXPECT_TRUE(std::isnan(day.dayLength)) << "only compute sets the result";
}

TEST(FNsun, MatchesTheStartOfTheSeasons) {
  const struct {
    const char* what;
    double d;
    double degrees;
  } cases[] = {
      {"20 March 2024 3:06", 8844.6294, 0.0},
      {"20 June 2024 20:51", 8937.3688, 90.0},
      {"22 September 2024 12:43", 9031.0302, 180.0},
      {"21 December 2024 9:20", 9120.8891, 270.0},
  };
  for (const auto& c : cases) {
    DayLength day;
    const double error = std::remainder(day.FNsun(c.d) / kRadians - c.degrees, 360.0);
    EXPECT_NEAR(error, 0.0, 0.01) << c.what;
  }
}

// ---- hourAngle

TEST(HourAngle, IsAQuarterTurnOnTheEquatorAndMoreAtTheEquinox) {
  for (const double declination : {-0.4, -0.1, 0.0, 0.2, 0.4}) {
    EXPECT_DOUBLE_EQ(dayAt(0, 0.0).hourAngle(declination), kTwoPi / 4) << declination;
  }
  // kHorizon is the depth of the sun's centre at sunrise: half its diameter and the refraction.
  constexpr double halfDiameterAndRefraction = 0.53 / 2 + 34.0 / 60.0;
  EXPECT_NEAR(kHorizon / kRadians, halfDiameterAndRefraction, 0.0001);
  EXPECT_DOUBLE_EQ(dayAt(0, 50.0).hourAngle(-kHorizon), kTwoPi / 4);
  EXPECT_DOUBLE_EQ(dayAt(0, -50.0).hourAngle(kHorizon), kTwoPi / 4);
  for (const double latitude : {52.0, -52.0}) {
    const double half = dayAt(0, latitude).hourAngle(0.0);
    EXPECT_NEAR(half, 1.5894, 0.00005) << latitude;
    EXPECT_NEAR((half - kTwoPi / 4) / kRadians / 7.5 * 60.0, 8.5, 0.05) << "minutes";
  }
}

TEST(HourAngle, HemispheresMirrorEachOther) {
  for (int latitude = 1; latitude < 66; ++latitude) {
    for (int declination = -23; declination <= 23; ++declination) {
      ASSERT_DOUBLE_EQ(dayAt(0, latitude).hourAngle(declination * kRadians),
                       dayAt(0, -latitude).hourAngle(-declination * kRadians))
          << latitude << ", " << declination;
    }
  }
}

TEST(HourAngle, OnlyPolarDayIsClamped) {
  for (const int side : {1, -1}) {
    EXPECT_DOUBLE_EQ(dayAt(0, side * 80.0).hourAngle(side * 0.4), kTwoPi / 2);
    EXPECT_TRUE(std::isnan(dayAt(0, side * 80.0).hourAngle(side * -0.4)));
  }
  // The product of the tangents is clamped from 0.99999 on.
  const double raised = 20.0;
  const double declination = raised * kRadians - kHorizon;
  EXPECT_DOUBLE_EQ(dayAt(0, 90.0 - raised).hourAngle(declination), kTwoPi / 2);
  const double beneath = -raised * kRadians - kHorizon;
  for (const double product : {0.1, 0.5, 0.9999, 0.999989, 0.999991, 0.999999}) {
    const double latitude = std::atan(product / std::tan(raised * kRadians)) / kRadians;
    const double angle = std::asin(product > 0.99999 ? 1.0 : product);
    EXPECT_NEAR(dayAt(0, latitude).hourAngle(declination), kTwoPi / 4 + angle, 1e-9) << product;
    EXPECT_NEAR(dayAt(0, latitude).hourAngle(beneath), kTwoPi / 4 - std::asin(product), 1e-9)
        << product;
  }
}

TEST(HourAngle, DoesNotChangeTheObject) {
  DayLength day = dayAt(kMidsummer, 40.0);
  day.hourAngle(0.3);
  EXPECT_TRUE(std::isnan(day.dayLength));
  EXPECT_EQ(day.meanLongitude, 0.0);
  EXPECT_EQ(day.meanAnomaly, 0.0);
}

// ---- compute

/// Reference model of the day length by the formulas of the almanac.
double almanacHours(double d, double latitude) {
  const Almanac sun(d);
  const double declination =
      std::asin(std::sin(sun.obliquity * kRadians) * std::sin(sun.longitude * kRadians));
  const double horizon = latitude < 0.0 ? -kHorizon : kHorizon;
  const double f = std::tan(latitude * kRadians) * std::tan(declination + horizon);
  if (f > 0.99999) return 24.0;
  return 12.0 + std::asin(f) / kRadians * 2.0 / 15.0;
}

TEST(Compute, FollowsTheAlmanac) {
  std::mt19937 random(5);
  std::uniform_int_distribution<int> someDay(-36000, 36000);
  std::uniform_real_distribution<double> someLatitude(-90.0, 90.0);
  int polarDays = 0;
  int polarNights = 0;
  for (int i = 0; i < 300000; ++i) {
    const int d = someDay(random);
    const double latitude = someLatitude(random);
    const Julian julian = kFirstDay + static_cast<Julian>(static_cast<long long>(kDay) * d);
    DayLength day = dayAt(julian, latitude);
    const double hours = day.compute();
    const double expected = almanacHours(d, latitude);
    if (std::isnan(expected)) {
      ++polarNights;
      ASSERT_TRUE(std::isnan(hours)) << d << ", " << latitude;
      ASSERT_TRUE(std::isnan(day.dayLength));
    } else {
      polarDays += expected == 24.0;
      ASSERT_NEAR(hours, expected, 1e-6) << d << ", " << latitude;
      ASSERT_EQ(day.dayLength, hours);
    }
    expectSameAngle(day.meanLongitude, Almanac(d).meanLongitude, d);
    expectSameAngle(day.meanAnomaly, Almanac(d).meanAnomaly, d);
  }
  EXPECT_GT(polarDays, 10000);
  EXPECT_GT(polarNights, 10000);
}

/// Returns the last latitude between `from` and `to` for which `holds` is true, to the last bit.
template <class Holds>
double lastLatitude(double from, double to, Holds holds) {
  while (std::nextafter(from, to) != to) {
    const double middle = from + (to - from) / 2;
    (holds(middle) ? from : to) = middle;
  }
  return from;
}

TEST(Compute, ClampsDaysJustBeforePolarDay) {
  const auto isShorter = [](double latitude) { return hoursAt(kMidsummer, latitude) < 24.0; };
  const double last = lastLatitude(60.0, 70.0, isShorter);
  EXPECT_NEAR(hoursAt(kMidsummer, last), 12.0 + std::asin(0.99999) / kRadians / 7.5, 1e-9);
  EXPECT_EQ(hoursAt(kMidsummer, std::nextafter(last, 90.0)), 24.0);
}

TEST(Compute, LastDaysBeforePolarNightAreNotNegative) {
  const auto isNumber = [](double latitude) { return !std::isnan(hoursAt(kMidwinter, latitude)); };
  double latitude = lastLatitude(60.0, 70.0, isNumber);
  EXPECT_EQ(hoursAt(kMidwinter, latitude), 0.0);
  EXPECT_TRUE(std::isnan(hoursAt(kMidwinter, std::nextafter(latitude, 90.0))));
  int zeros = 0;
  int others = 0;
  for (double step = 1e-12; step < 1e-6; step *= 1.01) {
    const double hours = hoursAt(kMidwinter, latitude - step);
    if (hours == 0.0) {
      ++zeros;
      ASSERT_EQ(others, 0) << step;
    } else {
      ++others;
      ASSERT_GE(hours, 0.0001) << step;
      ASSERT_LT(hours, 0.05) << step;
    }
  }
  EXPECT_GT(zeros, 10);
  EXPECT_GT(others, 10);
}

TEST(Compute, AcceptsAnyValue) {
  const Julian julians[] = {0,
                            1,
                            kHalfDay - 1,
                            kHalfDay,
                            kDay,
                            kMidsummer,
                            Julian{1} << 53,
                            (Julian{1} << 63) - 1,
                            Julian{1} << 63,
                            kLargestJulian - kHalfDay,
                            kLargestJulian - kHalfDay + 1,
                            kLargestJulian};
  const double latitudes[] = {0.0,
                              -0.0,
                              45.0,
                              -45.0,
                              90.0,
                              -90.0,
                              180.0,
                              270.0,
                              1e15,
                              -1e15,
                              1e300,
                              -1e300,
                              Limits::max(),
                              Limits::lowest(),
                              Limits::denorm_min(),
                              -Limits::denorm_min()};
  for (const Julian julian : julians) {
    for (const double latitude : latitudes) {
      DayLength day = dayAt(julian, latitude);
      const double hours = day.compute();
      EXPECT_TRUE(std::isnan(hours) || (hours >= 0.0 && hours <= 24.0))
          << julian << ", " << latitude;
      EXPECT_EQ(day.julian, julian);
    }
    for (const double latitude : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
      EXPECT_TRUE(std::isnan(hoursAt(julian, latitude))) << julian;
    }
  }
}

// ---- cumulative

TEST(Cumulative, AddsTheSameDayRepeatedly) {
  const double hours = hoursAt(kMidsummer, 52.0);
  EXPECT_EQ(dayAt(kMidsummer, 52.0).cumulative(0), hours);
  EXPECT_DOUBLE_EQ(dayAt(kMidsummer, 52.0).cumulative(2), 3 * hours);
  for (const int count : {1, -1, 2, -2, 7, -7, 100, -100}) {
    DayLength day = dayAt(kMidsummer, 52.0);
    EXPECT_NEAR(day.cumulative(count), (std::abs(count) + 1) * hours, 1e-10) << count;
    EXPECT_EQ(day.julian, kMidsummer) << count;
    EXPECT_EQ(day.dayLength, hours) << count;
  }
}

TEST(Cumulative, MayCrossMidnight) {
  constexpr Julian midnight = kFirstDay + 80 * kDay + kHalfDay;
  constexpr double latitude = 52.0;
  const double before = hoursAt(midnight - 1, latitude);
  const double after = hoursAt(midnight, latitude);
  ASSERT_GT(after - before, 0.05);
  const struct {
    const char* what;
    Julian julian;
    int count;
    int daysBefore;
    int daysAfter;
    double last;
  } cases[] = {
      {"1 ms before: midnight and 2 ms after", midnight - 1, 2, 1, 2, after},
      {"2 ms before: 1 ms before and 1 ms after", midnight - 2, 2, 2, 1, after},
      {"6 ms before: the third step is midnight", midnight - 6, 3, 3, 1, after},
      {"7 ms before: 1 ms before", midnight - 7, 3, 4, 0, before},
      {"midnight, backward", midnight, -1, 1, 1, before},
      {"2 ms after: 1 ms after and 1 ms before", midnight + 2, -2, 1, 2, before},
      {"3 ms after: the second step is midnight", midnight + 3, -2, 0, 3, after},
      {"5 ms after: 2 ms after and 1 ms before", midnight + 5, -3, 1, 3, before},
  };
  for (const auto& c : cases) {
    DayLength day = dayAt(c.julian, latitude);
    EXPECT_NEAR(day.cumulative(c.count), c.daysBefore * before + c.daysAfter * after, 1e-12)
        << c.what;
    EXPECT_EQ(day.julian, c.julian) << c.what;
    EXPECT_EQ(day.dayLength, c.last) << c.what;
    DayLength last = dayAt(c.last == before ? midnight - 1 : midnight, latitude);
    last.compute();
    EXPECT_EQ(day.meanLongitude, last.meanLongitude) << c.what;
    EXPECT_EQ(day.meanAnomaly, last.meanAnomaly) << c.what;
  }
}

TEST(Cumulative, StepsGrowByAMillisecond) {
  // 1 + 2 + ... + 9294 ms are less than half a day. With 9295 ms more they are longer.
  const double today = hoursAt(kFirstDay, 52.0);
  const double tomorrow = hoursAt(kFirstDay + kDay, 52.0);
  const int last = 9294;
  static_assert(last * (last + 1) / 2 < int{kHalfDay}, "");
  static_assert((last + 1) * (last + 2) / 2 >= int{kHalfDay}, "");
  DayLength day = dayAt(kFirstDay, 52.0);
  EXPECT_NEAR(day.cumulative(last), (last + 1) * today, 1e-6);
  EXPECT_EQ(day.dayLength, today);
  EXPECT_NEAR(day.cumulative(last + 1), (last + 1) * today + tomorrow, 1e-6);
  EXPECT_EQ(day.dayLength, tomorrow);
}

TEST(Cumulative, IsNanInPolarNight) {
  DayLength day = dayAt(kMidwinter, 80.0);
  EXPECT_TRUE(std::isnan(day.cumulative(2)));
  EXPECT_TRUE(std::isnan(day.dayLength));
  EXPECT_EQ(day.julian, kMidwinter);
  EXPECT_EQ(dayAt(kMidsummer, 80.0).cumulative(-2), 72.0);
}

TEST(Cumulative, IsZeroForTheSmallestInt) {
  DayLength day = dayAt(kMidsummer, 52.0);
  EXPECT_EQ(day.cumulative(std::numeric_limits<int>::min()), 0.0);
  EXPECT_EQ(day.julian, kMidsummer);
  EXPECT_TRUE(std::isnan(day.dayLength));
  EXPECT_EQ(day.meanLongitude, 0.0);
  EXPECT_EQ(day.meanAnomaly, 0.0);
}

TEST(Cumulative, RestoresAnyJulianValue) {
  for (const Julian julian :
       {Julian{0}, Julian{1}, Julian{2}, (Julian{1} << 53) + 1, (Julian{1} << 63) - 1,
        Julian{1} << 63, kLargestJulian - 1, kLargestJulian}) {
    for (const int count : {0, 1, -1, 5, -5}) {
      DayLength day = dayAt(julian, 30.0);
      const double sum = day.cumulative(count);
      EXPECT_EQ(day.julian, julian) << count;
      EXPECT_GE(sum, 0.0) << julian << ", " << count;
      EXPECT_LE(sum, 24.0 * (std::abs(count) + 1)) << julian << ", " << count;
    }
  }
}

// ---- Accuracy: the bounds are the errors found on every day of the years 2000 to 2050

TEST(DayLengthAccuracy, IsLessThanTheReference) {
  const struct {
    int latitude;        // north and south
    double least, most;  // minutes
  } bounds[] = {{0, 6.4, 7.6},  {10, 5.3, 6.3}, {20, 4.4, 5.3}, {30, 3.6, 4.3},
                {40, 2.8, 3.5}, {50, 2.1, 2.6}, {60, 1.1, 1.9}};
  double least = 60.0;
  double most = 0.0;
  for (const std::vector<double>& row : readReference("day_length_reference.csv", 455, 16)) {
    const Julian julian =
        noonOf(static_cast<int>(row[0]), static_cast<int>(row[1]), static_cast<int>(row[2]));
    ASSERT_NE(julian, 0u) << row[0] << '-' << row[1] << '-' << row[2];
    for (std::size_t column = 3; column < row.size(); ++column) {
      const int latitude = (static_cast<int>(column) - 9) * 10;
      const double minutes = (row[column] - hoursAt(julian, latitude)) * 60.0;
      const auto& bound = bounds[std::abs(latitude) / 10];
      ASSERT_EQ(bound.latitude, std::abs(latitude));
      EXPECT_GE(minutes, bound.least) << julian << ", " << latitude;
      EXPECT_LE(minutes, bound.most) << julian << ", " << latitude;
      least = std::min(least, minutes);
      most = std::max(most, minutes);
    }
  }
  EXPECT_LT(least, 1.2) << "the bounds are too wide";
  EXPECT_GT(most, 7.4);
}

}  // namespace
