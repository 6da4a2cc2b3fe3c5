/// settings keeps values between runs. `settings KEY=VALUE...` stores them in settings.cfg in the
/// working directory and lists all settings of the file.
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
/// A setting that the file cannot represent is rejected with a message; the others are stored. The
/// exit status is 1 if a setting was rejected or the file could not be changed.
#include <zn_output.h>
#include <zn_setcfg.h>
#include <zn_str.h>

#include <algorithm>
#include <iostream>
#include <string>

#include "checks.h"

namespace {

constexpr const char* kRuns = "runs";
constexpr const char* kStamp = "UPDATE";  // added by the library

/// Stores "KEY=VALUE". If it cannot, prints the reason and returns false.
bool store(const std::string& argument, zn_lib::Configuration& settings) {
  const auto refuse = [&](const std::string& why) {
    std::string shown = argument;
    std::replace_if(shown.begin(), shown.end(), example::isControl, '?');
    zn_lib::errorMessage("cannot keep " + zn_lib::inQuotes(shown, '"') + ": " + why);
    return false;
  };
  const std::size_t mark = argument.find('=');
  if (mark == std::string::npos) return refuse("it is not KEY=VALUE");
  // The store trims keys, but counts a key with whitespace around it as new.
  const std::string key = zn_lib::allTrim(argument.substr(0, mark));
  const std::string value = argument.substr(mark + 1);
  const std::string why = example::obstacle(key, value);
  if (!why.empty()) return refuse(why);
  // A new key becomes its own description. An existing one keeps its type and description.
  settings.set(key, value);
  return true;
}

/// Returns true if the store has settings that came from a command line.
bool hasOwn(const zn_lib::config_map& settings) {
  return std::any_of(settings.begin(), settings.end(), [](const auto& setting) {
    return setting.first != kRuns && setting.first != kStamp;
  });
}

int fail(const std::string& why, zn_lib::Configuration& settings) {
  zn_lib::errorMessage("cannot change " + settings.getConfigurationFile() + ": " + why);
  // Otherwise the store would save itself when it is destroyed.
  settings.changed = false;
  return 1;
}

}  // namespace

int main(int argc, char* argv[]) {
  // The library prints no messages, errors included, until the verbose flag is set.
  zn_lib::setVerbose(true);

  // The constructor names the file but does not read it.
  zn_lib::Configuration settings("EXAMPLE", "settings");

  // A missing file is not a failure, nor is a malformed one. The settings after the error are then
  // missing, and the next save would lose them.
  settings.load();
  const std::string why = example::obstacleInFile(settings);
  if (!why.empty()) return fail(why, settings);

  // A missing setting has an empty value, and reading it does not add it.
  constexpr double most = 1000000;
  const double before = zn_lib::stringToDouble(settings.get(kRuns).value);
  const int run = before >= 1 && before < most ? static_cast<int>(before) + 1 : 1;
  std::cout << "This is run " << run << ".\n";

  settings.set(kRuns, "NUMBER", std::to_string(run), "How often this ran");
  bool isEachStored = true;
  for (int i = 1; i < argc; ++i) isEachStored = store(argv[i], settings) && isEachStored;
  if (!hasOwn(settings.elements)) {
    std::cout << "You have stored no settings yet. \"settings KEY=VALUE\" stores one.\n";
  }
  settings.listConfiguration();
  if (!example::areKept(settings.elements, example::kBlockBytes))
    return fail("whitespace would be lost between two blocks", settings);

  // A changed store also saves itself when it is destroyed, but does not report a failure then. The
  // old file becomes settings.cfg~, the date of the first save is added, and each setting gets a
  // line. The result does not show a full disk, so the file is read again.
  const bool isSaved = settings.save();
  zn_lib::Configuration written("EXAMPLE", "settings");
  written.load();
  if (!isSaved || !example::areEqual(written.elements, settings.elements)) {
    return fail("not all was written", settings);
  }
  return isEachStored ? 0 : 1;
}
