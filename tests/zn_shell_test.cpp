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
#include <utility>

#include "alarms.h"
#include "child_status.h"
#include "next_definition.h"
#include "output_capture.h"
#include "temporary_files.h"
#include "unprivileged.h"

namespace {

using namespace std::string_literals;

/// What the C library's `system` returns for a test, in place of its own results.
struct SystemResults {
  bool hasShell = true;
  int status = 0;     // of the command
  std::string calls;  // "?" for the question whether there is a shell, "c" for a command
  int error = 0;      // the number that the command leaves in errno, or 0 for none
};

SystemResults* systemResults = nullptr;

}  // namespace

/// Replaces the function of the C library, for the library under test too. It calls the C library's
/// own function unless a test has set `systemResults`.
extern "C" __attribute__((visibility("default"))) int system(const char* command) {
  if (systemResults != nullptr) {
    systemResults->calls += command == nullptr ? '?' : 'c';
    if (command == nullptr) return int{systemResults->hasShell};
    if (systemResults->error != 0) errno = systemResults->error;
    return systemResults->status;
  }
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

/// Lets the system reap the shell in the other way, with SIGCHLD at its default.
bool keepNoZombies() {
  struct sigaction action{};
  action.sa_handler = SIG_DFL;
  action.sa_flags = SA_NOCLDWAIT;
  return sigaction(SIGCHLD, &action, nullptr) == 0;
}

/// Makes a directory without a shell the root of this process.
bool removeShell() { return chroot(".") == 0 && chdir("/") == 0; }

TEST_F(Shell, ReportsAMissingCommandProcessor) {
  for (const bool verbose : {false, true}) {
    for (const auto& prepare : {forbidForks, ignoreChildSignal, keepNoZombies, removeShell}) {
      const Outcome outcome = after(prepare, "echo a", verbose);
      if (outcome.result == kCannotPrepare) continue;  // only root can change its root directory
      EXPECT_EQ(outcome.result, 0);
      EXPECT_EQ(outcome.text.out, "");
      EXPECT_EQ(outcome.text.err, "No command processor available\n");
    }
  }
}

TEST_F(Shell, DoesNotRunCommandsWhoseStatusIsLost) {
  for (const auto& prepare : {ignoreChildSignal, keepNoZombies}) {
    EXPECT_EQ(after(prepare, "echo a >trace", false).result, 0);
    EXPECT_FALSE(isThere("trace"));
  }
}

/// Returns the status of a process that exits.
constexpr int exited(int status) { return status << 8; }

const std::string kNoProcessor = "No command processor available\n";
const std::string kProblem = "Problem executing command\n";

/// Executes a command with these results of `system`. Returns the library's result and what was
/// written.
std::pair<bool, Written> executeWith(SystemResults& results) {
  bool result = false;
  systemResults = &results;
  Written text = written([&result] { result = zn_lib::execShell("command"); });
  systemResults = nullptr;
  return {result, std::move(text)};
}

// Asking for the shell starts it, so it is done only if the status of the command proves nothing.
TEST_F(Shell, AsksForTheShellIfTheStatusProvesNothing) {
  const struct {
    const char* what;
    int status;
    bool hasShell;
    std::string calls, err;
  } cases[] = {
      {"status 0", exited(0), true, "c", ""},
      {"status 1", exited(1), true, "c", ""},
      {"status 126", exited(126), true, "c", ""},
      {"status 128", exited(128), true, "c", ""},
      {"status 255", exited(255), true, "c", ""},
      {"status 127", exited(127), true, "c?", ""},
      {"status 127 without a shell", exited(127), false, "c?", kNoProcessor},
      {"a signal", SIGKILL, true, "c?", ""},
      {"a signal without a shell", SIGKILL, false, "c?", kNoProcessor},
      {"no status", -1, true, "c?", kProblem},
      {"no status without a shell", -1, false, "c?", kNoProcessor},
  };
  for (const auto& c : cases) {
    for (const bool verbose : {false, true}) {
      zn_lib::setVerbose(verbose);
      SystemResults results{c.hasShell, c.status, "", 0};
      const auto [result, text] = executeWith(results);
      EXPECT_EQ(result, c.err.empty()) << c.what;
      EXPECT_EQ(text.out, "") << c.what;
      EXPECT_EQ(text.err, c.err) << c.what;
      EXPECT_EQ(results.calls, c.calls) << c.what;
    }
  }
}

// The C library leaves the reason in errno if it could not start the shell. A later question might
// be answered with yes. A command that is too long says nothing about the shell.
TEST_F(Shell, NeedsNoQuestionIfTheShellCouldNotBeStarted) {
  const struct {
    int error;
    std::string calls, err;
  } cases[] = {{EAGAIN, "c", kNoProcessor}, {ENOMEM, "c", kNoProcessor}, {E2BIG, "c?", ""}};
  for (const auto& c : cases) {
    SystemResults results{true, exited(127), "", c.error};
    const auto [result, text] = executeWith(results);
    EXPECT_EQ(result, c.err.empty()) << c.error;
    EXPECT_EQ(text.err, c.err) << c.error;
    EXPECT_EQ(results.calls, c.calls) << c.error;
  }
}

TEST_F(Shell, KeepsTheErrorNumberOfTheHost) {
  errno = ENOTTY;
  EXPECT_TRUE(zn_lib::execShell("exit 127"));
  EXPECT_EQ(errno, ENOTTY);
}

TEST_F(Shell, AsksForTheShellFirstIfTheStatusWillBeLost) {
  const struct {
    const char* what;
    int status;
    bool hasShell;
    std::string calls, err;
  } cases[] = {
      {"no shell", exited(0), false, "?", kNoProcessor},
      {"a C library that finds a shell", -1, true, "?c", kProblem},
      {"a status after all", exited(127), true, "?c", ""},
  };
  for (const auto& c : cases) {
    for (const auto& prepare : {ignoreChildSignal, keepNoZombies}) {
      struct sigaction before;
      ASSERT_EQ(sigaction(SIGCHLD, nullptr, &before), 0);
      ASSERT_TRUE(prepare());
      SystemResults results{c.hasShell, c.status, "", 0};
      const auto [result, text] = executeWith(results);
      ASSERT_EQ(sigaction(SIGCHLD, &before, nullptr), 0);
      EXPECT_EQ(result, c.err.empty()) << c.what;
      EXPECT_EQ(text.err, c.err) << c.what;
      EXPECT_EQ(results.calls, c.calls) << c.what;
    }
  }
}

TEST_F(Shell, SucceedsInAnUnchangedChildProcess) {
  const Outcome outcome = after([] { return true; }, "echo a", true);
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(outcome.text.out, "a\n");
  EXPECT_EQ(outcome.text.err, "");
}

}  // namespace
