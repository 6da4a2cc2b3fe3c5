// Calls of dates: the settings, records, Julian values, texts, and the clock.
#include <zn_datetime.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "model_dates.h"
#include "pools.h"

namespace histories {

using zn_lib::date_time_record;

namespace {

using Number = unsigned short;

bool isLeap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

/// Returns the length of a month, and 0 for other numbers.
int lengthOf(int month, bool isLeapYear) {
  switch (month) {
    case 2:
      return isLeapYear ? 29 : 28;
    case 4:
    case 6:
    case 9:
    case 11:
      return 30;
    default:
      return month >= 1 && month <= 12 ? 31 : 0;
  }
}

bool isDate(int day, int month, int year) {
  return day >= 1 && day <= lengthOf(month, isLeap(year));
}

bool isDateTime(const date_time_record& record) {
  return isDate(record.day, record.month, record.year) && record.hour < 24 && record.minute < 60 &&
         record.second < 60;
}

void repair(date_time_record& record) {
  if (record.month == 0) record.month = 1;
  if (record.month > 12) record.month = static_cast<Number>(record.month % 12);
  if (record.day == 0) record.day = 1;
  const int length = record.month == 0 ? 31 : lengthOf(record.month, isLeap(record.year));
  if (record.day > length) record.day = static_cast<Number>(length);
}

Number dayOfYear(int day, int month, int year) {
  long sum = day;
  for (int before = 1; before < month && before < 12; ++before)
    sum += lengthOf(before, isLeap(year));
  return static_cast<Number>(sum);
}

Number astronomicDay(int day, int month, int year) {
  if (month == 12 && day >= 21) return static_cast<Number>(day - 21);
  return static_cast<Number>(dayOfYear(day, month, year) + 10);
}

const std::vector<std::string>& months() {
  static const std::vector<std::string> names = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};
  return names;
}

int monthNamed(std::string text) {
  text = text.substr(0, 3);
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  for (int month = 1; month <= 12; ++month) {
    std::string name = months()[static_cast<std::size_t>(month - 1)].substr(0, 3);
    name[0] = static_cast<char>(name[0] + ('a' - 'A'));
    if (text == name) return month;
  }
  return 12;
}

/// Returns the days from noon of day 0 of the Julian count to noon of a Gregorian date.
long long julianDay(int year, int month, int day) {
  long long days = 1721060;  // 1 January of the year 0
  // 400 years are 146097 days.
  days += year / 400 * 146097LL;
  for (int y = year / 400 * 400; y < year; ++y) days += isLeap(y) ? 366 : 365;
  for (int m = 1; m < month; ++m) days += lengthOf(m, isLeap(year));
  return days + day - 1;
}

constexpr long long kDay = 86400000;

unsigned long long julian(const Model& model, const date_time_record& record) {
  if (!isDate(record.day, record.month, record.year)) return 0;
  const long long noon = julianDay(record.year, record.month, record.day) * kDay;
  if (!model.dates.useTime) return static_cast<unsigned long long>(noon);
  const long long time = record.hour * 3600000LL + record.minute * 60000LL +
                         static_cast<long long>(record.second * 1000.0);
  return static_cast<unsigned long long>(noon - kDay / 2 + time);
}

/// Returns the date of a value between the years 1 and 65535.
date_time_record dateOf(unsigned long long value) {
  const long long instant = static_cast<long long>(value) + kDay / 2;
  const long long day = instant / kDay;
  int year = static_cast<int>((day - 1721060) * 400 / 146097) - 1;
  while (julianDay(year + 1, 1, 1) <= day) ++year;
  int month = 1;
  while (month < 12 && julianDay(year, month + 1, 1) <= day) ++month;
  date_time_record record{};
  record.year = static_cast<Number>(year);
  record.month = static_cast<Number>(month);
  record.day = static_cast<Number>(day - julianDay(year, month, 1) + 1);
  const long long time = instant % kDay;
  record.hour = static_cast<Number>(time / 3600000);
  record.minute = static_cast<Number>(time / 60000 % 60);
  // The fraction has the rounding error of the seconds of the whole day.
  const double seconds = static_cast<double>(time) / 1000.0;
  record.second = static_cast<double>(time / 1000 % 60) + (seconds - std::trunc(seconds));
  return record;
}

/// Returns whether this is the one date that the library documents not to be exact.
bool isInexact(const date_time_record& r) { return r.year == 300 && r.month == 3 && r.day == 1; }

/// Reads year, month, day, hour, minute and second, each but the first of which may be missing,
/// with their separators.
date_time_record parsed(const std::string& text) {
  date_time_record blank{1, 1, 0, 12, 0, 0.0};
  date_time_record record{1, 1, 0, 12, 0, 0.0};
  std::size_t at = 0;
  const auto number = [&](std::size_t digits) {
    int value = -1;
    if (at + digits > text.size()) return value;
    int sum = 0;
    for (std::size_t i = at; i < at + digits; ++i) {
      if (text[i] < '0' || text[i] > '9') return value;
      sum = sum * 10 + (text[i] - '0');
    }
    at += digits;
    return sum;
  };
  const auto skip = [&](const std::string& any) {
    if (at < text.size() && any.find(text[at]) != std::string::npos) ++at;
  };
  const int year = number(4);
  if (year < 0) return blank;
  record.year = static_cast<Number>(year);
  skip("-");
  int fields[5];  // month, day, hour, minute, second
  for (int i = 0; i < 5; ++i) {
    fields[i] = number(2);
    if (i == 0) skip("-");
    if (i == 1) skip(" \t\n\v\f\rT");
    if (i > 1 && i < 4) skip(":");
  }
  if (at != text.size()) return blank;
  if (fields[0] > 0) record.month = static_cast<Number>(fields[0]);
  if (fields[1] > 0) record.day = static_cast<Number>(fields[1]);
  if (fields[2] >= 0) record.hour = static_cast<Number>(fields[2]);
  if (fields[3] >= 0) record.minute = static_cast<Number>(fields[3]);
  if (fields[4] >= 0) record.second = fields[4];
  return record;
}

std::string digits(int value, int width) {
  char text[32];
  std::snprintf(text, sizeof text, "%0*d", width, value);
  return text;
}

/// Writes a number as a stream with fill '0' does.
std::string written(double value) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out.fill('0');
  out.width(2);
  out << value;
  return out.str();
}

