#include "options.h"

#include <getopt.h>

#include <map>

#include "errors.h"
#include "text.h"

namespace almanac {
namespace {

/// Above all characters: a value below these is the character of an unknown short option.
enum OptionCode {
  kPlace = 256,
  kPlaces,
  kLatitude,
  kFrom,
  kOrder,
  kDays,
  kFormat,
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
                               {"verbose", no_argument, nullptr, kVerbose},
                               {"help", no_argument, nullptr, kHelpOption},
                               {"version", no_argument, nullptr, kVersion},
                               {nullptr, 0, nullptr, 0}};

const std::map<std::string, zn_lib::DATE_FORMAT> kOrders = {{"dmy", zn_lib::DAY_MONTH_YEAR},
                                                            {"mdy", zn_lib::MONTH_DAY_YEAR},
                                                            {"ymd", zn_lib::YEAR_MONTH_DAY}};

const std::map<std::string, DateStyle> kStyles = {{"iso", DateStyle::kIso},
                                                  {"number", DateStyle::kNumber},
                                                  {"short", DateStyle::kShortName},
                                                  {"full", DateStyle::kFullName}};

UsageError usageError(const std::string& what) { return UsageError(what + "; try --help"); }

template <typename Value>
Value lookUp(const std::map<std::string, Value>& words, const std::string& option,
             const std::string& word) {
  const auto found = words.find(word);
  if (found == words.end()) throw usageError("unknown word " + quoted(word) + " for " + option);
  return found->second;
}

/// The error for what getopt_long has just refused.
UsageError refused(char* argv[]) {
  if (optopt >= kPlace) return usageError("no value is taken by " + quoted(argv[optind - 1]));
  // For one of several letters behind a hyphen, the argument itself may lie ahead.
  const std::string name =
      optopt == 0 ? argv[optind - 1] : std::string("-") + static_cast<char>(optopt);
  return usageError("unknown or ambiguous option " + quoted(name));
}

}  // namespace

Options readOptions(int argc, char* argv[]) {
  Options options;
  opterr = 0;
  for (;;) {
    // The colon asks for an answer of its own where an argument is missing.
    const int code = getopt_long(argc, argv, ":", kLongOptions, nullptr);
    if (code == -1) break;
    switch (code) {
      case kPlace:
        options.place = optarg;
        break;
      case kPlaces:
        options.places = optarg;
        break;
      case kLatitude:
        options.latitude = optarg;
        break;
      case kFrom:
        options.from = optarg;
        break;
      case kOrder:
        options.order = lookUp(kOrders, "--order", optarg);
        break;
      case kDays:
        options.days = optarg;
        break;
      case kFormat:
        options.style = lookUp(kStyles, "--format", optarg);
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
        throw usageError("an argument is missing behind " + quoted(argv[optind - 1]));
      default:
        throw refused(argv);
    }
  }
  if (optind < argc) throw usageError("stray argument " + quoted(argv[optind]));
  if (options.place.has_value() == options.latitude.has_value()) {
    throw usageError("one of --place and --latitude is needed, and one only");
  }
  return options;
}

const char kHelp[] =
    "Usage: almanac --place NAME [OPTION]...\n"
    "       almanac --latitude DEGREES [OPTION]...\n"
    "\n"
    "Prints one row a day: the date, the length of the day, its change since the day\n"
    "before in minutes and seconds, the moon's phase and the lit share of its disc,\n"
    "and a bar with a mark for each hour of daylight. The moon is that of 12:00 UT.\n"
    "Day lengths hold from March 1900 to February 2100 and drift before and after.\n"
    "\n"
    "  --place NAME        a place from the table of places, \"Europe/Amsterdam\"\n"
    "  --places FILE       that table; default /usr/share/zoneinfo/zone.tab\n"
    "  --latitude DEGREES  decimal degrees, -90 to 90, north positive\n"
    "  --from DATE         the first day; default today\n"
    "  --order ORDER       the order of a date's fields: dmy, mdy or ymd; default ymd\n"
    "  --days N            the number of days, 1 to 36600; default 7\n"
    "  --format FORMAT     how dates are written: iso, number, short or full; the\n"
    "                      latter three in the order of --order, with the month as\n"
    "                      a number, a short name or a full name; default iso\n"
    "  --verbose           print a title and column headings as well\n"
    "  --help              print this text\n"
    "  --version           print the version\n"
    "\n"
    "DATE is an ISO 8601 date (2024-03-05, 20240305, 2024-03 or 2024) or has its\n"
    "fields in the order of --order (5 March 2024 or 5/3/2024 with dmy, Dec 25, 2024\n"
    "with mdy, 2024/3/5 with ymd). Years are 0001 to 9999, always with four digits.\n"
    "In the order ymd, months are written as numbers whatever the format.\n"
    "\n"
    "Exit status: 0 for success, 1 when a value, a file or the output fails, 2 for a\n"
    "command line that cannot be understood.\n";

}  // namespace almanac
