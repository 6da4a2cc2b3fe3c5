/// Dates as the command line gives them and as the table shows them.
///
///     setDateStyle("dmy", DateStyle::kFullName);
///     formatDate(readDate("5/3/2024"), DateStyle::kFullName)   ->  "05 March 2024"
#ifndef ALMANAC_DATES_H
#define ALMANAC_DATES_H

#include <zn_datetime.h>

#include <string>

namespace almanac {

constexpr unsigned long long kMillisecondsPerDay = 86400000;

/// How the table writes dates.
enum class DateStyle { kIso, kNumber, kShortName, kFullName };

/// Whether `word` names an order of a date's fields: "dmy", "mdy" or "ymd".
bool isOrder(const std::string& word);

/// Whether `word` names a style: "iso", "number", "short" or "full".
bool isStyle(const std::string& word);

/// The style that `word` names.
DateStyle styleOf(const std::string& word);

/// Sets the library's date settings: dates without times, their fields in the order that the word
/// names. Comes before all that follows.
void setDateStyle(const std::string& order, DateStyle style);

/// The Julian value of noon on a day; 0 when the calendar does not have it.
unsigned long long noonOf(int year, int month, int day);

/// The Julian value of noon on the day that `text` names.
///
/// Takes ISO 8601 dates, in full or without day and month ("2024-03-05", "20240305", "2024-03",
/// "2024"), and dates with three fields in the order of the settings, separated by blanks or one of
/// "-/.,": "5 March 2024", "Dec 25, 2024". The year takes four digits, so that nothing is guessed;
/// months are numbers or English names of three letters and more.
///
/// Throws Error for any other text, for dates that the calendar does not have, and for the year 0.
unsigned long long readDate(const std::string& text);

/// The Julian value of today's noon, by the local time zone.
unsigned long long today();

/// The date of `julian` in the order of the settings; `style` is the one that they were set for.
std::string formatDate(unsigned long long julian, DateStyle style);

/// The length of the longest text that `formatDate` gives.
int dateWidth(DateStyle style);

/// The Julian value of 31 December 9999, the last day with a year of four digits.
unsigned long long lastDay();

}  // namespace almanac

#endif  // ALMANAC_DATES_H