std::string iso(const Model& model, unsigned long long value) {
  if (value == 0) return "";
  const date_time_record r = dateOf(value);
  std::string text = digits(r.year, 4) + "-" + digits(r.month, 2) + "-" + digits(r.day, 2);
  if (!model.dates.useTime) return text;
  return text + model.dates.dateTimeSeparator + digits(r.hour, 2) + ":" + digits(r.minute, 2) +
         ":" + written(r.second);
}

std::string formatted(const Model& model, unsigned long long value,
                      const zn_lib::date_time_set& settings) {
  if (value == 0) return "";
  const date_time_record r = dateOf(value);
  const std::string& name = months()[r.month - 1U];
  std::string month = digits(r.month, 2);
  const std::string year = digits(r.year, 4);
  const std::string day = digits(r.day, 2);
  const char s = settings.dateSeparator;
  std::string text = year + s + month + s + day;
  if (settings.monthFormat == 1) month = name.substr(0, 3);
  if (settings.monthFormat == 2) month = name;
  if (settings.dateFormat == 0) text = month + s + day + s + year;
  if (settings.dateFormat == 1) text = day + s + month + s + year;
  if (!model.dates.useTime) return text;
  return text + settings.dateTimeSeparator + digits(r.hour, 2) + settings.timeSeparator +
         digits(r.minute, 2) + settings.timeSeparator + written(r.second);
}

zn_lib::date_time_set settingsOf(const Model& model) {
  const ModelDates& dates = model.dates;
  return {static_cast<zn_lib::DATE_FORMAT>(dates.dateFormat),
          static_cast<zn_lib::MONTH_FORMAT>(dates.monthFormat),
          dates.dateSeparator,
          dates.dateTimeSeparator,
          dates.timeSeparator,
          dates.useTime};
}

bool isNumeric(const std::string& text) {
  // A token contains neither signs nor points nor commas.
  return text.find_first_not_of("0123456789") == std::string::npos;
}

