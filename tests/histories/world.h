/// The objects of the library that a history uses, and the same objects of the model.
#ifndef HISTORIES_WORLD_H
#define HISTORIES_WORLD_H

#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_error.h>
#include <zn_ip.h>
#include <zn_moonphase.h>
#include <zn_readfile.h>
#include <zn_readxml.h>
#include <zn_setcfg.h>
#include <zn_writefile.h>
#include <zn_xmlparser.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "call.h"
#include "captured_stream.h"
#include "files.h"
#include "model_files.h"
#include "model_parser.h"
#include "model_xml.h"

namespace histories {

constexpr unsigned kObjects = 3;  ///< how many objects of a class there are

/// The time that both the library and the model are told.
std::time_t clockTime();
void setClock(std::time_t time);

struct ModelStore {
  std::map<std::string, Setting> elements;
  std::string path, name, extension, type;
  bool changed = false, backup = true;
};

struct ModelReader {
  std::string path, name, extension;  ///< the parts of the name that was set
  NodePointer file;                   ///< null if closed
  std::size_t at = 0;                 ///< the part of the file that was fetched
  std::string buffer;                 ///< what was fetched and not yet read
  bool hasFailed = false, hasEnded = false;
};

struct ModelWriter {
  std::string path, name, extension;
  NodePointer file;
  std::size_t at = 0;
  bool hasFailed = false, append = false, overwrite = true, isAppending = false;
};

struct ModelDates {
  int dateFormat = 0, monthFormat = 0;
  char dateSeparator = 0, dateTimeSeparator = 0, timeSeparator = 0;
  bool useTime = false;
};

struct ModelAddress {
  std::array<unsigned char, 4> binary = {}, blocks = {};
};

/// What the model knows. It is written without the library's functions.
struct Model {
  Disk disk;
  std::string home = "home";  ///< relative, so that answers name no directory of this machine
  bool hasHome = true;
  bool isVerbose = false;
  ModelDates dates;
  std::string out, err;  ///< what the current call prints
  std::vector<ModelStore> stores;
  ModelReader readers[kObjects];
  ModelWriter writers[kObjects];
  std::vector<std::string> tokens[kObjects];
  std::vector<std::string> entries;
  std::map<int, std::string> catalogs[kObjects];
  SettingsEvents settingsEvents;
  CatalogEvents catalogEvents;
  ParserModel parsers[kObjects];
  ModelAddress addresses[kObjects];
  in6_addr six[kObjects] = {};
  zn_lib::date_time_record records[kObjects] = {};
};

class World {
 public:
  /// Makes a new directory the working directory, and resets the state of the process.
  World();
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  /// Makes a call and returns it with both answers.
  Step make(const std::vector<Kind>& kinds, Chooser& choose);

  /// Returns what the library has written to standard output in this call, which is then no longer
  /// compared.
  std::string takeOutput() { return out_.text(); }

  /// Whether answers contain a digest of the files, which takes long.
  bool showsFiles = false;

  Model model;

  std::vector<std::unique_ptr<zn_lib::Configuration>> stores;
  std::unique_ptr<zn_lib::ReadFile> readers[kObjects];
  std::unique_ptr<zn_lib::WriteFile> writers[kObjects];
  std::unique_ptr<zn_lib::Tokenizer> tokenizers[kObjects];
  std::vector<std::string> entries;
  std::map<int, std::string, zn_lib::error_order> catalogs[kObjects];
  zn_lib::ConfigEvent settingsEvents;
  zn_lib::ErrorEvent catalogEvents;
  std::unique_ptr<ParserUnderTest> parsers[kObjects];
  zn_lib::IPv4 addresses[kObjects];
  zn_lib::IPv6 six[kObjects];
  zn_lib::DayLength days[kObjects];
  zn_lib::MoonPhase moons[kObjects];
  zn_lib::date_time_record records[kObjects] = {};

 private:
  // The one working directory at the start is below this one, so that "../x" stays inside.
  const TemporaryDirectory directory_;
  const std::filesystem::path before_ = std::filesystem::current_path();
  const std::optional<std::string> home_;
  CapturedStream out_, err_;
};

}  // namespace histories

#endif  // HISTORIES_WORLD_H
