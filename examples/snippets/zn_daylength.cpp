// Computes the length of the day at midsummer and midwinter, at three latitudes.
#include <zn_datetime.h>
#include <zn_daylength.h>

#include <cmath>
#include <iostream>

int main() {
  zn_lib::DayLength day;
  for (const char* const date : {"2024-06-21", "2024-12-21"}) {
    day.julian = zn_lib::dateToJulian(date);
    std::cout << date;
    for (const double latitude : {0.0, 52.0, 80.0}) {
      day.latitude = latitude;
      const double hours = day.compute();

      // Polar day is 24 hours. Polar night is NaN.
      std::cout << "  " << (std::isnan(hours) ? "night" : zn_lib::hourFormat(hours));
    }
    std::cout << '\n';
  }
}
