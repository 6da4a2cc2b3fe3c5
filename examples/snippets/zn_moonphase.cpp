// Prints the phases of the moon in a January.
#include <zn_datetime.h>
#include <zn_moonphase.h>
#include <zn_str.h>

#include <iostream>

int main() {
  const char* const phases[] = {"new moon",  "waxing crescent", "first quarter", "waxing gibbous",
                                "full moon", "waning gibbous",  "last quarter",  "waning crescent"};
  constexpr double dayMilliseconds = 86400000.0;
  constexpr double epoch = 2444238.5;  // 31 December 1979, 0:00, as a Julian Date

  for (const char* const date : {"2024-01-11", "2024-01-18", "2024-01-22", "2024-01-25"}) {
    // Times are off by default, so a date means noon of that day.
    zn_lib::MoonPhase moon;
    moon.days = static_cast<double>(zn_lib::dateToJulian(date)) / dayMilliseconds - epoch;
    moon.compute();
    std::cout << date << "  " << zn_lib::leftPad(phases[moon.phase], 15, ' ') << ' '
              << zn_lib::percentString(moon.illuminated, 1, 0) << '\n';
  }
}
