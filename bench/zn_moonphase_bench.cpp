/// Moon phases over a year, against the trigonometry alone that the model cannot do without, and
/// against a library made for astronomers.
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

/// The calls of one day: three steps of Newton's method for Kepler's equation, a tangent and an arc
/// tangent for the sun's true anomaly, five sines for the moon's longitude and a cosine for the lit
/// fraction.
double trigonometryOfDay(double angle) {
  constexpr int newtonSteps = 3;
  constexpr int corrections = 5;
  double e = angle;
  for (int i = 0; i < newtonSteps; ++i) {
    e -= (e - 0.0167 * std::sin(e) - angle) / (1 - 0.0167 * std::cos(e));
  }
  double longitude = std::atan(std::tan(e / 2));
  for (int i = 0; i < corrections; ++i) longitude += std::sin(angle + i);
  return std::cos(longitude);
}

double yearOfTrigonometry(double firstAngle) {
  constexpr double radiansPerDay = 0.0172;
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) sum += trigonometryOfDay(firstAngle + i * radiansPerDay);
  return sum;
}

#ifdef ZN_UDF_HAVE_NOVA
/// Its theory of the moon has thousands of terms: far more exact than the library's model.
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
