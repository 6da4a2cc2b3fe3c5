#include "errors.h"

#include <zn_error.h>
#include <zn_output.h>
#include <zn_str.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <system_error>

namespace logturn {
namespace {

namespace fs = std::filesystem;

std::string catalogBeside(const std::string& program) {
  std::error_code failed;
  // Where the system provides this link, it leads to the program however that was called.
  fs::path executable = fs::canonical("/proc/self/exe", failed);
  if (failed) executable = fs::canonical(program, failed);
  return executable.replace_filename("logturn.xml").string();
}

bool isControl(char c) {
  constexpr unsigned char firstPrintable = ' ';
  constexpr unsigned char del = 127;
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte < firstPrintable || byte == del;
}

}  // namespace

std::string quote(const std::string& text) {
  std::string shown = text;
  std::replace_if(shown.begin(), shown.end(), isControl, '?');
  return zn_lib::inQuotes(shown, '"');
}

std::string systemReason() { return std::generic_category().message(errno); }

void printError(const Error& error, const std::string& program) {
  std::map<int, std::string, zn_lib::error_order> catalog;
  const std::string file = catalogBeside(program);
  zn_lib::readErrorFile(file, catalog);
  const int number = static_cast<int>(error.problem());
  const std::vector<std::string>& values = error.values();
  std::string& message = catalog[number];
  if (message.empty()) {
    message = "the message is missing in " + file;
    for (const std::string& value : values) message += "; " + value;
  } else {
    // The last value is filled in first. A "%1" inside a value then comes after the real "%1", and
    // is not replaced.
    for (std::size_t i = values.size(); i > 0; --i) {
      message = zn_lib::replaceString(message, "%" + std::to_string(i), values[i - 1]);
    }
  }
  // The library prints errors only when it is verbose.
  const bool wasVerbose = zn_lib::isVerbose();
  zn_lib::setVerbose(true);
  zn_lib::showErrorMessage(catalog, number);
  zn_lib::setVerbose(wasVerbose);
}

}  // namespace logturn
