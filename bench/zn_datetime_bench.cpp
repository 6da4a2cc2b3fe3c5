/// Reading, writing and computing dates, compared with the C library, with the regular expression
/// that defines an ISO 8601 text, with libraries for calendars and formatting, and with arithmetic
/// on fields at fixed positions.
#include <zn_datetime.h>

#include <array>
#include <chrono>
#include <ctime>
#include <regex>
#include <string>

#include "../src/udf/internal/definitions.h"
#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/time/civil_time.h>
#endif
#ifdef ZN_UDF_HAVE_DATE
#include <date/date.h>
#endif
#ifdef ZN_UDF_HAVE_FMT
#include <fmt/chrono.h>
#endif

namespace {

using bench::addRow;

constexpr char kIsoFormat[] = "%Y-%m-%d %H:%M:%S";
constexpr char kNamedMonthFormat[] = "%d/%b/%Y %H:%M:%S";
constexpr zn_lib::date_time_record kRecord = {5, 3, 2024, 14, 7, 9.0};
constexpr unsigned long long kJulian = 212576407629000;  // the same instant
constexpr std::time_t kUnixTime = 1709647629;            // in seconds since 1970

std::tm brokenDown(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  return parts;
}

std::string formatted(const char* format, const std::tm& parts) {
  std::array<char, 64> buffer;
  const std::size_t length = std::strftime(buffer.data(), buffer.size(), format, &parts);
  return {buffer.data(), length};
}

// ---- Baselines: every field is at a fixed position, and nothing is checked

unsigned short twoDigits(const char* text) {
  return static_cast<unsigned short>((text[0] - '0') * 10 + (text[1] - '0'));
}

zn_lib::date_time_record recordAtPositions(const std::string& text) {
  const char* const t = text.c_str();
  const auto year = static_cast<unsigned short>(twoDigits(t) * 100 + twoDigits(t + 2));
  return {twoDigits(t + 8),  twoDigits(t + 5),  year,
          twoDigits(t + 11), twoDigits(t + 14), static_cast<double>(twoDigits(t + 17))};
}

void putTwoDigits(char* text, int number) {
  text[0] = static_cast<char>('0' + number / 10);
  text[1] = static_cast<char>('0' + number % 10);
}

std::string isoAtPositions(const std::tm& parts) {
  std::string text = "0000-00-00 00:00:00";
  const int year = parts.tm_year + 1900;
  putTwoDigits(&text[0], year / 100);
  putTwoDigits(&text[2], year % 100);
  putTwoDigits(&text[5], parts.tm_mon + 1);
  putTwoDigits(&text[8], parts.tm_mday);
  putTwoDigits(&text[11], parts.tm_hour);
  putTwoDigits(&text[14], parts.tm_min);
  putTwoDigits(&text[17], parts.tm_sec);
  return text;
}

std::string namedMonthAtPositions(const std::tm& parts) {
  constexpr const char* months = "JanFebMarAprMayJunJulAugSepOctNovDec";
  std::string text = "00/   /0000 00:00:00";
  const int year = parts.tm_year + 1900;
  putTwoDigits(&text[0], parts.tm_mday);
  text.replace(3, 3, months + 3 * parts.tm_mon, 3);
  putTwoDigits(&text[7], year / 100);
  putTwoDigits(&text[9], year % 100);
  putTwoDigits(&text[12], parts.tm_hour);
  putTwoDigits(&text[15], parts.tm_min);
  putTwoDigits(&text[18], parts.tm_sec);
  return text;
}

// In years that begin in March the leap day is the last day.
constexpr long kDaysIn400Years = 146097;
constexpr long kDaysIn153DaysOf5Months = 153;

unsigned long long julianOfFields(const zn_lib::date_time_record& record) {
  constexpr long dayOfMarch0000 = 1721119;
  constexpr unsigned long long millisecondsPerDay = 86400000;
  const long month = (record.month + 9) % 12;
  const long year = record.year - (month >= 10 ? 1 : 0);
  const long days = 365 * year + year / 4 - year / 100 + year / 400 +
                    (kDaysIn153DaysOf5Months * month + 2) / 5 + record.day - 1 + dayOfMarch0000;
  const unsigned long long minutes = record.hour * 60ULL + record.minute;
  return static_cast<unsigned long long>(days) * millisecondsPerDay + millisecondsPerDay / 2 +
         minutes * 60000 + static_cast<unsigned long long>(record.second * 1000.0);
}

zn_lib::date_time_record fieldsOfUnixTime(std::time_t time) {
  constexpr long daysBefore1970 = 719468;
  const long days = time / 86400 + daysBefore1970;
  const long seconds = time % 86400;
  const long dayOfEra = days % kDaysIn400Years;
  const long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const long month = (5 * dayOfYear + 2) / kDaysIn153DaysOf5Months;
  const long year = days / kDaysIn400Years * 400 + yearOfEra + (month >= 10 ? 1 : 0);
  return {static_cast<unsigned short>(dayOfYear - (kDaysIn153DaysOf5Months * month + 2) / 5 + 1),
          static_cast<unsigned short>(month < 10 ? month + 3 : month - 9),
          static_cast<unsigned short>(year),
          static_cast<unsigned short>(seconds / 3600),
          static_cast<unsigned short>(seconds / 60 % 60),
          static_cast<double>(seconds % 60)};
}

std::tm brokenDownByHand(std::time_t time) {
  const zn_lib::date_time_record record = fieldsOfUnixTime(time);
  std::tm parts{};
  parts.tm_year = record.year - 1900;
  parts.tm_mon = record.month - 1;
  parts.tm_mday = record.day;
  parts.tm_hour = record.hour;
  parts.tm_min = record.minute;
  parts.tm_sec = static_cast<int>(record.second);
  return parts;
}

// ---- Rows

void addParsingRows(const std::string& name, const std::string& text) {
  addRow(name + "/zn_udf", text, [](const std::string& t) {
    zn_lib::date_time_record record;
    zn_lib::parseISOdate(t, record);
    return record;
  });
  addRow(name + "/baseline:hand_loop", text, recordAtPositions);
  addRow(name + "/strptime", text, [](const std::string& t) {
    std::tm parts{};
    strptime(t.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    return parts;
  });
  const std::regex pattern(zn_lib::internal::definitions::isoDateTime.expression);
  addRow(name + "/std_regex", text, [pattern](const std::string& t) {
    std::smatch match;
    std::regex_match(t, match, pattern);
    return match;
  });
}

void addReadingRows() {
  addParsingRows("parseISOdate", "2024-03-05T14:07:09");
  addParsingRows("parseISOdate_refused", "2024/03/05T14:07:09");

  const std::string dayFirst = "5 March 2024 14:07:09";
  addRow("dateToISO/zn_udf", dayFirst, [](const std::string& t) { return zn_lib::dateToISO(t); });
  addRow("dateToISO/strptime_strftime", dayFirst, [](const std::string& t) {
    std::tm parts{};
    strptime(t.c_str(), "%d %B %Y %H:%M:%S", &parts);
    return formatted(kIsoFormat, parts);
  });
  addRow("dateToISO/baseline:hand_loop", brokenDown(kUnixTime), isoAtPositions);
}

#ifdef ZN_UDF_HAVE_FMT
/// Adds a row of fmt, which splits the instant into fields by gmtime_r.
template <class Format>
void addFmtRow(const std::string& name, Format format) {
  const auto instant = std::chrono::system_clock::from_time_t(kUnixTime);
  addRow(name + "/fmt", std::chrono::time_point_cast<std::chrono::seconds>(instant), format);
}
#endif

void addWritingRows() {
  addRow("julianToISO/zn_udf", kJulian,
         [](unsigned long long julian) { return zn_lib::julianToISO(julian); });
  addRow("julianToISO/baseline:hand_loop", kUnixTime,
         [](std::time_t time) { return isoAtPositions(brokenDownByHand(time)); });
  addRow("julianToISO/gmtime_r_strftime", kUnixTime,
         [](std::time_t time) { return formatted(kIsoFormat, brokenDown(time)); });
#ifdef ZN_UDF_HAVE_FMT
  addFmtRow("julianToISO",
            [](const auto& instant) { return fmt::format("{:%Y-%m-%d %H:%M:%S}", instant); });
#endif

  const zn_lib::date_time_set named = {
      zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_SHORT_NAME, '/', ' ', ':', true};
  addRow("formatJulianDate/zn_udf", kJulian,
         [named](unsigned long long julian) { return zn_lib::formatJulianDate(julian, named); });
  addRow("formatJulianDate/baseline:hand_loop", kUnixTime,
         [](std::time_t time) { return namedMonthAtPositions(brokenDownByHand(time)); });
  addRow("formatJulianDate/gmtime_r_strftime", kUnixTime,
         [](std::time_t time) { return formatted(kNamedMonthFormat, brokenDown(time)); });
#ifdef ZN_UDF_HAVE_FMT
  addFmtRow("formatJulianDate",
            [](const auto& instant) { return fmt::format("{:%d/%b/%Y %H:%M:%S}", instant); });
#endif
}

void addTodayRows() {
  const bool useTime = true;
  addRow("getTodayAsISO/zn_udf", useTime, [](bool on) {
    zn_lib::setUseTime(on);
    return zn_lib::getTodayAsISO();
  });
  // Unlike localtime, localtime_r does not check in each call whether the time zone has changed.
  addRow("getTodayAsISO/baseline:localtime_r_strftime", useTime, [](bool) {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    return formatted(kIsoFormat, parts);
  });
  addRow("getTodayAsISO/localtime_strftime", useTime, [](bool) {
    const std::time_t now = std::time(nullptr);
    return formatted(kIsoFormat, *std::localtime(&now));
  });
}

#ifdef ZN_UDF_HAVE_DATE
using Milliseconds = date::sys_time<std::chrono::milliseconds>;

/// Returns the instant of a record, and the epoch for an invalid date, which the library checks,
/// too.
Milliseconds toInstant(const zn_lib::date_time_record& record) {
  const date::year_month_day day =
      date::year{record.year} / static_cast<int>(record.month) / static_cast<int>(record.day);
  if (!day.ok()) return {};
  return date::sys_days{day} + std::chrono::hours{record.hour} +
         std::chrono::minutes{record.minute} +
         std::chrono::milliseconds{static_cast<long>(record.second * 1000.0)};
}

zn_lib::date_time_record toRecord(Milliseconds instant) {
  const date::sys_days midnight = date::floor<date::days>(instant);
  const date::year_month_day day = midnight;
  const date::hh_mm_ss<std::chrono::milliseconds> time(instant - midnight);
  const std::chrono::duration<double> seconds = time.seconds() + time.subseconds();
  return {static_cast<unsigned short>(unsigned{day.day()}),
          static_cast<unsigned short>(unsigned{day.month()}),
          static_cast<unsigned short>(int{day.year()}),
          static_cast<unsigned short>(time.hours().count()),
          static_cast<unsigned short>(time.minutes().count()),
          seconds.count()};
}
#endif

#ifdef ZN_UDF_HAVE_ABSL
zn_lib::date_time_record toRecord(absl::CivilSecond instant) {
  return {
      static_cast<unsigned short>(instant.day()),    static_cast<unsigned short>(instant.month()),
      static_cast<unsigned short>(instant.year()),   static_cast<unsigned short>(instant.hour()),
      static_cast<unsigned short>(instant.minute()), static_cast<double>(instant.second())};
}
#endif

void addCalendarRows() {
  addRow("dateToJulian/zn_udf", kRecord,
         [](zn_lib::date_time_record& record) { return zn_lib::dateToJulian(record); });
  addRow("dateToJulian/baseline:hand_loop", kRecord, julianOfFields);
#ifdef ZN_UDF_HAVE_DATE
  addRow("dateToJulian/date", kRecord,
         [](const zn_lib::date_time_record& record) { return toInstant(record); });
#endif
#ifdef ZN_UDF_HAVE_ABSL
  addRow("dateToJulian/absl_CivilSecond", kRecord, [](const zn_lib::date_time_record& record) {
    return absl::CivilSecond(record.year, record.month, record.day, record.hour, record.minute,
                             static_cast<int>(record.second)) -
           absl::CivilSecond();
  });
#endif

  addRow("julianToDate/zn_udf", kJulian,
         [](unsigned long long julian) { return zn_lib::julianToDate(julian); });
  addRow("julianToDate/baseline:hand_loop", kUnixTime, fieldsOfUnixTime);
#ifdef ZN_UDF_HAVE_DATE
  addRow("julianToDate/date", Milliseconds(std::chrono::seconds(kUnixTime)),
         [](Milliseconds instant) { return toRecord(instant); });
#endif
#ifdef ZN_UDF_HAVE_ABSL
  addRow("julianToDate/absl_CivilSecond", absl::civil_diff_t{kUnixTime},
         [](absl::civil_diff_t seconds) { return toRecord(absl::CivilSecond() + seconds); });
#endif
}

}  // namespace

int main(int argc, char** argv) {
  zn_lib::defaultDateTimeFormat();
  zn_lib::setDateFormat(zn_lib::DAY_MONTH_YEAR);  // the order in which dateToISO reads
  addReadingRows();
  addWritingRows();
  addTodayRows();
  addCalendarRows();
  return bench::runRows(argc, argv);
}
