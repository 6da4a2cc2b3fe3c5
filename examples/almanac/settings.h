/// What the program keeps from run to run, in almanac.cfg in the user's configuration directory:
/// that of XDG_CONFIG_HOME, else ~/.config.
#ifndef ALMANAC_SETTINGS_H
#define ALMANAC_SETTINGS_H

#include <optional>
#include <string>

namespace almanac {

/// Values in the words of the command line.
struct Settings {
  std::optional<std::string> place;
  std::optional<std::string> latitude;
  std::optional<std::string> order;
  std::optional<std::string> format;
};

/// Fills in from the file what `settings` lack: order, format, and either place or latitude where
/// both are missing. Throws Error when a value that is needed cannot be used.
void complete(Settings& settings);

/// Stores `settings`, which hold either place or latitude, in the file. Throws Error when it cannot
/// be written, and when that would lose something else that the file holds.
void save(const Settings& settings);

/// Prints what the file holds to standard output.
void list();

}  // namespace almanac

#endif  // ALMANAC_SETTINGS_H
