/// The almanac's table: one row a day.
#ifndef ALMANAC_TABLE_H
#define ALMANAC_TABLE_H

#include <string>

#include "dates.h"

namespace almanac {

/// What a table shows.
struct TableRequest {
  std::string place;             ///< empty when only the latitude is known
  double latitude = 0.0;         ///< degrees, north positive
  unsigned long long first = 0;  ///< the first day, a Julian value at noon
  int days = 0;                  ///< number of rows
  DateStyle style = DateStyle::kIso;
};

/// Writes the table to standard output; a title and column headings precede it when the library's
/// verbose flag is on. The stream is not checked.
void printTable(const TableRequest& request);

}  // namespace almanac

#endif  // ALMANAC_TABLE_H
