/// Compares dates with a reference model of the calendar, and their texts with streams and with the
/// definition, for any settings.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_datetime.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "reference_engine.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using fuzz::expectSame;
using zn_lib::date_time_record;
using zn_lib::date_time_set;

constexpr unsigned long long kDay = 86400000;
constexpr unsigned long long kHalfDay = kDay / 2;
constexpr unsigned long long kYear65536 = 25657591 * kDay;

const reference::Engine isoDateTime = reference::engine(definitions::isoDateTime);

const std::vector<std::string> kMonths = {"January",   "February", "March",    "April",
                                          "May",       "June",     "July",     "August",
                                          "September", "October",  "November", "December"};

std::string shown(const date_time_record& record) {
  char text[100];
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%.17g", record.year, record.month, record.day,
                record.hour, record.minute, record.second);
  return text;
}

// ---- The calendar

bool isLeap(unsigned year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

unsigned lengthOf(unsigned month, unsigned year) {
  if (month < 1 || month > 12) return 0;
  if (month == 2) return isLeap(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

/// Returns the Julian value of the midnight at the start of a valid date of year 1 or later.
unsigned long long midnight(unsigned day, unsigned month, unsigned year) {
  constexpr unsigned long long first = 1721426;  // Julian Day Number of 1 January of year 1
  const unsigned past = year - 1;
  unsigned long long days = first + 365ull * past + past / 4 - past / 100 + past / 400 + day - 1;
  for (unsigned m = 1; m < month; ++m) days += lengthOf(m, year);
  return days * kDay - kHalfDay;
}

void records(date_time_record record) {
  const unsigned day = record.day, month = record.month, year = record.year;
  const bool isValid = day >= 1 && day <= lengthOf(month, year);
  expectSame("isValidDate", zn_lib::isValidDate(record.day, record.month, record.year), isValid);
  expectSame("isValidDateTime", zn_lib::isValidDateTime(record),
             isValid && record.hour < 24 && record.minute < 60 && record.second < 60.0);

  unsigned dayOfYear = day;
  for (unsigned m = 1; m < std::min(month, 12u); ++m) dayOfYear += lengthOf(m, year);
  dayOfYear &= 0xFFFF;
  expectSame("getDayOfYear", zn_lib::getDayOfYear(record), dayOfYear);
  expectSame("day of the year", zn_lib::getDayOfYear(record.day, record.month, record.year),
             dayOfYear);
  const unsigned fromSolstice = month == 12 && day >= 21 ? day - 21 : (dayOfYear + 10) & 0xFFFF;
  expectSame("getAstronomicDay", zn_lib::getAstronomicDay(record), fromSolstice);
  expectSame("astronomic day", zn_lib::getAstronomicDay(record.day, record.month, record.year),
             fromSolstice);

  const bool isMonth = month >= 1 && month <= 12;
  const std::string name = isMonth ? kMonths[month - 1] : "";
  expectSame("getMonthDays", zn_lib::getMonthDays(record.month), lengthOf(month, 2000));
  expectSame("getMonthName", zn_lib::getMonthName(record.month, false), name);
  expectSame("short", zn_lib::getMonthName(record.month, true), name.substr(0, 3));

  date_time_record repaired = record;
  zn_lib::validDate(repaired);
  date_time_record expected = record;
  if (month == 0) expected.month = 1;
  if (month > 12) expected.month = static_cast<unsigned short>(month % 12);
  const unsigned last = expected.month == 0 ? 31 : lengthOf(expected.month, year);
  expected.day = static_cast<unsigned short>(std::clamp(day, 1u, last));
  expectSame("validDate", shown(repaired), shown(expected));

  // The terms are the same, so only the last bits may differ.
  const double days = zn_lib::dateToJulianDays(record);
  fuzz::expect("only the seconds may make it NaN",
               std::isfinite(days) || !std::isfinite(record.second));
  const bool isPlain =
      isValid && year > 1582 && record.hour < 24 && record.second >= 0.0 && record.second < 60.0;
  if (isPlain) {
    const double start = static_cast<double>(midnight(day, month, year)) / kDay;
    fuzz::expectNear("dateToJulianDays", days,
                     start + record.hour / 24.0 + record.minute / 3600.0 + record.second / 86400.0,
                     1e-8);
  }
}

void conversions(const date_time_record& record, bool useTime) {
  const unsigned year = record.year;
  date_time_record given = record;
  const unsigned long long julian = zn_lib::dateToJulian(given);
  if (record.day < 1 || record.day > lengthOf(record.month, year)) {
    expectSame("no date", julian, 0u);
    return;
  }
  const bool isExact = year >= 1 && !(record.day == 1 && record.month == 3 && year == 300) &&
                       record.hour < 24 && record.minute < 60 && record.second >= 0.0 &&
                       record.second < 60.0;
  if (!isExact) return;
  date_time_record expected = record;
  if (!useTime) {
    expected.hour = 12;
    expected.minute = 0;
    expected.second = 0.0;
  }
  const unsigned milliseconds = static_cast<unsigned>(expected.second * 1000.0);
  expectSame("dateToJulian", julian,
             midnight(record.day, record.month, year) + expected.hour * 3600000u +
                 expected.minute * 60000u + milliseconds);

  date_time_record back = zn_lib::julianToDate(julian);
  fuzz::expectNear("seconds", back.second, milliseconds / 1000.0, 1e-9);
  back.second = expected.second;
  expectSame("round trip", shown(back), shown(expected));
}

// ---- Text

/// Returns `text` with zeros in front.
std::string filled(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), '0') + text;
}

std::string filled(double value) {
  static std::ostringstream os;
  os.str("");
  os << std::setw(2) << std::setfill('0') << value;
  return os.str();
}

/// Returns a date and time as the settings format it.
std::string formatted(const date_time_record& record, const date_time_set& set, bool useTime) {
  const std::string day = filled(std::to_string(record.day), 2);
  const std::string month = filled(std::to_string(record.month), 2);
  const std::string year = filled(std::to_string(record.year), 4);
  std::string name = record.month >= 1 && record.month <= 12 ? kMonths[record.month - 1u] : "";
  if (set.monthFormat == zn_lib::MONTH_SHORT_NAME) name = name.substr(0, 3);
  const bool isNamed =
      set.monthFormat == zn_lib::MONTH_SHORT_NAME || set.monthFormat == zn_lib::MONTH_FULL_NAME;
  if (!isNamed) name = month;

  const std::string s(1, set.dateSeparator);
  std::string text = year + s + month + s + day;
  if (set.dateFormat == zn_lib::DAY_MONTH_YEAR) text = day + s + name + s + year;
  if (set.dateFormat == zn_lib::MONTH_DAY_YEAR) text = name + s + day + s + year;
  if (!useTime) return text;
  return text + set.dateTimeSeparator + filled(record.hour) + set.timeSeparator +
         filled(record.minute) + set.timeSeparator + filled(record.second);
}

void formats(unsigned long long julian, const date_time_set& set) {
  const bool useTime = zn_lib::isUseTime();
  const date_time_record record = zn_lib::julianToDate(julian);
  fuzz::expect("the time is valid", record.hour < 24 && record.minute < 60 &&
                                        record.second >= 0.0 && record.second < 60.0);
  date_time_set iso = zn_lib::getDateTimeFormat();
  const std::string own = formatted(record, iso, useTime);
  iso.dateFormat = zn_lib::YEAR_MONTH_DAY;
  iso.dateSeparator = '-';
  iso.timeSeparator = ':';
  std::string digits = formatted(record, iso, false);
  digits.erase(std::remove(digits.begin(), digits.end(), '-'), digits.end());

  const bool isDate = julian != 0;
  expectSame("formatJulianDate", zn_lib::formatJulianDate(julian, set),
             isDate ? formatted(record, set, useTime) : "");
  expectSame("its settings", zn_lib::formatJulianDate(julian), isDate ? own : "");
  expectSame("julianToISO", zn_lib::julianToISO(julian),
             isDate ? formatted(record, iso, useTime) : "");
  expectSame("julianToYYYYMMDD", zn_lib::julianToYYYYMMDD(julian), isDate ? digits : "");
}

void expectSettings(const char* what, const date_time_set& expected) {
  const date_time_set actual = zn_lib::getDateTimeFormat();
  expectSame(what, actual.dateFormat, expected.dateFormat);
  expectSame(what, actual.monthFormat, expected.monthFormat);
  expectSame(what, actual.dateSeparator, expected.dateSeparator);
  expectSame(what, actual.dateTimeSeparator, expected.dateTimeSeparator);
  expectSame(what, actual.timeSeparator, expected.timeSeparator);
  expectSame(what, actual.useTime, expected.useTime);
}

/// Sets each field on its own, and checks the settings `own`, which have been set before.
void settings(const date_time_set& set, const date_time_set& own) {
  expectSettings("setDateTimeFormat", own);
  zn_lib::setDateFormat(set.dateFormat);
  zn_lib::setMonthFormat(set.monthFormat);
  zn_lib::setDateSeparator(set.dateSeparator);
  zn_lib::setDateTimeSeparator(set.dateTimeSeparator);
  zn_lib::setTimeSeparator(set.timeSeparator);
  zn_lib::setUseTime(set.useTime);
  expectSettings("the setters", set);
  expectSettings("the getters",
                 {zn_lib::getDateFormat(), zn_lib::getMonthFormat(), zn_lib::getDateSeparator(),
                  zn_lib::getDateTimeSeparator(), zn_lib::getTimeSeparator(), zn_lib::isUseTime()});
  zn_lib::defaultDateTimeFormat();
  expectSettings("defaultDateTimeFormat",
                 {zn_lib::YEAR_MONTH_DAY, zn_lib::MONTH_NUMBER, '-', ' ', ':', true});
}

/// Compares the current date with that of the C library. The second may change meanwhile.
void today() {
  const auto now = [] {
    const std::time_t time = std::time(nullptr);
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, "%F %T", std::localtime(&time)));
  };
  const std::string before = now();
  const std::string iso = zn_lib::getTodayAsISO();
  date_time_record record;
  zn_lib::resetDateTime(record);
  expectSame("resetDateTime", shown(record), std::string("0-0-0 12:0:0"));
  zn_lib::getToday(record);
  const std::string after = now();
  fuzz::expect("getTodayAsISO", before <= iso && iso <= after);
  const date_time_set format = {zn_lib::YEAR_MONTH_DAY, zn_lib::MONTH_NUMBER, '-', ' ', ':', true};
  const std::string text = formatted(record, format, true);
  fuzz::expect("getToday", iso <= text && text <= after);
}

