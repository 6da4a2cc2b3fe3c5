/// The command line.
#ifndef ALMANAC_OPTIONS_H
#define ALMANAC_OPTIONS_H

#include <optional>
#include <string>

#include "settings.h"

namespace almanac {

enum class Action { kDraw, kListSettings, kPrintHelp, kPrintVersion };

/// What the command line says. Values are as given: they are read, and refused, only where the
/// options as such are right.
struct Options {
  Action action = Action::kDraw;
  Settings settings;
  std::string places = "/usr/share/zoneinfo/zone.tab";
  std::optional<std::string> from;
  std::string days = "7";
  std::optional<std::string> output;
  std::optional<std::string> svg;
  bool backup = false;
  bool number = false;
  bool save = false;
  bool verbose = false;
};

/// Reads the options, up to the first that asks for help or for the version. Throws Error.
Options readOptions(int argc, char* argv[]);

/// What --help prints.
extern const char kHelp[];

}  // namespace almanac

#endif  // ALMANAC_OPTIONS_H
