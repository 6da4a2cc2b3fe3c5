/// Day lengths of a year, compared with the trigonometry that the formulas need, and with a library
/// for astronomers.
#include <zn_datetime.h>
#include <zn_daylength.h>

#include <cmath>

#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_NOVA
#include <libnova/solar.h>
#endif

namespace {

constexpr int kDays = 366;
constexpr double kLatitude = 52.0;

double yearOfDaylight(unsigned long long firstDay) {
  constexpr unsigned long long millisecondsPerDay = 86400000;
  zn_lib::DayLength day;
  day.julian = firstDay;
  day.latitude = kLatitude;
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) {
    sum += day.compute();
    day.julian += millisecondsPerDay;
  }
  return sum;
}

/// Makes the calls of one day: two sines for the longitude of the sun, two sines and an arc sine
/// for the declination, and two tangents and an arc sine for the hour angle.
double trigonometryOfDay(double angle, double obliquity, double latitude) {
  const double longitude = angle + std::sin(angle) + std::sin(2 * angle);
  const double declination = std::asin(std::sin(obliquity) * std::sin(longitude));
  return std::asin(std::tan(latitude) * std::tan(declination));
}

double yearOfTrigonometry(double latitude) {
  constexpr double radiansPerDay = 0.0172;
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) {
    // All angles change from day to day, so that the compiler cannot move a sine out of the loop.
    const double change = 1e-9 * i;
    sum += trigonometryOfDay(i * radiansPerDay, 0.4 + change, latitude + change);
  }
  return sum;
}

#ifdef ZN_UDF_HAVE_NOVA
/// Computes sunrise and sunset to the second, from a planetary theory with thousands of terms. This
/// is far more work than a day length with an error of minutes.
double yearOfRisesAndSets(double firstDay) {
  ln_lnlat_posn observer{};
  observer.lat = kLatitude;
  double sum = 0.0;
  for (int i = 0; i < kDays; ++i) {
    ln_rst_time times{};
    ln_get_solar_rst(firstDay + i, &observer, &times);
    sum += (times.set - times.rise) * 24.0;
  }
  return sum;
}
#endif

void addGrowthRow(unsigned long long firstDay) {
  constexpr int largest = 65536;
  bench::addGrowth(
      "DayLength_cumulative", 1, largest, [](std::size_t count) { return static_cast<int>(count); },
      [firstDay](int count) {
        zn_lib::DayLength day;
        day.julian = firstDay;
        day.latitude = kLatitude;
        return day.cumulative(count);
      });
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned long long firstDay = zn_lib::dateToJulian(2024, 1, 1, 12, 0, 0.0);
  constexpr double latitudeInRadians = 0.9;
  bench::addRow("daylength_366_days/zn_udf", firstDay, yearOfDaylight);
  bench::addRow("daylength_366_days/baseline:trigonometry", latitudeInRadians, yearOfTrigonometry);
#ifdef ZN_UDF_HAVE_NOVA
  constexpr double firstOf2024 = 2460310.5;  // as a Julian Date
  bench::addRow("daylength_366_days/libnova", firstOf2024, yearOfRisesAndSets);
#endif
  addGrowthRow(firstDay);
  return bench::runRows(argc, argv);
}
