/// Turns of logs that do not come to their end: the process is killed at any of its system calls,
/// the power is cut, any system call fails, or the disk is full. Nothing is lost, and the next turn
/// finishes the job.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>
#include <zn_setcfg.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "child_status.h"
#include "directory_contents.h"
#include "long_run.h"
#include "own_mounts.h"
#include "program.h"
#include "sanitizers.h"
#include "temporary_files.h"
#ifdef __linux__
#include "power_cuts.h"
#endif
#if defined(__linux__) && defined(__x86_64__)
#include "fault_injection.h"
#endif

namespace {

/// Returns lines of text that need several reads and writes.
std::string longText() {
  std::string text;
  for (int line = 0; text.size() < 40000; ++line) text += "line " + std::to_string(line) + "\n";
  return text;
}

/// The files before a turn.
struct Case {
  const char* what;
  Contents before;
  int keep;
  std::vector<std::string> texts;  ///< of the log and its copies, from the newest to the oldest
  bool failsDaily = false;         ///< whether system calls fail in daily runs, too
  bool wasEmptied = true;          ///< whether a pending copy is of a log that was emptied
};

/// Returns turns of a log with this text.
std::vector<Case> casesOf(const std::string& log) {
  return {
      {"the first turn", {{"app.log", log}}, 7, {log}},
      {"a turn with fewer copies than are kept",
       {{"app.log", log}, {"app.log.1", "one"}, {"app.log.2", "two"}, {"other.log.1", "other"}},
       7,
       {log, "one", "two"}},
      {"a turn with more copies than are kept",
       {{"app.log", log}, {"app.log.1", "one"}, {"app.log.2", "two"}, {"app.log.3", "three"}},
       2,
       {log, "one", "two", "three"},
       true},
      {"a turn that keeps one copy", {{"app.log", log}, {"app.log.1", "one"}}, 1, {log, "one"}},
      {"a turn that keeps more copies than the default",
       {{"app.log", log},
        {"app.log.1", "one"},
        {"app.log.2", "two"},
        {"app.log.3", "three"},
        {"app.log.4", "four"},
        {"app.log.5", "five"},
        {"app.log.6", "six"},
        {"app.log.7", "seven"},
        {"app.log.8", "eight"}},
       9,
       {log, "one", "two", "three", "four", "five", "six", "seven", "eight"}},
      {"a turn after a kill among the renames",
       {{"app.log", log}, {"app.log.1", "one"}, {"app.log.3", "two"}, {"app.log.logturn", log}},
       2,
       {log, "one", "two"}},
      {"a turn after a kill before the log was emptied",
       {{"app.log", log}, {"app.log.0", log}, {"app.log.2", "one"}, {"app.log.3", "two"}},
       2,
       {log, "one", "two"},
       true,
       false},
      {"a turn after a kill when the log was emptied",
       {{"app.log", ""}, {"app.log.0", log}, {"app.log.2", "one"}, {"app.log.3", "two"}},
       2,
       {log, "one", "two"},
       true},
  };
}

/// Gives the pending copy the time of the log.
void makeTimesEqual() {
  std::filesystem::last_write_time("app.log.0", std::filesystem::last_write_time("app.log"));
}

class InterruptedTurns : public InTemporaryDirectory {
 protected:
  InterruptedTurns() { setenv("XDG_CONFIG_HOME", settings_.path().c_str(), 1); }
  ~InterruptedTurns() override { unsetenv("XDG_CONFIG_HOME"); }

  /// Makes the files and settings before a turn.
  void makeFiles(const Case& c) const {
    zn_lib::Configuration store("LOGTURN", "logturn");
    store.path = settings_.path();
    store.set("keep", std::to_string(c.keep));
    ASSERT_TRUE(store.save());
    makeContents(c.before);
    if (!c.wasEmptied) makeTimesEqual();
  }

