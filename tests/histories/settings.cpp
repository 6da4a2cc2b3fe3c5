// Calls of the settings stores and of the readers of settings.
#include <algorithm>
#include <string>
#include <utility>

#include "model_dates.h"
#include "model_names.h"
#include "model_readers.h"
#include "pools.h"
#include "whitespace.h"

namespace histories {
namespace {

constexpr unsigned kMostStores = 5;

Setting settingOf(const zn_lib::ConfigElement& element) {
  return {element.value, element.type, element.describe};
}

std::map<std::string, Setting> settingsOf(const zn_lib::config_map& elements) {
  std::map<std::string, Setting> all;
  for (const auto& [key, element] : elements) all[key] = settingOf(element);
  return all;
}

std::string trimmed(const std::string& key) {
  return withoutTrailingWhitespace(withoutLeadingWhitespace(key));
}

std::string fileOf(const Model& model, const ModelStore& store) {
  if (store.name.empty()) return "";
  return joined(model, {store.path, store.name, store.extension});
}

std::string xmlOf(const ModelStore& store) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='";
  xml.append(store.type.c_str()).append("'>\n");
  for (const auto& [key, setting] : store.elements) {
    xml.append("<").append(key.c_str()).append(" data_type='").append(setting.type.c_str());
    xml.append("' describe='").append(setting.describe.c_str()).append("'>");
    xml.append(setting.value.c_str()).append("</").append(key.c_str()).append(">\n");
  }
  return xml + "</CONFIGURATION>\n";
}

/// Moves the old file to the backup, as `createBackup` does.
void backUp(Disk& disk, const std::string& name) {
  const std::string backup = std::string(name.c_str()) + "~";
  if (!disk.exists(name)) return;
  if (disk.exists(backup) && !disk.remove(backup)) return;
  disk.rename(name, backup);
}

bool save(Model& model, ModelStore& store) {
  if (store.name.empty()) return false;
  const std::string name = fileOf(model, store);
  if (store.backup) backUp(model.disk, name);
  // An open reader keeps the old file, since the new one replaces it by name.
  const NodePointer old = model.disk.find(name);
  if (old != nullptr && !old->isDirectory) model.disk.remove(name);
  const NodePointer file = model.disk.openForWriting(name, false);
  if (file == nullptr) return false;
  if (store.elements.count("UPDATE") == 0) {
    const bool useTime = std::exchange(model.dates.useTime, true);
    store.elements["UPDATE"] = {todayAsISO(model), "DATE", "Date of update in ISO9601"};
    model.dates.useTime = useTime;
  }
  file->bytes = xmlOf(store);
  store.changed = false;
  return true;
}

struct Pair {
  std::string number;
  zn_lib::Configuration& own;
  ModelStore& model;
};

void compareStores(Step& step, const Pair& pair) {
  step.same(pair.model.changed, pair.own.changed);
  step.same(pair.model.elements, settingsOf(pair.own.elements));
}

void createStore(Step& step) {
  World& world = step.world;
  ModelStore model;
  if (step.choose.flag()) {
    model.type = step.choose.one({"T"s, "TOOL"s, "it's"s, ""s, "a\0b"s});
    model.name = step.choose.one({"c"s, "sub/c"s, "~/a"s, ""s, "a b"s, "missing/c"s, "d.d"s});
    model.extension = "cfg";
    step.call("Configuration", model.type, model.name);
    world.stores.push_back(std::make_unique<zn_lib::Configuration>(model.type, model.name));
  } else {
    model.type = "SYSTEM";
    model.name = "config";
    model.extension = "xml";
    step.call("Configuration");
    world.stores.push_back(std::make_unique<zn_lib::Configuration>());
  }
  world.model.stores.push_back(model);
  const zn_lib::Configuration& own = *world.stores.back();
  step.same(model.type, own.type);
  step.same(model.name, own.name);
  step.same(model.extension, own.extension);
  step.same(true, own.backup);
  step.same("", own.path);
}

void destroyStore(Step& step, const Pair&, std::size_t at) {
  World& world = step.world;
  step.call("~Configuration" + std::to_string(at));
  step.touchesFiles();
  ModelStore& model = world.model.stores[at];
  if (model.changed) save(world.model, model);
  world.model.stores.erase(world.model.stores.begin() + static_cast<std::ptrdiff_t>(at));
  world.stores.erase(world.stores.begin() + static_cast<std::ptrdiff_t>(at));
}

void create(Step& step) {
  if (step.world.stores.size() < kMostStores) {
    createStore(step);
  } else {
    const Pair pair{"0", *step.world.stores[0], step.world.model.stores[0]};
    destroyStore(step, pair, 0);
  }
}

/// Makes a call for which there must be a store. The first of them creates it.
template <void (*make)(Step&, const Pair&, std::size_t)>
void withStore(Step& step) {
  if (step.world.stores.empty()) {
    createStore(step);
    return;
  }
  const std::size_t at = step.choose.below(static_cast<unsigned>(step.world.stores.size()));
  const Pair pair{std::to_string(at), *step.world.stores[at], step.world.model.stores[at]};
  make(step, pair, at);
}

void set(Step& step, const Pair& pair, std::size_t) {
  const std::string key = keyOf(step.choose);
  const std::string value = anyText(step.choose);
  auto& elements = pair.model.elements;
  pair.model.changed = true;
  switch (step.choose.below(3)) {
    case 0: {
      step.call("set" + pair.number, key, value);
      Setting setting{value, "TEXT", key};
      if (elements.count(key) != 0) {
        const Setting& old = elements[trimmed(key)];
        setting = {value, old.type, old.describe};
      }
      elements[trimmed(key)] = setting;
      pair.own.set(key, value);
      break;
    }
    case 1: {
      const std::string type = step.choose.one({"NUMBER"s, ""s, "it's"s, "a\0b"s});
      const std::string describe = anyText(step.choose);
      step.call("set" + pair.number, key, type, value, describe);
      elements[trimmed(key)] = {value, type, describe};
      pair.own.set(key, type, value, describe);
      break;
    }
    default: {
      zn_lib::ConfigElement element;
      element.value = value;
      if (step.choose.flag()) element.type = "NUMBER";
      if (step.choose.flag()) element.describe = anyText(step.choose);
      step.call("set" + pair.number, key, settingOf(element));
      elements[trimmed(key)] = settingOf(element);
      pair.own.set(key, element);
    }
  }
  compareStores(step, pair);
}

void get(Step& step, const Pair& pair, std::size_t) {
  std::string key = keyOf(step.choose);
  step.call("get" + pair.number, key);
  const auto found = pair.model.elements.find(trimmed(key));
  step.same(found == pair.model.elements.end() ? Setting{} : found->second,
            settingOf(pair.own.get(key)));
  step.same(pair.model.elements.size(), pair.own.elements.size());
  const std::string expected = trimmed(key);
  pair.own.adjustKey(key);
  step.same(expected, key);
}

void load(Step& step, const Pair& pair, std::size_t) {
  const Model& model = step.world.model;
  step.call("load" + pair.number);
  const bool hasName = !pair.model.name.empty();
  if (hasName) {
    SettingsEvents events;
    readFile(model, fileOf(model, pair.model), events);
    for (const auto& [key, setting] : events.data) pair.model.elements[key] = setting;
    pair.model.changed = false;
  }
  step.same(hasName, pair.own.load());
  compareStores(step, pair);
}

void saveStore(Step& step, const Pair& pair, std::size_t) {
  Model& model = step.world.model;
  step.call("save" + pair.number);
  step.touchesFiles();
  step.same(fileOf(model, pair.model), pair.own.getConfigurationFile());
  step.same(save(model, pair.model), pair.own.save());
  compareStores(step, pair);
  step.same(model.dates.useTime, zn_lib::isUseTime());
}

void changeStore(Step& step, const Pair& pair, std::size_t) {
  step.call("store" + pair.number + "'s name");
  pair.own.path = pair.model.path = step.choose.one({""s, "sub"s, "~"s, "d.d"s, "missing"s});
  pair.own.extension = pair.model.extension = step.choose.one({"cfg"s, "xml"s, ""s, "txt"s});
  pair.own.backup = pair.model.backup = !step.choose.flag();
  step.same(fileOf(step.world.model, pair.model), pair.own.getConfigurationFile());
  step.same(pair.model.backup, pair.own.backup);
}

void listStore(Step& step, const Pair& pair, std::size_t) {
  step.call("listConfiguration" + pair.number);
  std::size_t width = 0;
  for (const auto& entry : pair.model.elements) {
    width = std::max(width, entry.second.describe.size());
  }
  ++width;
  const auto padded = [&](const std::string& text) {
    const std::string shownText = text.c_str();
    const std::size_t missing = width - std::min(width, shownText.size());
    return shownText + std::string(missing, ' ');
  };
  std::string& out = step.world.model.out;
  out += "\n[ " + std::string(pair.model.type.c_str()) + " ]\n" + padded("Description") + "Value\n";
  out += padded("-----------") + "-----\n";
  for (const auto& entry : pair.model.elements) {
    out += padded(entry.second.describe) + entry.second.value.c_str() + "\n";
  }
  out += "\n";
  pair.own.listConfiguration();
}

// ---- The readers

void readSettings(Step& step) {
  const Model& model = step.world.model;
  std::string name = fileName(step.choose);
  step.call("ReadXml<ConfigEvent>::parseFile", name);
  SettingsEvents events;
  const bool expected = readFile(model, name, events);
  zn_lib::ReadXml<zn_lib::ConfigEvent> reader;
  reader.setFileName(name);
  step.same(expected, reader.parseFile());
  step.same(events.data, settingsOf(reader.event->data));
}

/// Sends an event to a handler that lives as long as the history.
void sendEvent(Step& step) {
  SettingsEvents& model = step.world.model.settingsEvents;
  zn_lib::ConfigEvent& own = step.world.settingsEvents;
  const std::string text =
      step.choose.one({"key"s, " text "s, "CONFIGURATION"s, ""s, "k2"s, "\n"s});
  const int length = static_cast<int>(text.size());
  const XML_Char* attributes[5] = {};
  switch (step.choose.below(6)) {
    case 0:
      step.call("ConfigEvent::OnStartElement", text);
      model.start(text, attributes);
      own.OnStartElement(text.c_str(), attributes);
      break;
    case 1:
      attributes[0] = "x";
      attributes[1] = "T";
      if (step.choose.flag()) {
        attributes[2] = "y";
        attributes[3] = "d";
      }
      step.call("ConfigEvent::OnStartElement", text, "x", "T", attributes[3]);
      model.start(text, attributes);
      own.OnStartElement(text.c_str(), attributes);
      break;
    case 2:
      step.call("ConfigEvent::OnEndElement", text);
      model.end(text);
      own.OnEndElement(text.c_str());
      break;
    case 3:
      step.call("ConfigEvent::OnCharacterData", text, length);
      model.text(text.c_str(), length);
      own.OnCharacterData(text.c_str(), length);
      break;
    case 4: {
      step.call("ConfigEvent::exportData");
      zn_lib::config_map target;
      target["old"].value = target["key"].value = "old";
      std::map<std::string, Setting> expected = settingsOf(target);
      for (const auto& [key, setting] : model.data) expected[key] = setting;
      own.exportData(target);
      step.same(expected, settingsOf(target));
      break;
    }
    default: {
      const int shorter = length == 0 ? 0 : length - 1;
      step.call("skipWhiteSpace", text, shorter);
      step.same(withoutIndentation(text.c_str(), shorter),
                own.skipWhiteSpace(text.c_str(), shorter));
    }
  }
  step.same(model.element, own.element);
  step.same(model.lastElement, own.lastElement);
  step.same(model.data, settingsOf(own.data));
}

void compareKeys(Step& step) {
  const std::string a = keyOf(step.choose);
  const std::string b = keyOf(step.choose);
  step.call("map_key", a, b);
  step.same(a < b, zn_lib::map_key<std::string>()(a, b));
}

}  // namespace

void addSettings(Kinds& kinds) {
  kinds.push_back({"Configuration::Configuration ConfigElement::ConfigElement", create, 6});
  kinds.push_back({"Configuration::~Configuration", withStore<destroyStore>, 4});
  kinds.push_back({"Configuration::set", withStore<set>, 24});
  kinds.push_back({"Configuration::get Configuration::adjustKey", withStore<get>, 10});
  kinds.push_back({"Configuration::load", withStore<load>, 20});
  kinds.push_back(
      {"Configuration::save Configuration::getConfigurationFile", withStore<saveStore>, 20});
  kinds.push_back({"", withStore<changeStore>, 4});
  kinds.push_back({"Configuration::listConfiguration", withStore<listStore>, 6});
  kinds.push_back({"ReadXml::ReadXml ReadXml::parseFile ReadXml::~ReadXml", readSettings});
  kinds.push_back(
      {"ConfigEvent::OnStartElement ConfigEvent::OnEndElement "
       "ConfigEvent::OnCharacterData ConfigEvent::exportData XmlEvent::skipWhiteSpace "
       "ConfigEvent::ConfigEvent",
       sendEvent});
  kinds.push_back({"map_key::operator()", compareKeys, 2});
}

}  // namespace histories
