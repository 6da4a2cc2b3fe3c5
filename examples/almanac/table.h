/// Prints the almanac's table, one row for each day.
#ifndef ALMANAC_TABLE_H
#define ALMANAC_TABLE_H

#include <ostream>

#include "request.h"

namespace almanac {

/// Writes the table. A title and column headings precede it if the library's verbose flag is on.
/// The caller checks the stream.
void printTable(std::ostream& out, const Request& request);

}  // namespace almanac

#endif  // ALMANAC_TABLE_H
