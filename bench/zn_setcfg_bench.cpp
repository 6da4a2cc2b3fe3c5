/// Loading and saving settings, compared with the parser that the library uses, with a map and
/// alone, and with libraries that build a document from the file.
#include <zn_setcfg.h>

#include <memory>
#include <string>

#include "bench_expat.h"
#include "bench_files.h"
#include "bench_rows.h"
#include "bench_settings.h"

namespace {

using bench::storeIn;

// The names of the stores: one in the order that the library saves, one shuffled, one for growth.
constexpr const char* kSorted = "sorted";
constexpr const char* kShuffled = "shuffled";
constexpr const char* kGrowing = "growing";

constexpr int kSettings = 10000;

void addLoadRows(const std::string& row, const std::string& directory, const std::string& name) {
  bench::addCountedClockRow(row + "/zn_udf", directory, [name](const std::string& d) {
    auto store = storeIn(d, name);
    store->load();
    return store;
  });
  const std::string file = storeIn(directory, name)->getConfigurationFile();
  bench::addClockRow(row + "/baseline:expat_alone", file, &bench::countOfFile);
  bench::addClockRow(row + "/expat_and_map", file, &bench::readByExpat);
#ifdef ZN_UDF_HAVE_PUGIXML
  bench::addClockRow(row + "/pugixml", file, &bench::readByPugixml);
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
  bench::addClockRow(row + "/tinyxml2", file, &bench::readByTinyxml2);
#endif
}

// ---- Saving

void addSaveRows(const std::string& directory) {
  const std::shared_ptr<zn_lib::Configuration> store = storeIn(directory, kSorted);
  store->load();
  store->name = "saved";
  store->save();
  bench::addClockRow("save_10000/zn_udf", store, [](const auto& s) { return s->save(); });
  // Writes the same bytes over the last file, and waits until they are on the disk.
  const std::string bytes = readFile(store->getConfigurationFile());
  const std::string plain = directory + "/written";
  bench::addClockRow("save_10000/baseline:write_and_fsync", bytes, [plain](const std::string& b) {
    writeFile(plain, b);
    return bench::synchronise(plain);
  });
#ifdef ZN_UDF_HAVE_PUGIXML
  // It keeps no backup and writes over the last file.
  const std::string file = directory + "/saved_by_pugixml";
  bench::addClockRow("save_10000/pugixml_and_fsync", store, [file](const auto& s) {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("CONFIGURATION");
    root.append_attribute("type") = s->type.c_str();
    for (const auto& [key, element] : s->elements) {
      pugi::xml_node node = root.append_child(key.c_str());
      node.append_attribute("data_type") = element.type.c_str();
      node.append_attribute("describe") = element.describe.c_str();
      node.text() = element.value.c_str();
    }
    return document.save_file(file.c_str(), "") && bench::synchronise(file);
  });
#endif
}

void addGrowthRows(const std::string& directory) {
  constexpr int fewest = 64;
  constexpr int most = 100000;
  const auto written = [directory](std::size_t size) {
    bench::writeSettings(directory, kGrowing, static_cast<int>(size), 1);
    return directory;
  };
  bench::addGrowth("load", fewest, most, written, [](const std::string& d) {
    auto store = storeIn(d, kGrowing);
    store->load();
    return store;
  });
  const auto loaded = [written](std::size_t size) {
    const std::shared_ptr<zn_lib::Configuration> store = storeIn(written(size), kGrowing);
    store->load();
    return store;
  };
  bench::addGrowth("save", fewest, most, loaded, [](const auto& s) { return s->save(); });
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  bench::writeSettings(directory.path(), kSorted, kSettings, 1);
  addLoadRows("load_10000", directory.path(), kSorted);
  constexpr int shuffle = 3571;
  bench::writeSettings(directory.path(), kShuffled, kSettings, shuffle);
  addLoadRows("load_10000_shuffled", directory.path(), kShuffled);
  addSaveRows(directory.path());
  addGrowthRows(directory.path());
  return bench::runRows(argc, argv);
}
