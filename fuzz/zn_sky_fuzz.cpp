/// Checks that day length and moon phase of any date and latitude are in range or NaN as
/// documented, and close to a reference model with more digits.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_daylength.h>
#include <zn_moonphase.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>

// The last bits of sines differ between C libraries.
#define ZN_UDF_FUZZ_DIGITS 11
#include "fuzz_check.h"

namespace {

using fuzz::expect;

using Real = long double;
constexpr double kTwoPi = 6.283185307179586;
constexpr Real kPi = 3.14159265358979323846264338327950288L;
constexpr Real kDegree = kPi / 180;
constexpr unsigned long long kDay = 86400000;

// The first day of March 1900 and the last day of February 2100, in days after 1 January 2000.
constexpr int kMarch1900 = -36465;
constexpr int kFebruary2100 = 36583;

bool isBetween(double low, double value, double high) { return value >= low && value <= high; }

Real withoutTurns(Real value, Real turn) {
  const Real rest = std::fmod(value, turn);
  return rest < 0 ? rest + turn : rest;
}

// ---- Day length

constexpr Real kHorizon = (0.53L / 2 + 34.0L / 60) * kDegree;

/// Returns the declination of the sun `days` after 1 January 2000.
Real declination(Real days) {
  const Real mean = 280.461L + 0.9856474L * days;
  const Real anomaly = (357.528L + 0.9856003L * days) * kDegree;
  const Real longitude =
      (mean + 1.915L * std::sin(anomaly) + 0.02L * std::sin(2 * anomaly)) * kDegree;
  const Real obliquity = (23.439L - 0.0000004L * days) * kDegree;
  return std::asin(std::sin(obliquity) * std::sin(longitude));
}

/// Returns the sine of the hour angle of sunrise. It is 1 where polar day begins, and -1 where
/// polar night begins.
Real sineOfSunrise(Real days, Real latitude) {
  const Real horizon = latitude < 0 ? -kHorizon : kHorizon;
  return std::tan(latitude * kDegree) * std::tan(declination(days) + horizon);
}

/// Returns the northern latitude with this sine, or its negation if there is none.
double latitudeWith(Real sine, Real days) {
  return static_cast<double>(std::atan(sine / std::tan(declination(days) + kHorizon)) / kDegree);
}

void checkDay(zn_lib::DayLength& day) {
  const unsigned long long julian = day.julian;
  const double hours = day.compute();
  fuzz::expectSameNumber("dayLength", day.dayLength, hours);
  expect("the date is unchanged", day.julian == julian);
  expect("0 to 24 hours, or NaN", std::isnan(hours) || isBetween(0.0, hours, 24.0));
  expect("no NaN between the polar circles",
         !std::isnan(hours) || !(std::fabs(day.latitude) < 60.0));
  expect("longitude", isBetween(0.0, day.meanLongitude, kTwoPi));
  expect("anomaly", isBetween(0.0, day.meanAnomaly, kTwoPi));
  if (day.latitude == 0.0) fuzz::expectSame("on the equator", hours, 12.0);
}

/// Checks a date, in days after 1 January 2000, for which the formula of the calendar is exact.
void checkNear(zn_lib::DayLength& day, int days, double latitude) {
  constexpr unsigned long long start = 211813488000000;  // 1 January 2000, 12:00
  const unsigned long long distance = static_cast<unsigned long long>(std::abs(days)) * kDay;
  day.julian = days < 0 ? start - distance : start + distance;
  day.latitude = latitude;
  fuzz::expectNear("FNday", day.FNday(), days, 0.0);
  const double hours = day.compute();
  // In polar day the limit counts as a full day. In polar night there is no result.
  constexpr Real polarDay = 0.99999L;
  constexpr Real polarNight = -1;
  constexpr Real rounding = 1e-6L;
  // At the poles themselves, the sign of the tangent would depend on rounding.
  constexpr Real pole = 89.999999L;
  const Real sine = sineOfSunrise(days, std::clamp<Real>(latitude, -pole, pole));
  if (std::fabs(sine - polarDay) < rounding || std::fabs(sine - polarNight) < rounding) return;
  if (sine < polarNight) {
    expect("no result in polar night", std::isnan(hours));
    return;
  }
  const Real angle = sine > polarDay ? kPi / 2 : std::asin(sine);
  fuzz::expectNear("compute", hours, static_cast<double>((angle + kPi / 2) / kDegree / 7.5L), 1e-4);
}

void angles(zn_lib::DayLength& day, double angle) {
  const double reduced = day.FNrange(angle);
  expect("FNrange", std::isfinite(angle) ? isBetween(0.0, reduced, kTwoPi) : std::isnan(reduced));
  if (std::fabs(angle) < 1e6) {
    const double away = std::fabs(reduced - static_cast<double>(withoutTurns(angle, kTwoPi)));
    expect("FNrange removes whole turns", std::min(away, kTwoPi - away) < 1e-8);
  }
  const double sun = day.FNsun(angle);
  expect("FNsun", std::isnan(sun) || isBetween(0.0, sun, kTwoPi));
  const double hour = day.hourAngle(angle);
  expect("hourAngle", std::isnan(hour) || isBetween(0.0, hour, kTwoPi / 2));
}

void sums(zn_lib::DayLength day, int count) {
  fuzz::expectSame("too many to count", zn_lib::DayLength(day).cumulative(INT_MIN), 0.0);
  // Larger integers are not exact as a double.
  constexpr unsigned long long mostExact = 1ull << 52;
  day.julian %= mostExact;
  zn_lib::DayLength expected = day;
  double sum = expected.compute();
  for (int i = 1; i <= std::abs(count); ++i) {
    const unsigned long long step = static_cast<unsigned long long>(i);
    if (count < 0 && expected.julian < step) return;
    expected.julian += count < 0 ? 0 - step : step;
    sum += expected.compute();
  }
  fuzz::expectSameNumber("cumulative", day.cumulative(count), sum);
  expect("the date is restored", expected.julian == day.julian || count != 0);
}

// ---- Moon phase

Real sine(Real degrees) { return std::sin(degrees * kDegree); }

Real sunLongitude(Real days) {
  const Real mean = withoutTurns(days * 0.9856473320990837L - 3.762863L, 360) * kDegree;
  Real e = mean;
  // Each step adds almost two digits.
  for (int i = 0; i < 12; ++i) e = mean + 0.016718L * std::sin(e);
  const Real trueAnomaly = 2 * std::atan(1.01686011182L * std::tan(e / 2)) / kDegree;
  return withoutTurns(trueAnomaly + 282.596403L, 360);
}

/// Returns the longitude of the moon on a day on which that of the sun is `sun`.
Real moonLongitude(Real days, Real sun) {
  const Real sunAnomaly = 0.985647332099L * days - 3.762863L;
  const Real mean = 13.176396L * days + 64.975464L;
  const Real meanAnomaly = withoutTurns(mean, 360) - 0.1114041L * days - 349.383063L;
  const Real evection = 1.2739L * sine(2 * (mean - sun) - meanAnomaly);
  const Real annual = 0.1858L * sine(sunAnomaly);
  const Real anomaly = meanAnomaly + evection - annual - 0.37L * sine(sunAnomaly);
  const Real longitude =
      mean + evection + 6.2886L * sine(anomaly) - annual + 0.214L * sine(2 * anomaly);
  return longitude + 0.6583L * sine(2 * (longitude - sun));
}

void phases(double days) {
  zn_lib::MoonPhase moon;
  moon.days = days;
  moon.compute();
  const double sun = moon.sunPosition();
  expect("the day is unchanged", moon.days == days || std::isnan(days));
  expect("the phase is one of eight", isBetween(0, moon.phase, 7));
  expect("the sun", std::isnan(sun) || isBetween(0.0, sun, 360.0));
  if (std::isnan(moon.phaseAngle)) {
    expect("NaN without a valid day only", !(std::fabs(days) < 1e300));
    expect("NaN without a phase angle", std::isnan(moon.illuminated));
    fuzz::expectSame("phase of NaN", moon.phase, 0);
    return;
  }
  expect("a phase angle", isBetween(-10.0, moon.phaseAngle, 370.0));
  expect("a fraction", isBetween(0.0, moon.illuminated, 1.0));
  fuzz::expectSame("phase", moon.phase,
                   static_cast<int>(std::trunc((moon.phaseAngle + 22.5) / 45)) % 8);
  if (std::fabs(days) > 1e6) return;
  const Real ofSun = sunLongitude(days);
  const Real elongation = moonLongitude(days, ofSun) - ofSun;
  const Real away = withoutTurns(static_cast<Real>(moon.phaseAngle) - elongation, 360);
  expect("near the model", std::min(away, 360 - away) < 1e-5L);
  fuzz::expectNear("light", moon.illuminated,
                   static_cast<double>((1 - std::cos(elongation * kDegree)) / 2), 1e-6);
  const Real sunAway = withoutTurns(static_cast<Real>(sun) - ofSun, 360);
  expect("the sun near the model", std::min(sunAway, 360 - sunAway) < 1e-6L);
  fuzz::expectNear("moonPosition",
                   static_cast<double>(withoutTurns(moon.moonPosition() - sun, 360)),
                   static_cast<double>(withoutTurns(moon.phaseAngle, 360)), 1e-9);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int group = input.ConsumeIntegralInRange(0, 5);
  double numbers[3] = {};
  input.ConsumeData(numbers, sizeof numbers);
  zn_lib::DayLength day;
  expect("not computed yet", std::isnan(day.dayLength));
  day.julian = input.ConsumeIntegral<unsigned long long>();
  day.latitude = numbers[0];
  const int days = input.ConsumeIntegralInRange(kMarch1900, kFebruary2100);
  double latitude = input.ConsumeIntegralInRange(-900000, 900000) / 10000.0;
  const int count = input.ConsumeIntegralInRange(-40, 40);
  const double near = input.ConsumeIntegralInRange(-100000000, 100000000) / 1000.0;
  const double limit = input.ConsumeBool() ? 1 : -1;
  const bool isNearLimit = input.ConsumeBool();
  if (isNearLimit) latitude = latitudeWith(limit + near / 1e7, days);
  switch (group) {
    case 0:
      checkDay(day);
      break;
    case 1:
      checkNear(day, days, latitude);
      break;
    case 2:
      day.latitude = latitude;
      sums(day, count);
      break;
    case 3:
      angles(day, numbers[1]);
      angles(day, latitude);
      break;
    case 4:
      phases(numbers[2]);
      break;
    default:
      phases(near);
      break;
  }
  return 0;
}
