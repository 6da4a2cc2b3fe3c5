/// Prints the almanac's table, one row for each day.
#ifndef ALMANAC_TABLE_H
#define ALMANAC_TABLE_H

#include <ostream>

#include "request.h"
#include "terminal.h"

namespace almanac {

/// Writes the table. A title and column headings precede it if the library's verbose flag is on.
///
/// The bar has one mark for each hour. On a terminal that is too narrow for it, a mark stands for
/// two, three or four hours, or the bar is left out. The caller checks the stream.
void printTable(std::ostream& out, const Request& request, const Terminal& terminal);

}  // namespace almanac

#endif  // ALMANAC_TABLE_H
