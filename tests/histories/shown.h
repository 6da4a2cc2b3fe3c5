/// Arguments and answers as text that is the same on every machine.
#ifndef HISTORIES_SHOWN_H
#define HISTORIES_SHOWN_H

#include <zn_datetime.h>

#include <cstdio>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace histories {

inline std::string shown(const std::string& text) {
  std::string all = "\"";
  for (const char c : text) {
    const unsigned byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte < 127 && c != '\\' && c != '"') {
      all += c;
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%03o", byte);
      all += escape;
    }
  }
  return all + '"';
}

inline std::string shown(const char* text) {
  return text == nullptr ? "nullptr" : shown(std::string(text));
}

inline std::string shown(bool value) { return value ? "true" : "false"; }
inline std::string shown(char c) { return "'" + shown(std::string(1, c)) + "'"; }

/// Writes all digits, in the classic locale, and a NaN without its sign, which differs between
/// processors.
inline std::string shown(double value) {
  if (value != value) return "nan";
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out.precision(17);
  out << value;
  return out.str();
}

template <class Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
std::string shown(Number value) {
  return std::to_string(value);
}

inline std::string shown(const zn_lib::date_time_record& record) {
  return shown(record.year) + "-" + shown(record.month) + "-" + shown(record.day) + " " +
         shown(record.hour) + ":" + shown(record.minute) + ":" + shown(record.second);
}

inline std::string shown(const zn_lib::date_time_set& settings) {
  return shown(int{settings.dateFormat}) + " " + shown(int{settings.monthFormat}) + " " +
         shown(settings.dateSeparator) + shown(settings.dateTimeSeparator) +
         shown(settings.timeSeparator) + " " + shown(settings.useTime);
}

template <class Element>
std::string shown(const std::vector<Element>& all) {
  std::string text = "{";
  for (const Element& element : all) text += (text.size() == 1 ? "" : ", ") + shown(element);
  return text + "}";
}

template <class Key, class Value, class Order>
std::string shown(const std::map<Key, Value, Order>& all) {
  std::string text = "{";
  for (const auto& [key, value] : all) {
    text += (text.size() == 1 ? "" : ", ") + shown(key) + ": " + shown(value);
  }
  return text + "}";
}

}  // namespace histories

#endif  // HISTORIES_SHOWN_H
