/// Settings, loaded and saved: against the parser that the library uses, alone with a map, and
/// against libraries that make a document of the file.
#include <expat.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_setcfg.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "bench_files.h"
#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
#include <tinyxml2.h>
#endif

namespace {

namespace fs = std::filesystem;

/// What the peers fill.
using Settings = std::map<std::string, zn_lib::ConfigElement>;

// The rows' stores: one in the order that the library saves, one in another, one large.
constexpr const char* kSorted = "sorted";
constexpr const char* kShuffled = "shuffled";
constexpr const char* kLarge = "large";

constexpr int kSettings = 10000;
constexpr int kManySettings = 100000;

std::unique_ptr<zn_lib::Configuration> storeIn(const std::string& directory,
                                               const std::string& name) {
  auto store = std::make_unique<zn_lib::Configuration>("BENCH", name);
  store->path = directory;
  return store;
}

/// The key of setting `i`: keys come in the order of their numbers.
std::string keyOf(int i) { return "section.key_" + std::to_string(1000000 + i); }

/// Writes settings of about 100 bytes each as the file of a store. The numbers of neighbours differ
/// by `step`, which has no divisor in common with `count`.
void writeSettings(const std::string& directory, const std::string& name, int count, int step) {
  std::ofstream out(storeIn(directory, name)->getConfigurationFile());
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='BENCH'>\n";
  long long number = 0;
  for (int i = 0; i < count; ++i, number = (number + step) % count) {
    const std::string key = keyOf(static_cast<int>(number));
    out << '<' << key << " data_type='TEXT' describe='a description'>value of setting " << number
        << "</" << key << ">\n";
  }
  out << "</CONFIGURATION>\n";
}

// ---- Loading

/// Settings as a program reads them that has the parser and nothing else.
class BareReader {
 public:
  Settings read(const std::string& file) {
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"),
                                                                         &XML_ParserFree);
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), &start, &end);
    XML_SetCharacterDataHandler(parser.get(), &text);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(file.c_str(), "r"),
                                                             &std::fclose);
    std::array<char, 8192> block;
    std::size_t count = block.size();
    while (count == block.size()) {
      count = std::fread(block.data(), 1, block.size(), in.get());
      XML_Parse(parser.get(), block.data(), static_cast<int>(count), count < block.size());
    }
    return std::move(settings_);
  }

 private:
  static void XMLCALL start(void* reader, const XML_Char* name, const XML_Char** attributes) {
    auto* const self = static_cast<BareReader*>(reader);
    if (attributes[0] == nullptr || attributes[2] == nullptr) return;
    self->current_ = &self->settings_[name];
    self->current_->type = attributes[1];
    self->current_->describe = attributes[3];
  }

  static void XMLCALL end(void* reader, const XML_Char*) {
    static_cast<BareReader*>(reader)->current_ = nullptr;
  }

  static void XMLCALL text(void* reader, const XML_Char* text, int length) {
    auto* const self = static_cast<BareReader*>(reader);
    if (self->current_ != nullptr) {
      self->current_->value.append(text, static_cast<std::size_t>(length));
    }
  }

  Settings settings_;
  zn_lib::ConfigElement* current_ = nullptr;
};

#ifdef ZN_UDF_HAVE_PUGIXML
Settings readByPugixml(const std::string& file) {
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
Settings readByTinyxml2(const std::string& file) {
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

template <class Input, class Operation>
void addMillisecondRow(const std::string& name, const Input& input, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [input, operation](benchmark::State& state) {
    bench::timeOperation(state, input, operation);
  })->Unit(benchmark::kMillisecond);
}

void addLoadRows(const std::string& row, const std::string& directory, const std::string& name) {
  addMillisecondRow(row + "/zn_udf", directory, [name](const std::string& d) {
    auto store = storeIn(d, name);
    store->load();
    return store;
  });
  const std::string file = storeIn(directory, name)->getConfigurationFile();
  addMillisecondRow(row + "/bare_expat", file,
                    [](const std::string& f) { return BareReader().read(f); });
#ifdef ZN_UDF_HAVE_PUGIXML
  addMillisecondRow(row + "/pugixml", file, &readByPugixml);
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
  addMillisecondRow(row + "/tinyxml2", file, &readByTinyxml2);
#endif
}

// ---- Memory

/// Runs `operation` in a child. Returns the child's greatest memory use in MiB, the pages that it
/// got from this process included.
template <class Operation>
double peakOfChild(Operation operation) {
  const pid_t child = fork();
  if (child == 0) {
    const auto result = operation();
    benchmark::DoNotOptimize(result);
    _exit(0);
  }
  rusage usage{};
  wait4(child, nullptr, 0, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

template <class Operation>
void addPeakRow(const std::string& name, Operation operation) {
  const auto run = [operation](benchmark::State& state) {
    double peak = 0;
    for (auto _ : state) peak = peakOfChild(operation);
    state.counters["peak_MiB"] = peak;
  };
  benchmark::RegisterBenchmark(name.c_str(), run)->UseRealTime()->Unit(benchmark::kMillisecond);
}

void addPeakRows(const std::string& directory) {
  addPeakRow("load_100000_in_child/zn_udf", [directory] {
    auto store = storeIn(directory, kLarge);
    store->load();
    return store;
  });
  const std::string file = storeIn(directory, kLarge)->getConfigurationFile();
  addPeakRow("load_100000_in_child/bare_expat", [file] { return BareReader().read(file); });
#ifdef ZN_UDF_HAVE_PUGIXML
  addPeakRow("load_100000_in_child/pugixml", [file] { return readByPugixml(file); });
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
  addPeakRow("load_100000_in_child/tinyxml2", [file] { return readByTinyxml2(file); });
#endif
}

// ---- Saving

void addSaveRows(const std::string& directory) {
  const std::shared_ptr<zn_lib::Configuration> store = storeIn(directory, kSorted);
  store->load();
  store->name = "saved";
  addMillisecondRow("save_10000/zn_udf", store, [](const auto& s) { return s->save(); });
#ifdef ZN_UDF_HAVE_PUGIXML
  const std::string file = directory + "/saved_by_pugixml";
  addMillisecondRow("save_10000/pugixml", store, [file](const auto& s) {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("CONFIGURATION");
    root.append_attribute("type") = s->type.c_str();
    for (const auto& [key, element] : s->elements) {
      pugi::xml_node node = root.append_child(key.c_str());
      node.append_attribute("data_type") = element.type.c_str();
      node.append_attribute("describe") = element.describe.c_str();
      node.text() = element.value.c_str();
    }
    return document.save_file(file.c_str(), "");
  });
#endif
}

}  // namespace

int main(int argc, char** argv) {
  const bench::TemporaryDirectory directory;
  writeSettings(directory.path(), kSorted, kSettings, 1);
  addLoadRows("load_10000", directory.path(), kSorted);
  constexpr int shuffle = 3571;
  writeSettings(directory.path(), kShuffled, kSettings, shuffle);
  addLoadRows("load_10000_shuffled", directory.path(), kShuffled);
  writeSettings(directory.path(), kLarge, kManySettings, 1);
  addPeakRows(directory.path());
  addSaveRows(directory.path());
  return bench::runRows(argc, argv);
}
