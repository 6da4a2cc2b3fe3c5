#include <gtest/gtest.h>
#include <zn_datetime.h>
#include <zn_moonphase.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "sky_reference.h"

namespace {

using zn_lib::MoonPhase;
using Limits = std::numeric_limits<double>;

MoonPhase moonAt(double days) {
  MoonPhase moon;
  moon.days = days;
  moon.compute();
  return moon;
}

/// Returns the shorter way from `from` to `to` on the circle, in degrees from -180 to 180.
double difference(double to, double from) { return std::remainder(to - from, 360.0); }

TEST(ZnMoonPhase, HeaderExamples) {
  zn_lib::setUseTime(true);
  const unsigned long long julian = zn_lib::dateToJulian(2024, 1, 26, 0, 0, 0.0);
  zn_lib::setUseTime(false);
  zn_lib::MoonPhase moon;
  moon.days = static_cast<double>(julian) / 86400000.0 - 2444238.5;
  moon.compute();
  EXPECT_EQ(moon.days, 16097.0);
  EXPECT_NEAR(moon.phaseAngle, 182.79, 0.005);
  EXPECT_NEAR(moon.illuminated, 0.99941, 0.000005);
  EXPECT_EQ(moon.phase, 4);
}

TEST(MoonPhase, IsInitiallyARecordOfZeros) {
  static_assert(std::is_same_v<decltype(MoonPhase::phase), int>, "");
  static_assert(std::is_standard_layout_v<MoonPhase> && !std::is_polymorphic_v<MoonPhase>, "");
  static_assert(offsetof(MoonPhase, days) == 0 && offsetof(MoonPhase, phaseAngle) == 8 &&
                    offsetof(MoonPhase, illuminated) == 16 && offsetof(MoonPhase, phase) == 24,
                "the order of the fields");
  const MoonPhase moon;
  EXPECT_EQ(moon.days, 0.0);
  EXPECT_EQ(moon.phaseAngle, 0.0);
  EXPECT_EQ(moon.illuminated, 0.0);
  EXPECT_EQ(moon.phase, 0);
}

TEST(MoonPhase, KnownDays) {
  const struct {
    const char* what;
    double days;
    double phaseAngle;
    double illuminated;
    double digit;  // the unit of the last digit of `illuminated`
    int phase;
  } cases[] = {
      {"new moon of 11 January 2024", 16082.498, 359.84, 0.0000018, 1e-7, 0},
      {"19 January 2024, 0:00", 16090.0, 100.49, 0.59107, 1e-5, 2},
      {"26 January 2024, 0:00", 16097.0, 182.79, 0.99941, 1e-5, 4},
  };
  for (const auto& c : cases) {
    const MoonPhase moon = moonAt(c.days);
    EXPECT_NEAR(moon.phaseAngle, c.phaseAngle, 0.005) << c.what;
    EXPECT_NEAR(moon.illuminated, c.illuminated, c.digit / 2) << c.what;
    EXPECT_EQ(moon.phase, c.phase) << c.what;
    EXPECT_EQ(moon.days, c.days) << c.what;
  }
}

TEST(MoonPhase, EclipsesNeedANewOrAFullMoon) {
  const struct {
    const char* what;
    double days;
    double phaseAngle;
    int phase;
  } cases[] = {
      {"sun, 28 May 1900 14:50", -29070.3819, 0.0, 0},
      {"moon, 1 April 1912 22:04", -24744.0803, 180.0, 4},
      {"sun, 29 May 1919 13:12", -22130.4503, 0.0, 0},
      {"sun, 15 February 1961 8:10", -6892.6595, 0.0, 0},
      {"sun, 7 March 1970 17:42", -3585.2622, 0.0, 0},
  };
  for (const auto& c : cases) {
    const MoonPhase moon = moonAt(c.days);
    EXPECT_NEAR(difference(moon.phaseAngle, c.phaseAngle), 0.0, 0.5) << c.what;
    EXPECT_NEAR(moon.illuminated, c.phase == 0 ? 0.0 : 1.0, 0.0001) << c.what;
    EXPECT_EQ(moon.phase, c.phase) << c.what;
  }
}

TEST(MoonPhase, SunIsAtAQuarterOfItsOrbitWhenASeasonBegins) {
  const struct {
    const char* what;
    double days;
    double longitude;
  } cases[] = {
      {"20 March 2024 3:06", 16151.1294, 0.0},
      {"20 June 2024 20:51", 16243.8688, 90.0},
      {"22 September 2024 12:43", 16337.5302, 180.0},
      {"21 December 2024 9:20", 16427.3891, 270.0},
  };
  for (const auto& c : cases) {
    MoonPhase moon;
    moon.days = c.days;
    EXPECT_NEAR(difference(moon.sunPosition(), c.longitude), 0.0, 0.05) << c.what;
  }
}

// ---- The reference model

/// Returns `product`. Prevents the compiler from fusing it with a sum, which would change the last
/// bits of large angles.
double rounded(double product) {
  volatile double value = product;
  return value;
}

/// Computes the model step by step, for days at which the number of turns fits in 32 bits.
struct Model {
  double sunLongitude, moonLongitude, phaseAngle, illuminated;
  int phase;

