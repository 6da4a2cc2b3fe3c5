#include "zn_datetime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <ctime>
#include <optional>
#include <string_view>

#include "internal/definitions.h"
#include "internal/numbers.h"
#include "internal/text.h"
#include "tokenizer.h"
#include "zn_str.h"

namespace zn_lib {
namespace {

constexpr int kMonthsPerYear = 12;
constexpr int kDaysIn4Years = 1461;
constexpr int kDecember = 12;
constexpr int kFebruary = 2;
constexpr unsigned long long kMillisecondsPerDay = 86400000;
constexpr unsigned long long kMillisecondsPerHalfDay = kMillisecondsPerDay / 2;
constexpr int kMillisecondsPerMinute = 60000;
constexpr unsigned kMillisecondsPerSecond = 1000;
constexpr unsigned kSecondsPerMinute = 60;
constexpr int kMinutesPerHour = 60;

/// The process-wide date settings, all zero until a host sets them.
date_time_set date_set;

constexpr char months[kMonthsPerYear][10] = {"january",   "february", "march",    "april",
                                             "may",       "june",     "july",     "august",
                                             "september", "october",  "november", "december"};

constexpr std::array<unsigned short, 1 + kMonthsPerYear> kMonthDays = {0,  31, 29, 31, 30, 31, 30,
                                                                       31, 31, 30, 31, 30, 31};

bool isLeapYear(unsigned short year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

template <class Integer>
constexpr unsigned short to16Bits(Integer value) {
  return static_cast<unsigned short>(value);
}

constexpr std::size_t kYearDigits = 4;

/// Points to the digits of an ISO 8601 text's fields, from year to second. The year has four
/// digits, the other fields have two. The pointer to a field that is left out is null.
using IsoFields = std::array<const char*, 6>;

/// Removes `count` digits from the start of `text` and returns them. If there are fewer, returns a
/// null pointer and removes nothing.
template <std::size_t count>
const char* takeDigits(std::string_view& text) {
  if (text.size() < count) return nullptr;
  bool areDigits = true;
  for (std::size_t i = 0; i < count; ++i) areDigits &= internal::isDigit(text[i]);
  if (!areDigits) return nullptr;
  const char* const digits = text.data();
  text.remove_prefix(count);
  return digits;
}

/// Recognises the form `isoDateTime`: a year, then five fields of two digits. Each field may be
/// missing, and so may the separator before it. The scan assigns each pair of digits to the first
/// field that fits. No other assignment can match, since each separator belongs to certain fields.
std::optional<IsoFields> scanIsoDateTime(std::string_view text) {
  constexpr std::string_view separators = "--T::";
  IsoFields fields = {takeDigits<kYearDigits>(text)};
  if (fields.front() == nullptr) return std::nullopt;
  for (std::size_t i = 0; i < separators.size(); ++i) {
    const auto isSeparator = [separator = separators[i]](char c) {
      return c == separator || (separator == 'T' && internal::isSpace(c));
    };
    if (!text.empty() && isSeparator(text.front())) text.remove_prefix(1);
    fields[i + 1] = takeDigits<2>(text);
  }
  return text.empty() ? std::optional(fields) : std::nullopt;
}

/// Returns the fields of an ISO 8601 text. All are left out if the text does not have this form.
IsoFields readISO(const std::string& text) {
  const std::optional<IsoFields> match = scanIsoDateTime(text);
  const IsoFields fields = match.value_or(IsoFields());
  const auto digits = [&fields](std::size_t i) {
    if (fields[i] == nullptr) return std::string_view();
    return std::string_view(fields[i], i == 0 ? kYearDigits : 2);
  };
  internal::verify(internal::definitions::isoDateTime, text, match.has_value(),
                   {digits(0), digits(1), digits(2), digits(3), digits(4), digits(5)});
  return fields;
}

template <std::size_t count>
int toInt(const char* digits) {
  int value = 0;
  for (std::size_t i = 0; i < count; ++i) value = value * 10 + (digits[i] - '0');
  return value;
}

/// Appends `digits`, filled with zeros on the left to at least `width` bytes.
void appendFilled(std::string& text, std::string_view digits, std::size_t width) {
  if (digits.size() < width) text.append(width - digits.size(), '0');
  text.append(digits);
}

void appendNumber(std::string& text, unsigned value, std::size_t width = 2) {
  std::array<char, 10> digits;
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  appendFilled(text, {digits.data(), static_cast<std::size_t>(end - digits.data())}, width);
}

/// Appends `value` as a stream writes a double by default, with six significant digits, zero-filled
/// to two bytes.
void appendDouble(std::string& text, double value) {
  constexpr int significantDigits = 6;
  std::array<char, 16> digits;  // the longest is "-1.23457e+308"
  appendFilled(
      text, internal::decimalText(value, std::chars_format::general, significantDigits, digits), 2);
}

void appendYear(std::string& text, const date_time_record& record) {
  appendNumber(text, record.year, kYearDigits);
}

void appendTime(std::string& text, const date_time_record& record, char separator) {
  appendNumber(text, record.hour);
  text += separator;
  appendNumber(text, record.minute);
  text += separator;
  // Most seconds are whole, and an integer is much faster to write.
  const unsigned wholeSecond = static_cast<unsigned>(record.second);
  if (record.second == wholeSecond) {
    appendNumber(text, wholeSecond);
  } else {
    appendDouble(text, record.second);
  }
}

std::string monthText(unsigned short month, MONTH_FORMAT format) {
  if (format == MONTH_FULL_NAME) return getMonthName(month, false);
  if (format == MONTH_SHORT_NAME) return getMonthName(month, true);
  std::string number;
  appendNumber(number, month);
  return number;
}

/// Returns the order of a date's fields as a text of their first letters.
constexpr std::string_view orderOf(DATE_FORMAT format) {
  if (format == DAY_MONTH_YEAR) return "dmy";
  if (format == MONTH_DAY_YEAR) return "mdy";
  return "ymd";
}

void appendDate(std::string& text, const date_time_record& record, const date_time_set& settings) {
  const std::string_view order = orderOf(settings.dateFormat);
  // With the year first, the month is always a number.
  const MONTH_FORMAT monthFormat = order.front() == 'y' ? MONTH_NUMBER : settings.monthFormat;
  for (const char part : order) {
    if (part != order.front()) text += settings.dateSeparator;
    if (part == 'd') appendNumber(text, record.day);
    if (part == 'm') text += monthText(record.month, monthFormat);
    if (part == 'y') appendYear(text, record);
  }
}

std::tm localTime() {
  const std::time_t now = std::time(nullptr);
  return *std::localtime(&now);
}

}  // namespace

void setDateFormat(DATE_FORMAT format) { date_set.dateFormat = format; }
DATE_FORMAT getDateFormat() { return date_set.dateFormat; }
void setMonthFormat(MONTH_FORMAT format) { date_set.monthFormat = format; }
MONTH_FORMAT getMonthFormat() { return date_set.monthFormat; }
void setDateSeparator(char separator) { date_set.dateSeparator = separator; }
char getDateSeparator() { return date_set.dateSeparator; }
void setDateTimeSeparator(char separator) { date_set.dateTimeSeparator = separator; }
char getDateTimeSeparator() { return date_set.dateTimeSeparator; }
void setTimeSeparator(char separator) { date_set.timeSeparator = separator; }
char getTimeSeparator() { return date_set.timeSeparator; }
void setUseTime(bool on) { date_set.useTime = on; }
bool isUseTime() { return date_set.useTime; }

void setDateTimeFormat(DATE_FORMAT dateFormat, MONTH_FORMAT monthFormat, char dateSeparator,
                       char dateTimeSeparator, char timeSeparator, bool useTime) {
  date_set = {dateFormat, monthFormat, dateSeparator, dateTimeSeparator, timeSeparator, useTime};
}

date_time_set getDateTimeFormat() { return date_set; }

void defaultDateTimeFormat() {
  setDateTimeFormat(YEAR_MONTH_DAY, MONTH_NUMBER, '-', ' ', ':', true);
}

void resetDateTime(date_time_record& record) { record = {0, 0, 0, 12, 0, 0.0}; }

bool isValidDate(unsigned short day, unsigned short month, unsigned short year) {
  if (day < 1 || month < 1 || month > kMonthsPerYear) return false;
  if (day <= 28) return true;  // every month has these days, so most dates need no table
  return day <= kMonthDays[month] && (month != kFebruary || isLeapYear(year));
}

bool isValidDateTime(date_time_record& record) {
  return isValidDate(record.day, record.month, record.year) && record.minute < 60 &&
         record.hour < 24 && record.second < 60.0;
}

void validDate(date_time_record& record) {
  if (record.month == 0) record.month = 1;
  if (record.month > kMonthsPerYear) record.month = to16Bits(record.month % kMonthsPerYear);
  if (record.day == 0) record.day = 1;
  // A month that became 0 as a remainder has as many days as the longest month.
  unsigned short last = record.month == 0 ? 31 : getMonthDays(record.month);
  if (record.month == kFebruary && !isLeapYear(record.year)) last = 28;
  record.day = std::min(record.day, last);
}

unsigned short getMonthDays(unsigned short month) {
  return month > kMonthsPerYear ? 0 : kMonthDays[month];
}

unsigned short getDayOfYear(unsigned short day, unsigned short month, unsigned short year) {
  int sum = day;
  // A month above 12 counts as December.
  for (unsigned short past = 1; past < std::min<unsigned short>(month, kDecember); ++past) {
    sum += getMonthDays(past);
  }
  if (month > kFebruary && !isLeapYear(year)) --sum;
  return to16Bits(sum);
}

unsigned short getDayOfYear(date_time_record& record) {
  return getDayOfYear(record.day, record.month, record.year);
}

unsigned short getAstronomicDay(unsigned short day, unsigned short month, unsigned short year) {
  constexpr unsigned short solstice = 21;
  if (month == kDecember && day >= solstice) return to16Bits(day - solstice);
  return to16Bits(getDayOfYear(day, month, year) + 10);
}

unsigned short getAstronomicDay(date_time_record& record) {
  return getAstronomicDay(record.day, record.month, record.year);
}

unsigned short getMonthNumber(const std::string& text) {
  constexpr std::size_t prefixLength = 3;
  const std::string prefix = stringToLower(text.substr(0, prefixLength));
  for (unsigned short month = 1; month < kDecember; ++month) {
    if (prefix == std::string_view(months[month - 1], prefixLength)) return month;
  }
  return kDecember;  // also for a text that is not a month
}

std::string getMonthName(unsigned short month, bool shortName) {
  if (month < 1 || month > kMonthsPerYear) return "";
  std::string name = months[month - 1];
  name.front() = internal::toUpper(name.front());
  if (shortName) name.resize(3);
  return name;
}

unsigned long long dateToJulian(int year, int month, int day, int hour, int minute, double second) {
  if (!isValidDate(to16Bits(day), to16Bits(month), to16Bits(year))) return 0;
  int y = year < 0 ? year + 1 : year;
  // With 64 bits, the products do not overflow for any int.
  std::int64_t m = month;
  if (m < 3) {
    --y;
    m += kMonthsPerYear;
  }
  // These are the integer forms of int(30.6001 * (m + 1)) and int(365.25 * (y + 4716)), and the
  // Gregorian correction.
  const std::int64_t monthDays = 306001 * (m + 1) / 10000;
  const std::int64_t yearDays = kDaysIn4Years * (std::int64_t{y} + 4716) / 4;
  const std::int64_t days = std::int64_t{day} + (2 - y / 100 + y / 400) + monthDays + yearDays;
  // In half days, since the days of the Julian value begin at noon. The sum wraps for years that 64
  // bits cannot hold.
  const unsigned long long midnight =
      (2 * static_cast<unsigned long long>(days) - 3049) * kMillisecondsPerHalfDay;
  if (!date_set.useTime) return midnight + kMillisecondsPerHalfDay;
  // A negative time wraps in the sum, so hour -1 is an hour before midnight.
  const std::int64_t minutes = std::int64_t{hour} * kMinutesPerHour + minute;
  return midnight + static_cast<unsigned long long>(minutes * kMillisecondsPerMinute) +
         internal::truncateToUnsigned64(second * 1000.0);
}

unsigned long long dateToJulian(date_time_record& record) {
  return dateToJulian(record.year, record.month, record.day, record.hour, record.minute,
                      record.second);
}

unsigned long long dateToJulian(const std::string& text) {
  if (text.empty()) return 0;
  date_time_record record;
  parseISOdate(text, record);
  return dateToJulian(record);
}

date_time_record julianToDate(unsigned long long julian) {
  // Civil days begin at midnight, the days of the Julian value at noon.
  const unsigned long long sinceMidnight = julian + kMillisecondsPerHalfDay;
  const std::int32_t dayNumber =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(sinceMidnight / kMillisecondsPerDay));
  // These steps are the integer forms of divisions by 36524.25, 365.25 and 30.6001. Their results
  // for 1 March 300 are those of 29 February, which hosts may rely on.
  const std::int64_t century = (4 * std::int64_t{dayNumber} - 7468865) / 146097;
  const std::int64_t b = dayNumber + century - century / 4 + 1525;
  const std::int64_t c = (20 * b - 2442) / 7305;
  const int dayOfCycle = static_cast<int>(b - kDaysIn4Years * c / 4);
  const int e = 10000 * dayOfCycle / 306001;
  const int month = e < 14 ? e - 1 : e - 13;

