/// Reads dates from the command line and formats them for the table.
///
///     setDateStyle("dmy", DateStyle::kFullName);
///     formatDate(readDate("5/3/2024"), DateStyle::kFullName)   ->  "05 March 2024"
#ifndef ALMANAC_DATES_H
#define ALMANAC_DATES_H

#include <zn_datetime.h>

#include <string>

namespace almanac {

constexpr unsigned long long kMillisecondsPerDay = 86400000;

/// Names the form of a date in the table.
enum class DateStyle { kIso, kNumber, kShortName, kFullName };

/// Returns true if `word` names an order of a date's fields: "dmy", "mdy" or "ymd".
bool isOrder(const std::string& word);

/// Returns true if `word` names a style: "iso", "number", "short" or "full".
bool isStyle(const std::string& word);

/// Returns the style that `word` names.
DateStyle styleOf(const std::string& word);

/// Sets the library's date settings: dates without times, with their fields in the order that the
/// word names. Must be called before the functions below.
void setDateStyle(const std::string& order, DateStyle style);

/// Returns the Julian value of noon on a day, or 0 if the calendar does not have that day.
unsigned long long noonOf(int year, int month, int day);

/// Returns the Julian value of noon on the day that `text` names.
///
/// Accepts ISO 8601 dates, in full or without day and month: "2024-03-05", "20240305", "2024-03",
/// "2024". Also accepts dates with three fields in the order of the settings, separated by spaces
/// or one of "-/.,": "5 March 2024", "Dec 25, 2024". The year must have four digits, so that no
/// century is guessed. Months are numbers or English names of at least three letters.
///
/// Throws Error for any other text, for dates that the calendar does not have, and for the year 0.
unsigned long long readDate(const std::string& text);

/// Returns the Julian value of today's noon in the local time zone.
unsigned long long today();

/// Formats the date of `julian` in the order of the settings. `style` must be the style that was
/// set.
std::string formatDate(unsigned long long julian, DateStyle style);

/// Returns the length of the longest text that `formatDate` returns.
int dateWidth(DateStyle style);

/// Returns the Julian value of 31 December 9999, the last day with a year of four digits.
unsigned long long lastDay();

}  // namespace almanac

#endif  // ALMANAC_DATES_H
