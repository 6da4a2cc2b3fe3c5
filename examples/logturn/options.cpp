#include "options.h"

#include <getopt.h>

#include "errors.h"

namespace logturn {
namespace {

/// Numbers the long options above all characters, since getopt_long reports unknown short options
/// as characters.
enum OptionCode { kKeep = 256, kDryRun, kSave, kVerbose, kHelpOption, kVersion };

const option kLongOptions[] = {{"keep", required_argument, nullptr, kKeep},
                               {"dry-run", no_argument, nullptr, kDryRun},
                               {"save", no_argument, nullptr, kSave},
                               {"verbose", no_argument, nullptr, kVerbose},
                               {"help", no_argument, nullptr, kHelpOption},
                               {"version", no_argument, nullptr, kVersion},
                               {nullptr, 0, nullptr, 0}};

/// Returns the error for the option that getopt_long has just rejected.
Error rejected(char* argv[]) {
  // For short options in a group such as "-abc", getopt_long may not have moved past the argument.
  const bool isShort = optopt > 0 && optopt < kKeep;
  const std::string name =
      isShort ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
  return Error(Problem::kInvalidOption, {quote(name)});
}

}  // namespace

Options readOptions(int argc, char* argv[]) {
  Options options;
  opterr = 0;
  for (;;) {
    // The colon makes getopt_long return ':' for a missing argument.
    const int code = getopt_long(argc, argv, ":", kLongOptions, nullptr);
    if (code == -1) break;
    switch (code) {
      case kKeep:
        options.keep = optarg;
        break;
      case kDryRun:
        options.dryRun = true;
        break;
      case kSave:
        options.save = true;
        break;
      case kVerbose:
        options.verbose = true;
        break;
      case kHelpOption:
        options.action = Action::kPrintHelp;
        return options;
      case kVersion:
        options.action = Action::kPrintVersion;
        return options;
      case ':':
        throw Error(Problem::kMissingArgument, {quote(argv[optind - 1])});
      default:
        throw rejected(argv);
    }
  }
  options.files.assign(argv + optind, argv + argc);
  if (options.dryRun && options.save) throw Error(Problem::kDryRunSaves);
  if (options.files.empty() && !options.save) throw Error(Problem::kNoFile);
  return options;
}

const char kHelp[] =
    "Usage: logturn [OPTION]... FILE...\n"
    "       logturn --save [--keep N]\n"
    "\n"
    "Turns each log FILE: its contents become the copy FILE.1, and FILE is then empty.\n"
    "Earlier copies move up, FILE.1 to FILE.2 and so on, and the oldest are removed.\n"
    "A program that keeps FILE open in append mode continues in the empty FILE.\n"
    "Prints a row for each file that is turned or removed.\n"
    "\n"
    "  --keep N   the number of copies to keep, 1 to 1000000; default 7\n"
    "  --dry-run  print what would be done, and change nothing\n"
    "  --save     keep N for later runs\n"
    "  --verbose  report each step\n"
    "  --help     print this text\n"
    "  --version  print the version\n"
    "\n"
    "If logturn is killed or the disk is full, everything is still in FILE or in a\n"
    "copy, and the next run finishes the job. --save keeps settings in\n"
    "$XDG_CONFIG_HOME/logturn.cfg, or else ~/.config/logturn.cfg.\n"
    "\n"
    "Exit status: 0 on success, 1 if a value is invalid, or if a file, the settings\n"
    "or the output fails, 2 if the command line is invalid.\n";

}  // namespace logturn