/// Rewrites a date that ends in the year.
std::string yearFirst(const Model& model, const std::string& text) {
  const ModelDates& dates = model.dates;
  std::vector<std::string> tokens(1);
  bool isEmptyAtEnd = false;
  for (const char c : text) {
    isEmptyAtEnd = std::string("-/.,:; ").find(c) != std::string::npos;
    if (isEmptyAtEnd) {
      tokens.emplace_back();
    } else {
      tokens.back() += c;
    }
  }
  if (isEmptyAtEnd) tokens.pop_back();
  if (tokens.size() < 3) return "";
  const bool isMonthFirst = dates.dateFormat == 0;
  std::string month = tokens[isMonthFirst ? 0 : 1];
  const std::string day = tokens[isMonthFirst ? 1 : 0];
  if (!isNumeric(month)) month = digits(monthNamed(month), 2);
  std::string all = tokens[2] + dates.dateSeparator + month + dates.dateSeparator + day;
  if (!dates.useTime) return all;
  if (tokens.size() > 3) all += dates.dateTimeSeparator + tokens[3];
  if (tokens.size() > 4) all += dates.timeSeparator + tokens[4];
  if (tokens.size() > 5) all += dates.timeSeparator + tokens[5];
  return all;
}

// ---- Arguments

Number anyNumber(Chooser& choose) { return static_cast<Number>(anyInt(choose)); }

std::string dateText(Chooser& choose) {
  static const std::vector<std::string> all = {"2024-03-05T14:07:09",
                                               "2024",
                                               "2024-02-30",
                                               "20240229",
                                               "hello",
                                               "",
                                               "2023-02-29",
                                               "05/03/2024",
                                               "1-2",
                                               "5 March 2024",
                                               "5.mar.2024 14:07",
                                               "xx/yy/2024",
                                               "Dec 25, 2024",
                                               "2024-13-45",
                                               "2024-03-05 14",
                                               "0000-00-00",
                                               "9999123123595",
                                               "2024-03-05T24:00",
                                               "--",
                                               "03/05/2024 14:07:09:1",
                                               "2024-03-05Z",
                                               "20240305T1407",
                                               "1582-10-15",
                                               "Feb-3-99",
                                               "0300-03-01"};
  if (choose.below(3) != 2) return choose.one(all);
  std::string text;
  for (unsigned size = choose.below(20); size > 0; --size) {
    text += "0123456789-:T ./,aJunMar"[choose.below(24)];
  }
  return text;
}

/// Returns a Julian value of the years 1 to 65535, or 0.
unsigned long long anyJulian(Chooser& choose) {
  constexpr unsigned firstDay = 1721426;
  constexpr unsigned days = 65535U * 365;
  switch (choose.below(4)) {
    case 0:
      return choose.one({0ULL, 211813488000000ULL, 212576407629000ULL, 211813444799999ULL,
                         210866760000000ULL, 212576407629500ULL});
    case 1: {
      const unsigned long long day = 2451545 + choose.below(20000);
      return day * kDay + choose.below(kDay);
    }
    default: {
      const unsigned long long day = firstDay + choose.below(days);
      return day * kDay + choose.below(kDay);
    }
  }
}

unsigned long long julianIn(Chooser& choose) {
  const unsigned long long value = anyJulian(choose);
  return value != 0 && isInexact(dateOf(value)) ? 0 : value;
}

date_time_record anyRecord(Chooser& choose) {
  date_time_record record{};
  const bool isLikely = choose.below(3) != 2;
  record.year = isLikely ? static_cast<Number>(1 + choose.below(3000)) : anyNumber(choose);
  record.month = isLikely ? static_cast<Number>(1 + choose.below(12)) : anyNumber(choose);
  record.day = isLikely ? static_cast<Number>(1 + choose.below(31)) : anyNumber(choose);
  record.hour = isLikely ? static_cast<Number>(choose.below(24)) : anyNumber(choose);
  record.minute = isLikely ? static_cast<Number>(choose.below(60)) : anyNumber(choose);
  record.second = choose.below(60000) / 1000.0;
  return record;
}

// ---- Calls

