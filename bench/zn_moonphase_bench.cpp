/// Moon phases of a year, compared with the trigonometry that the model needs, and with a library
/// for astronomers.
#include <zn_moonphase.h>

#include <cmath>

#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_NOVA
#include <libnova/lunar.h>
#endif

namespace {

constexpr int kDays = 366;

double yearOfPhases(double firstDay) {
  zn_lib::MoonPhase moon;
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) {
    moon.days = firstDay + i;
    moon.compute();
    sum += moon.illuminated;
  }
  return sum;
}

/// Makes the calls of one day: three steps of Newton's method for Kepler's equation, a tangent and
/// an arc tangent for the true anomaly of the sun, five sines for the longitude of the moon, and a
/// cosine for the illuminated fraction.
double trigonometryOfDay(double angle) {
  constexpr int newtonSteps = 3;
  constexpr int corrections = 5;
  double eccentricAnomaly = angle;
  for (int i = 0; i < newtonSteps; ++i) {
    eccentricAnomaly -= (eccentricAnomaly - 0.0167 * std::sin(eccentricAnomaly) - angle) /
                        (1 - 0.0167 * std::cos(eccentricAnomaly));
  }
  double moonLongitude = std::atan(std::tan(eccentricAnomaly / 2));
  for (int i = 0; i < corrections; ++i) moonLongitude += std::sin(angle + i);
  return std::cos(moonLongitude);
}

double yearOfTrigonometry(double firstAngle) {
  constexpr double radiansPerDay = 0.0172;
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) sum += trigonometryOfDay(firstAngle + i * radiansPerDay);
  return sum;
}

#ifdef ZN_UDF_HAVE_NOVA
/// This theory of the moon has thousands of terms, and is far more exact than the model.
double yearOfLunarDiscs(double firstDay) {
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) sum += ln_get_lunar_disk(firstDay + i);
  return sum;
}
#endif

}  // namespace

int main(int argc, char** argv) {
  constexpr double firstOf2024 = 16071.0;  // days since 31 December 1979
  constexpr double firstAngle = 0.0;
  bench::addRow("moonphase_366_days/zn_udf", firstOf2024, yearOfPhases);
  bench::addRow("moonphase_366_days/baseline:trigonometry", firstAngle, yearOfTrigonometry);
#ifdef ZN_UDF_HAVE_NOVA
  constexpr double epoch = 2444238.5;  // day 0, as a Julian Date
  bench::addRow("moonphase_366_days/libnova", epoch + firstOf2024, yearOfLunarDiscs);
#endif
  return bench::runRows(argc, argv);
}
