#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_output.h>
#include <zn_process.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "alarms.h"
#include "child_status.h"
#include "output_capture.h"
#include "temporary_files.h"
#include "unprivileged.h"

namespace {

using namespace std::string_literals;

constexpr pid_t kAnyChild = -1;

/// Kills `child`, which is still running, and reaps it. Returns `kSignalled + SIGKILL`.
int killAndReap(pid_t child) {
  // The process must still be a child of this one.
  if (child <= 0 || waitpid(child, nullptr, WNOHANG) != 0) return kNoSuchChild;
  kill(child, SIGKILL);
  return waitForExit(child);
}

/// Returns the process that the message about waiting names, and 0 if there is no message.
pid_t namedChild(const std::string& out) {
  const std::string before = "Waiting for child process #";
  return out.rfind(before, 0) == 0 ? std::stoi(out.substr(before.size())) : 0;
}

/// Runs `childProcess` without waiting. Returns the exit status of the child.
int childStatus(const std::string& program, const std::string& argument) {
  zn_lib::childProcess(program, argument, false);
  return waitForExit(kAnyChild);
}

/// Writes the program `name` to the working directory. Returns its absolute path.
std::string makeProgram(const std::string& name, mode_t mode, const std::string& text) {
  writeFile(name, text);
  chmod(name.c_str(), mode);
  return std::filesystem::absolute(name);
}

std::string makeScript(const std::string& name, const std::string& text) {
  return makeProgram(name, 0700, "#!/bin/sh\n" + text);
}

/// Expects that each test reaps its children.
class Process : public InTemporaryDirectory {
 protected:
  ~Process() override {
    EXPECT_EQ(waitpid(kAnyChild, nullptr, WNOHANG), -1) << "a child is left";
    zn_lib::setVerbose(false);
  }
};

TEST_F(Process, HeaderExamples) {
  const Home home(directory.c_str());
  std::filesystem::create_directory("bin");
  makeScript("bin/report", "printf '%s argument: %s' \"$#\" \"$1\"");
  const Written text =
      written([] { EXPECT_EQ(zn_lib::childProcess("~/bin/report", "2026-06-01", true), 0); });
  EXPECT_EQ(text.out, "1 argument: 2026-06-01");
  EXPECT_EQ(text.err, "");
}

TEST_F(Process, PassesExactlyOneArgument) {
  const std::string program = makeScript("count", "printf '%s:%s' \"$#\" \"$1\"");
  const struct {
    const char* what;
    std::string argument, seen;
  } cases[] = {
      {"a word", "word", "word"},
      {"the empty text", "", ""},
      {"whitespace does not split it", " a  b\tc\n", " a  b\tc\n"},
      {"nothing is expanded", "~ * $HOME `id`", "~ * $HOME `id`"},
      {"quotes", R"('a' "b" \c)", R"('a' "b" \c)"},
      {"an option", "-n", "-n"},
      {"bytes above 0x7F", "\xC3\x9C\xFF", "\xC3\x9C\xFF"},
      {"a NUL ends it", "ab\0cd"s, "ab"},
      {"a NUL in front", "\0cd"s, ""},
      {"a long text", std::string(100000, 'x'), std::string(100000, 'x')},
  };
  for (const auto& c : cases) {
    const Written text = written([&] { zn_lib::childProcess(program, c.argument, true); });
    EXPECT_EQ(text.out, "1:" + c.seen) << c.what;
    EXPECT_EQ(text.err, "") << c.what;
  }
}

TEST_F(Process, PassesTheExpandedPathAsArgumentZero) {
  const Home home("/bin");
  // The command line of a process, with a NUL after each argument.
  const std::string arguments = "/bin/cat\0/proc/self/cmdline\0"s;
  for (const std::string program : {"/bin/cat", " \t\n/bin/cat", "~/cat", "  ~/cat"}) {
    const auto run = [&] { zn_lib::childProcess(program, "/proc/self/cmdline", true); };
    EXPECT_EQ(written(run).out, arguments) << program;
  }
  const auto run = [] { zn_lib::childProcess("~/cat\0 -n"s, "/proc/self/cmdline", true); };
  EXPECT_EQ(written(run).out, arguments) << "a NUL ends the program";
}

TEST_F(Process, ExpandsTheFirstTildeAnywhere) {
  const struct {
    const char* what;
    const char* home;
    const char* program;
    int status;
  } cases[] = {
      {"within the name", "bin", "/~/false", 1},
      {"the whole name", "/bin/false", "~", 1},
      {"without HOME the tilde is the name", nullptr, "~", 0},
      {"without HOME leading whitespace is removed", nullptr, " /bin/false", 1},
  };
  for (const auto& c : cases) {
    const Home home(c.home);
    EXPECT_EQ(childStatus(c.program, ""), c.status) << c.what;
  }
}

TEST_F(Process, ReturnsZeroForAnyExitStatus) {
  const struct {
    const char* program;
    int status;
  } cases[] = {{"/bin/true", 0}, {"/bin/false", 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::childProcess(c.program, "", true), 0) << c.program;
    EXPECT_EQ(zn_lib::childProcess(c.program, "", false), 0) << c.program;
    EXPECT_EQ(waitForExit(kAnyChild), c.status) << c.program;
  }
}

TEST_F(Process, TreatsAProgramThatCannotStartAsASuccess) {
  // Each program would end with a status other than 0 if it ran.
  const struct {
    const char* what;
    std::string program, argument;
  } cases[] = {
      {"no such file", "./missing", ""},
      {"no such directory", "missing/program", ""},
      {"no name", "", ""},
      {"nothing before the NUL", "\0/bin/false"s, ""},
      {"a trailing space belongs to the name", "/bin/false ", ""},
      {"PATH is not searched", "false", ""},
      {"a directory", "/bin", ""},
      {"not executable", makeProgram("plain", 0600, "#!/bin/sh\nexit 5"), ""},
      {"no interpreter named", makeProgram("bare", 0700, "exit 5"), ""},
      {"an interpreter that is missing", makeProgram("lost", 0700, "#!/missing/interpreter\n"), ""},
      {"an argument that is too long", "/bin/false", std::string(1 << 20, 'x')},
      {"a name that is too long", '/' + std::string(1 << 20, 'x'), ""},
  };
  for (const auto& c : cases) {
    for (const bool verbose : {false, true}) {
      zn_lib::setVerbose(verbose);
      int status = -1;
      const Written text = written([&] { status = childStatus(c.program, c.argument); });
      EXPECT_EQ(status, 0) << c.what;
      EXPECT_EQ(text.out, "") << c.what;
      EXPECT_EQ(text.err, "") << c.what;
    }
    EXPECT_EQ(zn_lib::childProcess(c.program, c.argument, true), 0) << c.what;
  }
}

TEST_F(Process, PrintsTheProcessThatItWaitsFor) {
  const std::string program = makeScript("number", "echo $$ > \"$1\"");
  const auto run = [&] { zn_lib::childProcess(program, "pid", true); };
  zn_lib::setVerbose(true);
  const Written text = written(run);
  std::string pid = readFile("pid");
  ASSERT_GT(pid.size(), 1u);
  pid.pop_back();
  EXPECT_EQ(text.out, "Waiting for child process #" + pid + " to complete...\n");
  EXPECT_EQ(text.err, "");

  zn_lib::setVerbose(false);
  std::filesystem::remove("pid");
  const Written silent = written(run);
  EXPECT_NE(readFile("pid"), "") << "the program has not ended";
  EXPECT_EQ(silent.out, "");
  EXPECT_EQ(silent.err, "");
}

/// Creates a program that ends once its standard output, a file, is not empty, and after 5 seconds
/// in any case.
std::string makePatientProgram() {
  return makeScript("patient",
                    "tries=0\n"
                    "until [ -s /proc/self/fd/1 ] || [ $tries -eq 500 ]; do\n"
                    "  sleep 0.01\n"
                    "  tries=$((tries + 1))\n"
                    "done\n"
                    "echo ended\n");
}

TEST_F(Process, PrintsBeforeItWaits) {
  const std::string program = makePatientProgram();
  zn_lib::setVerbose(true);
  const std::string out = written([&] { zn_lib::childProcess(program, "", true); }).out;
  EXPECT_GT(namedChild(out), 0) << "the message must come first";
  EXPECT_EQ(out.substr(out.find('\n') + 1), "ended\n");
}

TEST_F(Process, LeavesAChildUnreapedUnlessItWaits) {
  // The program reads from a named pipe, so it does not end before the test opens the other end.
  ASSERT_EQ(mkfifo("gate", 0600), 0);
  zn_lib::setVerbose(true);
  const Written text = written([&] { zn_lib::childProcess("/bin/cat", "gate", false); });
  EXPECT_EQ(text.out, "");
  EXPECT_EQ(text.err, "");
  EXPECT_EQ(waitpid(kAnyChild, nullptr, WNOHANG), 0) << "the child is not running";
  std::ofstream("gate").close();

  siginfo_t zombie{};
  EXPECT_EQ(waitid(P_ALL, 0, &zombie, WEXITED | WNOWAIT), 0);
  EXPECT_GT(zombie.si_pid, 0);
  EXPECT_EQ(waitForExit(zombie.si_pid), 0);
}

TEST_F(Process, MayReapAnotherChildThanItsOwn) {
  const pid_t other = fork();
  if (other == 0) _exit(7);
  ASSERT_GT(other, 0);
  siginfo_t zombie{};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(other), &zombie, WEXITED | WNOWAIT), 0);

  zn_lib::setVerbose(true);
  const Written text = written([] { zn_lib::childProcess("/bin/sleep", "10", true); });
  EXPECT_EQ(killAndReap(namedChild(text.out)), kSignalled + SIGKILL);
  EXPECT_EQ(waitForExit(other), kNoSuchChild);
}