  /// `sunMotionInPerturbations` is the daily motion of the sun in the perturbations of the moon.
  explicit Model(double days, double sunMotionInPerturbations = 0.985647332099) {
    const double meanSun = reduced(rounded(days * 0.9856473320990837));
    const double sunAnomaly = radians(fixed(meanSun - 3.762863));
    const double eccentricity = 0.016718;
    double eccentricAnomaly = sunAnomaly;
    double delta;
    do {
      delta = eccentricAnomaly - eccentricity * std::sin(eccentricAnomaly) - sunAnomaly;
      eccentricAnomaly = eccentricAnomaly - delta / (1 - eccentricity * std::cos(eccentricAnomaly));
    } while (std::fabs(delta) >= 1e-12);
    const double trueAnomaly =
        114.59155902616465 * std::atan(1.01686011182 * std::tan(eccentricAnomaly / 2));
    sunLongitude = reduced(trueAnomaly + 282.596403);

    const double perturbingAnomaly = fixed(rounded(sunMotionInPerturbations * days) - 3.762863);
    const double meanMoon = fixed(reduced(rounded(13.176396 * days) + 64.975464));
    const double meanMoonAnomaly = reduced(meanMoon - rounded(0.1114041 * days) - 349.383063);
    const double evection = 1.2739 * sine(2 * (meanMoon - sunLongitude) - meanMoonAnomaly);
    const double annualEquation = 0.1858 * sine(perturbingAnomaly);
    const double thirdCorrection = 0.37 * sine(perturbingAnomaly);
    const double moonAnomaly = meanMoonAnomaly + evection - annualEquation - thirdCorrection;
    const double equationOfCentre = 6.2886 * sine(moonAnomaly);
    const double fourthCorrection = 0.214 * sine(2 * moonAnomaly);
    const double corrected =
        meanMoon + evection + equationOfCentre - annualEquation + fourthCorrection;
    const double variation = 0.6583 * sine(2 * (corrected - sunLongitude));
    moonLongitude = corrected + variation;

    const double age = moonLongitude - sunLongitude;
    phaseAngle = age < 0 ? age + 360 : age;
    phase = static_cast<int>(std::trunc((phaseAngle + 22.5) / 45.0)) % 8;
    illuminated = (1 - std::cos(radians(age))) * 0.5;
  }

