#include "dates.h"

#include <tokenizer.h>
#include <zn_str.h>

#include <map>
#include <optional>

#include "errors.h"
#include "text.h"

namespace almanac {
namespace {

const std::map<std::string, zn_lib::DATE_FORMAT> kOrders = {{"dmy", zn_lib::DAY_MONTH_YEAR},
                                                            {"mdy", zn_lib::MONTH_DAY_YEAR},
                                                            {"ymd", zn_lib::YEAR_MONTH_DAY}};

const std::map<std::string, DateStyle> kStyles = {{"iso", DateStyle::kIso},
                                                  {"number", DateStyle::kNumber},
                                                  {"short", DateStyle::kShortName},
                                                  {"full", DateStyle::kFullName}};

constexpr int kLastYear = 9999;
constexpr std::size_t kYearDigits = 4;

/// A length that no date reaches. It also bounds the recursion of the pattern that splits a date.
constexpr std::size_t kLongestDate = 80;

Error unreadable(const std::string& text) { return Error(Problem::kUnreadableDate, {quote(text)}); }

Error impossible(const std::string& text) { return Error(Problem::kNoSuchDate, {quote(text)}); }

std::string zeroFilled(int number, int width) {
  return zn_lib::rightPad(std::to_string(number), width, '0');
}

/// Returns true if `text` is the date of `record`, or only its year or its year and month, and has
/// either all hyphens or none. parseISOdate accepts more: times of day, single hyphens, and zeros
/// for January and for the first day.
bool isSpellingOf(const std::string& text, const zn_lib::date_time_record& record) {
  const std::string year = zeroFilled(record.year, kYearDigits);
  const std::string month = zeroFilled(record.month, 2);
  const std::string day = zeroFilled(record.day, 2);
  return text == year || text == year + month || text == year + month + day ||
         text == year + "-" + month || text == year + "-" + month + "-" + day;
}

/// Returns the month whose English name begins with `word`, which must have at least three letters.
/// Returns nothing if there is no such month.
std::optional<int> monthOfName(const std::string& word) {
  constexpr std::size_t shortestName = 3;
  if (word.size() < shortestName) return {};
  // Every unknown word has the month number 12, so compare the word with the name.
  const unsigned short month = zn_lib::getMonthNumber(word);
  const std::string name = zn_lib::stringToLower(zn_lib::getMonthName(month, false));
  if (name.compare(0, word.size(), zn_lib::stringToLower(word)) != 0) return {};
  return month;
}

/// Holds the index of each field of a date among its three tokens.
struct FieldOrder {
  std::size_t year;
  std::size_t month;
  std::size_t day;
};

FieldOrder fieldOrder(zn_lib::DATE_FORMAT order) {
  if (order == zn_lib::DAY_MONTH_YEAR) return {2, 1, 0};
  if (order == zn_lib::MONTH_DAY_YEAR) return {2, 0, 1};
  return {0, 1, 2};
}

unsigned long long readFreeForm(const std::string& text) {
  const std::string marks = "-/.,";
  // A mark at the end is not visible in the tokens.
  if (text.empty() || text.size() > kLongestDate || marks.find(text.back()) != std::string::npos) {
    throw unreadable(text);
  }
  zn_lib::Tokenizer fields;
  if (fields.splitMulti(text, " *[" + marks + "] *| +") != 3) throw unreadable(text);

  constexpr int mostOfTwoDigits = 99;
  const FieldOrder order = fieldOrder(zn_lib::getDateFormat());
  const std::string yearText = fields.getToken(order.year);
  const std::string monthText = fields.getToken(order.month);
  const std::optional<int> year = toWholeNumber(yearText, 0, kLastYear);
  const std::optional<int> day = toWholeNumber(fields.getToken(order.day), 0, mostOfTwoDigits);
  std::optional<int> month = toWholeNumber(monthText, 0, mostOfTwoDigits);
  if (!month) month = monthOfName(monthText);
  if (!year || yearText.size() != kYearDigits || !month || !day) throw unreadable(text);

  const unsigned long long julian = noonOf(*year, *month, *day);
  if (*year == 0 || julian == 0) throw impossible(text);
  return julian;
}

}  // namespace

bool isOrder(const std::string& word) { return kOrders.count(word) != 0; }

bool isStyle(const std::string& word) { return kStyles.count(word) != 0; }

DateStyle styleOf(const std::string& word) { return kStyles.at(word); }

void setDateStyle(const std::string& orderWord, DateStyle style) {
  const zn_lib::DATE_FORMAT order = kOrders.at(orderWord);
  zn_lib::MONTH_FORMAT month = zn_lib::MONTH_NUMBER;
  if (style == DateStyle::kShortName) month = zn_lib::MONTH_SHORT_NAME;
  if (style == DateStyle::kFullName) month = zn_lib::MONTH_FULL_NAME;
  // With the year first, the library always writes months as numbers.
  const bool hasName = month != zn_lib::MONTH_NUMBER && order != zn_lib::YEAR_MONTH_DAY;
  zn_lib::setDateTimeFormat(order, month, hasName ? ' ' : '/', ' ', ':', false);
}

unsigned long long noonOf(int year, int month, int day) {
  return zn_lib::dateToJulian(year, month, day, 12, 0, 0.0);
}

unsigned long long readDate(const std::string& text) {
  const std::string date = zn_lib::allTrim(text);
  zn_lib::date_time_record record;
  zn_lib::parseISOdate(date, record);
  // Year 0 is the library's sign that the text is no ISO 8601 date.
  if (record.year == 0) return readFreeForm(date);
  if (!zn_lib::isValidISOdate(date)) throw impossible(date);
  if (!isSpellingOf(date, record)) throw unreadable(date);
  return zn_lib::dateToJulian(record);
}

unsigned long long today() { return readDate(zn_lib::getTodayAsISO()); }

std::string formatDate(unsigned long long julian, DateStyle style) {
  return style == DateStyle::kIso ? zn_lib::julianToISO(julian) : zn_lib::formatJulianDate(julian);
}

int dateWidth(DateStyle style) {
  // September has the longest name.
  return static_cast<int>(formatDate(noonOf(2000, 9, 30), style).size());
}

unsigned long long lastDay() { return noonOf(kLastYear, 12, 31); }

}  // namespace almanac
