/// The errors that the manual pages of Linux list for the system calls of x86-64.
#ifndef SYSTEM_CALL_ERRORS_H
#define SYSTEM_CALL_ERRORS_H

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

struct SystemCallError {
  std::string name;
  int number;
};

struct SystemCallPage {
  std::string name;
  std::vector<SystemCallError> errors;
};

/// Returns the calls that have a list of errors, by their numbers.
inline const std::map<long, SystemCallPage>& systemCallPages() {
  static const std::map<long, SystemCallPage> pages = [] {
    std::map<long, SystemCallPage> all;
    std::ifstream file(ZN_UDF_TEST_DATA "/system_call_errors.txt");
    for (std::string line; std::getline(file, line);) {
      if (line.front() == '#') continue;
      std::istringstream words(line);
      SystemCallPage page;
      long call = 0;
      words >> page.name >> call;
      SystemCallError error;
      while (std::getline(words >> std::ws, error.name, '=') && words >> error.number) {
        page.errors.push_back(error);
      }
      all[call] = page;
    }
    return all;
  }();
  return pages;
}

/// Returns the name of a call that has a list of errors, and an empty text for others.
inline std::string systemCallName(long call) {
  const auto found = systemCallPages().find(call);
  return found == systemCallPages().end() ? "" : found->second.name;
}

inline std::vector<SystemCallError> errorsOf(long call) {
  const auto found = systemCallPages().find(call);
  return found == systemCallPages().end() ? std::vector<SystemCallError>() : found->second.errors;
}

/// Returns the name of an error, and an empty text for 0 and for errors that no list contains.
inline std::string errorName(int number) {
  for (const auto& [call, page] : systemCallPages()) {
    for (const SystemCallError& error : page.errors) {
      if (error.number == number) return error.name;
    }
  }
  return "";
}

#endif  // SYSTEM_CALL_ERRORS_H
