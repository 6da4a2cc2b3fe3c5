/// \file
/// Dates and times: records, settings, Julian values, ISO 8601 and free-form dates, formatting.
///
///     zn_lib::defaultDateTimeFormat();
///     unsigned long long julian = zn_lib::dateToJulian("2024-03-05T14:07:09");
///     julian                                  ->  212576407629000
///     zn_lib::julianToISO(julian)             ->  "2024-03-05 14:07:09"
///     zn_lib::julianToISO(julian + 86400000)  ->  "2024-03-06 14:07:09"
///
/// A Julian value is a point in time: the milliseconds since Julian Day 0, noon of 1 January 4713
/// BC. Zero means "no date". The calendar is Gregorian throughout, before 1582 too; there are no
/// time zones and no leap seconds.
///
/// One process-wide `date_time_set` tells how dates are read and written. It has no lock, and it is
/// all zero until a setter runs: month first, NUL characters as separators, times left out. A
/// program that wants "2024-03-05 14:07:09" calls `defaultDateTimeFormat` first. Functions that
/// read the settings say so; with `useTime` off a date stands at noon.
///
/// Nothing here prints or throws, except when memory runs out, and no answer depends on the host's
/// locale.
#ifndef ZN_DATETIME_H
#define ZN_DATETIME_H

#include <cstdint>
#include <string>

#include "zn_common.h"

