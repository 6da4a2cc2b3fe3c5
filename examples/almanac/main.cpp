/// almanac: day length and moon, one row a day. A small host of the library.
#include <zn_common.h>
#include <zn_output.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

#include "dates.h"
#include "errors.h"
#include "options.h"
#include "places.h"
#include "table.h"
#include "text.h"

namespace almanac {
namespace {

constexpr int kMostDays = 36600;

int readDays(const std::string& text) {
  const std::optional<int> days = toWholeNumber(text, 1, kMostDays);
  if (!days) {
    throw Error("the number of days is 1 to " + std::to_string(kMostDays) + ", not " +
                quoted(text));
  }
  return *days;
}

double readLatitude(const std::string& text) {
  constexpr double pole = 90.0;
  const std::optional<double> latitude = toNumber(text, -pole, pole);
  if (!latitude) throw Error("the latitude is -90 to 90 degrees, not " + quoted(text));
  return *latitude;
}

/// Reads the values of the options; all that can be refused is refused here, before the first row
/// is printed.
TableRequest makeRequest(const Options& options) {
  TableRequest request;
  request.style = options.style;
  request.days = readDays(options.days);
  request.first = options.from ? readDate(*options.from) : today();
  const unsigned long long daysLeft = (lastDay() - request.first) / kMillisecondsPerDay + 1;
  if (static_cast<unsigned long long>(request.days) > daysLeft) {
    throw Error("the run of days goes beyond 31 December 9999");
  }
  if (options.place) {
    request.place = *options.place;
    request.latitude = latitudeOf(*options.place, options.places);
  } else {
    request.latitude = readLatitude(*options.latitude);
  }
  return request;
}

void run(const Options& options) {
  switch (options.action) {
    case Action::kPrintHelp:
      std::cout << kHelp;
      break;
    case Action::kPrintVersion:
      std::cout << "almanac, with zn_udf " << zn_udf_1VersionNumber << '\n';
      break;
    case Action::kPrintTable:
      zn_lib::setVerbose(options.verbose);
      setDateStyle(options.order, options.style);
      printTable(makeRequest(options));
      break;
  }
  // Only the flush shows whether the last rows could be written.
  if (!std::cout.flush()) throw Error("cannot write to standard output");
}

/// The library prints errors only when it is verbose.
void printError(const std::exception& error) {
  zn_lib::setVerbose(true);
  zn_lib::errorMessage(error.what());
}

}  // namespace
}  // namespace almanac

int main(int argc, char* argv[]) {
  // A reader that has seen enough ends the program without a word, even if the parent ignores the
  // signal.
  std::signal(SIGPIPE, SIG_DFL);
  try {
    almanac::run(almanac::readOptions(argc, argv));
    return 0;
  } catch (const almanac::UsageError& error) {
    almanac::printError(error);
    return almanac::kExitUsage;
  } catch (const std::exception& error) {
    almanac::printError(error);
    return almanac::kExitFailure;
  }
}
