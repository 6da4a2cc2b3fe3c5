/// \file
/// \ingroup family_daylength
/// Computes day length: how long the sun is above the horizon at a latitude on a date.
///
///     zn_lib::DayLength day;
///     day.julian = zn_lib::dateToJulian(2024, 6, 21, 12, 0, 0.0);
///     day.latitude = 52.0;
///     day.compute()                      ->  16.6986   // hours
///     zn_lib::hourFormat(day.dayLength)  ->  "16:41"
#ifndef ZN_DAYLENGTH_H
#define ZN_DAYLENGTH_H

#include "zn_common.h"

namespace zn_lib {

/// Computes the length of daylight from a low-precision solar position. The formulas are those "to
/// 0.01 degrees" of the Astronomical Almanac: mean longitude, mean anomaly, an equation of centre
/// with two terms, and a slowly changing obliquity.
///
/// The day lasts from the rising to the setting of the sun's upper limb under standard refraction,
/// when the sun's centre is 0.8317 degrees below the horizon. This angle is added to the
/// declination, not to the altitude, so the result is shorter than the true day:
///
/// | Latitude | Shorter by |
/// | --- | --- |
/// | 0 | 6.4 to 7.6 minutes: 12 h instead of about 12 h 7 min |
/// | 30 | 3.6 to 4.3 minutes |
/// | 50 | 2.1 to 2.6 minutes |
/// | 60 | 1.1 to 1.9 minutes |
///
/// These figures come from a comparison with PyEphem (VSOP87) for every day of the years 2000 to
/// 2050 on the meridian of Greenwich. On the opposite meridian the date is half a day off, which
/// changes the day length by up to 3 minutes at latitude 60. Beyond latitude 65, errors of more
/// than 20 minutes were seen close to polar day and polar night. The first and last days of polar
/// day and night may be off by one.
///
/// Angles are in radians, except `latitude`. All functions accept any values. Objects are
/// independent of each other and of the date settings.
class ZN_UDF_API DayLength {
 public:
  /// Creates an object whose `dayLength` is a quiet NaN.
  ///
  ///     DayLength().dayLength  ->  NAN
  DayLength();
  ~DayLength();  ///< does nothing

  /// Returns the number of days from 1 January 2000 to the civil day of `julian`, both at 12:00.
  ///
  /// The result is exact from March 1900 to February 2100. The formula counts every fourth year as
  /// a leap year. Outside that range, each century year that is not a leap year adds an error of
  /// one day, and day lengths drift accordingly.
  ///
  ///     day.FNday()  ->  8938.0
  double FNday();

  /// Returns `angle` reduced to the range 0 to 2 pi, or NaN for an infinity.
  ///
  ///     day.FNrange(-1.0)  ->  5.2832
  double FNrange(double angle);

  /// Returns the sun's ecliptic longitude `d` days after 1 January 2000, 12:00. Stores
  /// `meanLongitude` and `meanAnomaly`.
  ///
  ///     day.FNsun(8938.0)  ->  1.5814
  double FNsun(double d);

  /// Returns half the arc of daylight: the sun's hour angle at sunset for `declination` and
  /// `latitude`.
  ///
  /// On the equator the result is pi / 2 for every declination. Elsewhere it is larger at the
  /// equinoxes because of refraction: 1.5894 at latitude 52, where the arc is 8.5 minutes longer
  /// than twelve hours.
  ///
  /// The result is clamped to pi in polar day. In polar night it is NaN.
  ///
  ///     day.hourAngle(0.0)  ->  1.5894
  double hourAngle(double declination);

  /// Returns the day length in hours for `julian` and `latitude`, and stores it in `dayLength`.
  ///
  /// The result is 24.0 in polar day, NaN in polar night, and exactly 12.0 on the equator.
  ///
  ///     day.compute()  ->  16.6986
  ///     day.latitude = 80.0;
  ///     day.compute()  ->  24.0
  double compute();

  /// Returns the sum of `compute()` at `julian` and at |`count`| more instants. Restores `julian`
  /// afterwards.
  ///
  /// The instants are milliseconds apart, not days: 1, 3, 6 ... ms after `julian`, or before it if
  /// `count` is negative. Unless midnight falls among them, the result is (|`count`| + 1) times the
  /// length of one day. For a sum over days, call `compute` for each day.
  ///
  /// The running time is proportional to `count`, up to some minutes for the largest int. The
  /// result is 0.0 for the most negative int.
  ///
  ///     day.latitude = 0.0;
  ///     day.cumulative(2)  ->  36.0
  double cumulative(int count);

  unsigned long long julian = 0;  ///< the date as a Julian value; set by the host
  double latitude = 0.0;          ///< in degrees, north positive; set by the host
  double meanLongitude = 0.0;     ///< the sun's mean longitude, 0 to 2 pi; written by `FNsun`
  double meanAnomaly = 0.0;       ///< the sun's mean anomaly, 0 to 2 pi; written by `FNsun`
  double dayLength;               ///< in hours; written by `compute`
};

}  // namespace zn_lib

#endif  // ZN_DAYLENGTH_H
