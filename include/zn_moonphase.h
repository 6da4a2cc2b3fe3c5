/// \file
/// Moon phase: the moon's position relative to the sun, how much of its disc is lit, and which of
/// eight phases that is.
///
///     zn_lib::MoonPhase moon;
///     moon.days = julian / 86400000.0 - 2444238.5;   // of a Julian value: 26 January 2024, 0:00
///     moon.compute();
///     moon.phaseAngle    ->  182.79 (degrees)
///     moon.illuminated   ->  0.99941
///     moon.phase         ->  4 (full moon)
#ifndef ZN_MOONPHASE_H
#define ZN_MOONPHASE_H

#include "zn_common.h"

namespace zn_lib {

/// Geocentric ecliptic longitudes of sun and moon from a compact analytic model, that of Peter
/// Duffett-Smith, "Practical Astronomy with Your Calculator", epoch 1980 January 0.0: a Kepler
/// orbit for the sun; mean motions with evection, annual equation, equation of centre and variation
/// for the moon.
///
/// Checked at every half hour of the years 2000 to 2050 (UT) against PyEphem (VSOP87, ELP2000): the
/// largest errors are 0.34 degrees in `phaseAngle`, 0.004 in `illuminated` and 0.05 degrees in the
/// sun's longitude; `phaseAngle` passes 0 and 180 within 36 minutes of every new and full moon.
///
/// Angles are degrees. `days` may be any value; an infinity and NaN, and values so large that they
/// overflow, give NaN angles and phase 0. Objects are independent of each other; nothing is printed
/// or thrown.
class ZN_UDF_API MoonPhase {
 public:
  /// Days since 0:00 of 31 December 1979, Julian Date 2444238.5; set by the host.
  double days = 0.0;

  /// The moon's longitude less the sun's, 0 to 360; written by `compute`. Close to a new moon it
  /// may leave that range by a few degrees on either side: 360 is added once, and to negative
  /// values only.
  double phaseAngle = 0.0;

  /// The lit fraction of the disc, 0.0 (new) to 1.0 (full); written by `compute`.
  double illuminated = 0.0;

  /// Written by `compute`: the 45 degrees of phase angle around 0 new moon, 1 waxing crescent, 2
  /// first quarter, 3 waxing gibbous, 4 full moon, 5 waning gibbous, 6 last quarter, 7 waning
  /// crescent.
  int phase = 0;

  /// The sun's ecliptic longitude, 0 to 360.
  double sunPosition();

  /// The moon's ecliptic longitude; may lie a little outside 0 to 360.
  double moonPosition();

  /// Fills `phaseAngle`, `illuminated` and `phase` for `days`.
  void compute();
};

}  // namespace zn_lib

#endif  // ZN_MOONPHASE_H
