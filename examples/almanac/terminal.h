/// Describes the terminal that shows the table.
#ifndef ALMANAC_TERMINAL_H
#define ALMANAC_TERMINAL_H

#include <cstddef>
#include <optional>

namespace almanac {

/// Holds the limits of a terminal. By default they are those of a file.
struct Terminal {
  std::optional<std::size_t> columns;  ///< no value if a row can have any width
  bool hasColours = false;
};

/// Returns the terminal of standard output, or that of a file if standard output is not a terminal.
///
/// A positive number in the environment variable COLUMNS replaces the width of the terminal. There
/// are no colours if NO_COLOR is set and not empty, or if TERM is missing, empty or "dumb".
Terminal terminalOfOutput();

}  // namespace almanac

#endif  // ALMANAC_TERMINAL_H
