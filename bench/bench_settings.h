/// Files of settings, and other implementations that read them into a map.
#ifndef BENCH_SETTINGS_H
#define BENCH_SETTINGS_H

#include <zn_setcfg.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "bench_expat.h"

#ifdef ZN_UDF_HAVE_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
#include <tinyxml2.h>
#endif

namespace bench {

/// The map that other implementations fill.
using Settings = std::map<std::string, zn_lib::ConfigElement>;

inline std::unique_ptr<zn_lib::Configuration> storeIn(const std::string& directory,
                                                      const std::string& name) {
  auto store = std::make_unique<zn_lib::Configuration>("BENCH", name);
  store->path = directory;
  return store;
}

/// Returns the key of setting `i`. Keys are ordered by their numbers.
inline std::string keyOf(int i) { return "section.key_" + std::to_string(1000000 + i); }

constexpr const char* kDescription = "a description";

inline std::string valueOf(int i) { return "value of setting " + std::to_string(i); }

/// Writes the file of a store with settings of about 100 bytes each. The numbers of adjacent
/// settings differ by `step`, which must be coprime to `count`.
inline void writeSettings(const std::string& directory, const std::string& name, int count,
                          int step) {
  std::ofstream out(storeIn(directory, name)->getConfigurationFile());
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='BENCH'>\n";
  long long next = 0;
  for (int i = 0; i < count; ++i, next = (next + step) % count) {
    const int number = static_cast<int>(next);
    const std::string key = keyOf(number);
    out << '<' << key << " data_type='TEXT' describe='" << kDescription << "'>" << valueOf(number)
        << "</" << key << ">\n";
  }
  out << "</CONFIGURATION>\n";
}

/// Builds the map of settings from what expat reports.
struct SettingsHandler {
  void start(const XML_Char* name, const XML_Char** attributes) {
    if (attributes[0] == nullptr || attributes[2] == nullptr) return;
    current = &settings[name];
    current->type = attributes[1];
    current->describe = attributes[3];
  }

  void end(const XML_Char*) { current = nullptr; }

  void text(const XML_Char* bytes, int length) {
    if (current != nullptr) current->value.append(bytes, static_cast<std::size_t>(length));
  }

  Settings settings;
  zn_lib::ConfigElement* current = nullptr;
};

/// Reads settings by expat, without the library.
inline Settings readByExpat(const std::string& file) {
  SettingsHandler handler;
  parseFile(file, handler);
  return std::move(handler.settings);
}

#ifdef ZN_UDF_HAVE_PUGIXML
inline Settings readByPugixml(const std::string& file) {
  pugi::xml_document document;
  document.load_file(file.c_str());
  Settings settings;
  for (const pugi::xml_node& node : document.first_child()) {
    zn_lib::ConfigElement& setting = settings[node.name()];
    setting.type = node.attribute("data_type").value();
    setting.describe = node.attribute("describe").value();
    setting.value = node.child_value();
  }
  return settings;
}
#endif

#ifdef ZN_UDF_HAVE_TINYXML2
inline Settings readByTinyxml2(const std::string& file) {
  tinyxml2::XMLDocument document;
  document.LoadFile(file.c_str());
  Settings settings;
  for (const tinyxml2::XMLElement* node = document.RootElement()->FirstChildElement();
       node != nullptr; node = node->NextSiblingElement()) {
    zn_lib::ConfigElement& setting = settings[node->Name()];
    setting.type = node->Attribute("data_type");
    setting.describe = node->Attribute("describe");
    setting.value = node->GetText();
  }
  return settings;
}
#endif

}  // namespace bench

#endif  // BENCH_SETTINGS_H