void hours(double value) {
  expectSame(
      "hourFormat", zn_lib::hourFormat(value),
      filled(std::trunc(value)) + ":" + filled(std::trunc((value - std::floor(value)) * 60)));
}

// ---- Reading

unsigned short monthNumber(const std::string& text) {
  for (unsigned short month = 1; month < 12; ++month) {
    const std::string& name = kMonths[month - 1u];
    bool isSame = text.size() >= 3;
    // Upper and lower case differ by one bit.
    for (std::size_t i = 0; isSame && i < 3; ++i) isSame = (text[i] | 0x20) == (name[i] | 0x20);
    if (isSame) return month;
  }
  return 12;
}

/// Returns whether `text` is a number by its definition.
bool isNumber(const std::string& text) {
  static const reference::Engine pattern = reference::engine(definitions::validNumber);
  return std::regex_match(text, pattern);
}

void rewrites(const std::string& text, const date_time_set& set) {
  const std::string iso = zn_lib::dateToISO(text);
  std::vector<std::string> fields(1);
  for (const char c : text) {
    if (std::string("-/.,:; ").find(c) != std::string::npos && c != '\0') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  if (fields.size() > 1 && fields.back().empty()) fields.pop_back();
  if (fields.size() < 3) {
    expectSame("no date", iso, std::string());
    return;
  }
  const bool isMonthFirst = set.dateFormat == zn_lib::MONTH_DAY_YEAR;
  std::string month = fields[isMonthFirst ? 0 : 1];
  if (month.size() > fuzz::kShortText) return;
  if (!isNumber(month)) month = filled(monthNumber(month));
  std::string expected =
      fields[2] + set.dateSeparator + month + set.dateSeparator + fields[isMonthFirst ? 1 : 0];
  for (std::size_t i = 3; set.useTime && i < std::min<std::size_t>(fields.size(), 6); ++i) {
    expected += (i == 3 ? set.dateTimeSeparator : set.timeSeparator) + fields[i];
  }
  expectSame("dateToISO", iso, expected);
}

void parses(const std::string& text) {
  expectSame("getMonthNumber", zn_lib::getMonthNumber(text), monthNumber(text));

  date_time_record record = {99, 99, 99, 99, 99, 99.0};
  zn_lib::parseISOdate(text, record);
  date_time_record valid = record;
  expectSame("isValidISOdate", zn_lib::isValidISOdate(text), zn_lib::isValidDateTime(valid));
  expectSame("dateToJulian", zn_lib::dateToJulian(text),
             text.empty() ? 0 : zn_lib::dateToJulian(record));

  std::smatch match;
  if (text.size() <= fuzz::kShortText) std::regex_match(text, match, isoDateTime);
  const auto field = [&match](std::size_t group, int otherwise) {
    const std::string digits = match.empty() ? "" : match.str(group);
    return static_cast<unsigned short>(digits.empty() ? otherwise : std::stoi(digits));
  };
  date_time_record expected = {field(3, 1),  field(2, 1), field(1, 0),
                               field(4, 12), field(5, 0), static_cast<double>(field(6, 0))};
  if (expected.day == 0) expected.day = 1;
  if (expected.month == 0) expected.month = 1;
  expectSame("parseISOdate", shown(record), shown(expected));
}

date_time_set consumeSettings(FuzzedDataProvider& input) {
  date_time_set set;
  const bool isAny = input.ConsumeBool();
  const int most = isAny ? INT32_MAX : 2;
  const int least = isAny ? INT32_MIN : 0;
  set.dateFormat = static_cast<zn_lib::DATE_FORMAT>(input.ConsumeIntegralInRange(least, most));
  set.monthFormat = static_cast<zn_lib::MONTH_FORMAT>(input.ConsumeIntegralInRange(least, most));
  set.dateSeparator = input.ConsumeIntegral<char>();
  set.dateTimeSeparator = input.ConsumeIntegral<char>();
  set.timeSeparator = input.ConsumeIntegral<char>();
  set.useTime = input.ConsumeBool();
  return set;
}

double consumeDouble(FuzzedDataProvider& input) {
  double value = 0.0;
  input.ConsumeData(&value, sizeof value);
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int group = input.ConsumeIntegralInRange(0, 8);
  const date_time_set own = consumeSettings(input);
  const date_time_set other = consumeSettings(input);
  const unsigned long long julian = input.ConsumeIntegral<unsigned long long>();
  const int numbers[] = {input.ConsumeIntegral<int>(), input.ConsumeIntegral<int>(),
                         input.ConsumeIntegral<int>(), input.ConsumeIntegral<int>(),
                         input.ConsumeIntegral<int>()};
  const date_time_record near = {input.ConsumeIntegralInRange<unsigned short>(0, 33),
                                 input.ConsumeIntegralInRange<unsigned short>(0, 14),
                                 input.ConsumeIntegral<unsigned short>(),
                                 input.ConsumeIntegralInRange<unsigned short>(0, 25),
                                 input.ConsumeIntegralInRange<unsigned short>(0, 61),
                                 input.ConsumeIntegralInRange(-1000, 61000) / 1000.0};
  const double value = consumeDouble(input);
  const std::string text = input.ConsumeRemainingBytesAsString();

  zn_lib::setDateTimeFormat(own.dateFormat, own.monthFormat, own.dateSeparator,
                            own.dateTimeSeparator, own.timeSeparator, own.useTime);
  const auto cut = [](int number) { return static_cast<unsigned short>(number); };
  const date_time_record far = {cut(numbers[0]), cut(numbers[1]), cut(numbers[2]),
                                cut(numbers[3]), cut(numbers[4]), value};
  switch (group) {
    case 0:
      formats(julian, other);
      break;
    case 1:
      formats(julian % kYear65536, other);
      break;
    case 2:
      settings(other, own);
      today();
      hours(value);
      break;
    case 3:
      records(far);
      break;
    case 4:
      records(near);
      break;
    case 5:
      conversions(near, own.useTime);
      break;
    case 6:
      conversions(far, own.useTime);
      zn_lib::dateToJulian(numbers[2], numbers[1], numbers[0], numbers[3], numbers[4], value);
      zn_lib::dateToJulian(numbers[2], near.month, near.day, numbers[3], numbers[4], value);
      break;
    case 7:
      rewrites(text, own);
      break;
    default:
      parses(text);
      break;
  }
  return 0;
}
