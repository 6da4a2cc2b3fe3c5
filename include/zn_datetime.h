/// \file
/// \ingroup family_datetime
/// Converts dates and times between records, Julian values, ISO 8601 text and free-form text.
///
///     zn_lib::defaultDateTimeFormat();
///     unsigned long long julian = zn_lib::dateToJulian("2024-03-05T14:07:09");
///     julian                                  ->  212576407629000
///     zn_lib::julianToISO(julian)             ->  "2024-03-05 14:07:09"
///     zn_lib::julianToISO(julian + 86400000)  ->  "2024-03-06 14:07:09"
///     zn_lib::date_time_record record = zn_lib::julianToDate(julian);
///
/// A Julian value is a point in time: the milliseconds since Julian Day 0, which began at noon of 1
/// January 4713 BC in the Julian calendar. Zero means "no date". All functions except
/// `dateToJulianDays` use the Gregorian calendar, even before 1582. There are no time zones and no
/// leap seconds.
///
/// One process-wide `date_time_set` controls how dates are read and written. It has no lock. Until
/// a setter runs, all its fields are zero: the month comes first, the separators are NUL
/// characters, and times are off. A program that wants "2024-03-05 14:07:09" calls
/// `defaultDateTimeFormat` first. The comment of each function that reads the settings mentions
/// them. While `useTime` is off, a date means noon of that day.
///
/// Functions print nothing, throw only when memory runs out, and do not depend on the host's
/// locale.
#ifndef ZN_DATETIME_H
#define ZN_DATETIME_H

#include <cstdint>
#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Stores a date and time, field by field. Any values may be stored; the ranges below are those of
/// a valid record.
struct date_time_record {
  unsigned short day;     ///< 1 to 31
  unsigned short month;   ///< 1 to 12
  unsigned short year;    ///< the full year, as in 2024; any value is valid
  unsigned short hour;    ///< 0 to 23
  unsigned short minute;  ///< 0 to 59
  double second;          ///< below 60, with its fraction
};

/// Names the order in which the fields of a date are written and read.
enum DATE_FORMAT : std::int32_t {
  MONTH_DAY_YEAR,  ///< 03-05-2024
  DAY_MONTH_YEAR,  ///< 05-03-2024
  YEAR_MONTH_DAY   ///< 2024-03-05
};

/// Names the form of a month.
enum MONTH_FORMAT : std::int32_t {
  MONTH_NUMBER,      ///< 03
  MONTH_SHORT_NAME,  ///< Mar (without a full stop)
  MONTH_FULL_NAME    ///< March (in English)
};

/// Stores the settings for reading and writing dates. Of the process-wide settings, each field has
/// a setter and a getter:
///
///     setDateFormat(DAY_MONTH_YEAR); formatJulianDate(julian)     ->  "05-03-2024 14:07:09"
///     setMonthFormat(MONTH_SHORT_NAME); formatJulianDate(julian)  ->  "05-Mar-2024 14:07:09"
///     setDateSeparator('/'); formatJulianDate(julian)             ->  "05/Mar/2024 14:07:09"
///     setDateTimeSeparator(','); formatJulianDate(julian)         ->  "05/Mar/2024,14:07:09"
///     setTimeSeparator('.'); formatJulianDate(julian)             ->  "05/Mar/2024,14.07.09"
///     setUseTime(false); formatJulianDate(julian)                 ->  "05/Mar/2024"
///     getDateFormat()         ->  DAY_MONTH_YEAR
///     getMonthFormat()        ->  MONTH_SHORT_NAME
///     getDateSeparator()      ->  '/'
///     getDateTimeSeparator()  ->  ','
///     getTimeSeparator()      ->  '.'
///     isUseTime()             ->  false
struct date_time_set {
  DATE_FORMAT dateFormat;    ///< order of the date's fields
  MONTH_FORMAT monthFormat;  ///< form of the month
  char dateSeparator;        ///< between the date's fields
  char dateTimeSeparator;    ///< between date and time
  char timeSeparator;        ///< between hour, minute and second
  bool useTime;              ///< whether times are read, written and kept
};

// ---- The process-wide settings. The setters do not check their arguments.