namespace zn_lib {

/// A date and time, field by field. Any values may be stored; the ranges are those of a valid
/// record.
struct date_time_record {
  unsigned short day;     ///< 1 to 31
  unsigned short month;   ///< 1 to 12
  unsigned short year;    ///< in full, 2024; any value is valid
  unsigned short hour;    ///< 0 to 23
  unsigned short minute;  ///< 0 to 59
  double second;          ///< below 60, with its fraction
};

/// The order in which the fields of a date are written and read.
enum DATE_FORMAT : std::int32_t {
  MONTH_DAY_YEAR,  ///< 03-05-2024
  DAY_MONTH_YEAR,  ///< 05-03-2024
  YEAR_MONTH_DAY   ///< 2024-03-05
};

/// How a month is written.
enum MONTH_FORMAT : std::int32_t {
  MONTH_NUMBER,      ///< 03
  MONTH_SHORT_NAME,  ///< Mar
  MONTH_FULL_NAME    ///< March
};

/// How dates are read and written.
struct date_time_set {
  DATE_FORMAT dateFormat;    ///< order of the date's fields
  MONTH_FORMAT monthFormat;  ///< form of the month
  char dateSeparator;        ///< between the date's fields
  char dateTimeSeparator;    ///< between date and time
  char timeSeparator;        ///< between hour, minute and second
  bool useTime;              ///< whether times are read, written and kept
};

// ---- The process-wide settings. No setter checks its argument.

ZN_UDF_API void setDateFormat(DATE_FORMAT format);     ///< sets `dateFormat`
ZN_UDF_API DATE_FORMAT getDateFormat();                ///< the order of the date's fields
ZN_UDF_API void setMonthFormat(MONTH_FORMAT format);   ///< sets `monthFormat`
ZN_UDF_API MONTH_FORMAT getMonthFormat();              ///< the form of the month
ZN_UDF_API void setDateSeparator(char separator);      ///< sets `dateSeparator`
ZN_UDF_API char getDateSeparator();                    ///< what stands between the date's fields
ZN_UDF_API void setDateTimeSeparator(char separator);  ///< sets `dateTimeSeparator`
ZN_UDF_API char getDateTimeSeparator();                ///< what stands between date and time
ZN_UDF_API void setTimeSeparator(char separator);      ///< sets `timeSeparator`
ZN_UDF_API char getTimeSeparator();                    ///< what stands between the time's fields
ZN_UDF_API void setUseTime(bool on);                   ///< sets `useTime`
ZN_UDF_API bool isUseTime();                           ///< whether times are in use

/// Sets all six fields.
ZN_UDF_API void setDateTimeFormat(DATE_FORMAT dateFormat, MONTH_FORMAT monthFormat,
                                  char dateSeparator, char dateTimeSeparator, char timeSeparator,
                                  bool useTime);

/// A copy of the settings.
ZN_UDF_API date_time_set getDateTimeFormat();

/// Sets `YEAR_MONTH_DAY`, `MONTH_NUMBER`, '-', ' ', ':' and times on: "2024-03-05 14:07:09".
ZN_UDF_API void defaultDateTimeFormat();

// ---- Records

/// Sets day, month and year to 0 and the time to noon: a blank record stands at 12:00, not at
/// midnight.
ZN_UDF_API void resetDateTime(date_time_record& record);

/// True for a date of the Gregorian calendar; any year counts, 0 too. Note the order: day first.
ZN_UDF_API bool isValidDate(unsigned short day, unsigned short month, unsigned short year);

/// True when the date is valid, the hour below 24, the minute below 60 and the second below 60. A
/// negative second passes.
ZN_UDF_API bool isValidDateTime(date_time_record& record);

/// Repairs day and month in place; the rest stays.
///
/// Month 0 becomes 1, a month above 12 its remainder by 12 (23 becomes 11; 24 and 36 become 0, and
/// stay 0). Then day 0 becomes 1, and a day beyond the month's end the month's last day.
ZN_UDF_API void validDate(date_time_record& record);

/// The length of a month in days, always 29 for February; 0 when `month` is outside 1 to 12.
ZN_UDF_API unsigned short getMonthDays(unsigned short month);

/// The day of the year, 1 for 1 January. Nothing is checked: 40 March is 31 + 28 + 40 in a common
/// year, months above 12 count as December and the day, and the sum wraps at 65536.
/// @{
ZN_UDF_API unsigned short getDayOfYear(unsigned short day, unsigned short month,
                                       unsigned short year);
ZN_UDF_API unsigned short getDayOfYear(date_time_record& record);
/// @}

/// The days since the December solstice, taken as 21 December: 0 on that day, 10 on 31 December, 11
/// on 1 January, 364 on 20 December of a common year.
/// @{
ZN_UDF_API unsigned short getAstronomicDay(unsigned short day, unsigned short month,
                                           unsigned short year);
ZN_UDF_API unsigned short getAstronomicDay(date_time_record& record);
/// @}

/// The number of the month whose English name begins with the first three characters of `text`, in
/// either case: 9 for "Sept", "SEP" and "Sepulchre".
///
/// Whatever is no month gives 12, as December does: "07", "ma", "xyz", the empty text. A host that
/// must tell them apart compares with `getMonthName(12, true)`.
ZN_UDF_API unsigned short getMonthNumber(const std::string& text);

/// The English name, "March", or its first three letters, "Mar"; empty when `month` is outside 1
/// to 12.
ZN_UDF_API std::string getMonthName(unsigned short month, bool shortName);

// ---- Julian values

/// The Julian value of a date and time; 0 when the date is invalid. Reads the settings' `useTime`:
/// when it is off the time is ignored and the date stands at noon.
///
/// Every date of the years 1 to 65535 is exact. The time is not checked: hour 25 is one o'clock of
/// the next day, hour -1 is an hour before midnight. Seconds are cut to milliseconds: 1.001 seconds
/// are 1000 ms, since the double for 1.001 lies below it.
///
/// For the check of the date, each of year, month and day is cut to 16 bits. A year above 65535
/// passes where the cut one has the date, and counts in full. A negative year counts as the year
/// after it.
/// @{
ZN_UDF_API unsigned long long dateToJulian(int year, int month, int day, int hour, int minute,
                                           double second);
ZN_UDF_API unsigned long long dateToJulian(date_time_record& record);
/// @}

/// The Julian value of an ISO 8601 text as `parseISOdate` reads it; 0 for the empty text and for an
/// impossible date.
///
/// Text that is no date at all does not give 0: it reads as 1 January of year 0, noon, whose value
/// is `148699584000000`.
ZN_UDF_API unsigned long long dateToJulian(const std::string& text);

/// The date and time of a Julian value, to the millisecond.
///
/// Returns the date that `dateToJulian` was given for every date of the years 1 to 65535, with one
/// exception: 1 March 300 comes back as 29 February 300. Years outside 0 to 65535 wrap: 0 gives 24
/// November of year 60823, which is -4713.
///
/// With times on, converting the record back may lose a millisecond: seconds are cut, and the
/// double for 1.001 lies below it. About half of all values lose one, whole seconds never do. Add
/// 0.0005 to `second` first to have the same value.
ZN_UDF_API date_time_record julianToDate(unsigned long long julian);

/// The Julian Date in days with fraction, 2451545.0 for 1 January 2000 at noon. Settings are not
/// read.
///
/// Dates up to 15 October 1582, 0:00, belong to the Julian calendar here. Minutes count 1/3600 of a
/// day: half past midnight lies 0.00833 days after it, not 0.0208; take whole hours where that
/// matters. Nothing is checked.
ZN_UDF_API double dateToJulianDays(date_time_record record);

// ---- ISO 8601 and free-form dates

/// Reads an ISO 8601 date: four digits of year, then, each of them optional, two digits of month,
/// day, hour, minute and second. Hyphens and colons may be left out; a "T" or one blank may stand
/// between date and time.
///
///     "2024"                 ->  1 January 2024, 12:00:00
///     "20240305T1407"        ->  5 March 2024, 14:07:00
///     "2024-13-45"           ->  day 45 of month 13: nothing is range-checked
///     "2024-00-00"           ->  1 January 2024: a month or day of 0 counts as left out
///     "05/03/2024", "hello", "2024-03-05Z", ""  ->  1 January of year 0, 12:00:00
///
/// Text of any other form, fractions of seconds and time zones included, gives the date of the last
/// line.
ZN_UDF_API void parseISOdate(const std::string& text, date_time_record& record);

/// False when `text` is an ISO 8601 date with an impossible field: "2024-02-30", "2024-01-01
/// 24:00".
///
/// True for every other text, "hello" and the empty text included: those read as a valid date of
/// year 0.
ZN_UDF_API bool isValidISOdate(const std::string& text);

/// Rewrites a date with the year last, "5 March 2024" or "03/05/2024 14:07", year first.
///
/// The fields may be separated by any of "-/.,:; ". The settings tell their order, month first for
/// `MONTH_DAY_YEAR`, day first for all others, and give the separators of the result; with
/// `useTime` on, up to three time fields follow. A month that is not a number is looked up with
/// `getMonthNumber`. Everything else is copied, not padded or checked:
///
///     "5 March 2024"  ->  "2024-03-5"     (DAY_MONTH_YEAR, '-')
///     "2024-03-05"    ->  "05-03-2024"    (YEAR_MONTH_DAY: the year is taken from the end)
///     "Dec 25, 2024"  ->  "-12-25 2024"   (MONTH_DAY_YEAR: ", " has an empty field inside)
///
/// Fewer than three fields give the empty text.
ZN_UDF_API std::string dateToISO(const std::string& text);

// ---- Formatting. Every formatter of a Julian value gives the empty text for 0. Fields are
// zero-filled, years to four digits; seconds show their fraction, "9.25".

/// "2024-03-05", always with hyphens; with the settings' `useTime` on, their `dateTimeSeparator`
/// and the time with colons follow: "2024-03-05 14:07:09".
ZN_UDF_API std::string julianToISO(unsigned long long julian);

/// "20240305", never with a time.
ZN_UDF_API std::string julianToYYYYMMDD(unsigned long long julian);

/// The date as `settings` say, "05/Mar/2024 14:07:09".
///
/// Two of its fields have no say. Whether the time is written is decided by the process-wide
/// `useTime`, not by that of `settings`. And `YEAR_MONTH_DAY`, which also stands for any value out
/// of range, always writes the month as a number.
ZN_UDF_API std::string formatJulianDate(unsigned long long julian, date_time_set settings);

/// The same with the process-wide settings.
ZN_UDF_API std::string formatJulianDate(unsigned long long julian);

/// Decimal hours as hours and minutes: 7.5 is "07:30", 25.5 is "25:30".
///
/// Minutes are cut, not rounded: 7.3 is "07:17", since 0.3 hours are a little under 18 minutes in
/// binary. Not meant for negative values: their hours are cut toward zero, but their minutes count
/// from the hour below; -0.25 is "-0:45". Hours of a million and more are written in scientific
/// notation, NaN as "nan:nan" with the signs the stream gives.
ZN_UDF_API std::string hourFormat(double hours);

// ---- Today. Local time, as the TZ variable has it. Both use the C library's shared `localtime`
// record.

/// Fills `record` with the current date and time, whole seconds.
ZN_UDF_API void getToday(date_time_record& record);

/// The current date as "2024-03-05", with the settings' `useTime` on as "2024-03-05 14:07:09"; the
/// settings' separators are not used.
ZN_UDF_API std::string getTodayAsISO();

}  // namespace zn_lib

#endif  // ZN_DATETIME_H
