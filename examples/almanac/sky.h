/// Computes day length and moon on a day.
#ifndef ALMANAC_SKY_H
#define ALMANAC_SKY_H

#include <zn_moonphase.h>

#include <array>
#include <string>

namespace almanac {

constexpr int kHoursPerDay = 24;

/// The phases in the order of MoonPhase::phase.
constexpr std::array<const char*, 8> kPhaseNames = {
    "new moon",  "waxing crescent", "first quarter", "waxing gibbous",
    "full moon", "waning gibbous",  "last quarter",  "waning crescent"};

/// Returns the hours of daylight at `latitude` on the day of the Julian value. Returns NaN if the
/// sun does not rise, and `kHoursPerDay` if it does not set.
double dayLength(unsigned long long julian, double latitude);

/// Returns the moon at the instant of the Julian value.
zn_lib::MoonPhase moonAt(unsigned long long julian);

/// Formats a whole number of minutes as "hours:minutes", or of seconds as "minutes:seconds".
std::string sexagesimal(double sixtieths);

/// Returns a text such as "Europe/Amsterdam, latitude 52:22 N", or only the latitude if the place
/// is empty.
std::string whereabouts(const std::string& place, double latitude);

}  // namespace almanac

#endif  // ALMANAC_SKY_H