ZN_UDF_API void setDateFormat(DATE_FORMAT format);     ///< sets `dateFormat`
ZN_UDF_API DATE_FORMAT getDateFormat();                ///< returns `dateFormat`
ZN_UDF_API void setMonthFormat(MONTH_FORMAT format);   ///< sets `monthFormat`
ZN_UDF_API MONTH_FORMAT getMonthFormat();              ///< returns `monthFormat`
ZN_UDF_API void setDateSeparator(char separator);      ///< sets `dateSeparator`
ZN_UDF_API char getDateSeparator();                    ///< returns `dateSeparator`
ZN_UDF_API void setDateTimeSeparator(char separator);  ///< sets `dateTimeSeparator`
ZN_UDF_API char getDateTimeSeparator();                ///< returns `dateTimeSeparator`
ZN_UDF_API void setTimeSeparator(char separator);      ///< sets `timeSeparator`
ZN_UDF_API char getTimeSeparator();                    ///< returns `timeSeparator`
ZN_UDF_API void setUseTime(bool on);                   ///< sets `useTime`
ZN_UDF_API bool isUseTime();                           ///< returns `useTime`

/// Sets all six fields.
///
///     setDateTimeFormat(MONTH_DAY_YEAR, MONTH_FULL_NAME, ' ', ',', ':', true);   // all six fields
///     formatJulianDate(julian)  ->  "March 05 2024,14:07:09"
ZN_UDF_API void setDateTimeFormat(DATE_FORMAT dateFormat, MONTH_FORMAT monthFormat,
                                  char dateSeparator, char dateTimeSeparator, char timeSeparator,
                                  bool useTime);

/// Returns a copy of the settings.
///
///     getDateTimeFormat().dateSeparator  ->  ' '
ZN_UDF_API date_time_set getDateTimeFormat();

/// Sets `YEAR_MONTH_DAY`, `MONTH_NUMBER`, the separators '-', ' ' and ':', and `useTime`: dates
/// look like "2024-03-05 14:07:09".
///
///     defaultDateTimeFormat(); formatJulianDate(julian)  ->  "2024-03-05 14:07:09"
ZN_UDF_API void defaultDateTimeFormat();

// ---- Records

/// Sets day, month and year to 0, and the time to noon rather than midnight.
///
///     date_time_record noon;
///     resetDateTime(noon); noon  ->  {0, 0, 0, 12, 0, 0.0}
ZN_UDF_API void resetDateTime(date_time_record& record);

/// Returns true if the date exists in the Gregorian calendar. Every year exists, including 0. Note
/// the order: the day comes first.
///
///     isValidDate(29, 2, 2024)  ->  true
///     isValidDate(29, 2, 2023)  ->  false
ZN_UDF_API bool isValidDate(unsigned short day, unsigned short month, unsigned short year);

/// Returns true if the date is valid, the hour is below 24, and minute and second are below 60. A
/// negative second is accepted.
///
///     isValidDateTime(record)  ->  true
ZN_UDF_API bool isValidDateTime(date_time_record& record);

/// Corrects day and month in place. The other fields stay.
///
/// Month 0 becomes 1. A month above 12 becomes its remainder modulo 12: 23 becomes 11, while 24 and
/// 36 become 0 and stay 0. Then day 0 becomes 1, and a day beyond the end of the month becomes the
/// month's last day. A month that became 0 has 31 days here.
///
///     date_time_record june = {31, 6, 2024, 12, 0, 0.0};
///     validDate(june); june.day  ->  30
ZN_UDF_API void validDate(date_time_record& record);

/// Returns the length of a month in days; for February it is always 29. Returns 0 if `month` is
/// outside 1 to 12.
///
///     getMonthDays(2)  ->  29
ZN_UDF_API unsigned short getMonthDays(unsigned short month);

/// Returns the day of the year, 1 for 1 January. Nothing is checked: 40 March is day 31 + 28 + 40
/// of a common year. Month 0 counts as January, and a month above 12 as December. The sum wraps at
/// 65536.
///
///     getDayOfYear(1, 3, 2024)  ->  61
///     getDayOfYear(record)      ->  65
/// @{
ZN_UDF_API unsigned short getDayOfYear(unsigned short day, unsigned short month,
                                       unsigned short year);
ZN_UDF_API unsigned short getDayOfYear(date_time_record& record);
/// @}

/// Returns the number of days since the December solstice, which is taken as 21 December: 0 on that
/// day, 10 on 31 December, 11 on 1 January, and 364 on 20 December of a common year.
///
///     getAstronomicDay(1, 1, 2024)  ->  11
/// @{
ZN_UDF_API unsigned short getAstronomicDay(unsigned short day, unsigned short month,
                                           unsigned short year);
ZN_UDF_API unsigned short getAstronomicDay(date_time_record& record);
/// @}

