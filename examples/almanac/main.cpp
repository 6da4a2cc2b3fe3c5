/// almanac prints day length and moon, one row for each day. It is an example of a host.
#include <zn_common.h>
#include <zn_output.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

#include "dates.h"
#include "errors.h"
#include "messages.h"
#include "options.h"
#include "output.h"
#include "picture.h"
#include "places.h"
#include "table.h"
#include "terminal.h"
#include "text.h"

namespace almanac {
namespace {

constexpr int kMostDays = 36600;

int readDays(const std::string& text) {
  const std::optional<int> days = toWholeNumber(text, 1, kMostDays);
  if (!days) throw Error(Problem::kBadDays, {std::to_string(kMostDays), quote(text)});
  return *days;
}

double readLatitude(const std::string& text) {
  constexpr double pole = 90.0;
  const std::optional<double> latitude = toNumber(text, -pole, pole);
  if (!latitude) throw Error(Problem::kBadLatitude, {quote(text)});
  return *latitude;
}

/// Reads the values of the options and the settings. Throws Error for every invalid value, before
/// anything is written.
Request makeRequest(const Options& options) {
  const Settings& settings = options.settings;
  if (settings.place.has_value() == settings.latitude.has_value()) {
    throw Error(Problem::kNotOnePlace);
  }
  Request request;
  request.style = styleOf(settings.format.value_or("iso"));
  setDateStyle(settings.order.value_or("ymd"), request.style);
  request.days = readDays(options.days);
  request.first = options.from ? readDate(*options.from) : today();
  const unsigned long long daysLeft = (lastDay() - request.first) / kMillisecondsPerDay + 1;
  if (static_cast<unsigned long long>(request.days) > daysLeft) {
    throw Error(Problem::kBeyondLastDay);
  }
  if (settings.place) {
    const Place place = findPlace(*settings.place, options.places);
    request.place = place.name;
    request.latitude = place.latitude;
  } else {
    request.latitude = readLatitude(*settings.latitude);
  }
  return request;
}

void draw(const Request& request, const Options& options) {
  const Existing existing = {options.backup, options.number};
  if (options.output) {
    OutputFile file(*options.output, existing);
    printTable(file.stream(), request, Terminal());
    file.close();
  }
  if (options.svg == "-") {
    std::cout << drawYear(request);
  } else if (options.svg) {
    OutputFile file(*options.svg, existing);
    file.stream() << drawYear(request);
    file.close();
  }
  if (!options.output && !options.svg) printTable(std::cout, request, terminalOfOutput());
}

void drawOrList(Options options) {
  zn_lib::setVerbose(options.verbose);
  const bool isListing = options.action == Action::kListSettings;
  if (!isListing || options.save) {
    complete(options.settings);
    const Request request = makeRequest(options);
    // The whole name still finds the place when the table has another place with these last parts.
    if (options.settings.place) options.settings.place = request.place;
    if (options.save) save(options.settings);
    if (!isListing) draw(request, options);
  }
  if (isListing) list();
}

void run(const Options& options) {
  switch (options.action) {
    case Action::kPrintHelp:
      std::cout << kHelp;
      break;
    case Action::kPrintVersion:
      std::cout << "almanac, with zn_udf " << zn_udf_1VersionNumber << '\n';
      break;
    case Action::kDraw:
    case Action::kListSettings:
      drawOrList(options);
      break;
  }
  // Only the flush shows whether the last rows were written.
  if (!std::cout.flush()) throw Error(Problem::kCannotPrint);
}

}  // namespace
}  // namespace almanac

int main(int argc, char* argv[]) {
  // A closed pipe ends the program without a message, even if the parent ignores the signal.
  std::signal(SIGPIPE, SIG_DFL);
  try {
    almanac::run(almanac::readOptions(argc, argv));
    return 0;
  } catch (const almanac::Error& error) {
    almanac::printError(error, argv[0]);
    return error.exitStatus();
  } catch (const std::exception& error) {
    zn_lib::setVerbose(true);
    zn_lib::errorMessage(error.what());
    return 1;
  }
}
