#include "zn_setcfg.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <utility>

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

/// The process-wide use-time setting, on for the time of a scope.
class WithTime {
 public:
  WithTime() : before_(isUseTime()) { setUseTime(true); }
  ~WithTime() { setUseTime(before_); }
  WithTime(const WithTime&) = delete;
  WithTime& operator=(const WithTime&) = delete;

 private:
  const bool before_;
};

/// The store's file as text. Each part ends at its first NUL.
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

/// Stamps the store with the time of its first save, and gives its text.
std::string stampedXml(Configuration& store) {
  const WithTime time;
  if (store.elements.find(kStampKey) == store.elements.end()) {
    store.set(kStampKey, "DATE", getTodayAsISO(), "Date of update in ISO9601");
  }
  return toXml(store);
}

/// The entry of `key` in `data`, made when there is none. Looked for behind the last one first,
/// where the next key of a saved file belongs: `map_key` copies the keys that it compares.
ConfigElement* entryFor(const std::string& key, config_map& data) {
  return &data.emplace_hint(data.end(), key, ConfigElement())->second;
}

/// A file of its own beside another one, gone with the object unless it was moved away.
class FileBeside {
 public:
  /// Creates it empty; `isOpen` tells whether that succeeded. No other process has the same name.
  explicit FileBeside(const std::string& file) {
    constexpr int tries = 100;
    for (int i = 0; i < tries && descriptor_ < 0; ++i) {
      name_ = file + "." + std::to_string(getpid()) + "-" + std::to_string(i);
      descriptor_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (descriptor_ < 0 && errno != EEXIST) break;
    }
    isThere_ = isOpen();
  }

  ~FileBeside() {
    if (descriptor_ >= 0) close(descriptor_);
    if (isThere_) unlink(name_.c_str());
  }

  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }

  /// Writes `text` and closes the file; true when all of it is there.
  bool write(const std::string& text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
      const ssize_t count = ::write(descriptor_, at, static_cast<std::size_t>(end - at));
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return false;
      at += count;
    }
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return close(descriptor) == 0;
  }

  /// Gives the file the name `target`, in place of another file of that name.
  bool moveTo(const std::string& target) {
    if (std::rename(name_.c_str(), target.c_str()) != 0) return false;
    isThere_ = false;
    return true;
  }

  const std::string& name() const { return name_; }

 private:
  std::string name_;
  int descriptor_ = -1;
  bool isThere_ = false;
};

/// True for a regular file and for none at all.
bool isReplaceable(const std::string& file) {
  struct stat status;
  if (lstat(file.c_str(), &status) != 0) return errno == ENOENT;
  return S_ISREG(status.st_mode);
}

/// Makes the backup a second name of the file, so that the file does not go missing; moves the file
/// to its backup where the file system has no hard links. `beside` is a free name.
void keepBackup(const std::string& file, const std::string& beside) {
  const bool hasSecondName = link(file.c_str(), beside.c_str()) == 0;
  if (!hasSecondName && errno == ENOENT) return;
  const std::string& kept = hasSecondName ? beside : file;
  const std::string backup = file + "~";
  if (std::rename(kept.c_str(), backup.c_str()) != 0) {
    // A directory may be in its place.
    std::remove(backup.c_str());
    std::rename(kept.c_str(), backup.c_str());
  }
  // Still there when the backup could not be made, and when it was the same file already.
  unlink(beside.c_str());
}

}  // namespace

ConfigElement::ConfigElement() : type("TEXT") {}

ConfigEvent::ConfigEvent() = default;

void ConfigEvent::OnStartElement(const XML_Char* name, const XML_Char** attributes) {
  guarded([&] {
    element = name;
    lastElement.clear();
    entry_ = nullptr;
    if (element.empty() || element == kRoot || attributes[0] == nullptr) return;
    entry_ = entryFor(element, data);
    // Names and values alternate; the names do not matter.
    entry_->type = attributes[1];
    if (attributes[2] != nullptr) entry_->describe = attributes[3];
  });
}

void ConfigEvent::OnEndElement(const XML_Char*) {
  guarded([&] {
    element.clear();
    entry_ = nullptr;
  });
}

void ConfigEvent::OnCharacterData(const XML_Char* text, int length) {
  guarded([&] {
    if (length < 1 || element.empty() || element == kRoot) return;
    if (entry_ == nullptr) entry_ = entryFor(element, data);
    std::string piece = skipWhiteSpace(text, length);
    if (lastElement == element) {
      entry_->value += piece;
    } else {
      entry_->value = std::move(piece);
      lastElement = element;
    }
  });
}

void ConfigEvent::exportData(config_map& target) {
  // Both are in the same order: an entry's place is mostly right behind the one before.
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
    // Memory ran out, and a destructor has no way to tell.
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
  // The key is looked up as given, and stored trimmed.
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
  // The system ends a name at its first NUL; the names made from it must too.
  const std::string file = getConfigurationFile().c_str();
  if (file.empty()) return false;

  if (backup && isReplaceable(file)) {
    FileBeside fresh(file);
    if (fresh.isOpen()) {
      // A text that is not whole replaces nothing. That is no failure to the caller, who learns of
      // none in writing.
      if (fresh.write(stampedXml(*this))) {
        keepBackup(file, fresh.name() + "~");
        if (!fresh.moveTo(file)) return false;
      }
      changed = false;
      return true;
    }
  }

  if (backup) createBackup(file);
  std::ofstream out(file);
  if (!out.is_open()) return false;
  const std::string xml = stampedXml(*this);
  out.write(xml.data(), static_cast<std::streamsize>(xml.size()));
  out.close();
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