/// Returns the number of the month whose English name begins with the first three characters of
/// `text`, in any case: 9 for "Sept", "SEP" and "Sepulchre".
///
/// Returns 12, as for December, for all other texts: "07", "ma", "xyz" and the empty text. To
/// distinguish them from December, check that the text begins with "dec", in any case.
///
///     getMonthNumber("Sept")  ->  9
///     getMonthNumber("xyz")   ->  12
ZN_UDF_API unsigned short getMonthNumber(const std::string& text);

/// Returns the English name, "March", or its first three letters, "Mar". Returns the empty text if
/// `month` is outside 1 to 12.
///
///     getMonthName(3, false)  ->  "March"
///     getMonthName(3, true)   ->  "Mar"
ZN_UDF_API std::string getMonthName(unsigned short month, bool shortName);

// ---- Julian values

/// Returns the Julian value of a date and time, or 0 if the date is invalid. While the settings'
/// `useTime` is off, the time is ignored and the date means noon of that day.
///
/// Every date of the years 1 to 65535 is converted exactly. The time is not checked: hour 25 is one
/// o'clock of the next day, and hour -1 is an hour before midnight. Seconds are cut to
/// milliseconds: 1.001 seconds become 1000 ms, since the double for 1.001 is slightly smaller.
///
/// The check of the date cuts year, month and day to 16 bits each, but the conversion uses the full
/// values. A year above 65535 is therefore accepted if the date exists in the cut year. A negative
/// year is converted as the year after it: -1 means year 0. A value that does not fit in 64 bits
/// wraps.
///
///     dateToJulian(2024, 3, 5, 14, 7, 9.0)   ->  212576407629000
///     dateToJulian(2023, 2, 29, 12, 0, 0.0)  ->  0
///     dateToJulian(record)                   ->  212576407629000
/// @{
ZN_UDF_API unsigned long long dateToJulian(int year, int month, int day, int hour, int minute,
                                           double second);
ZN_UDF_API unsigned long long dateToJulian(date_time_record& record);
/// @}

/// Returns the Julian value of an ISO 8601 text as `parseISOdate` reads it. The settings' `useTime`
/// applies as above. Returns 0 for the empty text and for an impossible date.
///
/// Any other text that is not a date reads as noon of 1 January of year 0, whose value is not 0:
///
///     dateToJulian("20240305T140709")  ->  212576407629000
///     dateToJulian("2023-02-29")       ->  0
///     dateToJulian("hello")            ->  148699584000000
ZN_UDF_API unsigned long long dateToJulian(const std::string& text);

/// Returns the date and time of a Julian value, to the millisecond.
///
/// Every date of the years 1 to 65535 that `dateToJulian` converts comes back unchanged, with one
/// exception: 1 March 300 comes back as 29 February 300. Years outside 0 to 65535 wrap: the value 0
/// yields 24 November of the year 60823, which represents -4713.
///
///     julianToDate(212576407629000)  ->  {5, 3, 2024, 14, 7, 9.0}
///
/// While `useTime` is on, converting the record back may yield a value that is one millisecond
/// smaller, because `dateToJulian` cuts the seconds. About half of all values are affected, but no
/// value with whole seconds. To get the same value back, add 0.0005 to `second` first.
ZN_UDF_API date_time_record julianToDate(unsigned long long julian);

/// Returns the Julian Date in days with fraction: 2451545.0 for 1 January 2000 at noon. The
/// settings are not read, and nothing is checked.
///
/// Dates up to 15 October 1582, 0:00, belong to the Julian calendar here. A minute counts as 1/3600
/// of a day: half past midnight is 0.00833 days after midnight, not 0.0208. Use whole hours where
/// that matters.
///
///     date_time_record noon = {1, 1, 2000, 12, 0, 0.0};
///     dateToJulianDays(noon)  ->  2451545.0
ZN_UDF_API double dateToJulianDays(date_time_record record);

// ---- ISO 8601 and free-form dates

/// Reads an ISO 8601 date into `record`: a year of four digits, then month, day, hour, minute and
/// second of two digits each. Every field after the year may be left out, and so may hyphens and
/// colons. A "T" or one whitespace character may separate date and time.
///
///     date_time_record date;
///     parseISOdate("2024", date); date           ->  {1, 1, 2024, 12, 0, 0.0}
///     parseISOdate("20240305T1407", date); date  ->  {5, 3, 2024, 14, 7, 0.0}
///     parseISOdate("2024-13-45", date); date     ->  {45, 13, 2024, 12, 0, 0.0}
///     parseISOdate("2024-00-00", date); date     ->  {1, 1, 2024, 12, 0, 0.0}
///     parseISOdate("05/03/2024", date); date     ->  {1, 1, 0, 12, 0, 0.0}
///
/// The fields are not range-checked, but a month or day of 0 counts as left out. Text in any other
/// form, such as the empty text or a date with fractions of seconds or a time zone, yields the
/// result in the last line.
ZN_UDF_API void parseISOdate(const std::string& text, date_time_record& record);

