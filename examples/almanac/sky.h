/// Day length and moon on a day.
#ifndef ALMANAC_SKY_H
#define ALMANAC_SKY_H

#include <zn_moonphase.h>

#include <array>
#include <string>

namespace almanac {

constexpr int kHoursPerDay = 24;

/// In the order of MoonPhase::phase.
constexpr std::array<const char*, 8> kPhaseNames = {
    "new moon",  "waxing crescent", "first quarter", "waxing gibbous",
    "full moon", "waning gibbous",  "last quarter",  "waning crescent"};

/// The hours of daylight at `latitude` on the day of the Julian value; NaN when the sun does not
/// rise, `kHoursPerDay` when it does not set.
double dayLength(unsigned long long julian, double latitude);

/// The moon at the instant of the Julian value.
zn_lib::MoonPhase moonAt(unsigned long long julian);

/// A whole number of minutes as "hours:minutes", or of seconds as "minutes:seconds".
std::string sexagesimal(double sixtieths);

/// "Europe/Amsterdam, latitude 52:22 N"; the latitude alone where the place is empty.
std::string whereabouts(const std::string& place, double latitude);

}  // namespace almanac

#endif  // ALMANAC_SKY_H
