#include "settings.h"

#include <zn_dir.h>
#include <zn_setcfg.h>
#include <zn_xmlparser.h>

#include <fstream>
#include <iostream>
#include <iterator>

#include "dates.h"
#include "environment.h"
#include "errors.h"
#include "text.h"

namespace almanac {
namespace {

bool isAbsolute(const std::string& path) { return !path.empty() && path.front() == '/'; }

/// Returns the configuration directory, or the empty text if there is none.
std::string configurationDirectory(const std::string& home) {
  const std::string directory = variable("XDG_CONFIG_HOME");
  if (isAbsolute(directory)) return directory;
  return isAbsolute(home) ? home + "/.config" : "";
}

/// A store that loads its file when it is constructed. HOME is hidden as long as it exists.
class Store : private HiddenHome, public zn_lib::Configuration {
 public:
  Store() : Configuration("ALMANAC", "almanac") {
    path = configurationDirectory(HiddenHome::value());
    // A store without a name has no file.
    if (path.empty()) name.clear();
    load();
  }

  /// Throws Error if there is no configuration directory.
  void requireFile() const {
    if (name.empty()) throw Error(Problem::kNoSettingsDirectory);
  }

  /// Returns the value of a setting, or nothing if it is missing or empty.
  std::optional<std::string> find(const std::string& key) {
    const std::string value = get(key).value;
    if (value.empty()) return {};
    return value;
  }

  /// Returns the value of a setting as `find` does. Throws Error if `isWord` rejects it.
  template <class IsWord>
  std::optional<std::string> findWord(const std::string& key, IsWord isWord) {
    const std::optional<std::string> word = find(key);
    if (word && !isWord(*word)) {
      throw Error(Problem::kBadSetting, {quote(*word), quote(key), quote(getConfigurationFile())});
    }
    return word;
  }

  /// Stores a setting. One without a value is stored as an empty one, so that it is listed too.
  void keep(const std::string& key, const std::optional<std::string>& value,
            const std::string& describe) {
    set(key, "TEXT", value.value_or(""), describe);
  }
};

/// Returns true if expat can parse the whole file, or if it is missing or empty.
bool isWellFormed(const std::string& file) {
  std::ifstream in(file);
  const std::string xml{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  XMLEvtHandler nobody;
  XMLParser parser(&nobody);
  return xml.empty() ||
         (parser.Create("UTF-8", nullptr) && parser.Parse(xml.c_str(), xml.size(), true));
}

/// Returns true if a setting that was read can be written again. A store escapes nothing, while a
/// file edited by hand may contain "&amp;".
bool isFit(const zn_lib::ConfigElement& setting) {
  constexpr auto none = std::string::npos;
  const std::string labels = setting.type + setting.describe;
  return labels.find_first_of("<&'\t\n\r") == none && setting.value.find_first_of("<&") == none &&
         setting.value.find("]]>") == none;
}

/// Throws Error if saving `store` would lose contents of its file. The file then stays as it is.
void protectFile(Store& store) {
  const std::string file = store.getConfigurationFile();
  std::optional<Error> error;
  if (!isWellFormed(file)) error = Error(Problem::kMalformedSettings, {quote(file)});
  for (const auto& [key, setting] : store.elements) {
    if (!isFit(setting)) error = Error(Problem::kUnfitSetting, {quote(key), quote(file)});
  }
  if (!error) return;
  // Otherwise the store would save itself when it is destroyed.
  store.changed = false;
  throw *error;
}

bool holds(Store& store, const Settings& settings) {
  return store.find("place") == settings.place && store.find("latitude") == settings.latitude &&
         store.find("order") == settings.order && store.find("format") == settings.format;
}

}  // namespace

void complete(Settings& settings) {
  Store store;
  if (!settings.place && !settings.latitude) {
    settings.place = store.find("place");
    settings.latitude = store.find("latitude");
  }
  if (!settings.order) settings.order = store.findWord("order", isOrder);
  if (!settings.format) settings.format = store.findWord("format", isStyle);
}

void save(const Settings& settings) {
  Store store;
  store.requireFile();
  store.keep("place", settings.place, "Place");
  store.keep("latitude", settings.latitude, "Latitude in degrees");
  store.keep("order", settings.order, "Order of a date");
  store.keep("format", settings.format, "Format of a date");
  protectFile(store);

  zn_lib::createDir(store.path);
  // The result does not show a full disk; only the file does.
  const bool isWritten = store.save();
  store.changed = false;
  store.elements.clear();
  store.load();
  if (!isWritten || !holds(store, settings)) {
    throw Error(Problem::kCannotSaveSettings, {quote(store.getConfigurationFile())});
  }
}

void list() {
  Store store;
  store.requireFile();
  if (store.elements.empty()) {
    std::cout << "No settings are kept in " << quote(store.getConfigurationFile()) << ".\n";
  } else {
    store.listConfiguration();
  }
}

}  // namespace almanac
