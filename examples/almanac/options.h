/// The command line.
#ifndef ALMANAC_OPTIONS_H
#define ALMANAC_OPTIONS_H

#include <zn_datetime.h>

#include <optional>
#include <string>

#include "dates.h"

namespace almanac {

enum class Action { kPrintTable, kPrintHelp, kPrintVersion };

/// What the command line says. Values are as given: they are read, and refused, only where the
/// options as such are right.
struct Options {
  Action action = Action::kPrintTable;
  std::optional<std::string> place;
  std::optional<std::string> latitude;
  std::string places = "/usr/share/zoneinfo/zone.tab";
  std::optional<std::string> from;
  std::string days = "7";
  zn_lib::DATE_FORMAT order = zn_lib::YEAR_MONTH_DAY;
  DateStyle style = DateStyle::kIso;
  bool verbose = false;
};

/// Reads the options, up to the first that asks for help or for the version. Throws UsageError.
Options readOptions(int argc, char* argv[]);

/// What --help prints.
extern const char kHelp[];

}  // namespace almanac

#endif  // ALMANAC_OPTIONS_H
