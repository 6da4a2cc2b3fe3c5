/// Passes any text to fixed programs, and compares what they print with the text. No text of the
/// input is ever run as a program or as a command.
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_output.h>
#include <zn_process.h>
#include <zn_shell.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>

#include "captured_stream.h"
#include "fuzz_check.h"
#include "fuzz_files.h"

namespace {

using fuzz::expectSame;

/// Catches what the programs write to standard output.
class Output {
 public:
  Output() : file_(memfd_create("output", MFD_CLOEXEC)) {
    fuzz::expect("standard output is redirected", dup2(file_, STDOUT_FILENO) == STDOUT_FILENO);
  }

  /// Returns what has been written since the last call.
  std::string text() const {
    const off_t size = lseek(file_, 0, SEEK_CUR);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    fuzz::expect("standard output is read", pread(file_, bytes.data(), bytes.size(), 0) == size &&
                                                lseek(file_, 0, SEEK_SET) == 0 &&
                                                ftruncate(file_, 0) == 0);
    return bytes;
  }

 private:
  const int file_;
};

const Output& output() {
  static const Output output;
  return output;
}

/// A directory with one program, "show", which prints its arguments in brackets.
const fuzz::TemporaryDirectory& programs() {
  static const fuzz::TemporaryDirectory directory;
  static const bool isCreated = [] {
    const std::string name = directory.file("show");
    writeFile(name, "#!/bin/sh\nfor text; do printf '[%s]' \"$text\"; done\n");
    return chmod(name.c_str(), 0700) == 0;
  }();
  fuzz::expect("the program is there", isCreated);
  return directory;
}

void children(FuzzedDataProvider& input) {
  const bool wait = input.ConsumeBool();
  const bool isThere = input.ConsumeBool();
  const bool fromHome = input.ConsumeBool();
  const std::string margin(input.ConsumeIntegralInRange<std::size_t>(0, 3), ' ');
  const std::string argument = input.ConsumeRemainingBytesAsString();
  setenv("HOME", programs().path().c_str(), 1);
  const std::string program = (fromHome ? "~" : programs().path()) + (isThere ? "/show" : "/none");

  // libFuzzer's timer would end the wait early.
  sigset_t timer;
  sigemptyset(&timer);
  sigaddset(&timer, SIGALRM);
  sigprocmask(SIG_BLOCK, &timer, nullptr);
  CapturedStream messages(std::cout);
  expectSame("childProcess", zn_lib::childProcess(margin + program, argument, wait), 0);
  if (!wait) fuzz::expect("there is a child", ::wait(nullptr) > 0);
  sigprocmask(SIG_UNBLOCK, &timer, nullptr);
  // The sanitizers may have a child of their own, which does not end.
  fuzz::expect("the child has been reaped", waitpid(-1, nullptr, WNOHANG) <= 0);
  const bool isTold = messages.text().find("Waiting for child process #") == 0;
  expectSame("the message", isTold, wait && zn_lib::isVerbose());
  expectSame("its output", output().text(),
             isThere ? "[" + std::string(argument.c_str()) + "]" : std::string());
}

/// Runs a fixed command, which prints an environment variable.
void commands(FuzzedDataProvider& input) {
  using namespace std::string_literals;
  const bool isIgnored = input.ConsumeIntegralInRange(0, 7) == 7;
  const std::string end =
      input.PickValueInArray<std::string>({"", "; exit 3", "; kill $$", "; exit 127", "\0; echo"s});
  const std::string text = input.ConsumeRemainingBytesAsString().c_str();
  setenv("ZN_UDF_TEXT", text.c_str(), 1);
  if (isIgnored) std::signal(SIGCHLD, SIG_IGN);
  CapturedStream messages(std::cerr);
  const bool isStarted = zn_lib::execShell("printf '[%s]' \"$ZN_UDF_TEXT\"" + end);
  std::signal(SIGCHLD, SIG_DFL);

  expectSame("execShell", isStarted, !isIgnored);
  expectSame("its message", messages.text(),
             std::string(isIgnored ? "No command processor available\n" : ""));
  // The command does not run if its status would be lost.
  expectSame("its output", output().text(), isIgnored ? "" : "[" + text + "]");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  output();
  FuzzedDataProvider input(data, size);
  zn_lib::setVerbose(input.ConsumeBool());
  if (input.ConsumeBool()) {
    children(input);
  } else {
    commands(input);
  }
  return 0;
}
