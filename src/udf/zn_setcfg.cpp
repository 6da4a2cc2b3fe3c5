#include "zn_setcfg.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <limits>
#include <utility>

#include "internal/staged_file.h"
#include "tokenizer.h"
#include "zn_datetime.h"
#include "zn_file.h"
#include "zn_str.h"

namespace zn_lib {

template struct map_key<std::string>;
template class XmlEvent<config_map>;
template class ReadXml<ConfigEvent>;

namespace {

constexpr const char* kRoot = "CONFIGURATION";
constexpr const char* kStampKey = "UPDATE";

/// Turns the process-wide use-time setting on for the duration of a scope.
class ScopedUseTime {
 public:
  ScopedUseTime() : before_(isUseTime()) { setUseTime(true); }
  ~ScopedUseTime() { setUseTime(before_); }
  ScopedUseTime(const ScopedUseTime&) = delete;
  ScopedUseTime& operator=(const ScopedUseTime&) = delete;

 private:
  const bool before_;
};

/// Returns the setting that holds the time of a store's first save.
ConfigElement stampOfNow() {
  const ScopedUseTime time;
  ConfigElement stamp;
  stamp.value = getTodayAsISO();
  stamp.type = "DATE";
  stamp.describe = "Date of update in ISO9601";
  return stamp;
}

/// Adds a time stamp to settings that have none. The destructor removes it again unless `keep` was
/// called.
class Stamp {
 public:
  explicit Stamp(config_map& settings) : settings_(settings), added_(settings.end()) {
    if (settings.find(kStampKey) != settings.end()) return;
    added_ = settings.emplace(kStampKey, stampOfNow()).first;
  }
  ~Stamp() {
    if (added_ != settings_.end()) settings_.erase(added_);
  }
  Stamp(const Stamp&) = delete;
  Stamp& operator=(const Stamp&) = delete;

  void keep() { added_ = settings_.end(); }

 private:
  config_map& settings_;
  config_map::iterator added_;
};

/// Returns the text of the store's file. Each part ends at its first NUL.
std::string toXml(const Configuration& store) {
  std::string xml;
  xml.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<");
  xml.append(kRoot).append(" type='").append(store.type.c_str()).append("'>\n");
  for (const auto& [key, element] : store.elements) {
    xml.append("<").append(key.c_str());
    xml.append(" data_type='").append(element.type.c_str());
    xml.append("' describe='").append(element.describe.c_str()).append("'>");
    xml.append(element.value.c_str());
    xml.append("</").append(key.c_str()).append(">\n");
  }
  xml.append("</").append(kRoot).append(">\n");
  return xml;
}

/// Returns the entry of `key` in `data`, and creates it if there is none. Tries the last entry
/// first and the position after it next, since `map_key` copies the keys that it compares. In a
/// saved file, the text being read belongs to the last entry, and the next key belongs after it.
ConfigElement& entryOf(const std::string& key, config_map& data) {
  if (!data.empty()) {
    const auto last = std::prev(data.end());
    if (last->first == key) return last->second;
  }
  return data.try_emplace(data.end(), key)->second;
}

}  // namespace

ConfigElement::ConfigElement() : type("TEXT") {}

ConfigEvent::ConfigEvent() = default;

void ConfigEvent::OnStartElement(const XML_Char* name, const XML_Char** attributes) {
  element = name;
  lastElement.clear();
  if (element.empty() || element == kRoot || attributes[0] == nullptr) return;
  ConfigElement& entry = entryOf(element, data);
  // `attributes` alternates names and values. The names are ignored.
  entry.type = attributes[1];
  if (attributes[2] != nullptr) entry.describe = attributes[3];
}

void ConfigEvent::OnEndElement(const XML_Char*) { element.clear(); }

void ConfigEvent::OnCharacterData(const XML_Char* text, int length) {
  if (length < 1 || element.empty() || element == kRoot) return;
  ConfigElement& entry = entryOf(element, data);
  std::string piece = skipWhiteSpace(text, length);
  if (lastElement == element) {
    entry.value += piece;
  } else {
    entry.value = std::move(piece);
    lastElement = element;
  }
}

void ConfigEvent::exportData(config_map& target) {
  // Both maps have the same order, so most entries belong directly after the previous one.
  auto place = target.begin();
  for (const auto& [key, entry] : data) {
    place = std::next(target.insert_or_assign(place, key, entry));
  }
}

Configuration::Configuration() : name("config"), extension("xml"), type("SYSTEM") {}

Configuration::Configuration(const std::string& storeType, const std::string& storeName)
    : name(storeName), extension("cfg"), type(storeType) {}

Configuration::~Configuration() {
  if (!changed) return;
  try {
    save();
  } catch (...) {
    // Memory ran out. A destructor cannot report the failure.
  }
}

bool Configuration::load() {
  std::string file = getConfigurationFile();
  if (file.empty()) return false;
  ReadXml<ConfigEvent> reader;
  reader.setFileName(file);
  reader.parseFile();
  if (elements.empty()) {
    elements.swap(reader.event->data);
  } else {
    reader.event->exportData(elements);
  }
  changed = false;
  return true;
}

void Configuration::set(const std::string& key, ConfigElement element) {
  std::string adjusted = key;
  adjustKey(adjusted);
  elements[adjusted] = std::move(element);
  changed = true;
}

void Configuration::set(const std::string& key, const std::string& value) {
  ConfigElement element;
  // The key is looked up untrimmed, but stored trimmed.
  if (elements.find(key) == elements.end()) {
    element.describe = key;
  } else {
    element = get(key);
  }
  element.value = value;
  set(key, std::move(element));
}

void Configuration::set(const std::string& key, const std::string& elementType,
                        const std::string& value, const std::string& describe) {
  ConfigElement element;
  element.value = value;
  element.type = elementType;
  element.describe = describe;
  set(key, std::move(element));
}

ConfigElement Configuration::get(const std::string& key) {
  std::string adjusted = key;
  adjustKey(adjusted);
  const auto found = elements.find(adjusted);
  return found == elements.end() ? ConfigElement() : found->second;
}

void Configuration::adjustKey(std::string& key) { key = allTrim(key); }

std::string Configuration::getConfigurationFile() {
  return name.empty() ? "" : createFileName(path, name, extension);
}

bool Configuration::save() {
  // The system ends a name at its first NUL, so names that are derived from it must not contain a
  // NUL.
  const std::string file = getConfigurationFile().c_str();
  if (file.empty()) return false;

  Stamp stamp(elements);
  if (!internal::saveText(file, toXml(*this), backup)) return false;
  stamp.keep();
  changed = false;
  return true;
}

void Configuration::listConfiguration() {
  std::size_t longest = 0;
  for (const auto& [key, element] : elements) {
    longest = std::max(longest, element.describe.size());
  }
  const int width = static_cast<int>(std::min<std::size_t>(
      longest + 1, static_cast<std::size_t>(std::numeric_limits<int>::max())));
  const auto row = [width](const std::string& left, const std::string& right) {
    std::cout << leftPad(left, width, ' ') << right << "\n";
  };
  std::cout << "\n[ " << type << " ]\n";
  row("Description", "Value");
  row("-----------", "-----");
  for (const auto& [key, element] : elements) row(element.describe, element.value);
  std::cout << std::endl;
}

}  // namespace zn_lib