  const unsigned milliseconds = static_cast<unsigned>(sinceMidnight % kMillisecondsPerDay);
  const unsigned seconds = milliseconds / kMillisecondsPerSecond;
  const unsigned minutes = seconds / kSecondsPerMinute;
  const double fraction = milliseconds / 1000.0 - seconds;

  date_time_record record;
  record.day = to16Bits(dayOfCycle - 306001 * e / 10000);
  record.month = to16Bits(month);
  record.year = to16Bits(static_cast<int>(c) - (month >= 3 ? 4716 : 4715));
  record.hour = to16Bits(minutes / kMinutesPerHour);
  record.minute = to16Bits(minutes % kMinutesPerHour);
  record.second = seconds % kSecondsPerMinute + fraction;
  return record;
}

double dateToJulianDays(date_time_record record) {
  // Hosts rely on the divisor 3600 of the minutes.
  const double day =
      ((record.day + record.hour / 24.0) + record.minute / 3600.0) + record.second / 86400.0;
  unsigned short y = record.year;
  unsigned short m = record.month;
  if (m < 3) {
    y = to16Bits(y - 1);
    m = to16Bits(m + kMonthsPerYear);
  }
  const bool isJulianCalendar = y < 1582 || (y == 1582 && (m < 10 || (m == 10 && day <= 15.0)));
  const int gregorian = isJulianCalendar ? 0 : 2 - y / 100 + y / 400;
  const int days = static_cast<int>(365.25 * y) + gregorian + static_cast<int>(30.6001 * (m + 1));
  return day + days + 1720994.5;
}

void parseISOdate(const std::string& text, date_time_record& record) {
  const IsoFields fields = readISO(text);
  const auto field = [&fields](std::size_t index, int otherwise) {
    return fields[index] == nullptr ? otherwise : toInt<2>(fields[index]);
  };
  record.year = to16Bits(fields[0] == nullptr ? 0 : toInt<kYearDigits>(fields[0]));
  record.month = to16Bits(std::max(field(1, 1), 1));
  record.day = to16Bits(std::max(field(2, 1), 1));
  record.hour = to16Bits(field(3, 12));
  record.minute = to16Bits(field(4, 0));
  record.second = field(5, 0);
}

bool isValidISOdate(const std::string& text) {
  date_time_record record;
  parseISOdate(text, record);
  return isValidDateTime(record);
}

std::string dateToISO(const std::string& text) {
  const Tokenizer fields(text, "-/.,:; ");
  if (fields.tokens.size() < 3) return BLANK_DATE_STR;
  const bool monthFirst = date_set.dateFormat == MONTH_DAY_YEAR;
  std::string month = fields.tokens[monthFirst ? 0 : 1];
  const std::string& day = fields.tokens[monthFirst ? 1 : 0];
  if (!isNumber(month)) month = monthText(getMonthNumber(month), MONTH_NUMBER);

  std::string iso =
      fields.tokens[2] + date_set.dateSeparator + month + date_set.dateSeparator + day;
  if (date_set.useTime) {
    const std::size_t last = std::min<std::size_t>(fields.tokens.size(), 6);
    for (std::size_t i = 3; i < last; ++i) {
      iso += i == 3 ? date_set.dateTimeSeparator : date_set.timeSeparator;
      iso += fields.tokens[i];
    }
  }
  return iso;
}

std::string julianToISO(unsigned long long julian) {
  date_time_set iso = date_set;
  iso.dateFormat = YEAR_MONTH_DAY;
  iso.dateSeparator = '-';
  iso.timeSeparator = ':';
  return formatJulianDate(julian, iso);
}

std::string julianToYYYYMMDD(unsigned long long julian) {
  if (julian == 0) return BLANK_DATE_STR;
  const date_time_record record = julianToDate(julian);
  std::string text;
  appendYear(text, record);
  appendNumber(text, record.month);
  appendNumber(text, record.day);
  return text;
}

std::string formatJulianDate(unsigned long long julian, date_time_set settings) {
  if (julian == 0) return BLANK_DATE_STR;
  const date_time_record record = julianToDate(julian);
  std::string text;
  appendDate(text, record, settings);
  if (date_set.useTime) {
    text += settings.dateTimeSeparator;
    appendTime(text, record, settings.timeSeparator);
  }
  return text;
}

std::string formatJulianDate(unsigned long long julian) {
  return formatJulianDate(julian, date_set);
}

std::string hourFormat(double hours) {
  std::string text;
  appendDouble(text, std::trunc(hours));
  text += ':';
  appendDouble(text, std::trunc((hours - std::floor(hours)) * 60));
  return text;
}

void getToday(date_time_record& record) {
  const std::tm today = localTime();
  record.day = to16Bits(today.tm_mday);
  record.month = to16Bits(today.tm_mon + 1);
  record.year = to16Bits(today.tm_year + 1900);
  record.hour = to16Bits(today.tm_hour);
  record.minute = to16Bits(today.tm_min);
  record.second = today.tm_sec;
}

std::string getTodayAsISO() {
  const std::tm today = localTime();
  std::array<char, 256> buffer;
  const std::size_t length = std::strftime(
      buffer.data(), buffer.size(), date_set.useTime ? "%Y-%m-%d %H:%M:%S" : "%Y-%m-%d", &today);
  return {buffer.data(), length};
}

}  // namespace zn_lib
