#include "zn_datetime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <ctime>
#include <optional>
#include <string_view>

#include "internal/calendar.h"
#include "internal/definitions.h"
#include "internal/numbers.h"
#include "internal/text.h"
#include "zn_str.h"

namespace zn_lib {
namespace {

constexpr int kMonthsPerYear = 12;
constexpr int kDaysIn4Years = 1461;
constexpr int kDecember = 12;
constexpr int kFebruary = 2;
constexpr int kMillisecondsPerMinute = 60000;
constexpr unsigned kMillisecondsPerSecond = 1000;
constexpr unsigned kSecondsPerMinute = 60;
constexpr int kMinutesPerHour = 60;

/// The process-wide date settings, all zero until a host sets them.
date_time_set date_set;

constexpr char months[kMonthsPerYear][10] = {"January",   "February", "March",    "April",
                                             "May",       "June",     "July",     "August",
                                             "September", "October",  "November", "December"};
constexpr std::size_t kShortNameLength = 3;

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

constexpr std::size_t kDateFields = 3;
constexpr std::size_t kFreeFields = 6;

/// The first fields of a date in free form, and how many of them it has.
struct FreeFields {
  std::array<std::string_view, kFreeFields> texts;
  std::size_t count = 0;
};

/// Returns the first fields of `text`, which are the tokens between any of "-/.,:; ".
FreeFields splitFields(std::string_view text) {
  const auto isDelimiter = [](char c) {
    // Each delimiter has one bit, as in isSpace.
    constexpr unsigned long long delimiters = 1ULL << '-' | 1ULL << '/' | 1ULL << '.' |
                                              1ULL << ',' | 1ULL << ':' | 1ULL << ';' | 1ULL << ' ';
    return c >= ' ' && c <= ';' && (delimiters >> c & 1) != 0;
  };
  FreeFields fields;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size() && fields.count < kFreeFields; ++i) {
    if (!isDelimiter(text[i])) continue;
    fields.texts[fields.count++] = text.substr(start, i - start);
    start = i + 1;
  }
  // A delimiter at the end adds no empty field.
  if (fields.count < kFreeFields && (start < text.size() || fields.count == 0)) {
    fields.texts[fields.count++] = text.substr(start);
  }
  return fields;
}

/// Returns the English name of a month from 1 to 12, or its first three letters.
std::string_view monthName(unsigned short month, bool shortName) {
  const char* const name = months[month - 1];
  return shortName ? std::string_view(name, kShortNameLength) : std::string_view(name);
}

unsigned short monthNumber(std::string_view text) {
  if (text.size() < kShortNameLength) return kDecember;
  const auto beginsWith = [text](const char* name) {
    const auto equal = [](char a, char b) { return internal::toLower(a) == internal::toLower(b); };
    return std::equal(name, name + kShortNameLength, text.begin(), equal);
  };
  for (unsigned short month = 1; month < kDecember; ++month) {
    if (beginsWith(months[month - 1])) return month;
  }
  return kDecember;  // also for a text that is not a month
}

/// Collects the text of a date or a time in a buffer that holds the longest of them.
class DateText {
 public:
  void add(char c) { buffer_[size_++] = c; }
  void add(std::string_view text) {
    text.copy(buffer_.data() + size_, text.size());
    size_ += text.size();
  }

  /// Adds a number that is zero-filled to two digits.
  void addNumber(unsigned value) {
    if (value < 100) {
      addTwoDigits(value);
    } else {
      addLongNumber(value);
    }
  }

  /// Adds a number that is zero-filled to four digits.
  void addYear(unsigned value) {
    if (value < 10000) {
      addTwoDigits(value / 100);
      addTwoDigits(value % 100);
    } else {
      addLongNumber(value);
    }
  }

  /// Adds `value` as a stream writes a double by default, with six significant digits, zero-filled
  /// to two bytes.
  void addDouble(double value) {
    constexpr int significantDigits = 6;
    std::array<char, 16> digits;  // the longest is "-1.23457e+308"
    const std::string_view text =
        internal::decimalText(value, std::chars_format::general, significantDigits, digits);
    if (text.size() < 2) add('0');
    add(text);
  }

  std::string_view view() const { return {buffer_.data(), size_}; }
  std::string text() const { return std::string(view()); }

 private:
  void addTwoDigits(unsigned value) {
    add(static_cast<char>('0' + value / 10));
    add(static_cast<char>('0' + value % 10));
  }
  void addLongNumber(unsigned value) {
    char* const end = buffer_.data() + buffer_.size();
    size_ = static_cast<std::size_t>(std::to_chars(buffer_.data() + size_, end, value).ptr -
                                     buffer_.data());
  }

