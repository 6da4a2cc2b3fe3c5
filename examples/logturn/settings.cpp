#include "settings.h"

#include <zn_dir.h>
#include <zn_file.h>
#include <zn_setcfg.h>
#include <zn_xmlparser.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

#include "errors.h"

namespace logturn {
namespace {

constexpr int kDefaultKeep = 7;
constexpr int kMostCopies = 1000000;

/// Returns the number if `text` consists of digits only and is a valid number of copies.
std::optional<int> toKeep(const std::string& text) {
  constexpr std::size_t mostDigits = 7;
  if (text.empty() || text.size() > mostDigits) return {};
  if (text.find_first_not_of("0123456789") != std::string::npos) return {};
  const int keep = std::stoi(text);
  if (keep < 1 || keep > kMostCopies) return {};
  return keep;
}

/// The store of the settings.
class Store : public zn_lib::Configuration {
 public:
  Store() : Configuration("LOGTURN", "logturn") {
    const char* const directory = std::getenv("XDG_CONFIG_HOME");
    const bool isSet = directory != nullptr && *directory != '\0';
    path = isSet ? directory : "~/.config";
  }

  /// Reads the file. Returns the number of copies, or nothing if the file is malformed or contains
  /// no valid number.
  std::optional<int> loadKeep() {
    load();
    return isWellFormed() ? toKeep(get("keep").value) : std::nullopt;
  }

 private:
  /// The result of `load` does not show that a file is incomplete. Its number may be cut off.
  bool isWellFormed() {
    std::ifstream file(getConfigurationFile());
    const std::string xml{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    XMLEvtHandler nobody;
    XMLParser parser(&nobody);
    return parser.Create("UTF-8", nullptr) && parser.Parse(xml.c_str(), xml.size(), true);
  }
};

}  // namespace

int readKeep(const std::string& text) {
  const std::optional<int> keep = toKeep(text);
  if (!keep) throw Error(Problem::kBadKeep, {std::to_string(kMostCopies), quote(text)});
  return *keep;
}

int savedKeep() {
  Store store;
  if (const std::optional<int> keep = store.loadKeep()) return *keep;
  // The result of loading does not show whether the file is missing, unreadable or malformed.
  const std::string file = store.getConfigurationFile();
  std::error_code failed;
  const bool exists = std::filesystem::exists(file, failed);
  if (exists || failed) throw Error(Problem::kBadSettings, {quote(file)});
  return kDefaultKeep;
}

void saveKeep(int keep) {
  // The store is not loaded first: a file that was malformed is replaced, and becomes the backup.
  Store store;
  store.set("keep", "NUMBER", std::to_string(keep), "Copies to keep");
  std::string directory = store.path;
  zn_lib::checkHomePath(directory);
  zn_lib::createDir(directory);
  // The result does not show a full disk; only the file does.
  const bool isWritten = store.save();
  store.changed = false;
  if (!isWritten || Store().loadKeep() != keep) {
    throw Error(Problem::kCannotSaveSettings, {quote(store.getConfigurationFile())});
  }
}

}  // namespace logturn
