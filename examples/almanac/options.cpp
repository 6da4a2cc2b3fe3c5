#include "options.h"

#include <getopt.h>

#include "dates.h"
#include "errors.h"
#include "text.h"

namespace almanac {
namespace {

/// Numbers the long options above all characters, since getopt_long reports short options as
/// characters.
enum OptionCode {
  kPlace = 256,
  kPlaces,
  kLatitude,
  kFrom,
  kOrder,
  kDays,
  kFormat,
  kOutput,
  kSvg,
  kBackup,
  kNumber,
  kSave,
  kListSettings,
  kVerbose,
  kHelpOption,
  kVersion
};

const option kLongOptions[] = {{"place", required_argument, nullptr, kPlace},
                               {"places", required_argument, nullptr, kPlaces},
                               {"latitude", required_argument, nullptr, kLatitude},
                               {"from", required_argument, nullptr, kFrom},
                               {"order", required_argument, nullptr, kOrder},
                               {"days", required_argument, nullptr, kDays},
                               {"format", required_argument, nullptr, kFormat},
                               {"output", required_argument, nullptr, kOutput},
                               {"svg", required_argument, nullptr, kSvg},
                               {"backup", no_argument, nullptr, kBackup},
                               {"number", no_argument, nullptr, kNumber},
                               {"save", no_argument, nullptr, kSave},
                               {"settings", no_argument, nullptr, kListSettings},
                               {"verbose", no_argument, nullptr, kVerbose},
                               {"help", no_argument, nullptr, kHelpOption},
                               {"version", no_argument, nullptr, kVersion},
                               {nullptr, 0, nullptr, 0}};

Error unknownWord(const std::string& word, const std::string& option) {
  return Error(Problem::kUnknownWord, {quote(word), option});
}

/// Returns the error for the option that getopt_long has just rejected.
Error rejected(char* argv[]) {
  if (optopt >= kPlace) return Error(Problem::kUnexpectedArgument, {quote(argv[optind - 1])});
  // For short options in a group such as "-abc", getopt_long may not have moved past the argument.
  const std::string name =
      optopt == 0 ? argv[optind - 1] : std::string("-") + static_cast<char>(optopt);
  return Error(Problem::kUnknownOption, {quote(name)});
}

}  // namespace

Options readOptions(int argc, char* argv[]) {
  Options options;
  Settings& settings = options.settings;
  opterr = 0;
  for (;;) {
    // The colon makes getopt_long return ':' for a missing argument.
    const int code = getopt_long(argc, argv, ":hV", kLongOptions, nullptr);
    if (code == -1) break;
    switch (code) {
      case kPlace:
        settings.place = optarg;
        break;
      case kPlaces:
        options.places = optarg;
        break;
      case kLatitude:
        settings.latitude = optarg;
        break;
      case kFrom:
        options.from = optarg;
        break;
      case kOrder:
        settings.order = optarg;
        if (!isOrder(optarg)) throw unknownWord(optarg, "--order");
        break;
      case kDays:
        options.days = optarg;
        break;
      case kFormat:
        settings.format = optarg;
        if (!isStyle(optarg)) throw unknownWord(optarg, "--format");
        break;
      case kOutput:
        options.output = optarg;
        break;
      case kSvg:
        options.svg = optarg;
        break;
      case kBackup:
        options.backup = true;
        break;
      case kNumber:
        options.number = true;
        break;
      case kSave:
        options.save = true;
        break;
      case kListSettings:
        options.action = Action::kListSettings;
        break;
      case kVerbose:
        options.verbose = true;
        break;
      case 'h':
      case kHelpOption:
        options.action = Action::kPrintHelp;
        return options;
      case 'V':
      case kVersion:
        options.action = Action::kPrintVersion;
        return options;
      case ':':
        throw Error(Problem::kMissingArgument, {quote(argv[optind - 1])});
      default:
        throw rejected(argv);
    }
  }
  if (optind < argc) throw Error(Problem::kStrayArgument, {quote(argv[optind])});
  if (settings.place && settings.latitude) throw Error(Problem::kNotOnePlace);
  const bool isPicturePrinted = options.svg == "-";
  if (isPicturePrinted && options.output) throw Error(Problem::kTwoOutputs);
  const bool hasFile = options.output || (options.svg && !isPicturePrinted);
  if ((options.backup || options.number) && !hasFile) throw Error(Problem::kNoFileToKeep);
  return options;
}

const char kHelp[] =
    "Usage: almanac --place NAME [OPTION]...\n"
    "       almanac --latitude DEGREES [OPTION]...\n"
    "       almanac [OPTION]...                      with the settings of --save\n"
    "\n"
    "Prints one row a day: the date, the length of the day, its change since the day\n"
    "before in minutes and seconds, the moon's phase and the lit part of its disc,\n"
    "and a bar with a mark for each hour of daylight. The moon is that of 12:00 UT.\n"
    "Day lengths are valid from March 1900 to February 2100 and drift outside.\n"
    "\n"
    "  --place NAME        a place from the table of places, \"Europe/Amsterdam\", or its\n"
    "                      last parts if no other place has them, \"amsterdam\"\n"
    "  --places FILE       the table of places; default /usr/share/zoneinfo/zone.tab\n"
    "  --latitude DEGREES  decimal degrees, -90 to 90, north positive\n"
    "  --from DATE         the first day; default today\n"
    "  --order ORDER       the order of a date's fields: dmy, mdy or ymd; default ymd\n"
    "  --days N            the number of days, 1 to 36600; default 7\n"
    "  --format FORMAT     how dates are written: iso, number, short or full; the\n"
    "                      latter three in the order of --order, with the month as\n"
    "                      a number, a short name or a full name; default iso\n"
    "  --output FILE       write the table to FILE\n"
    "  --svg FILE          draw the year of the first day to FILE instead: the length\n"
    "                      of its days and the quarters of the moon; with --output,\n"
    "                      write both files; \"-\" for standard output\n"
    "  --backup            move a FILE that exists to its backup, \"FILE~\"\n"
    "  --number            if FILE exists, write to a numbered name and print it; the\n"
    "                      name may derive from another file beside FILE\n"
    "  --save              keep place or latitude, order and format for later runs\n"
    "  --settings          print the kept settings instead of the table\n"
    "  --verbose           print a title and column headings; report written files\n"
    "  -h, --help          print this text\n"
    "  -V, --version       print the version\n"
    "\n"
    "DATE is an ISO 8601 date (2024-03-05, 20240305, 2024-03 or 2024) or has its\n"
    "fields in the order of --order (5 March 2024 or 5/3/2024 with dmy, Dec 25, 2024\n"
    "with mdy, 2024/3/5 with ymd). Years are 0001 to 9999, always with four digits.\n"
    "In the order ymd, months are written as numbers whatever the format.\n"
    "\n"
    "A terminal shows daylight in colour unless NO_COLOR is set or TERM is \"dumb\". If\n"
    "it is narrower than the table, a mark of the bar stands for two, three or four\n"
    "hours, or the bar is left out. COLUMNS replaces the width of the terminal.\n"
    "\n"
    "Without --backup and --number, almanac asks before it overwrites a file. --save\n"
    "keeps settings in $XDG_CONFIG_HOME/almanac.cfg, or else ~/.config/almanac.cfg.\n"
    "\n"
    "Exit status: 0 on success, 1 if a value is invalid, if a file or the output\n"
    "fails or if a file was kept as it was, 2 if the command line is invalid.\n";

}  // namespace almanac
