#include "sky.h"

#include <zn_datetime.h>
#include <zn_daylength.h>

#include <cmath>

#include "dates.h"

namespace almanac {

double dayLength(unsigned long long julian, double latitude) {
  zn_lib::DayLength day;
  day.julian = julian;
  day.latitude = latitude;
  return day.compute();
}

zn_lib::MoonPhase moonAt(unsigned long long julian) {
  constexpr double julianDateOfDayZero = 2444238.5;
  zn_lib::MoonPhase moon;
  moon.days = static_cast<double>(julian) / kMillisecondsPerDay - julianDateOfDayZero;
  moon.compute();
  return moon;
}

std::string sexagesimal(double sixtieths) {
  // hourFormat cuts fractions of the last field, and a whole number may be slightly too small in
  // binary. Adding one half prevents an error of one.
  return zn_lib::hourFormat((sixtieths + 0.5) / 60.0);
}

std::string whereabouts(const std::string& place, double latitude) {
  return (place.empty() ? "" : place + ", ") + "latitude " +
         sexagesimal(std::round(std::fabs(latitude) * 60.0)) + (latitude < 0.0 ? " S" : " N");
}

}  // namespace almanac
