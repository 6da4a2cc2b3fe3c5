#include "zn_daylength.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "internal/calendar.h"
#include "internal/numbers.h"
#include "zn_datetime.h"

namespace zn_lib {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kDegreesPerRadian = 57.29577951308232;

}  // namespace

DayLength::DayLength() : dayLength(std::numeric_limits<double>::quiet_NaN()) {}

DayLength::~DayLength() = default;

double DayLength::FNday() {
  // For these years, the formula below counts days with a leap day every four years.
  constexpr std::int32_t firstOfYear0 = 1721060;
  constexpr std::int32_t firstOfYear65536 = 25657592;
  constexpr std::int64_t firstOf2000 = 2453082;
  const std::int32_t day = internal::civilDay(julian);
  if (day >= firstOfYear0 && day < firstOfYear65536) {
    return static_cast<double>(internal::dayOfFourYearCycles(day) - firstOf2000);
  }

  const date_time_record date = julianToDate(julian);
  const int d = date.day;
  const int m = date.month;
  const int y = date.year;
  const int days = 367 * y - 7 * (y + (m + 9) / 12) / 4 + 275 * m / 9 + d;
  constexpr double noon = 0.5;
  return days - 730531.5 + noon;
}

double DayLength::FNrange(double angle) {
  const double turns = angle / kTwoPi;
  const double reduced = kTwoPi * (turns - std::trunc(turns));
  return reduced < 0.0 ? reduced + kTwoPi : reduced;
}

double DayLength::FNsun(double d) {
  // In degrees, the mean longitude is 280.461 + 0.9856474 d, and the mean anomaly 357.528 +
  // 0.9856003 d. The coefficients of the equation of centre are 1.915 and 0.020.
  meanLongitude = FNrange(0.017202792393721557 * d + 4.894967873435816);
  meanAnomaly = FNrange(0.017201970343643867 * d + 6.240040768070287);
  return FNrange(meanLongitude + 0.03342305517569141 * std::sin(meanAnomaly) +
                 0.00034906585039886593 * std::sin(2 * meanAnomaly));
}

double DayLength::hourAngle(double declination) {
  // The sum of the sun's radius, half of 0.53 degrees, and a refraction of 34 minutes of arc.
  constexpr double horizon = 0.014515321612419507;
  const double raised = declination + (latitude < 0.0 ? -horizon : horizon);
  double f = std::tan(latitude * kRadiansPerDegree) * std::tan(raised);
  // In polar day, f exceeds the limit and becomes 1. In polar night, f is below -1 and the result
  // is NaN.
  if (f > 0.99999) f = 1.0;
  return std::asin(f) + kHalfPi;
}

double DayLength::compute() {
  const double d = FNday();
  const double longitude = FNsun(d);
  const double obliquity = 0.4090877233749509 - 6.981317007977318e-9 * d;
  const double declination = std::asin(std::sin(obliquity) * std::sin(longitude));
  // The sun moves 15 degrees per hour, and the arc of daylight is twice the hour angle.
  const double hours = hourAngle(declination) * kDegreesPerRadian / 7.5;
  dayLength = hours < 0.0001 ? 0.0 : hours;
  return dayLength;
}

double DayLength::cumulative(int count) {
  if (count == std::numeric_limits<int>::min()) return 0.0;
  const unsigned long long start = julian;
  const int direction = count < 0 ? -1 : 1;
  julian = internal::truncateToUnsigned64(static_cast<double>(julian));
  double sum = compute();
  // The loop compares with `!=`, since an int cannot exceed the largest count.
  for (int step = 0; step != count;) {
    step += direction;
    julian = internal::truncateToUnsigned64(static_cast<double>(julian) + step);
    sum += compute();
  }
  julian = start;
  return sum;
}

}  // namespace zn_lib