void changeSettings(Step& step) {
  Model& model = step.world.model;
  ModelDates& dates = model.dates;
  const int number = step.choose.one({0, 1, 2, 7, -1});
  const char separator = anyChar(step.choose);
  const bool on = step.choose.flag();
  switch (step.choose.below(8)) {
    case 0:
      step.call("setUseTime", on);
      zn_lib::setUseTime(dates.useTime = on);
      break;
    case 1:
      step.call("setDateFormat", number);
      zn_lib::setDateFormat(static_cast<zn_lib::DATE_FORMAT>(dates.dateFormat = number));
      break;
    case 2:
      step.call("setMonthFormat", number);
      zn_lib::setMonthFormat(static_cast<zn_lib::MONTH_FORMAT>(dates.monthFormat = number));
      break;
    case 3:
      step.call("setDateSeparator", separator);
      zn_lib::setDateSeparator(dates.dateSeparator = separator);
      break;
    case 4:
      step.call("setDateTimeSeparator", separator);
      zn_lib::setDateTimeSeparator(dates.dateTimeSeparator = separator);
      break;
    case 5:
      step.call("setTimeSeparator", separator);
      zn_lib::setTimeSeparator(dates.timeSeparator = separator);
      break;
    case 6:
      step.call("setDateTimeFormat", number, 2 - number, separator, '.', ';', on);
      dates = {number, 2 - number, separator, '.', ';', on};
      zn_lib::setDateTimeFormat(static_cast<zn_lib::DATE_FORMAT>(number),
                                static_cast<zn_lib::MONTH_FORMAT>(2 - number), separator, '.', ';',
                                on);
      break;
    default:
      step.call("defaultDateTimeFormat");
      dates = {2, 0, '-', ' ', ':', true};
      zn_lib::defaultDateTimeFormat();
  }
}

void getSettings(Step& step) {
  const ModelDates& dates = step.world.model.dates;
  step.call("getDateTimeFormat and others");
  step.same(settingsOf(step.world.model), zn_lib::getDateTimeFormat());
  step.same(dates.dateFormat, int{zn_lib::getDateFormat()});
  step.same(dates.monthFormat, int{zn_lib::getMonthFormat()});
  step.same(dates.dateSeparator, zn_lib::getDateSeparator());
  step.same(dates.dateTimeSeparator, zn_lib::getDateTimeSeparator());
  step.same(dates.timeSeparator, zn_lib::getTimeSeparator());
  step.same(dates.useTime, zn_lib::isUseTime());
}

/// Changes one of the records, which later calls use.
void changeRecord(Step& step) {
  const unsigned object = anyObject(step.choose);
  date_time_record& expected = step.world.model.records[object];
  date_time_record& actual = step.world.records[object];
  const std::string name = std::to_string(object);
  switch (step.choose.below(6)) {
    case 0:
      step.call("resetDateTime" + name);
      expected = {0, 0, 0, 12, 0, 0.0};
      zn_lib::resetDateTime(actual);
      break;
    case 1:
      step.call("validDate" + name, expected);
      repair(expected);
      zn_lib::validDate(actual);
      break;
    case 2: {
      const std::string text = dateText(step.choose);
      step.call("parseISOdate" + name, text);
      expected = parsed(text);
      zn_lib::parseISOdate(text, actual);
      break;
    }
    case 3: {
      unsigned long long value = julianIn(step.choose);
      if (value == 0) value = 212576407629000;
      step.call("julianToDate" + name, value);
      expected = dateOf(value);
      actual = zn_lib::julianToDate(value);
      break;
    }
    case 4: {
      step.call("getToday" + name);
      const std::time_t now = clockTime();
      const std::tm& today = *std::localtime(&now);
      expected = {static_cast<Number>(today.tm_mday),        static_cast<Number>(today.tm_mon + 1),
                  static_cast<Number>(today.tm_year + 1900), static_cast<Number>(today.tm_hour),
                  static_cast<Number>(today.tm_min),         static_cast<double>(today.tm_sec)};
      zn_lib::getToday(actual);
      break;
    }
    default:
      expected = actual = anyRecord(step.choose);
      step.call("record" + name + " = ", expected);
  }
  step.same(expected, actual);
}

