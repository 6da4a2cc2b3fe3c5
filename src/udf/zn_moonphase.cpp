#include "zn_moonphase.h"

#include <cmath>
#include <cstdint>

namespace zn_lib {
namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

double sinDegrees(double degrees) { return std::sin(degrees * kRadiansPerDegree); }

/// Returns `degrees` without its whole turns. Their number is truncated toward zero to 32 bits;
/// fmod removes larger numbers.
double withoutTurns(double degrees) {
  constexpr double mostTurns = 2147483647.0;
  const double turns = degrees / 360.0;
  if (!(std::fabs(turns) <= mostTurns)) return std::fmod(degrees, 360.0);
  return degrees - static_cast<std::int32_t>(turns) * 360.0;
}

double nonNegative(double degrees) { return degrees < 0.0 ? degrees + 360.0 : degrees; }

/// The sun's longitude at the epoch minus the longitude of its perigee, in degrees.
constexpr double kSunAnomalyAtEpoch = -3.762863;

/// Solves Kepler's equation for the sun's orbit, in radians. The iteration converges within a few
/// steps for an anomaly of up to about one turn. A NaN ends it at once.
double eccentricAnomaly(double meanAnomaly) {
  constexpr double eccentricity = 0.016718;
  double e = meanAnomaly;
  double delta;
  do {
    delta = e - eccentricity * std::sin(e) - meanAnomaly;
    e -= delta / (1 - eccentricity * std::cos(e));
  } while (std::fabs(delta) >= 1e-12);
  return e;
}

/// Returns the moon's longitude for a day on which the sun's longitude is `sun`.
double moonLongitude(double sun, double days) {
  // The daily motion differs from that in sunPosition in the 13th digit. Both values are part of
  // the model.
  const double sunAnomaly = nonNegative(0.985647332099 * days + kSunAnomalyAtEpoch);
  const double meanLongitude = nonNegative(withoutTurns(13.176396 * days + 64.975464));
  const double meanAnomaly = withoutTurns(meanLongitude - 0.1114041 * days + (-349.383063));
  const double evection = 1.2739 * sinDegrees(2 * (meanLongitude - sun) - meanAnomaly);
  const double annualEquation = 0.1858 * sinDegrees(sunAnomaly);
  const double thirdCorrection = 0.37 * sinDegrees(sunAnomaly);
  const double anomaly = meanAnomaly + evection - annualEquation - thirdCorrection;
  const double equationOfCentre = 6.2886 * sinDegrees(anomaly);
  const double fourthCorrection = 0.214 * sinDegrees(2 * anomaly);
  const double longitude =
      meanLongitude + evection + equationOfCentre - annualEquation + fourthCorrection;
  const double variation = 0.6583 * sinDegrees(2 * (longitude - sun));
  return longitude + variation;
}

}  // namespace

double MoonPhase::sunPosition() {
  constexpr double degreesPerDay = 0.9856473320990837;  // 360 / 365.242191
  constexpr double perigee = 282.596403;
  constexpr double rootOfApsides = 1.01686011182;  // of (1 + eccentricity) / (1 - eccentricity)
  constexpr double twiceDegreesPerRadian = 114.59155902616465;
  const double meanAnomaly = nonNegative(withoutTurns(days * degreesPerDay) + kSunAnomalyAtEpoch);
  const double e = eccentricAnomaly(meanAnomaly * kRadiansPerDegree);
  const double trueAnomaly = twiceDegreesPerRadian * std::atan(rootOfApsides * std::tan(e / 2));
  return withoutTurns(trueAnomaly + perigee);
}

double MoonPhase::moonPosition() { return moonLongitude(sunPosition(), days); }

void MoonPhase::compute() {
  const double sun = sunPosition();
  const double elongation = moonLongitude(sun, days) - sun;
  phaseAngle = nonNegative(elongation);
  // The mask turns phase 8, the last half sector before 360 degrees, into new moon.
  phase = std::isnan(phaseAngle) ? 0 : static_cast<int>((phaseAngle + 22.5) / 45.0) & 7;
  illuminated = (1 - std::cos(elongation * kRadiansPerDegree)) * 0.5;
}

}  // namespace zn_lib
