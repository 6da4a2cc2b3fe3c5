/// Day counts of the conversion from Julian values to dates.
#ifndef ZN_INTERNAL_CALENDAR_H
#define ZN_INTERNAL_CALENDAR_H

#include <cstdint>

namespace zn_lib::internal {

constexpr unsigned long long kMillisecondsPerDay = 86400000;
constexpr unsigned long long kMillisecondsPerHalfDay = kMillisecondsPerDay / 2;

/// Returns the milliseconds from the midnight before Julian Day 0 to a Julian value. Civil days
/// begin at midnight, the days of the Julian value at noon.
constexpr unsigned long long sinceFirstMidnight(unsigned long long julian) {
  return julian + kMillisecondsPerHalfDay;
}

/// Returns the number of the civil day of a Julian value: 0 for the day in which Julian Day 0
/// began. Keeps the low 32 bits of the number.
constexpr std::int32_t civilDay(unsigned long long julian) {
  return static_cast<std::int32_t>(
      static_cast<std::uint32_t>(sinceFirstMidnight(julian) / kMillisecondsPerDay));
}

/// Returns the number of a civil day in a count that has a leap day every four years: it includes
/// the days by which centuries of the Gregorian calendar are shorter.
constexpr std::int64_t dayOfFourYearCycles(std::int32_t civilDay) {
  // The integer form of a division by 36524.25, the average number of days of a century.
  const std::int64_t century = (4 * std::int64_t{civilDay} - 7468865) / 146097;
  return civilDay + century - century / 4 + 1525;
}

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_CALENDAR_H
