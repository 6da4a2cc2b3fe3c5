/// Reference model of the dates that are read by a regular expression.
#ifndef REFERENCE_DATES_H
#define REFERENCE_DATES_H

#include <zn_datetime.h>

#include <array>
#include <cstddef>
#include <regex>
#include <string>

#include "reference_engine.h"

namespace reference {

/// Year, month, day, hour, minute and second.
using DateFields = std::array<double, 6>;

inline DateFields fieldsOf(const zn_lib::date_time_record& record) {
  return {static_cast<double>(record.year),   static_cast<double>(record.month),
          static_cast<double>(record.day),    static_cast<double>(record.hour),
          static_cast<double>(record.minute), record.second};
}

/// Returns the six groups that `pattern` captures. A missing month or day is 1, as is one of 0. A
/// missing hour is 12. Texts that do not match have no year.
inline DateFields fieldsByPattern(const std::string& text, const Engine& pattern) {
  DateFields fields = {0, 0, 0, 12, 0, 0};
  std::smatch match;
  if (std::regex_match(text, match, pattern)) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (match[i + 1].length() > 0) fields[i] = std::stoi(match[i + 1].str());
    }
  }
  if (fields[1] == 0) fields[1] = 1;
  if (fields[2] == 0) fields[2] = 1;
  return fields;
}

}  // namespace reference

#endif  // REFERENCE_DATES_H