  static double radians(double degrees) { return degrees * 0.017453292519943295; }
  static double sine(double degrees) { return std::sin(radians(degrees)); }
  /// Returns `x`, increased by a turn if it is negative.
  static double fixed(double x) { return x < 0 ? x + 360 : x; }
  /// Returns `x` without whole turns.
  static double reduced(double x) { return x - rounded(std::trunc(x / 360) * 360); }
};

void expectModel(double days) {
  const Model model(days);
  MoonPhase moon = moonAt(days);
  ASSERT_NEAR(moon.sunPosition(), model.sunLongitude, 1e-11) << days;
  ASSERT_NEAR(moon.moonPosition(), model.moonLongitude, 1e-11) << days;
  ASSERT_NEAR(moon.phaseAngle, model.phaseAngle, 1e-11) << days;
  ASSERT_NEAR(moon.illuminated, model.illuminated, 1e-12) << days;
  ASSERT_EQ(moon.phase, model.phase) << days;
}

TEST(MoonPhase, FollowsTheModel) {
  for (int i = -500000; i <= 500000; ++i) expectModel(i * 0.0837);
  std::mt19937 random(6);
  for (const double range : {1.0, 400.0, 1e6, 1e9}) {
    std::uniform_real_distribution<double> day(-range, range);
    for (int i = 0; i < 50000; ++i) expectModel(day(random));
  }
  for (const double days : {0.0, -0.0, 1.0, -1.0, Limits::denorm_min(), -Limits::denorm_min(),
                            Limits::min(), -Limits::min(), 1e-300}) {
    expectModel(days);
  }
}

TEST(MoonPhase, SunMovesDifferentlyInTheMoonsPerturbations) {
  constexpr double sunsOwnMotion = 0.9856473320990837;
  double largest = 0.0;
  for (int i = -1000; i <= 1000; ++i) {
    const double days = i * 1234567.8;
    largest = std::max(
        largest, std::fabs(Model(days, sunsOwnMotion).moonLongitude - Model(days).moonLongitude));
    expectModel(days);
  }
  EXPECT_GT(largest, 1e-7) << "the test must distinguish the two constants";
}

TEST(MoonPhase, SunPositionIsLessThanATurn) {
  double lowest = 360.0;
  double highest = 0.0;
  for (int i = -400000; i <= 400000; ++i) {
    MoonPhase moon;
    moon.days = i * 0.31;
    const double sun = moon.sunPosition();
    lowest = std::min(lowest, sun);
    highest = std::max(highest, sun);
  }
  EXPECT_GE(lowest, 0.0);
  EXPECT_LT(highest, 360.0);
  EXPECT_LT(lowest, 0.01) << "the whole circle is covered";
  EXPECT_GT(highest, 359.99);
}

TEST(MoonPhase, MoonPositionMayLeaveTheCircle) {
  double lowest = 360.0;
  double highest = 0.0;
  for (int i = -100000; i <= 100000; ++i) {
    MoonPhase moon;
    moon.days = i * 0.31;
    const double position = moon.moonPosition();
    lowest = std::min(lowest, position);
    highest = std::max(highest, position);
  }
  EXPECT_LT(lowest, 0.0);
  EXPECT_GT(lowest, -9.1) << "all corrections together";
  EXPECT_GT(highest, 360.0);
  EXPECT_LT(highest, 369.1);
}

TEST(MoonPhase, PositionsDoNotChangeTheObject) {
  MoonPhase moon = moonAt(16097.0);
  const MoonPhase before = moon;
  moon.days = 100.0;
  moon.sunPosition();
  moon.moonPosition();
  EXPECT_EQ(moon.days, 100.0);
  EXPECT_EQ(moon.phaseAngle, before.phaseAngle);
  EXPECT_EQ(moon.illuminated, before.illuminated);
  EXPECT_EQ(moon.phase, before.phase);
}

// ---- Sectors

/// The first pair of adjacent doubles after `days` between which the phase angle reaches `angle`.
struct Crossing {
  double before, after;

