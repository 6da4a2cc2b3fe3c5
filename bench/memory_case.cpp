/// A single case in a process of its own, run by memory_bench.
///
/// usage: memory_case CASE FILE
#include "memory_case.h"

#include <dirent.h>
#include <tokenizer.h>
#include <zn_dir.h>
#include <zn_file.h>
#include <zn_output.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench_files.h"
#include "bench_settings.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/strings/str_split.h>
#endif

namespace {

using Texts = std::vector<std::string>;

/// Prevents the compiler from omitting a result that is not used.
template <class Result>
void keep(const Result& result) {
  static const void* volatile kept;
  kept = &result;
  static_cast<void>(kept);
}

// ---- Settings

void loadStore(const std::string& directory) {
  const auto store = bench::storeIn(directory, memory_case::kStore);
  store->load();
  keep(*store);
}

std::string fileOfStore(const std::string& directory) {
  return bench::storeIn(directory, memory_case::kStore)->getConfigurationFile();
}

void loadByExpat(const std::string& directory) { keep(bench::readByExpat(fileOfStore(directory))); }

/// Fills a map with the contents of the file, without reading it.
void settingsAlone(const std::string&) {
  bench::Settings settings;
  for (int i = 0; i < memory_case::kSettings; ++i) {
    zn_lib::ConfigElement& setting = settings[bench::keyOf(i)];
    setting.describe = bench::kDescription;
    setting.value = bench::valueOf(i);
  }
  keep(settings);
}

#ifdef ZN_UDF_HAVE_PUGIXML
void loadByPugixml(const std::string& directory) {
  keep(bench::readByPugixml(fileOfStore(directory)));
}
#endif

#ifdef ZN_UDF_HAVE_TINYXML2
void loadByTinyxml2(const std::string& directory) {
  keep(bench::readByTinyxml2(fileOfStore(directory)));
}
#endif

// ---- Tokens

/// Returns the text to be split into tokens of seven characters. All cases create it, so that its
/// memory counts for all.
std::string textOfTokens() {
  std::string text(memory_case::kTextSize, 'x');
  for (std::size_t i = 7; i < text.size(); i += 8) text[i] = ',';
  return text;
}

void split(const std::string&) {
  const std::string text = textOfTokens();
  zn_lib::Tokenizer tokenizer;
  tokenizer.split(text, ",");
  keep(tokenizer.tokens);
}

void tokensAlone(const std::string&) {
  const std::string text = textOfTokens();
  const Texts tokens(static_cast<std::size_t>(std::count(text.begin(), text.end(), ',')),
                     std::string(7, 'x'));
  keep(tokens);
}

#ifdef ZN_UDF_HAVE_ABSL
void splitByAbsl(const std::string&) {
  const std::string text = textOfTokens();
  const Texts tokens = absl::StrSplit(text, ',');
  keep(tokens);
}
#endif

// ---- Dumps

void dump(const std::string& file) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::exit(1);
  zn_lib::setVerbose(true);
  zn_lib::hexDump(file, 16);
}

/// Reads the whole file, which is the least that a dump needs if it reads the file first.
void bytesAlone(const std::string& file) {
  std::string bytes(memory_case::kDumpSize, '\0');
  std::ifstream(file, std::ios_base::binary)
      .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  keep(bytes);
}

// ---- Directories

void list(const std::string& directory) {
  Texts names;
  zn_lib::listDir(directory, "", false, names);
  keep(names);
}

void namesAlone(const std::string&) {
  Texts names;
  names.reserve(memory_case::kFiles + 2);
  for (std::size_t i = 0; i < memory_case::kFiles; ++i) {
    const std::string name = bench::FullDirectory::nameOf(i);
    names.push_back(name);  // a copy has no spare capacity
  }
  keep(names);
}

void listByReaddir(const std::string& directory) {
  Texts names;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()), &closedir);
  while (const dirent* const entry = readdir(entries.get())) names.emplace_back(entry->d_name);
  keep(names);
}

void nothing(const std::string&) {}

const std::map<std::string, std::function<void(const std::string&)>> kCases = {
    {"nothing", nothing},
    {"load/zn_udf", loadStore},
    {"load/baseline:result_alone", settingsAlone},
    {"load/expat_and_map", loadByExpat},
#ifdef ZN_UDF_HAVE_PUGIXML
    {"load/pugixml", loadByPugixml},
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
    {"load/tinyxml2", loadByTinyxml2},
#endif
    {"split/zn_udf", split},
    {"split/baseline:result_alone", tokensAlone},
#ifdef ZN_UDF_HAVE_ABSL
    {"split/absl_StrSplit", splitByAbsl},
#endif
    {"hexDump/zn_udf", dump},
    {"hexDump/baseline:file_alone", bytesAlone},
    {"listDir/zn_udf", list},
    {"listDir/baseline:result_alone", namesAlone},
    {"listDir/readdir", listByReaddir},
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto found = kCases.find(argv[1]);
  if (found == kCases.end()) return 2;
  found->second(argv[2]);
  return 0;
}
