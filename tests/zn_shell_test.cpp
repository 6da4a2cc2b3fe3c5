#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_output.h>
#include <zn_shell.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <iostream>
#include <string>

#include "alarms.h"
#include "child_status.h"
#include "next_definition.h"
#include "output_capture.h"
#include "temporary_files.h"
#include "unprivileged.h"

namespace {

using namespace std::string_literals;

bool commandsFail = false;

}  // namespace

/// Replaces the function of the C library, for the library under test too, so that it can fail for
/// commands.
extern "C" __attribute__((visibility("default"))) int system(const char* command) {
  if (commandsFail && command != nullptr) return -1;
  static const auto next = nextDefinition<int (*)(const char*)>("system");
  return next(command);
}

namespace {

class Shell : public InTemporaryDirectory {
 protected:
  ~Shell() override { zn_lib::setVerbose(false); }
};

TEST_F(Shell, HeaderExamples) {
  writeFile("names.txt", "b\nc\na\n");
  EXPECT_TRUE(zn_lib::execShell("sort names.txt > sorted.txt"));
  EXPECT_EQ(readFile("sorted.txt"), "a\nb\nc\n");
  EXPECT_TRUE(zn_lib::execShell("exit 3"));
}

TEST_F(Shell, RunsTheCommandInTheShell) {
  const struct {
    const char* what;
    std::string command, out, err;
  } cases[] = {
      {"standard output", "echo out", "out\n", ""},
      {"standard error", "echo err >&2", "", "err\n"},
      {"several commands and a pipe", "a=x; (echo $a; echo b) | tr b c", "x\nc\n", ""},
      {"several lines", "echo 1\necho 2\n", "1\n2\n", ""},
      {"quotes", "printf '%s|' 'a b' \"c d\"", "a b|c d|", ""},
      {"bytes above 0x7F", "printf %s '\xC3\x9C\xFF'", "\xC3\x9C\xFF", ""},
      {"a NUL ends it", "echo a\0; echo b"s, "a\n", ""},
      {"it is waited for", "(sleep 0.2; echo late)", "late\n", ""},
  };
  for (const auto& c : cases) {
    for (const bool verbose : {false, true}) {
      zn_lib::setVerbose(verbose);
      const Written text = written([&] { EXPECT_TRUE(zn_lib::execShell(c.command)) << c.what; });
      EXPECT_EQ(text.out, c.out) << c.what;
      EXPECT_EQ(text.err, c.err) << c.what;
    }
  }
}

TEST_F(Shell, IgnoresTheExitStatus) {
  zn_lib::setVerbose(true);
  const struct {
    const char* what;
    std::string command;
  } cases[] = {
      {"the empty command", ""},
      {"nothing before the NUL", "\0exit 1"s},
      {"a space", " "},
      {"status 3", "exit 3"},
      {"status 255", "exit 255"},
      {"status 127", "exit 127"},
      {"a failing command", "false"},
      {"ended by a signal", "kill -KILL $$"},
  };
  for (const auto& c : cases) {
    const Written text = written([&] { EXPECT_TRUE(zn_lib::execShell(c.command)) << c.what; });
    EXPECT_EQ(text.out, "") << c.what;
    EXPECT_EQ(text.err, "") << c.what;
  }
}

TEST_F(Shell, LetsTheShellReportAMissingCommand) {
  const Written text = written([] { EXPECT_TRUE(zn_lib::execShell("/missing/command")); });
  EXPECT_EQ(text.out, "");
  EXPECT_NE(text.err.find("/missing/command"), std::string::npos) << text.err;
}

TEST_F(Shell, LetsTheShellReportASyntaxError) {
  const Written text = written([] { EXPECT_TRUE(zn_lib::execShell("if")); });
  EXPECT_EQ(text.out, "");
  EXPECT_NE(text.err, "");
}

TEST_F(Shell, LeavesNoChildBehind) {
  EXPECT_TRUE(zn_lib::execShell("exit 3"));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(Shell, KeepsWaitingAfterASignal) {
  for (const int flags : {0, int{SA_RESTART}}) {
    const Alarms alarm(flags);
    const Written text =
        written([] { EXPECT_TRUE(zn_lib::execShell("sleep 0.3; echo done")) << "interrupted"; });
    EXPECT_GT(alarms, 0);
    EXPECT_EQ(text.out, "done\n") << flags;
    EXPECT_EQ(text.err, "");
  }
}

TEST_F(Shell, WritesBufferedOutputOnce) {
  const Written text = written([] {
    std::cout << "buffered";
    EXPECT_TRUE(zn_lib::execShell("exit 3"));
  });
  EXPECT_EQ(text.out, "buffered");
}

// ---- Failures, each in a child process that prepares for it.

/// The result and the output of `execShell`.
struct Outcome {
  int result;
  Written text;
};

/// Runs `prepare` and then `command` in a child process.
Outcome after(const std::function<bool()>& prepare, const std::string& command, bool verbose) {
  int status = 0;
  const Written text = written([&] {
    const pid_t child = fork();
    if (child == 0) {
      zn_lib::setVerbose(verbose);
      _exit(prepare() ? int{zn_lib::execShell(command)} : kCannotPrepare);
    }
    status = waitForExit(child);
  });
  return {status, text};
}

/// Ignores SIGCHLD, so that the system reaps the shell and its status is lost.
bool ignoreChildSignal() { return std::signal(SIGCHLD, SIG_IGN) != SIG_ERR; }

/// Makes `system` fail for all commands.
bool failCommands() { return commandsFail = true; }

TEST_F(Shell, ReportsAMissingCommandProcessor) {
  for (const bool verbose : {false, true}) {
    for (const auto& prepare : {forbidForks, ignoreChildSignal}) {
      const Outcome outcome = after(prepare, "echo a", verbose);
      EXPECT_EQ(outcome.result, 0);
      EXPECT_EQ(outcome.text.out, "");
      EXPECT_EQ(outcome.text.err, "No command processor available\n");
    }
  }
}

TEST_F(Shell, ReportsACommandThatCannotBeExecuted) {
  for (const bool verbose : {false, true}) {
    const Outcome outcome = after(failCommands, "echo a", verbose);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.text.out, "");
    EXPECT_EQ(outcome.text.err, "Problem executing command\n");
  }
}

TEST_F(Shell, SucceedsInAnUnchangedChildProcess) {
  const Outcome outcome = after([] { return true; }, "echo a", true);
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(outcome.text.out, "a\n");
  EXPECT_EQ(outcome.text.err, "");
}

}  // namespace
