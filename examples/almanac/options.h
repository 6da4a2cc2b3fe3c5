/// Reads the command line.
#ifndef ALMANAC_OPTIONS_H
#define ALMANAC_OPTIONS_H

#include <optional>
#include <string>

#include "settings.h"

namespace almanac {

enum class Action { kDraw, kListSettings, kPrintHelp, kPrintVersion };

/// Holds the options as they were given. Their values are checked later, once all options are known
/// to be valid.
struct Options {
  Action action = Action::kDraw;
  Settings settings;
  std::string places = "/usr/share/zoneinfo/zone.tab";
  std::optional<std::string> from;
  std::string days = "7";
  std::optional<std::string> output;
  std::optional<std::string> svg;  ///< "-" for standard output
  bool backup = false;
  bool number = false;
  bool save = false;
  bool verbose = false;
};

/// Reads the options, up to the first --help or --version. Throws Error.
Options readOptions(int argc, char* argv[]);

/// The text that --help prints.
extern const char kHelp[];

}  // namespace almanac

#endif  // ALMANAC_OPTIONS_H