 private:
  const TemporaryDirectory settings_;
};

const std::vector<std::string> kCommand = {LOGTURN, "app.log"};

int statusOfLogturn() { return statusOfProgram(kCommand); }

/// Returns the copies from the newest to the oldest, the pending one included.
std::vector<std::string> copiesIn(const Contents& files) {
  std::vector<std::string> copies;
  constexpr int mostCopies = 20;
  for (int number = 0; number < mostCopies; ++number) {
    const auto copy = files.find("app.log." + std::to_string(number));
    if (copy != files.end()) copies.push_back(copy->second);
  }
  return copies;
}

/// Returns the files after a complete turn.
Contents filesAfter(const Case& c) {
  Contents files = c.before;
  for (auto file = files.begin(); file != files.end();) {
    file = file->first.compare(0, 8, "app.log.") == 0 ? files.erase(file) : std::next(file);
  }
  files["app.log"] = "";
  for (int i = 0; i < c.keep && i < static_cast<int>(c.texts.size()); ++i) {
    files["app.log." + std::to_string(i + 1)] = c.texts[static_cast<std::size_t>(i)];
  }
  return files;
}

/// Expects that the newest text is in the log or in a copy, and that no copy is lost that is to be
/// kept.
void expectNothingLost(const Case& c, const Contents& files) {
  const std::vector<std::string> copies = copiesIn(files);
  const auto isCopy = [&](const std::string& text) {
    return std::find(copies.begin(), copies.end(), text) != copies.end();
  };
  const bool isInLog = files.at("app.log") == c.texts.front();
  EXPECT_TRUE(isInLog || isCopy(c.texts.front())) << "the log is lost";
  EXPECT_TRUE(isInLog || files.at("app.log").empty()) << "the log is torn";
  std::size_t older = 0;
  for (std::size_t i = 1; i < c.texts.size(); ++i) older += isCopy(c.texts[i]) ? 1 : 0;
  const std::size_t kept = std::min(c.texts.size(), static_cast<std::size_t>(c.keep)) - 1;
  for (std::size_t i = 1; i <= kept; ++i) EXPECT_TRUE(isCopy(c.texts[i])) << "copy " << i;
  EXPECT_TRUE(older == c.texts.size() - 1 || copies.front() == c.texts.front())
      << "a copy was removed before there was a newer one";
  // The order of the numbers is that of the copies.
  auto next = c.texts.begin();
  for (const std::string& copy : copies) {
    next = std::find(next, c.texts.end(), copy);
    ASSERT_NE(next, c.texts.end()) << "a copy is torn or in the wrong place";
    ++next;
  }
}

TEST_F(InterruptedTurns, WithoutInterruption) {
  for (const Case& c : casesOf(longText())) {
    SCOPED_TRACE(c.what);
    makeFiles(c);
    EXPECT_EQ(statusOfLogturn(), 0);
    EXPECT_TRUE(contents() == filesAfter(c));
  }
}

/// Expects that a further turn leaves the files of a complete turn.
void expectFinished(const Case& c) {
  EXPECT_EQ(statusOfLogturn(), 0);
  EXPECT_TRUE(contents() == filesAfter(c)) << testing::PrintToString(namesIn("."));
}

#ifdef __linux__

TEST_F(InterruptedTurns, APowerCutAtAnyTimeLosesNothing) {
  const std::vector<Case> cases = casesOf("new");
  int all = 0;
  for (const Case& c : cases) {
    makeFiles(c);
    const auto states = statesAfterPowerCuts([] { execQuietly(kCommand); });
    if (!states) GTEST_SKIP() << "no process can be traced here";
    ASSERT_FALSE(HasFailure());
    EXPECT_GT(states->size(), 2u);
    for (const Contents& state : *states) {
      SCOPED_TRACE(std::string(c.what) + ": " + testing::PrintToString(state));
      expectNothingLost(c, state);
      makeContents(state);
      // The time of the copy is on the disk if its text is.
      if (state.count("app.log.0") != 0 && state.at("app.log.0") == state.at("app.log")) {
        makeTimesEqual();
      }
      expectFinished(c);
    }
    all += static_cast<int>(states->size());
    std::printf("%-50s %3zu states\n", c.what, states->size());
  }
  RecordProperty("power_cut_cases", static_cast<int>(cases.size()));
  RecordProperty("power_cut_states", all);
}

#endif

#if defined(__linux__) && defined(__x86_64__)

/// The first system call of the program itself: until then, the dynamic linker and the sanitizers
/// prepare the process.
constexpr long kFirstCall = kHasAddressSanitizer ? SYS_chdir : SYS_rt_sigaction;

/// Returns the cases in whose calls a test intervenes. A process with AddressSanitizer takes long
/// to start, so that a daily run has only one case of it.
std::vector<Case> casesToTrace() {
  const std::vector<Case> all = casesOf(longText());
  if (!kHasAddressSanitizer || isLongRun()) return all;
  constexpr std::size_t withMoreCopiesThanKept = 2;
  return {all.at(withMoreCopiesThanKept)};
}

/// Runs the program while the test intervenes in its calls.
Ended runLogturn(const Intervene& intervene) {
  bool isStarted = false;
  return runTraced([](Report&) -> std::string { execQuietly(kCommand); },
                   [&](long call) {
                     isStarted = isStarted || call == kFirstCall;
                     return isStarted ? intervene(call) : Intervention();
                   });
}

TEST_F(InterruptedTurns, AKillAtAnySystemCallLosesNothing) {
  if (!canTrace()) GTEST_SKIP() << "no process can be traced here";
  int kills = 0;
  for (const Case& c : casesToTrace()) {
    int number = 0;
    for (bool isKilled = true; isKilled;) {
      ++number;
      SCOPED_TRACE(std::string(c.what) + ", killed at call " + std::to_string(number));
      makeFiles(c);
      int calls = 0;
      const Ended ended = runLogturn([&](long) {
        Intervention intervention;
        intervention.kills = ++calls == number;
        return intervention;
      });
      isKilled = calls == number;
      kills += isKilled ? 1 : 0;
      EXPECT_EQ(ended.status, isKilled ? SIGKILL : 0);
      expectNothingLost(c, contents());
      expectFinished(c);
      ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(number, 20) << c.what;
  }
  RecordProperty("kills", kills);
  std::printf("%d kills\n", kills);
}

/// Fails the call `number` of those that `fault` affects, counted from 1, or all from there on.
class Failures {
 public:
  Failures(const Fault& fault, int number, bool areForGood)
      : fault_(fault), number_(number), areForGood_(areForGood) {}

  Intervention operator()(long call) {
    const std::string purpose = purposeOf(call);
    if (fault_.calls.count(purpose) == 0) return {};
    ++calls_;
    if (areForGood_ ? calls_ < number_ : calls_ != number_) return {};
    ++count_;
    return {fault_.error, purpose == "close", fault_.share};
  }

  int count() const { return count_; }

 private:
  const Fault& fault_;
  const int number_;
  const bool areForGood_;
  int calls_ = 0;
  int count_ = 0;
};

class FailingTurns : public InterruptedTurns {
 protected:
  /// Runs the case once for each call that `fault` affects. Returns the number of failed calls.
  int failuresIn(const Case& c, const Fault& fault, bool areForGood) const {
    int all = 0;
    for (int number = 1;; ++number) {
      SCOPED_TRACE(std::string(c.what) + ": " + fault.what + " at call " + std::to_string(number) +
                   (areForGood ? " and all that follow" : ""));
      makeFiles(c);
      Failures failures(fault, number, areForGood);
      const Ended ended = runLogturn(std::ref(failures));
      EXPECT_TRUE(WIFEXITED(ended.status)) << ended.status;
      expectNothingLost(c, contents());
      if (WEXITSTATUS(ended.status) == 0) {
        EXPECT_TRUE(contents() == filesAfter(c)) << "reported as done";
      }
      expectFinished(c);
      if (failures.count() == 0 || HasFailure()) return all;
      all += failures.count();
    }
  }
};

TEST_F(FailingTurns, LoseNothing) {
  if (!canTrace()) GTEST_SKIP() << "no process can be traced here";
  if (kHasAddressSanitizer) GTEST_SKIP() << "sanitizers do not survive failures of their own calls";
  // In a daily run, the kinds that differ most.
  const std::set<std::string> daily = {"EIO", "ENOSPC", "half of the bytes"};
  int failures = 0;
  for (const Case& c : casesOf(longText())) {
    if (!isLongRun() && !c.failsDaily) continue;
    for (const Fault& fault : faults()) {
      if (!isLongRun() && daily.count(fault.what) == 0) continue;
      failures += failuresIn(c, fault, false);
      if (fault.mayLast) failures += failuresIn(c, fault, true);
    }
    ASSERT_FALSE(HasFailure());
  }
  RecordProperty("failed_calls", failures);
  std::printf("%d failed calls\n", failures);
}

#else

TEST_F(InterruptedTurns, NeedLinuxOnX8664) {
  GTEST_SKIP()
      << "kills and failures at a system call need x86-64, since they change its registers";
}

#endif

// ---- A disk that is full

TEST_F(InterruptedTurns, AFullDiskLosesNothing) {
  const Case c = {"a disk of 64 KiB",
                  {{"app.log", longText()}, {"app.log.1", "one"}, {"app.log.2", "two"}},
                  1,
                  {longText(), "one", "two"}};
  const int status = statusOfChild([&] {
    const std::string here = std::filesystem::current_path();
    if (!unshareMounts() || mount("none", here.c_str(), "tmpfs", 0, "size=64k") != 0) {
      _exit(kCannotPrepare);
    }
    std::filesystem::current_path(here);
    makeFiles(c);
    const Contents before = contents();
    EXPECT_EQ(statusOfLogturn(), 1);
    EXPECT_TRUE(contents() == before) << testing::PrintToString(namesIn("."));
    ASSERT_EQ(mount("none", here.c_str(), nullptr, MS_REMOUNT, "size=128k"), 0);
    EXPECT_EQ(statusOfLogturn(), 0);
    EXPECT_TRUE(contents() == filesAfter(c)) << testing::PrintToString(namesIn("."));
  });
  if (status == kCannotPrepare) GTEST_SKIP() << "no file system can be mounted here";
  EXPECT_EQ(status, 0);
}

}  // namespace
