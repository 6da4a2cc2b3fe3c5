/// Reads the command line.
#ifndef LOGTURN_OPTIONS_H
#define LOGTURN_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace logturn {

enum class Action { kTurn, kPrintHelp, kPrintVersion };

struct Options {
  Action action = Action::kTurn;
  std::optional<std::string> keep;  ///< not checked yet
  bool dryRun = false;
  bool save = false;
  bool verbose = false;
  std::vector<std::string> files;
};

/// Reads the options, up to the first --help or --version. Throws Error.
Options readOptions(int argc, char* argv[]);

/// The text that --help prints.
extern const char kHelp[];

}  // namespace logturn

#endif  // LOGTURN_OPTIONS_H