void useRecord(Step& step) {
  const Model& model = step.world.model;
  const unsigned object = anyObject(step.choose);
  const date_time_record& expected = model.records[object];
  date_time_record& actual = step.world.records[object];
  switch (step.choose.below(4)) {
    case 0:
      step.call("isValidDateTime", expected);
      step.same(isDateTime(expected), zn_lib::isValidDateTime(actual));
      break;
    case 1:
      step.call("getDayOfYear", expected);
      step.same(dayOfYear(expected.day, expected.month, expected.year),
                zn_lib::getDayOfYear(actual));
      break;
    case 2:
      step.call("getAstronomicDay", expected);
      step.same(astronomicDay(expected.day, expected.month, expected.year),
                zn_lib::getAstronomicDay(actual));
      break;
    default:
      step.call("dateToJulian", expected);
      step.same(julian(model, expected), zn_lib::dateToJulian(actual));
  }
  step.same(expected, actual);
}

void useNumbers(Step& step) {
  const Number day = anyNumber(step.choose);
  const Number month = static_cast<Number>(step.choose.below(15));
  const Number year = anyNumber(step.choose);
  switch (step.choose.below(6)) {
    case 0:
      step.call("isValidDate", day, month, year);
      step.same(isDate(day, month, year), zn_lib::isValidDate(day, month, year));
      break;
    case 1:
      step.call("getMonthDays", month);
      step.same(lengthOf(month, true), zn_lib::getMonthDays(month));
      break;
    case 2:
      step.call("getDayOfYear", day, month, year);
      step.same(dayOfYear(day, month, year), zn_lib::getDayOfYear(day, month, year));
      break;
    case 3:
      step.call("getAstronomicDay", day, month, year);
      step.same(astronomicDay(day, month, year), zn_lib::getAstronomicDay(day, month, year));
      break;
    case 4: {
      const bool isShort = step.choose.flag();
      step.call("getMonthName", month, isShort);
      const bool isMonth = month >= 1 && month <= 12;
      const std::string name = isMonth ? months()[month - 1U] : "";
      step.same(isShort ? name.substr(0, 3) : name, zn_lib::getMonthName(month, isShort));
      break;
    }
    default: {
      const std::string text =
          step.choose.one({"mar"s, "MARCH"s, "ma"s, "Sepulchre"s, "07"s, ""s, "dec"s, "Jun\0e"s});
      step.call("getMonthNumber", text);
      step.same(monthNamed(text), zn_lib::getMonthNumber(text));
    }
  }
}

/// Returns the fractional Julian Date. The minutes count as 1/3600 of a day.
double julianDays(const date_time_record& r) {
  const double day = ((r.day + r.hour / 24.0) + r.minute / 3600.0) + r.second / 86400.0;
  const bool isLate = r.month < 3;
  const unsigned year = static_cast<Number>(r.year - (isLate ? 1 : 0));
  const unsigned month = static_cast<Number>(r.month + (isLate ? 12 : 0));
  const bool isJulian =
      year < 1582 || (year == 1582 && (month < 10 || (month == 10 && day <= 15.0)));
  const int correction =
      isJulian ? 0 : 2 - static_cast<int>(year / 100) + static_cast<int>(year / 400);
  const int whole =
      static_cast<int>(365.25 * year) + correction + static_cast<int>(30.6001 * (month + 1));
  return day + whole + 1720994.5;
}

void toJulian(Step& step) {
  const Model& model = step.world.model;
  const date_time_record record = anyRecord(step.choose);
  switch (step.choose.below(3)) {
    case 0:
      step.call("dateToJulian", record.year, record.month, record.day, record.hour, record.minute,
                record.second);
      step.same(julian(model, record),
                zn_lib::dateToJulian(record.year, record.month, record.day, record.hour,
                                     record.minute, record.second));
      break;
    case 1: {
      const std::string text = dateText(step.choose);
      step.call("dateToJulian", text);
      step.same(text.empty() ? 0 : julian(model, parsed(text)), zn_lib::dateToJulian(text));
      break;
    }
    default:
      step.call("dateToJulianDays", record);
      step.same(julianDays(record), zn_lib::dateToJulianDays(record));
  }
}

