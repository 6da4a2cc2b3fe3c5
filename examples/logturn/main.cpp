/// logturn numbers the copies of logs. It is an example of a host, and a project of its own.
#include <zn_common.h>
#include <zn_output.h>
#include <zn_str.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "errors.h"
#include "options.h"
#include "settings.h"
#include "turn.h"

namespace logturn {
namespace {

/// Prints columns that are as wide as their longest text. Only the bytes are aligned to the right.
void printTable(const std::vector<Row>& rows) {
  if (rows.empty()) return;
  std::vector<std::vector<std::string>> lines = {{"file", "action", "name", "bytes"}};
  for (const Row& row : rows) {
    lines.push_back({quote(row.log), row.action, quote(row.name), std::to_string(row.bytes)});
  }
  std::vector<int> widths(lines.front().size());
  for (const auto& line : lines) {
    for (std::size_t i = 0; i < line.size(); ++i) {
      widths[i] = std::max(widths[i], static_cast<int>(line[i].size()));
    }
  }
  // leftPad moves the text to the left end of its field, and rightPad to the right end.
  for (const auto& line : lines) {
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
      std::cout << zn_lib::leftPad(line[i], widths[i], ' ') << "  ";
    }
    std::cout << zn_lib::rightPad(line.back(), widths.back(), ' ') << '\n';
  }
}

/// Turns all logs, even if one fails. Returns the exit status.
int turnLogs(const Options& options, const std::string& program) {
  zn_lib::setVerbose(options.verbose);
  const int keep = options.keep ? readKeep(*options.keep) : savedKeep();
  if (options.save) saveKeep(keep);
  int status = 0;
  std::vector<Row> rows;
  // Turning a log changes the working directory.
  std::error_code ignored;
  const std::filesystem::path start = std::filesystem::current_path(ignored);
  for (const std::string& file : options.files) {
    try {
      turn(start / file, file, {keep, options.dryRun}, rows);
    } catch (const Error& error) {
      printError(error, program);
      status = error.exitStatus();
    }
  }
  printTable(rows);
  return status;
}

int run(const Options& options, const std::string& program) {
  int status = 0;
  switch (options.action) {
    case Action::kPrintHelp:
      std::cout << kHelp;
      break;
    case Action::kPrintVersion:
      std::cout << "logturn, with zn_udf " << zn_udf_1VersionNumber << '\n';
      break;
    case Action::kTurn:
      status = turnLogs(options, program);
      break;
  }
  // Only the flush shows whether the last rows were written.
  if (!std::cout.flush()) throw Error(Problem::kCannotPrint);
  return status;
}

}  // namespace
}  // namespace logturn

int main(int argc, char* argv[]) {
  // A closed pipe or a limit on the size of files must not end the program in the middle of a turn.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return logturn::run(logturn::readOptions(argc, argv), argv[0]);
  } catch (const logturn::Error& error) {
    logturn::printError(error, argv[0]);
    return error.exitStatus();
  } catch (const std::exception& error) {
    zn_lib::setVerbose(true);
    zn_lib::errorMessage(error.what());
    return 1;
  }
}
