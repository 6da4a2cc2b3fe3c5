/// Keeps settings between runs in almanac.cfg in the user's configuration directory. That is
/// XDG_CONFIG_HOME or else .config in HOME. As the XDG base directory rules require, a variable
/// that is no absolute path is ignored.
#ifndef ALMANAC_SETTINGS_H
#define ALMANAC_SETTINGS_H

#include <optional>
#include <string>

namespace almanac {

/// Holds values as they are written on the command line.
struct Settings {
  std::optional<std::string> place;
  std::optional<std::string> latitude;
  std::optional<std::string> order;
  std::optional<std::string> format;
};

/// Adds values from the file that `settings` lack: order, format, and either place or latitude if
/// both are missing. Without a configuration directory, it adds none. Throws Error if an order or a
/// format from the file is invalid.
void complete(Settings& settings);

/// Stores `settings`, which hold either place or latitude, in the file. Throws Error if there is no
/// configuration directory, if the file cannot be written, or if that would lose other contents of
/// the file.
void save(const Settings& settings);

/// Prints the settings in the file to standard output, or a line if there are none. Throws Error if
/// there is no configuration directory.
void list();

}  // namespace almanac

#endif  // ALMANAC_SETTINGS_H