void formatJulian(Step& step) {
  const Model& model = step.world.model;
  const unsigned long long value = julianIn(step.choose);
  switch (step.choose.below(4)) {
    case 0:
      step.call("julianToISO", value);
      step.same(iso(model, value), zn_lib::julianToISO(value));
      break;
    case 1: {
      step.call("julianToYYYYMMDD", value);
      const date_time_record r = value == 0 ? date_time_record{} : dateOf(value);
      const std::string text = digits(r.year, 4) + digits(r.month, 2) + digits(r.day, 2);
      step.same(value == 0 ? "" : text, zn_lib::julianToYYYYMMDD(value));
      break;
    }
    case 2:
      step.call("formatJulianDate", value);
      step.same(formatted(model, value, settingsOf(model)), zn_lib::formatJulianDate(value));
      break;
    default: {
      zn_lib::date_time_set settings = settingsOf(model);
      settings.dateFormat = static_cast<zn_lib::DATE_FORMAT>(step.choose.below(4));
      settings.monthFormat = static_cast<zn_lib::MONTH_FORMAT>(step.choose.below(4));
      settings.useTime = step.choose.flag();
      step.call("formatJulianDate", value, settings);
      step.same(formatted(model, value, settings), zn_lib::formatJulianDate(value, settings));
    }
  }
}

void readText(Step& step) {
  const std::string text = dateText(step.choose);
  if (step.choose.flag()) {
    step.call("dateToISO", text);
    step.same(yearFirst(step.world.model, text), zn_lib::dateToISO(text));
  } else {
    step.call("isValidISOdate", text);
    step.same(isDateTime(parsed(text)), zn_lib::isValidISOdate(text));
  }
}

void formatHours(Step& step) {
  const double hours = anyDouble(step.choose);
  step.call("hourFormat", hours);
  const std::string minutes = written(std::trunc((hours - std::floor(hours)) * 60));
  step.same(written(std::trunc(hours)) + ":" + minutes, zn_lib::hourFormat(hours));
}

void today(Step& step) {
  step.call("getTodayAsISO");
  step.same(todayAsISO(step.world.model), zn_lib::getTodayAsISO());
}

void advanceClock(Step& step) {
  const int seconds = step.choose.one({1, 60, 86399, 31556952});
  step.call("the clock advances by", seconds);
  setClock(clockTime() + seconds);
}

}  // namespace

std::string todayAsISO(const Model& model) {
  const std::time_t now = clockTime();
  const std::tm& today = *std::localtime(&now);
  std::string text = digits(today.tm_year + 1900, 4) + "-" + digits(today.tm_mon + 1, 2) + "-" +
                     digits(today.tm_mday, 2);
  if (!model.dates.useTime) return text;
  return text + " " + digits(today.tm_hour, 2) + ":" + digits(today.tm_min, 2) + ":" +
         digits(today.tm_sec, 2);
}

void addDates(Kinds& kinds) {
  kinds.push_back(
      {"setDateFormat setMonthFormat setDateSeparator setDateTimeSeparator "
       "setTimeSeparator setUseTime setDateTimeFormat defaultDateTimeFormat",
       changeSettings});
  kinds.push_back(
      {"getDateFormat getMonthFormat getDateSeparator getDateTimeSeparator "
       "getTimeSeparator isUseTime getDateTimeFormat",
       getSettings, 3});
  kinds.push_back({"resetDateTime validDate parseISOdate julianToDate getToday", changeRecord});
  kinds.push_back({"isValidDateTime getDayOfYear getAstronomicDay dateToJulian", useRecord});
  kinds.push_back({"isValidDate getMonthDays getMonthName getMonthNumber", useNumbers});
  kinds.push_back({"dateToJulian dateToJulianDays", toJulian});
  kinds.push_back({"julianToISO julianToYYYYMMDD formatJulianDate", formatJulian, 12});
  kinds.push_back({"dateToISO isValidISOdate", readText});
  kinds.push_back({"hourFormat", formatHours, 3});
  kinds.push_back({"getTodayAsISO", today, 3});
  kinds.push_back({"", advanceClock, 2});
}

}  // namespace histories