TEST_F(Process, KeepsWaitingAfterASignalThatRestartsCalls) {
  zn_lib::setVerbose(true);
  const Written text = written([] {
    const Alarms alarm(SA_RESTART);
    zn_lib::childProcess("/bin/sleep", "0.5", true);
  });
  EXPECT_GT(alarms, 0);
  ASSERT_GT(namedChild(text.out), 0);
  EXPECT_EQ(waitForExit(namedChild(text.out)), kNoSuchChild) << "the child must be reaped";
}

TEST_F(Process, StopsWaitingAtASignalThatInterruptsCalls) {
  zn_lib::setVerbose(true);
  const Written text = written([] {
    const Alarms alarm(0);
    EXPECT_EQ(zn_lib::childProcess("/bin/sleep", "10", true), 0);
  });
  EXPECT_GT(alarms, 0);
  EXPECT_EQ(killAndReap(namedChild(text.out)), kSignalled + SIGKILL);
}

/// Returns the line `name` of /proc/self/status, in `status`.
std::string statusLine(const std::string& status, const std::string& name) {
  const std::size_t start = status.find(name + ":");
  if (start == std::string::npos) return "";
  return status.substr(start, status.find('\n', start) - start);
}

TEST_F(Process, PassesBlockedAndIgnoredSignalsOn) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  ASSERT_EQ(pthread_sigmask(SIG_SETMASK, &blocked, &before), 0);
  const auto ignoredBefore = std::signal(SIGUSR2, SIG_IGN);
  const auto handledBefore = std::signal(SIGHUP, [](int) {});
  const std::string status =
      written([] { zn_lib::childProcess("/bin/cat", "/proc/self/status", true); }).out;
  const std::string own = readFile("/proc/self/status");
  std::signal(SIGHUP, handledBefore);
  std::signal(SIGUSR2, ignoredBefore);
  ASSERT_EQ(pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);

  for (const std::string name : {"SigBlk", "SigIgn"}) {
    EXPECT_NE(statusLine(own, name), "");
    EXPECT_EQ(statusLine(status, name), statusLine(own, name)) << "as in the host";
  }
  EXPECT_EQ(statusLine(status, "SigCgt"), "SigCgt:\t0000000000000000");
}

