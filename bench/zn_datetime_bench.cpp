/// Dates: reading, writing and the calendar's arithmetic, against the C library, the pattern that
/// defines an ISO 8601 text, and libraries made for calendars.
#include <zn_datetime.h>

#include <array>
#include <chrono>
#include <ctime>
#include <regex>
#include <string>

#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/time/civil_time.h>
#endif
#ifdef ZN_UDF_HAVE_DATE
#include <date/date.h>
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

void addParsingRows(const std::string& name, const std::string& text) {
  addRow(name + "/zn_udf", text, [](const std::string& t) {
    zn_lib::date_time_record record;
    zn_lib::parseISOdate(t, record);
    return record;
  });
  addRow(name + "/strptime", text, [](const std::string& t) {
    std::tm parts{};
    strptime(t.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    return parts;
  });
  const std::regex pattern(R"(^(\d{4})-?(\d{2})?-?(\d{2})?[\sT]?(\d{2})?:?(\d{2})?:?(\d{2})?)");
  addRow(name + "/std_regex", text, [pattern](const std::string& t) {
    std::smatch match;
    std::regex_match(t, match, pattern);
    return match;
  });
}

void addReadingRows() {
  addParsingRows("parseISOdate", "2024-03-05T14:07:09");
  addParsingRows("parseISOdate_refused", "2024/03/05");

  const std::string dayFirst = "5 March 2024 14:07:09";
  addRow("dateToISO/zn_udf", dayFirst, [](const std::string& t) { return zn_lib::dateToISO(t); });
  addRow("dateToISO/strptime_strftime", dayFirst, [](const std::string& t) {
    std::tm parts{};
    strptime(t.c_str(), "%d %B %Y %H:%M:%S", &parts);
    return formatted(kIsoFormat, parts);
  });
}

void addWritingRows() {
  addRow("julianToISO/zn_udf", kJulian,
         [](unsigned long long julian) { return zn_lib::julianToISO(julian); });
  addRow("julianToISO/strftime", brokenDown(kUnixTime),
         [](const std::tm& parts) { return formatted(kIsoFormat, parts); });
  addRow("julianToISO/gmtime_r_strftime", kUnixTime,
         [](std::time_t time) { return formatted(kIsoFormat, brokenDown(time)); });

  const zn_lib::date_time_set named = {
      zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_SHORT_NAME, '/', ' ', ':', true};
  addRow("formatJulianDate/zn_udf", kJulian,
         [named](unsigned long long julian) { return zn_lib::formatJulianDate(julian, named); });
  addRow("formatJulianDate/strftime", brokenDown(kUnixTime),
         [](const std::tm& parts) { return formatted(kNamedMonthFormat, parts); });
  addRow("formatJulianDate/gmtime_r_strftime", kUnixTime,
         [](std::time_t time) { return formatted(kNamedMonthFormat, brokenDown(time)); });
}

#ifdef ZN_UDF_HAVE_DATE
using Milliseconds = date::sys_time<std::chrono::milliseconds>;

/// The instant of a record; that of the epoch for an impossible date, which the library checks too.
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
  addCalendarRows();
  return bench::runRows(argc, argv);
}