  Crossing(double days, double angle) : before(days), after(days + 1.0) {
    while (difference(moonAt(after).phaseAngle, angle) < 0.0 ||
           difference(moonAt(before).phaseAngle, angle) >= 0.0) {
      before += 1.0;
      after += 1.0;
    }
    while (std::nextafter(before, after) < after) {
      const double middle = before + (after - before) / 2;
      (difference(moonAt(middle).phaseAngle, angle) < 0.0 ? before : after) = middle;
    }
  }
};

TEST(MoonPhase, SectorsBeginHalfwayBetweenThePhases) {
  for (const double start : {-20000.0, 3000.0, 16000.0}) {
    for (int sector = 0; sector < 8; ++sector) {
      const double angle = 22.5 + 45.0 * sector;
      const Crossing crossing(start, angle);
      const MoonPhase before = moonAt(crossing.before);
      const MoonPhase after = moonAt(crossing.after);
      ASSERT_LT(before.phaseAngle, angle);
      ASSERT_GE(after.phaseAngle, angle);
      ASSERT_NEAR(before.phaseAngle, after.phaseAngle, 1e-9);
      EXPECT_EQ(before.phase, sector) << before.phaseAngle;
      EXPECT_EQ(after.phase, (sector + 1) % 8) << after.phaseAngle;
    }
  }
}

TEST(MoonPhase, SectorsContainTheirAngles) {
  const struct {
    double phaseAngle;
    int phase;
  } cases[] = {{0.1, 0},   {22.4, 0},  {45.0, 1},  {90.0, 2},  {135.0, 3}, {180.0, 4},
               {225.0, 5}, {270.0, 6}, {315.0, 7}, {337.4, 7}, {337.6, 0}, {350.0, 0},
               {359.9, 0}, {22.6, 1},  {157.4, 3}, {157.6, 4}, {202.4, 4}, {202.6, 5}};
  for (const auto& c : cases) {
    const MoonPhase moon = moonAt(Crossing(16000.0, c.phaseAngle).after);
    ASSERT_NEAR(moon.phaseAngle, c.phaseAngle, 1e-6);
    EXPECT_EQ(moon.phase, c.phase) << c.phaseAngle;
  }
}

TEST(MoonPhase, LitFractionGrowsFromNewToFull) {
  EXPECT_LT(moonAt(Crossing(16000.0, 0.0).after).illuminated, 1e-12);
  EXPECT_NEAR(moonAt(Crossing(16000.0, 60.0).after).illuminated, 0.25, 1e-9);
  EXPECT_NEAR(moonAt(Crossing(16000.0, 90.0).after).illuminated, 0.5, 1e-9);
  EXPECT_NEAR(moonAt(Crossing(16000.0, 180.0).after).illuminated, 1.0, 1e-12);
  EXPECT_NEAR(moonAt(Crossing(16000.0, 270.0).after).illuminated, 0.5, 1e-9);
}

// At most one turn is added, and only to a negative difference. Near a new moon at longitude 0 the
// phase angle may therefore lie outside the circle.
TEST(MoonPhase, PhaseAngleOutsideTheCircleIsANewMoon) {
  int beside = 0;
  for (int i = -400000; i <= 400000; ++i) {
    const MoonPhase moon = moonAt(i * 0.21);
    if (moon.phaseAngle >= 0.0 && moon.phaseAngle < 360.0) continue;
    ++beside;
    ASSERT_NEAR(difference(moon.phaseAngle, 0.0), 0.0, 9.1) << moon.days;
    ASSERT_GT(moon.phaseAngle, -9.1) << moon.days;
    ASSERT_LT(moon.phaseAngle, 369.1) << moon.days;
    ASSERT_EQ(moon.phase, 0) << moon.days;
    ASSERT_LT(moon.illuminated, 0.007) << moon.days;
  }
  EXPECT_GT(beside, 10);
}

// ---- Extreme values

TEST(MoonPhase, IsNanOutsideTheRangeOfTheModel) {
  for (const double days : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(),
                            Limits::max(), Limits::lowest(), 1e308, -1e308}) {
    MoonPhase moon;
    moon.phase = 5;
    moon.days = days;
    moon.compute();
    EXPECT_TRUE(std::isnan(moon.phaseAngle)) << days;
    EXPECT_TRUE(std::isnan(moon.illuminated)) << days;
    EXPECT_EQ(moon.phase, 0) << days;
    EXPECT_TRUE(std::isnan(moon.moonPosition())) << days;
  }
}