TEST_F(Process, LeavesSignalsOfTheHostAlone) {
  const auto alarmCounter = [](int) { alarms = alarms + 1; };
  const auto handledBefore = std::signal(SIGUSR1, alarmCounter);
  const auto statusLines = [] {
    const std::string status = readFile("/proc/self/status");
    std::string lines;
    for (const char* name : {"SigPnd", "ShdPnd", "SigBlk", "SigIgn", "SigCgt"}) {
      lines += statusLine(status, name) + '\n';
    }
    return lines;
  };
  const std::string before = statusLines();
  alarms = 0;
  for (const std::string program : {"/bin/true", "/missing/program"}) {
    EXPECT_EQ(zn_lib::childProcess(program, "", true), 0);
    EXPECT_EQ(statusLines(), before) << program;
  }
  EXPECT_EQ(std::raise(SIGUSR1), 0);
  EXPECT_EQ(alarms, 1);
  std::signal(SIGUSR1, handledBefore);
}

std::atomic<pid_t> host;
std::atomic<bool> hasRunInAChild;

void noteTheProcess(int) {
  if (getpid() != host) hasRunInAChild = true;
}

// Until the program runs, the child has the memory of the host, and a handler would change it.
TEST_F(Process, RunsNoHandlerOfTheHostInTheChild) {
  const int status = statusOfChild([] {
    host = getpid();
    setpgid(0, 0);
    // A process without a handler ignores this signal.
    std::signal(SIGURG, noteTheProcess);
    const pid_t sender = fork();
    if (sender == 0) {
      alarm(60);  // in case that this process is left alone
      std::signal(SIGURG, SIG_DFL);
      while (kill(0, SIGURG) == 0) {
      }
    }
    for (int i = 0; i < 100; ++i) zn_lib::childProcess("/bin/true", "", false);
    EXPECT_EQ(killAndReap(sender), kSignalled + SIGKILL);
    while (waitpid(kAnyChild, nullptr, 0) > 0 || errno == EINTR) {
    }
    EXPECT_FALSE(hasRunInAChild);
  });
  EXPECT_EQ(status, 0);
}

