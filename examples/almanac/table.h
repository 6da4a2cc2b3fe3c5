/// The almanac's table: one row a day.
#ifndef ALMANAC_TABLE_H
#define ALMANAC_TABLE_H

#include <ostream>

#include "request.h"

namespace almanac {

/// Writes the table; a title and column headings precede it when the library's verbose flag is on.
/// The stream is not checked.
void printTable(std::ostream& out, const Request& request);

}  // namespace almanac

#endif  // ALMANAC_TABLE_H
