#include "zn_setcfg.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <limits>
#include <list>
#include <string_view>
#include <utility>

#include "internal/maps.h"
#include "internal/staged_file.h"
#include "internal/text.h"
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

/// Returns the entry of the current element, and creates it if there is none. Tries the last entry
/// first and the position after it next, since `map_key` copies the keys that it compares. In a
/// saved file, the text being read belongs to the last entry, and the next key belongs after it.
ConfigElement& currentEntry(ConfigEvent& event) {
  if (!event.data.empty()) {
    const auto last = std::prev(event.data.end());
    if (last->first == event.element) return last->second;
  }
  return event.data.try_emplace(event.data.end(), event.element)->second;
}

/// Does the same as `ConfigEvent` with a map that compares keys without copying them. Its nodes fit
/// into a `config_map`.
struct PlainEvent {
  std::map<std::string, ConfigElement> data;
  std::string element;
  std::string lastElement;
  decltype(data)::iterator current = data.end();  // the entry that was used last
};

ConfigElement& currentEntry(PlainEvent& event) {
  if (event.current == event.data.end() || event.current->first != event.element) {
    event.current = event.data.try_emplace(event.data.end(), event.element);
  }
  return event.current->second;
}

bool isInSetting(const std::string& element) { return !element.empty() && element != kRoot; }

/// Starts the element `name`. `type` and `describe` are null if there is no such attribute.
template <class Event>
void startElement(Event& event, const char* name, const char* type, const char* describe) {
  event.element = name;
  event.lastElement.clear();
  if (type == nullptr || !isInSetting(event.element)) return;
  ConfigElement& entry = currentEntry(event);
  entry.type = type;
  if (describe != nullptr) entry.describe = describe;
}

/// Adds a piece of text, which has no leading whitespace, to the current element.
template <class Event>
void addText(Event& event, std::string piece) {
  if (!isInSetting(event.element)) return;
  ConfigElement& entry = currentEntry(event);
  if (event.lastElement == event.element) {
    entry.value += piece;
  } else {
    entry.value = std::move(piece);
    event.lastElement = event.element;
  }
}

/// Records what the parser reports about settings, and fills a map with it later. The parser keeps
/// every name until its end. Since the recorded text takes much less memory than a map, the parser
/// and the map of a file of common size do not need their memory at the same time.
class EventLog final : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    // `attributes` alternates names and values. The names are ignored.
    if (attributes[0] == nullptr) {
      add(kNoAttribute, {name});
    } else if (attributes[2] == nullptr) {
      add(kOneAttribute, {name, attributes[1]});
    } else {
      add(kTwoAttributes, {name, attributes[1], attributes[3]});
    }
    isInElement_ = true;
  }

  void OnEndElement(const XML_Char*) override { isInElement_ = false; }

  void OnCharacterData(const XML_Char* text, int length) override {
    if (!isInElement_) return;
    std::string_view piece(text, static_cast<std::size_t>(length));
    while (!piece.empty() && internal::isSpace(piece.front())) piece.remove_prefix(1);
    add(kText, {piece});
  }

  /// Returns the settings that were read.
  config_map takeSettings();

 private:
  static constexpr char kNoAttribute = '0';
  static constexpr char kOneAttribute = '1';
  static constexpr char kTwoAttributes = '2';
  static constexpr char kText = 't';

  /// Adds an event and its texts, which contain no NULs and end with one in the log.
  void add(char event, std::initializer_list<std::string_view> texts);

  /// Applies the recorded events to the settings, and empties the log.
  void apply();

  std::list<std::string> blocks_;
  PlainEvent settings_;
  bool isInElement_ = false;
};

void EventLog::add(char event, std::initializer_list<std::string_view> texts) {
  // Blocks of this size have pages of their own, which the C library usually returns to the system
  // when it frees them.
  constexpr std::size_t blockSize = 256 * 1024;
  // Most events of a large file may add nothing to the settings.
  constexpr std::size_t mostBlocks = 40;
  std::size_t size = 1;
  for (const std::string_view text : texts) size += text.size() + 1;
  if (!blocks_.empty() && blocks_.back().size() + size > blockSize) {
    if (blocks_.size() == mostBlocks) apply();
    blocks_.emplace_back().reserve(blockSize);
  }
  if (blocks_.empty()) blocks_.emplace_back();
  std::string& block = blocks_.back();
  block += event;
  for (const std::string_view text : texts) block.append(text).push_back('\0');
}

void EventLog::apply() {
  for (; !blocks_.empty(); blocks_.pop_front()) {
    const std::string& block = blocks_.front();
    const char* at = block.data();
    const auto nextText = [&at] {
      const char* const text = at;
      at += std::strlen(text) + 1;
      return text;
    };
    while (at != block.data() + block.size()) {
      const char event = *at++;
      if (event == kText) {
        addText(settings_, nextText());
      } else {
        const char* const name = nextText();
        const char* const type = event == kNoAttribute ? nullptr : nextText();
        startElement(settings_, name, type, event == kTwoAttributes ? nextText() : nullptr);
      }
    }
  }
}

config_map EventLog::takeSettings() {
  apply();
  config_map settings;
  internal::moveEntries(settings_.data, settings);
  return settings;
}

}  // namespace

ConfigElement::ConfigElement() : type("TEXT") {}

ConfigEvent::ConfigEvent() = default;

void ConfigEvent::OnStartElement(const XML_Char* name, const XML_Char** attributes) {
  // `attributes` alternates names and values. The names are ignored.
  const XML_Char* const type = attributes[0] == nullptr ? nullptr : attributes[1];
  const XML_Char* const describe =
      type == nullptr || attributes[2] == nullptr ? nullptr : attributes[3];
  startElement(*this, name, type, describe);
}

void ConfigEvent::OnEndElement(const XML_Char*) { element.clear(); }

void ConfigEvent::OnCharacterData(const XML_Char* text, int length) {
  if (length > 0) addText(*this, skipWhiteSpace(text, length));
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
  ReadXml<EventLog> reader;
  reader.setFileName(file);
  reader.parseFile();
  config_map settings = reader.event->takeSettings();
  internal::moveEntries(settings, elements);
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
  if (name.empty()) return "";
  return createFileName(path, name, extension);
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