void expectSane(double days) {
  MoonPhase moon = moonAt(days);
  ASSERT_GE(moon.sunPosition(), 0.0) << days;
  ASSERT_LT(moon.sunPosition(), 360.0) << days;
  ASSERT_GT(moon.phaseAngle, -9.1) << days;
  ASSERT_LT(moon.phaseAngle, 369.1) << days;
  ASSERT_GE(moon.illuminated, 0.0) << days;
  ASSERT_LE(moon.illuminated, 1.0) << days;
  ASSERT_EQ(moon.phase, static_cast<int>((moon.phaseAngle + 22.5) / 45.0) % 8) << days;
}

TEST(MoonPhase, LargeDaysStayInRange) {
  for (double days = 1.0; days < 1e307; days *= 1.37) {
    expectSane(days);
    expectSane(-days);
  }
  for (const double days : {1e300, 4294967296.0, 9007199254740993.0, 18446744073709551616.0}) {
    expectSane(days);
    expectSane(-days);
  }
}

// Angles of more than 2147483647 turns are reduced in another way.
TEST(MoonPhase, NumberOfTurnsMayExceed32Bits) {
  for (const double motion : {13.176396, 13.0649919, 0.9856473320990837}) {
    const double last = 2147483647.0 * 360.0 / motion;
    for (int i = -20000; i <= 20000; ++i) {
      expectSane(last + i * 0.37);
      expectSane(-last + i * 0.37);
    }
  }
  // Doubles of this size resolve days coarsely, so the angles have few exact digits.
  for (double days = 1e12; days < 4e12; days += 1.0007e10) {
    for (const double signedDays : {days, -days}) {
      const double difference = moonAt(signedDays).sunPosition() - Model(signedDays).sunLongitude;
      EXPECT_NEAR(std::remainder(difference, 360.0), 0.0, 0.01) << signedDays;
    }
  }
}

// ---- Accuracy: the bounds are the largest errors at every half hour of the years 2000 to 2050

TEST(MoonPhaseAccuracy, PhaseAngleAndLitFraction) {
  double largestAngle = 0.0;
  double largestFraction = 0.0;
  for (const std::vector<double>& row : readReference("moon_phase_reference.csv", 1907, 3)) {
    const MoonPhase moon = moonAt(row[0]);
    const double angle = difference(moon.phaseAngle, row[1]);
    const double fraction = moon.illuminated - row[2];
    EXPECT_LE(std::fabs(angle), 0.34) << row[0];
    EXPECT_LE(std::fabs(fraction), 0.004) << row[0];
    largestAngle = std::max(largestAngle, std::fabs(angle));
    largestFraction = std::max(largestFraction, std::fabs(fraction));
  }
  EXPECT_GT(largestAngle, 0.25) << "the bounds are too wide";
  EXPECT_GT(largestFraction, 0.003);
}

TEST(MoonPhaseAccuracy, InstantsOfNewAndFullMoon) {
  constexpr double minutesPerDay = 1440.0;
  double largest = 0.0;
  int fullMoons = 0;
  for (const std::vector<double>& row : readReference("moon_instants_reference.csv", 1262, 2)) {
    const double days = row[0];
    const double angle = row[1];
    fullMoons += angle == 180.0;
    EXPECT_EQ(moonAt(days).phase, angle == 180.0 ? 4 : 0) << days;
    const Crossing crossing(days - 0.5, angle);
    const double error = (crossing.after - days) * minutesPerDay;
    EXPECT_LE(std::fabs(error), 36.0) << days;
    largest = std::max(largest, std::fabs(error));
  }
  EXPECT_EQ(fullMoons, 631);
  EXPECT_GT(largest, 30.0) << "the bound is too wide";
}

}  // namespace
