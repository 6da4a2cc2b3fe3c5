#include "messages.h"

#include <zn_error.h>
#include <zn_output.h>
#include <zn_str.h>

#include <filesystem>
#include <map>
#include <system_error>

namespace almanac {
namespace {

namespace fs = std::filesystem;

std::string catalogBeside(const std::string& program) {
  std::error_code failed;
  // Where the system provides this link, it leads to the program however that was called.
  fs::path executable = fs::canonical("/proc/self/exe", failed);
  if (failed) executable = fs::canonical(program, failed);
  return executable.replace_filename("almanac.xml").string();
}

/// Returns `message` with "%1", "%2" and so on, in this order, replaced by `values`.
std::string filledIn(std::string message, const std::vector<std::string>& values) {
  // The last value is filled in first. A "%1" inside a value then comes after the real "%1", and is
  // not replaced.
  for (std::size_t i = values.size(); i > 0; --i) {
    message = zn_lib::replaceString(message, "%" + std::to_string(i), values[i - 1]);
  }
  return message;
}

}  // namespace

void printError(const Error& error, const std::string& program) {
  std::map<int, std::string, zn_lib::error_order> catalog;
  const std::string file = catalogBeside(program);
  zn_lib::readErrorFile(file, catalog);
  const int number = static_cast<int>(error.problem());
  std::string& message = catalog[number];
  if (message.empty()) {
    message = "the message is missing in " + file;
    for (const std::string& value : error.values()) message += "; " + value;
  } else {
    message = filledIn(message, error.values());
  }
  // The library prints errors only when it is verbose.
  zn_lib::setVerbose(true);
  zn_lib::showErrorMessage(catalog, number);
}

}  // namespace almanac
