/// Checks whether a store of settings can keep a value. A store escapes nothing, so a setting that
/// its file cannot represent makes the file malformed. The next load then loses all settings after
/// it.
#ifndef EXAMPLE_CHECKS_H
#define EXAMPLE_CHECKS_H

#include <zn_setcfg.h>
#include <zn_str.h>
#include <zn_xmlparser.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <string>

namespace example {

/// The size of the blocks that a store passes to its parser. Whitespace at the start of a block is
/// lost.
constexpr std::size_t kBlockBytes = 8192;
constexpr std::size_t kOneBlock = std::numeric_limits<std::size_t>::max();

/// Returns the settings that a store reads from a file with this text, or nothing if it is
/// malformed.
inline std::optional<zn_lib::config_map> readBack(const std::string& xml, std::size_t blockBytes) {
  zn_lib::ConfigEvent settings;
  XMLParser parser(&settings);
  if (!parser.Create("UTF-8", nullptr)) return {};
  parser.EnableElementHandler(true);
  parser.EnableCharacterDataHandler(true);
  for (std::size_t rest = xml.size(); rest > 0;) {
    const std::size_t size = std::min(rest, blockBytes);
    if (!parser.Parse(xml.data() + xml.size() - rest, size, size == rest)) return {};
    rest -= size;
  }
  return settings.data;
}

inline bool areEqual(const zn_lib::config_map& a, const zn_lib::config_map& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
    return one.first == other.first && one.second.type == other.second.type &&
           one.second.describe == other.second.describe && one.second.value == other.second.value;
  });
}

/// Returns true if a store reads these settings back as it writes them.
inline bool areKept(const zn_lib::config_map& settings, std::size_t blockBytes) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='EXAMPLE'>\n";
  for (const auto& [key, setting] : settings) {
    xml += "<" + key + " data_type='" + setting.type + "' describe='" + setting.describe + "'>" +
           setting.value + "</" + key + ">\n";
  }
  xml += "</CONFIGURATION>\n";
  const std::optional<zn_lib::config_map> read = readBack(xml, blockBytes);
  return read && areEqual(*read, settings);
}

inline bool isKept(const std::string& key, const zn_lib::ConfigElement& setting) {
  return areKept({{key, setting}}, kOneBlock);
}

inline bool isControl(char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t'; }

/// Returns the reason why a store cannot keep `value` under `key`. Returns the empty text if it
/// can.
inline std::string obstacle(const std::string& key, const std::string& value) {
  zn_lib::ConfigElement setting;
  setting.describe = key;
  if (key == "CONFIGURATION") return "its key is the name of the whole file";
  if (!isKept(key, setting)) {
    return "its key is not a letter or \"_\" followed by letters, digits and \"_-.:\"";
  }
  setting.value = value;
  if (isKept(key, setting)) return "";
  if (value.find_first_of("<&") != std::string::npos) return "its value holds \"<\" or \"&\"";
  if (value.find("]]>") != std::string::npos) return "its value holds \"]]>\"";
  if (std::any_of(value.begin(), value.end(), isControl)) {
    return "its value holds a line break or another control character";
  }
  if (value.front() == ' ' || value.front() == '\t') return "its value begins with whitespace";
  return "its value holds bytes that are not XML characters in UTF-8";
}

/// Returns the reason why the file of the loaded `settings` must stay as it is. Returns the empty
/// text if there is none.
inline std::string obstacleInFile(zn_lib::Configuration& settings) {
  const std::string name = settings.getConfigurationFile();
  std::ifstream file(name);
  if (!file) return std::filesystem::exists(name) ? "it cannot be read" : "";
  const std::string xml{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (xml.empty()) return "";
  const std::optional<zn_lib::config_map> whole = readBack(xml, kOneBlock);
  if (!whole) return "it is malformed";
  if (!areEqual(*whole, settings.elements)) return "whitespace was lost while it was read";
  for (const auto& [key, setting] : settings.elements) {
    if (!isKept(key, setting)) return zn_lib::inQuotes(key, '"') + " in it cannot be written again";
  }
  return "";
}

}  // namespace example

#endif  // EXAMPLE_CHECKS_H
