/// Messages to a file, compared with printf and streams, and answers to prompts from a pipe,
/// compared with other ways to read a line. All of them run in a child process.
#include <unistd.h>
#include <zn_output.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "bench_files.h"
#include "bench_process.h"
#include "bench_rows.h"

#if __has_include(<editline/readline.h>)
#include <editline/readline.h>
#else
#include <edit/readline/readline.h>
#endif

namespace {

// ---- Messages

constexpr int kMessages = 100000;

template <class Print>
auto printingMessages(Print print) {
  return [print](const std::string& out) {
    bench::printInChild(out, [print] {
      const std::string text = "station 07: humidity 62 %, temperature 11.5 degrees";
      for (int i = 0; i < kMessages; ++i) print(text);
    });
    return true;
  };
}

/// `message` flushes each line, as do the peers. The baseline does not, and makes one system call
/// for many lines.
void addMessageRows(const std::string& out) {
  const std::string row = "message_100000_lines";
  zn_lib::setVerbose(true);
  bench::addCountedClockRow(row + "/zn_udf", out, printingMessages([](const std::string& text) {
                              zn_lib::message(text);
                            }));
  bench::addClockRow(row + "/printf_fflush", out, printingMessages([](const std::string& text) {
                       std::printf("%s\n", text.c_str());
                       std::fflush(stdout);
                     }));
  bench::addClockRow(row + "/cout_endl", out, printingMessages([](const std::string& text) {
                       std::cout << text << std::endl;
                     }));
  bench::addClockRow(row + "/baseline:printf", out, printingMessages([](const std::string& text) {
                       std::printf("%s\n", text.c_str());
                     }));
}

// ---- Prompts

constexpr int kAnswers = 10000;

/// Makes a pipe that contains all answers the standard input.
void answerFromPipe() {
  std::string answers;
  for (int i = 0; i < kAnswers; ++i) answers += i % 2 == 0 ? "y\n" : "n\n";
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0 ||
      write(ends[1], answers.data(), answers.size()) != static_cast<ssize_t>(answers.size())) {
    std::abort();
  }
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  close(ends[1]);
}

/// `ask` returns whether the next answer is yes.
template <class Ask>
auto askingFromPipe(Ask ask) {
  return [ask](const std::string& out) {
    bench::printInChild(out, [ask] {
      answerFromPipe();
      int yes = 0;
      for (int i = 0; i < kAnswers; ++i) yes += ask() ? 1 : 0;
      if (yes != kAnswers / 2) std::abort();
    });
    return true;
  };
}

bool isYes(char c) { return c == 'y' || c == 'Y'; }

bool askByReadline() {
  char* const line = readline("Continue? ");
  const bool yes = line != nullptr && isYes(*line);
  std::free(line);
  return yes;
}

void addPromptRows(const std::string& out) {
  const std::string row = "yesOrNo_10000_answers";
  bench::addCountedClockRow(row + "/zn_udf", out,
                            askingFromPipe([] { return zn_lib::yesOrNo("Continue? "); }));
  // The function by which the library reads answers. It reads a pipe byte by byte.
  bench::addClockRow(row + "/readline", out, askingFromPipe(askByReadline));
  // This neither prints the prompt nor edits lines.
  bench::addClockRow(row + "/baseline:cin_getline", out, askingFromPipe([] {
                       std::string line;
                       return std::getline(std::cin, line) && isYes(line[0]);
                     }));
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  addMessageRows(directory.file("messages"));
  addPromptRows(directory.file("prompts"));
  return bench::runRows(argc, argv);
}
