#include "zn_moonphase.h"

#include <cmath>
#include <cstdint>

namespace zn_lib {
namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

double sine(double degrees) { return std::sin(degrees * kRadiansPerDegree); }

/// `degrees` less its whole turns, counted toward zero in 32 bits; more turns than that are taken
/// off by fmod.
double withoutTurns(double degrees) {
  constexpr double mostTurns = 2147483647.0;
  const double turns = degrees / 360.0;
  if (!(std::fabs(turns) <= mostTurns)) return std::fmod(degrees, 360.0);
  return degrees - static_cast<std::int32_t>(turns) * 360.0;
}

double fixed(double degrees) { return degrees < 0.0 ? degrees + 360.0 : degrees; }

/// Longitude at epoch less longitude of perigee.
constexpr double kSunAnomalyAtEpoch = -3.762863;

/// Solves Kepler's equation for the sun's orbit; radians. The steps converge within a few rounds
/// for any anomaly of a turn or so, and a NaN ends them at once.
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

/// The moon's longitude for a day on which the sun's is `sun`.
double moonPositionBesides(double sun, double days) {
  // The daily motion differs from that of sunPosition in the 13th digit: both belong to the model.
  const double sunAnomaly = fixed(0.985647332099 * days + kSunAnomalyAtEpoch);
  const double meanLongitude = fixed(withoutTurns(13.176396 * days + 64.975464));
  const double meanAnomaly = withoutTurns(meanLongitude - 0.1114041 * days + (-349.383063));
  const double evection = 1.2739 * sine(2 * (meanLongitude - sun) - meanAnomaly);
  const double annualEquation = 0.1858 * sine(sunAnomaly);
  const double thirdCorrection = 0.37 * sine(sunAnomaly);
  const double anomaly = meanAnomaly + evection - annualEquation - thirdCorrection;
  const double equationOfCentre = 6.2886 * sine(anomaly);
  const double fourthCorrection = 0.214 * sine(2 * anomaly);
  const double longitude =
      meanLongitude + evection + equationOfCentre - annualEquation + fourthCorrection;
  const double variation = 0.6583 * sine(2 * (longitude - sun));
  return longitude + variation;
}

}  // namespace

double MoonPhase::sunPosition() {
  constexpr double degreesPerDay = 0.9856473320990837;  // 360 / 365.242191
  constexpr double perigee = 282.596403;
  constexpr double rootOfApsides = 1.01686011182;  // of (1 + eccentricity) / (1 - eccentricity)
  constexpr double twiceDegreesPerRadian = 114.59155902616465;
  const double meanAnomaly = fixed(withoutTurns(days * degreesPerDay) + kSunAnomalyAtEpoch);
  const double e = eccentricAnomaly(meanAnomaly * kRadiansPerDegree);
  const double trueAnomaly = twiceDegreesPerRadian * std::atan(rootOfApsides * std::tan(e / 2));
  return withoutTurns(trueAnomaly + perigee);
}

double MoonPhase::moonPosition() { return moonPositionBesides(sunPosition(), days); }

void MoonPhase::compute() {
  const double sun = sunPosition();
  const double elongation = moonPositionBesides(sun, days) - sun;
  phaseAngle = fixed(elongation);
  // The lowest three bits make the last half sector before 360 degrees a new moon again.
  phase = std::isnan(phaseAngle) ? 0 : static_cast<int>((phaseAngle + 22.5) / 45.0) & 7;
  illuminated = (1 - std::cos(elongation * kRadiansPerDegree)) * 0.5;
}

}  // namespace zn_lib
