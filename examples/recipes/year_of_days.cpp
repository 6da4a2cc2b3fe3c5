// Prints the mean day length of each month of a year, and the hours of daylight in the whole year.
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_str.h>

#include <cmath>
#include <iostream>

int main() {
  constexpr unsigned short year = 2026;
  zn_lib::DayLength sun;
  sun.latitude = 52.37;
  double hoursOfYear = 0.0;

  for (unsigned short month = 1; month <= 12; ++month) {
    double hours = 0.0;
    unsigned short day = 1;

    // getMonthDays returns 29 for every February, so ask for each day whether it exists.
    for (; zn_lib::isValidDate(day, month, year); ++day) {
      sun.julian = zn_lib::dateToJulian(year, month, day, 12, 0, 0.0);
      const double length = sun.compute();

      // Polar night is NaN.
      if (!std::isnan(length)) hours += length;
    }
    hoursOfYear += hours;
    const double mean = hours / (day - 1);
    std::cout << zn_lib::getMonthName(month, true) << ' ' << zn_lib::hourFormat(mean) << ' '
              << zn_lib::replicateChar('#', static_cast<int>(std::lround(mean))) << '\n';
  }
  std::cout << std::lround(hoursOfYear) << " hours of daylight\n";
}