TEST_F(Process, KeepsTheErrorNumberOfTheHost) {
  for (const std::string program : {"/bin/true", "/missing/program"}) {
    errno = EDOM;
    zn_lib::childProcess(program, "", true);
    EXPECT_EQ(errno, EDOM) << program;
  }
}

/// Returns how many signals SIGCHLD one call sends to the host.
int childSignals(const std::string& program) {
  const auto before = std::signal(SIGCHLD, [](int) { alarms = alarms + 1; });
  alarms = 0;
  zn_lib::childProcess(program, "", false);
  EXPECT_EQ(waitForExit(kAnyChild), 0);
  std::signal(SIGCHLD, before);
  return alarms;
}

TEST_F(Process, CreatesOneChild) {
  EXPECT_EQ(childSignals("/bin/true"), 1);
  EXPECT_EQ(childSignals("/missing/program"), 1);
}

TEST_F(Process, WaitsForAllChildrenIfSigchldIsIgnored) {
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  const pid_t other = fork();
  if (other == 0) {
    usleep(300000);
    writeFile("ended", "");
    _exit(7);
  }
  EXPECT_EQ(zn_lib::childProcess("/bin/true", "", true), 0);
  EXPECT_TRUE(isThere("ended")) << "another child is still running";

  EXPECT_EQ(zn_lib::childProcess("/bin/true", "", false), 0);
  EXPECT_EQ(waitForExit(kAnyChild), kNoSuchChild) << "a zombie is left";
  std::signal(SIGCHLD, before);
}

TEST_F(Process, FlushesTheStreamOnlyIfItPrints) {
  const auto run = [&](const std::string& program) {
    return written([&] {
             std::cout << "host, ";
             zn_lib::childProcess(program, "ended", true);
           })
        .out;
  };
  EXPECT_EQ(run("/bin/echo"), "ended\nhost, ");
  zn_lib::setVerbose(true);
  const std::string out = run(makePatientProgram());
  EXPECT_EQ(out.rfind("host, Waiting for child process #", 0), 0u) << out;
  EXPECT_EQ(out.substr(out.find('\n') + 1), "ended\n");
}

TEST_F(Process, WritesBufferedOutputOnce) {
  for (const bool wait : {true, false}) {
    for (const std::string program : {"/bin/true", "/missing/program"}) {
      const Written text = written([&] {
        std::cout << "of the stream,";
        std::fputs("of the file", stdout);
        zn_lib::childProcess(program, "", wait);
        if (!wait) waitForExit(kAnyChild);
      });
      EXPECT_EQ(text.out, "of the stream,of the file") << program;
    }
  }
}

TEST_F(Process, EndsTheCallerIfNoChildCanBeCreated) {
  for (const bool verbose : {false, true}) {
    for (const bool wait : {false, true}) {
      int status = -1;
      const Written text = written([&] {
        const pid_t caller = fork();
        if (caller == 0) {
          if (!forbidForks()) _exit(kCannotPrepare);
          zn_lib::setVerbose(verbose);
          std::atexit([] { std::cout << "exit handler" << std::endl; });
          // The message does not flush this buffer.
          std::fputs("buffered", fdopen(dup(STDOUT_FILENO), "w"));
          std::cout << "of the stream";
          zn_lib::childProcess("/bin/true", "", wait);
          _exit(2);
        }
        status = waitForExit(caller);
      });
      EXPECT_EQ(status, 1);
      EXPECT_EQ(text.out, verbose ? "of the stream" : "");
      EXPECT_EQ(text.err, verbose ? "ERROR: Cannot create subprocess\n" : "");
    }
  }
}

}  // namespace
