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
#include <tokenizer.h>
#include <zn_output.h>
#include <zn_setcfg.h>
#include <zn_str.h>

#include <iostream>

int main(int argc, char* argv[]) {
  // The library is silent, errors included, unless a host wants to hear of them.
  zn_lib::setVerbose(true);

  // Names the file and reads nothing yet.
  zn_lib::Configuration settings("EXAMPLE", "settings");

  // A first run finds no file, which is no failure.
  settings.load();

  // A setting that is missing has an empty value, and reading does not add it.
  constexpr double most = 1000000;
  const double before = zn_lib::stringToDouble(settings.get("runs").value);
  const int run = before >= 1 && before < most ? static_cast<int>(before) + 1 : 1;
  std::cout << "This is run " << run << ".\n";

  settings.set("runs", "NUMBER", std::to_string(run), "How often this ran");
  for (int i = 1; i < argc; ++i) {
    // A new key describes itself; one that is there keeps its type and description. What is stored
    // must be fit for XML: the store escapes nothing.
    const zn_lib::Tokenizer setting(argv[i], "=");
    if (setting.tokens.size() == 2 &&
        std::string(argv[i]).find_first_of("<&") == std::string::npos) {
      settings.set(setting.getToken(0), setting.getToken(1));
    } else {
      zn_lib::errorMessage("not KEY=VALUE without < and &: " + zn_lib::inQuotes(argv[i], '"'));
    }
  }
  settings.listConfiguration();

  // The store is destroyed here and saves itself, since it was changed: the file of before becomes
  // settings.cfg~, the date of the first save is stamped, and each setting gets a line.
}
