/// settings: a tool that remembers. `settings KEY=VALUE...` stores what it is told in settings.cfg
/// in the working directory and lists all that the file holds.
///
///     $ settings colour=blue
///     This is run 1.
///
///     [ EXAMPLE ]
///     Description        Value
///     -----------        -----
///     colour             blue
///     How often this ran 1
///
/// A setting that the file cannot hold is refused with a message. The exit status is 1 where the
/// file stays as it was.
#include <zn_output.h>
#include <zn_setcfg.h>
#include <zn_str.h>

#include <algorithm>
#include <iostream>
#include <string>

#include "checks.h"

namespace {

/// Stores "KEY=VALUE", or tells why not.
void store(const std::string& argument, zn_lib::Configuration& settings) {
  const auto refuse = [&](const std::string& why) {
    std::string shown = argument;
    std::replace_if(shown.begin(), shown.end(), example::isControl, '?');
    zn_lib::errorMessage("cannot keep " + zn_lib::inQuotes(shown, '"') + ": " + why);
  };
  const std::size_t mark = argument.find('=');
  if (mark == std::string::npos) return refuse("it is not KEY=VALUE");
  // The store trims keys, but takes one with blanks around it for a new one.
  const std::string key = zn_lib::allTrim(argument.substr(0, mark));
  const std::string value = argument.substr(mark + 1);
  const std::string why = example::obstacle(key, value);
  if (!why.empty()) return refuse(why);
  // A new key describes itself; one that is there keeps its type and description.
  settings.set(key, value);
}

int fail(const std::string& why, zn_lib::Configuration& settings) {
  zn_lib::errorMessage("cannot change " + settings.getConfigurationFile() + ": " + why);
  // Otherwise the store would save itself when it is destroyed.
  settings.changed = false;
  return 1;
}

}  // namespace

int main(int argc, char* argv[]) {
  // The library is silent, errors included, unless a host wants to hear of them.
  zn_lib::setVerbose(true);

  // Names the file and reads nothing yet.
  zn_lib::Configuration settings("EXAMPLE", "settings");

  // A first run finds no file, which is no failure. A malformed file is none either: what stands
  // behind the fault is missing, and the next save would drop it.
  settings.load();
  const std::string why = example::obstacleInFile(settings);
  if (!why.empty()) return fail(why, settings);

  // A setting that is missing has an empty value, and reading does not add it.
  constexpr double most = 1000000;
  const double before = zn_lib::stringToDouble(settings.get("runs").value);
  const int run = before >= 1 && before < most ? static_cast<int>(before) + 1 : 1;
  std::cout << "This is run " << run << ".\n";

  settings.set("runs", "NUMBER", std::to_string(run), "How often this ran");
  for (int i = 1; i < argc; ++i) store(argv[i], settings);
  settings.listConfiguration();
  if (!example::areKept(settings.elements, example::kBlockBytes))
    return fail("a blank would be lost at the border of two blocks", settings);

  // A store that was changed saves itself when it is destroyed, but tells no failure then. The file
  // of before becomes settings.cfg~, the date of the first save is stamped, and each setting gets a
  // line. A full disk is not told even here, so the file is read again.
  const bool isSaved = settings.save();
  zn_lib::Configuration written("EXAMPLE", "settings");
  written.load();
  if (!isSaved || !example::areEqual(written.elements, settings.elements)) {
    return fail("not all was written", settings);
  }
}