  std::array<char, 64> buffer_;
  std::size_t size_ = 0;
};

void addTime(DateText& text, const date_time_record& record, char separator) {
  text.addNumber(record.hour);
  text.add(separator);
  text.addNumber(record.minute);
  text.add(separator);
  // Most seconds are whole, and an integer is much faster to write.
  const unsigned wholeSecond = static_cast<unsigned>(record.second);
  if (record.second == wholeSecond) {
    text.addNumber(wholeSecond);
  } else {
    text.addDouble(record.second);
  }
}

void addMonth(DateText& text, unsigned short month, MONTH_FORMAT format) {
  const bool isName = format == MONTH_FULL_NAME || format == MONTH_SHORT_NAME;
  if (isName && month >= 1 && month <= kMonthsPerYear) {
    text.add(monthName(month, format == MONTH_SHORT_NAME));
  } else if (!isName) {
    text.addNumber(month);
  }
}

void addDate(DateText& text, const date_time_record& record, const date_time_set& settings) {
  const char separator = settings.dateSeparator;
  if (settings.dateFormat == DAY_MONTH_YEAR) {
    text.addNumber(record.day);
    text.add(separator);
    addMonth(text, record.month, settings.monthFormat);
    text.add(separator);
    text.addYear(record.year);
  } else if (settings.dateFormat == MONTH_DAY_YEAR) {
    addMonth(text, record.month, settings.monthFormat);
    text.add(separator);
    text.addNumber(record.day);
    text.add(separator);
    text.addYear(record.year);
  } else {
    // With the year first, the month is always a number.
    text.addYear(record.year);
    text.add(separator);
    text.addNumber(record.month);
    text.add(separator);
    text.addNumber(record.day);
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

unsigned short getMonthNumber(const std::string& text) { return monthNumber(text); }

std::string getMonthName(unsigned short month, bool shortName) {
  if (month < 1 || month > kMonthsPerYear) return "";
  return std::string(monthName(month, shortName));
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
  // In half days, since the days of the Julian value begin at noon. The product wraps if the value
  // does not fit in 64 bits.
  const unsigned long long midnight =
      (2 * static_cast<unsigned long long>(days) - 3049) * internal::kMillisecondsPerHalfDay;
  if (!date_set.useTime) return midnight + internal::kMillisecondsPerHalfDay;
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
  // These steps are the integer forms of divisions by 365.25 and 30.6001. Their results for 1 March
  // 300 are those of 29 February, which hosts may rely on.
  const std::int64_t b = internal::dayOfFourYearCycles(internal::civilDay(julian));
  const std::int64_t c = (20 * b - 2442) / 7305;
  const int dayOfCycle = static_cast<int>(b - kDaysIn4Years * c / 4);
  const int e = 10000 * dayOfCycle / 306001;
  const int month = e < 14 ? e - 1 : e - 13;

  const unsigned milliseconds =
      static_cast<unsigned>(internal::sinceFirstMidnight(julian) % internal::kMillisecondsPerDay);
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
  FreeFields fields = splitFields(text);
  if (fields.count < kDateFields) return BLANK_DATE_STR;
  auto& parts = fields.texts;
  const bool monthFirst = date_set.dateFormat == MONTH_DAY_YEAR;
  const std::string_view day = parts[monthFirst ? 1 : 0];
  std::string_view month = parts[monthFirst ? 0 : 1];
  DateText number;
  if (!isNumber(std::string(month))) {
    number.addNumber(monthNumber(month));
    month = number.view();
  }
  parts[0] = parts[2];  // the year
  parts[1] = month;
  parts[2] = day;

  const std::size_t count = date_set.useTime ? fields.count : kDateFields;
  std::size_t size = count - 1;  // of the separators
  for (std::size_t i = 0; i < count; ++i) size += parts[i].size();
  std::string iso(size, '\0');
  char* end = iso.data();
  for (std::size_t i = 0; i < count; ++i) {
    if (i == kDateFields) {
      *end++ = date_set.dateTimeSeparator;
    } else if (i > 0) {
      *end++ = i < kDateFields ? date_set.dateSeparator : date_set.timeSeparator;
    }
    end += parts[i].copy(end, parts[i].size());
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
  DateText text;
  text.addYear(record.year);
  text.addNumber(record.month);
  text.addNumber(record.day);
  return text.text();
}

std::string formatJulianDate(unsigned long long julian, date_time_set settings) {
  if (julian == 0) return BLANK_DATE_STR;
  const date_time_record record = julianToDate(julian);
  DateText text;
  addDate(text, record, settings);
  if (date_set.useTime) {
    text.add(settings.dateTimeSeparator);
    addTime(text, record, settings.timeSeparator);
  }
  return text.text();
}

std::string formatJulianDate(unsigned long long julian) {
  return formatJulianDate(julian, date_set);
}

std::string hourFormat(double hours) {
  DateText text;
  text.addDouble(std::trunc(hours));
  text.add(':');
  text.addDouble(std::trunc((hours - std::floor(hours)) * 60));
  return text.text();
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
