#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <limits>
#include <string>

#include "environment.h"
#include "text.h"

namespace almanac {
namespace {

std::optional<std::size_t> columnsOfOutput() {
  const auto columns = toWholeNumber(variable("COLUMNS"), 1, std::numeric_limits<int>::max());
  if (columns) return static_cast<std::size_t>(*columns);
  winsize size = {};
  // A terminal that does not know its width, such as a serial line, has no columns.
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return {};
  return size.ws_col;
}

}  // namespace

Terminal terminalOfOutput() {
  if (isatty(STDOUT_FILENO) == 0) return {};
  const std::string type = variable("TERM");
  return {columnsOfOutput(), variable("NO_COLOR").empty() && !type.empty() && type != "dumb"};
}

}  // namespace almanac
