/// Runs any sequence of operations on a store of settings, and damages its file in between.
/// Compares the store with a map, and its file with the expected bytes.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_datetime.h>
#include <zn_setcfg.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

#include "captured_stream.h"
#include "fuzz_check.h"
#include "fuzz_files.h"
#include "fuzz_xml.h"
#include "whitespace.h"

namespace {

using fuzz::expectSame;
using zn_lib::Configuration;

std::string trimmed(const std::string& key) {
  return withoutTrailingWhitespace(withoutLeadingWhitespace(key));
}

std::string now() {
  const std::time_t time = std::time(nullptr);
  std::array<char, 64> text;
  return {text.data(),
          std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", std::localtime(&time))};
}

/// A store with its file and backup, and the expected contents of all three.
class Model {
 public:
  Model(FuzzedDataProvider& input, const fuzz::TemporaryDirectory& directory)
      : input_(input), directory_(directory) {
    std::filesystem::remove(file());
    std::filesystem::remove(file() + "~");
    std::filesystem::remove(file() + ".1.zn_udf");
    create();
  }

  void step() {
    switch (input_.ConsumeIntegralInRange(0, 17)) {
      case 0:
        setValue();
        break;
      case 1:
        setAll();
        break;
      case 2:
        setElement();
        break;
      case 3:
        get();
        break;
      case 4:
        load();
        break;
      case 5:
        save();
        break;
      case 6:
        destroy();
        create();
        break;
      case 7:
        damage(text());
        break;
      case 8:
        damage(content_.value_or("").substr(0, input_.ConsumeIntegral<unsigned char>()));
        break;
      case 9:
        remove();
        break;
      case 10:
        store_->backup = backup_ = input_.ConsumeBool();
        break;
      case 11:
        store_->type = type_ = text();
        break;
      case 12:
        store_->name = name_ = input_.ConsumeBool() ? "" : "config";
        break;
      case 13:
        isMissing_ = input_.ConsumeBool();
        store_->path = path();
        break;
      case 14:
        adjustKey();
        break;
      case 15:
        put();
        break;
      case 16:
        list();
        break;
      default:
        leaveBehind();
        break;
    }
    check();
  }

  void destroy() {
    const std::string before = now();
    store_.reset();
    if (changed_) saved(before);
    checkFiles();
  }

 private:
  std::string file() const { return directory_.file("config.xml"); }
  std::string path() const { return isMissing_ ? directory_.file("missing") : directory_.path(); }
  bool isWritable() const { return !name_.empty() && !isMissing_; }

  std::string text() { return input_.ConsumeRandomLengthString(64); }

  /// Returns any key, or often one that other operations use.
  std::string key() {
    if (input_.ConsumeBool()) return text();
    return input_.PickValueInArray<std::string>(
        {"a", "b", " a", "b\t", "", " ", "UPDATE", "CONFIGURATION", "A", "ab"});
  }

  void create() {
    store_.emplace();
    name_ = "config";
    type_ = "SYSTEM";
    if (input_.ConsumeBool()) {
      type_ = text();
      store_.emplace(type_, name_);
      expectSame("file", store_->getConfigurationFile(), std::string("config.cfg"));
      store_->extension = "xml";
    }
    store_->path = path();
    elements_.clear();
    changed_ = false;
    backup_ = true;
  }

  void setValue() {
    const std::string given = key();
    const std::string adjusted = trimmed(given);
    fuzz::Setting setting;
    if (elements_.count(given) == 0) {
      setting.describe = given;
    } else if (elements_.count(adjusted) != 0) {
      setting = elements_[adjusted];
    }
    setting.value = text();
    store_->set(given, setting.value);
    stored(adjusted, setting);
  }

  void setAll() {
    const std::string given = key();
    fuzz::Setting setting;
    setting.type = text();
    setting.value = text();
    setting.describe = text();
    store_->set(given, setting.type, setting.value, setting.describe);
    stored(trimmed(given), setting);
  }

  void setElement() {
    const std::string given = key();
    zn_lib::ConfigElement element;
    element.value = text();
    store_->set(given, element);
    stored(trimmed(given), {element.value, "TEXT", ""});
  }

  /// Adds a setting directly to the map, which does not trim its key.
  void put() {
    const std::string given = key();
    store_->elements[given].describe = elements_[given].describe = text();
  }

  void stored(const std::string& adjusted, const fuzz::Setting& setting) {
    elements_[adjusted] = setting;
    changed_ = true;
  }

  void get() {
    const std::string given = key();
    const auto found = elements_.find(trimmed(given));
    compare(store_->get(given), found == elements_.end() ? fuzz::Setting() : found->second);
  }

  void adjustKey() {
    std::string adjusted = key();
    const std::string expected = trimmed(adjusted);
    store_->adjustKey(adjusted);
    expectSame("adjustKey", adjusted, expected);
  }

  void load() {
    expectSame("load", store_->load(), !name_.empty());
    if (name_.empty()) return;
    changed_ = false;
    if (isMissing_) return;
    for (const auto& [key, setting] : fuzz::SettingsReader(content_.value_or("")).settings) {
      elements_[key] = setting;
    }
  }

  void save() {
    const bool useTime = input_.ConsumeBool();
    zn_lib::setUseTime(useTime);
    const std::string before = now();
    expectSame("save", store_->save(), isWritable());
    expectSame("the use of times", zn_lib::isUseTime(), useTime);
    saved(before);
    checkFiles();
  }

  /// Updates the model after an attempt to save that began at `before`.
  void saved(const std::string& before) {
    if (!isWritable()) return;
    if (elements_.count("UPDATE") == 0) {
      const bool isSameSecond = readFile(file()).find(before) != std::string::npos;
      elements_["UPDATE"] = {isSameSecond ? before : now(), "DATE", "Date of update in ISO9601"};
    }
    if (backup_ && content_) backupContent_ = content_;
    content_ = document();
    changed_ = false;
    hasLeftover_ = false;
  }

  /// Returns the contents of a saved file. Its texts end at their first NUL.
  std::string document() const {
    std::ostringstream xml;
    xml << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='" << type_.c_str()
        << "'>\n";
    for (const auto& [key, setting] : elements_) {
      xml << '<' << key.c_str() << " data_type='" << setting.type.c_str() << "' describe='"
          << setting.describe.c_str() << "'>" << setting.value.c_str() << "</" << key.c_str()
          << ">\n";
    }
    xml << "</CONFIGURATION>\n";
    return xml.str();
  }

  void damage(const std::string& bytes) {
    writeFile(file(), bytes);
    content_ = bytes;
  }

  void remove() {
    std::filesystem::remove(file());
    content_.reset();
  }

  /// Creates the file that a save leaves when its process is killed. The next save removes it.
  void leaveBehind() {
    writeFile(file() + ".1.zn_udf", text());
    hasLeftover_ = true;
  }

  void list() {
    CapturedStream actual(std::cout);
    store_->listConfiguration();

    std::ostringstream expected;
    std::size_t width = 0;
    for (const auto& [key, setting] : elements_) width = std::max(width, setting.describe.size());
    const auto row = [&](const std::string& left, const std::string& right) {
      const std::string shown = left.c_str();
      expected << shown << std::string(width + 1 - std::min(width + 1, shown.size()), ' ')
               << right.c_str() << '\n';
    };
    expected << "\n[ " << type_.c_str() << " ]\n";
    row("Description", "Value");
    row("-----------", "-----");
    for (const auto& [key, setting] : elements_) row(setting.describe, setting.value);
    expected << '\n';
    expectSame("listConfiguration", actual.text(), expected.str());
  }

  static void compare(const zn_lib::ConfigElement& actual, const fuzz::Setting& expected) {
    expectSame("value", actual.value, expected.value);
    expectSame("type", actual.type, expected.type);
    expectSame("describe", actual.describe, expected.describe);
  }

  void check() {
    expectSame("changed", store_->changed, changed_);
    expectSame("entries", store_->elements.size(), elements_.size());
    auto own = store_->elements.begin();
    for (const auto& [key, setting] : elements_) {
      expectSame("key", own->first, key);
      compare(own->second, setting);
      ++own;
    }
  }

  void checkFiles() const {
    checkFile("file", file(), content_);
    checkFile("backup", file() + "~", backupContent_);
    const auto files = static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(directory_.path()), {}));
    expectSame("files", files,
               std::size_t{content_.has_value()} + std::size_t{backupContent_.has_value()} +
                   std::size_t{hasLeftover_});
  }

  static void checkFile(const char* what, const std::string& name,
                        const std::optional<std::string>& content) {
    expectSame(what, std::filesystem::exists(name), content.has_value());
    if (content) expectSame(what, readFile(name), *content);
  }

  FuzzedDataProvider& input_;
  const fuzz::TemporaryDirectory& directory_;
  std::optional<Configuration> store_;
  fuzz::Settings elements_;
  std::string name_, type_;
  bool changed_ = false;
  bool backup_ = true;
  bool isMissing_ = false;
  bool hasLeftover_ = false;
  std::optional<std::string> content_, backupContent_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int mostSteps = 40;
  static const fuzz::TemporaryDirectory directory;
  FuzzedDataProvider input(data, size);
  Model model(input, directory);
  for (int i = 0; i < mostSteps && input.remaining_bytes() > 0; ++i) model.step();
  model.destroy();
  return 0;
}
