/// \file
/// Day length: how long the sun is above the horizon, for a latitude and a date.
///
///     zn_lib::DayLength day;
///     day.julian = zn_lib::dateToJulian(2024, 6, 21, 12, 0, 0.0);
///     day.latitude = 52.0;
///     day.compute()                        ->  16.6986 (hours)
///     zn_lib::hourFormat(day.dayLength)    ->  "16:41"
#ifndef ZN_DAYLENGTH_H
#define ZN_DAYLENGTH_H

#include "zn_common.h"

namespace zn_lib {

/// The length of daylight from a low-precision solar position: the formulas "to 0.01 degrees" of
/// the Astronomical Almanac (mean longitude, mean anomaly, equation of centre with two terms,
/// slowly changing obliquity).
///
/// The day runs from the rise of the sun's upper limb to its setting under standard refraction
/// (0.8317 degrees below the horizon). That angle is added to the declination, not to the altitude,
/// so the result is short of the true length: by 6.4 to 7.6 minutes on the equator (12 h against
/// about 12 h 7 min), 3.6 to 4.3 at latitude 30, 2.1 to 2.6 at 50 and 1.1 to 1.9 at 60. That holds
/// for every day of the years 2000 to 2050 on the meridian of Greenwich, checked against PyEphem
/// (VSOP87); half the globe away the date is half a day off, which changes these figures by up to 3
/// minutes at latitude 60. Beyond 65, errors of more than 20 minutes were seen close to polar day
/// and polar night, and either may begin or end a day off.
///
/// Angles are radians but for `latitude`. Any values may be stored and computed with. Objects are
/// independent of each other and of the date settings.
class ZN_UDF_API DayLength {
 public:
  /// Nothing is computed yet: `dayLength` is a quiet NaN.
  DayLength();
  ~DayLength();  ///< does nothing

  /// Days from 1 January 2000 to the civil day of `julian`, both at 12:00.
  ///
  /// Exact from March 1900 to February 2100. The formula takes every fourth year for a leap year,
  /// so that the days come out by one off beyond each other century, and day lengths drift with
  /// them.
  double FNday();

  /// `angle` reduced to 0 to 2 pi; NaN for an infinity.
  double FNrange(double angle);

  /// The sun's ecliptic longitude `d` days after 1 January 2000, 12:00. Stores `meanLongitude` and
  /// `meanAnomaly`.
  double FNsun(double d);

  /// Half the arc of daylight: the sun's hour angle at sunset, for `declination` and `latitude`.
  ///
  /// Returns pi / 2 on the equator, for every declination. Elsewhere refraction makes it larger at
  /// the equinoxes: 1.5894 at latitude 52, where the arc is 8.5 minutes longer than twelve hours.
  ///
  /// Polar day gives pi. Only that side is clamped: in polar night the result is NaN.
  double hourAngle(double declination);

  /// The day length in hours for `julian` and `latitude`, also stored in `dayLength`.
  ///
  /// 24.0 in polar day, NaN in polar night, and exactly 12.0 on the equator.
  double compute();

  /// The sum of `compute()` at `julian` and at |`count`| more instants, with `julian` restored
  /// afterwards.
  ///
  /// The instants are milliseconds apart, not days: `julian` + 1, + 3, + 6 ... ms (before it, for a
  /// negative count). So the result is |`count`| + 1 times the length of the same day unless
  /// midnight falls among them. For the sum over days, call `compute` for each. Takes time in
  /// proportion to `count`, some minutes for the largest int; the most negative int gives 0.0.
  double cumulative(int count);

  unsigned long long julian = 0;  ///< the date, a Julian value; set by the host
  double latitude = 0.0;          ///< degrees, north positive; set by the host
  double meanLongitude = 0.0;     ///< the sun's mean longitude, 0 to 2 pi; written by `FNsun`
  double meanAnomaly = 0.0;       ///< the sun's mean anomaly, 0 to 2 pi; written by `FNsun`
  double dayLength;               ///< the result of the last `compute`, hours
};

}  // namespace zn_lib

#endif  // ZN_DAYLENGTH_H