/// Returns false if `text` is an ISO 8601 date with an impossible field, such as "2024-02-30" or an
/// hour of 24.
///
/// Returns true for all other texts. That includes "hello" and the empty text, since `parseISOdate`
/// reads them as a valid date of year 0.
///
///     isValidISOdate("2024-02-30")  ->  false
///     isValidISOdate("hello")       ->  true
ZN_UDF_API bool isValidISOdate(const std::string& text);

/// Rewrites a date whose third field is the year, such as "5 March 2024" or "03/05/2024 14:07",
/// with the year first.
///
/// The fields may be separated by any of "-/.,:; ". The month comes first if the settings'
/// `dateFormat` is `MONTH_DAY_YEAR`; otherwise the day does. The result uses the separators of the
/// settings. With `useTime` on, it includes up to three time fields. A month that is not a number
/// is looked up with `getMonthNumber`. All other fields are copied without padding or checks:
///
///     setDateFormat(DAY_MONTH_YEAR);
///     dateToISO("5 March 2024")  ->  "2024-03-5"
///     setDateFormat(YEAR_MONTH_DAY);
///     dateToISO("2024-03-05")    ->  "05-03-2024"    // the third field is the year
///     setDateFormat(MONTH_DAY_YEAR);
///     dateToISO("Dec 25, 2024")  ->  "-12-25 2024"   // ", " contains an empty field
///
/// Returns the empty text if there are fewer than three fields.
ZN_UDF_API std::string dateToISO(const std::string& text);

// ---- Formatting. Every formatter of a Julian value returns the empty text for 0. Fields are
// zero-filled to two digits, years to four. Seconds include their fraction, as in "9.25".

/// Returns a date such as "2024-03-05", always with hyphens. With the settings' `useTime` on, their
/// `dateTimeSeparator` and the time with colons follow: "2024-03-05 14:07:09".
ZN_UDF_API std::string julianToISO(unsigned long long julian);

/// Returns a date such as "20240305", never with a time.
///
///     julianToYYYYMMDD(julian)  ->  "20240305"
ZN_UDF_API std::string julianToYYYYMMDD(unsigned long long julian);

/// Returns the date in the form of `settings`, such as "05/Mar/2024 14:07:09".
///
/// `settings.useTime` is ignored: the process-wide `useTime` decides whether the time is written.
/// `settings.monthFormat` is ignored for `YEAR_MONTH_DAY`, which always writes the month as a
/// number. A `dateFormat` out of range counts as `YEAR_MONTH_DAY`.
///
///     date_time_set settings = {DAY_MONTH_YEAR, MONTH_SHORT_NAME, '/', ' ', ':', true};
///     formatJulianDate(julian, settings)  ->  "05/Mar/2024 14:07:09"
ZN_UDF_API std::string formatJulianDate(unsigned long long julian, date_time_set settings);

/// Returns the date in the form of the process-wide settings, as above: for `YEAR_MONTH_DAY`, the
/// month is always a number.
ZN_UDF_API std::string formatJulianDate(unsigned long long julian);

/// Formats decimal hours as hours and minutes.
///
///     hourFormat(7.5)    ->  "07:30"
///     hourFormat(25.5)   ->  "25:30"
///     hourFormat(7.3)    ->  "07:17"
///     hourFormat(-0.25)  ->  "-0:45"
///
/// Minutes are cut, not rounded: 7.3 hours have 17 minutes, since 0.3 hours are slightly less than
/// 18 minutes in binary. A million hours or more appear in scientific notation. NaN is "nan:nan"
/// and infinity is "inf:nan"; each part has the sign that a stream writes.
///
/// The hours of a negative value are cut toward zero, but its minutes count from the next lower
/// hour.
ZN_UDF_API std::string hourFormat(double hours);

// ---- Today, in local time, which the TZ variable determines. Both functions use the C library's
// shared `localtime` record.

/// Fills `record` with the current date and time, in whole seconds.
///
///     getToday(record); record.year  ->  2024   // for instance
ZN_UDF_API void getToday(date_time_record& record);

/// Returns the current date as "2024-03-05", or as "2024-03-05 14:07:09" while the settings'
/// `useTime` is on. The settings' separators are not used.
///
///     getTodayAsISO()  ->  "2024-03-05 14:07:09"   // for instance
ZN_UDF_API std::string getTodayAsISO();

}  // namespace zn_lib

#endif  // ZN_DATETIME_H
