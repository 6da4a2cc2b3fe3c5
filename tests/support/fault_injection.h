/// Operations whose system calls fail, each in turn. For Linux on x86-64.
#ifndef FAULT_INJECTION_H
#define FAULT_INJECTION_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "directory_contents.h"
#include "failing_functions.h"
#include "long_run.h"
#include "system_call_errors.h"
#include "temporary_files.h"
#include "traced_child.h"

using Purposes = std::set<std::string>;

/// Returns the purpose of a system call that may fail, which is its name if only one call has it,
/// and an empty text for others.
inline std::string purposeOf(long call) {
  static const std::map<long, std::string> purposes = {
      {SYS_open, "open"},          {SYS_openat, "open"},
      {SYS_creat, "open"},         {SYS_read, "read"},
      {SYS_readv, "read"},         {SYS_pread64, "read"},
      {SYS_write, "write"},        {SYS_writev, "write"},
      {SYS_pwrite64, "write"},     {SYS_rename, "rename"},
      {SYS_renameat, "rename"},    {SYS_renameat2, "rename"},
      {SYS_link, "link"},          {SYS_linkat, "link"},
      {SYS_unlink, "unlink"},      {SYS_unlinkat, "unlink"},
      {SYS_rmdir, "rmdir"},        {SYS_close, "close"},
      {SYS_lseek, "lseek"},        {SYS_stat, "stat"},
      {SYS_fstat, "stat"},         {SYS_lstat, "stat"},
      {SYS_newfstatat, "stat"},    {SYS_statx, "stat"},
      {SYS_getdents64, "list"},    {SYS_access, "access"},
      {SYS_faccessat, "access"},   {SYS_faccessat2, "access"},
      {SYS_mkdir, "mkdir"},        {SYS_mkdirat, "mkdir"},
      {SYS_chdir, "chdir"},        {SYS_getcwd, "getcwd"},
      {SYS_ftruncate, "truncate"}, {SYS_fsync, "sync"},
      {SYS_fdatasync, "sync"},     {SYS_flock, "lock"},
      {SYS_fchown, "chown"},       {SYS_fchmod, "chmod"},
      {SYS_sendfile, "send"},      {SYS_copy_file_range, "send"},
      {SYS_clone, "clone"},        {SYS_clone3, "clone"},
      {SYS_fork, "clone"},         {SYS_vfork, "clone"},
      {SYS_wait4, "wait"},         {SYS_pipe2, "pipe"},
      {SYS_uname, "uname"},
  };
  const auto found = purposes.find(call);
  return found == purposes.end() ? systemCallName(call) : found->second;
}

/// A way in which system calls fail.
struct Fault {
  std::string what;
  int error;
  Share share;
  Purposes calls;
  bool mayLast;    ///< whether it may go on for good, which no caller survives for interruptions
  long call = -1;  ///< the only call that fails, whatever its purpose; -1 for those of `calls`

  bool concerns(long number) const {
    return call == -1 ? calls.count(purposeOf(number)) != 0 : call == number;
  }
};

/// Returns all faults. Those of a single purpose are for systems that lack nothing else.
inline const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = {
      {"EIO",
       EIO,
       Share::kAll,
       {"open",  "read",  "write", "rename", "link",  "unlink", "rmdir",  "close",
        "lseek", "stat",  "list",  "access", "mkdir", "chdir",  "getcwd", "truncate",
        "send",  "uname", "sync",  "lock",   "chown", "chmod"},
       true},
      {"ENOSPC",
       ENOSPC,
       Share::kAll,
       {"open", "write", "rename", "link", "close", "mkdir", "truncate", "send", "sync"},
       true},
      // "access" is left out: a file that may not be looked up cannot be opened either.
      {"EACCES",
       EACCES,
       Share::kAll,
       {"open", "rename", "link", "unlink", "rmdir", "stat", "mkdir", "chdir", "getcwd"},
       true},
      {"EMFILE", EMFILE, Share::kAll, {"open", "pipe"}, true},
      {"EINTR", EINTR, Share::kAll, {"open", "read", "write", "close", "wait"}, false},
      {"ENOMEM",
       ENOMEM,
       Share::kAll,
       {"open", "stat", "list", "access", "mkdir", "chdir", "getcwd", "clone"},
       true},
      {"ECHILD", ECHILD, Share::kAll, {"wait"}, true},
      {"EPERM for links", EPERM, Share::kAll, {"link"}, true},
      {"EIO for renaming", EIO, Share::kAll, {"rename"}, true},
      {"EBUSY for renaming", EBUSY, Share::kAll, {"rename"}, true},
      {"EPERM for changing names", EPERM, Share::kAll, {"rename", "link"}, true},
      {"EPERM for owners and modes", EPERM, Share::kAll, {"chown", "chmod"}, true},
      {"EIO for synchronising", EIO, Share::kAll, {"sync"}, true},
      {"EINVAL for synchronising", EINVAL, Share::kAll, {"sync"}, true},
      {"ENOLCK for locks", ENOLCK, Share::kAll, {"lock"}, true},
      {"EIO for removing", EIO, Share::kAll, {"unlink", "rmdir"}, true},
      {"EIO for closing", EIO, Share::kAll, {"close"}, true},
      {"ENOSPC for writing", ENOSPC, Share::kAll, {"write"}, true},
      {"half of the bytes", 0, Share::kHalf, {"read", "write"}, true},
      {"one byte", 0, Share::kOneByte, {"read", "write"}, false},
  };
  return all;
}

/// Returns whether a call belongs to the allocation of memory, whose failures are tested by
/// themselves, or to a lock of the C++ library.
inline bool isOfRuntime(long call) {
  static const std::set<long> calls = {SYS_brk,      SYS_mmap,    SYS_munmap, SYS_mremap,
                                       SYS_mprotect, SYS_madvise, SYS_futex};
  return calls.count(call) != 0;
}

/// Returns whether a call with this error is repeated until it has another result.
inline bool isRepeated(const std::string& purpose, int error) {
  static const Purposes interrupted = {"getrandom", "read", "sync", "wait", "write"};
  return error == EINTR && interrupted.count(purpose) != 0;
}

/// Returns a fault for each error that the manual page of `call` lists. A daily run has one of
/// them, and only for calls that `faults` leaves out.
inline std::vector<Fault> documentedFaults(long call) {
  std::vector<Fault> all;
  const std::string purpose = purposeOf(call);
  for (const SystemCallError& error : errorsOf(call)) {
    all.push_back({error.name + " of " + systemCallName(call),
                   error.number,
                   Share::kAll,
                   {purpose},
                   !isRepeated(purpose, error.number),
                   call});
  }
  if (isLongRun()) return all;
  const bool isInFaults = std::any_of(faults().begin(), faults().end(), [&](const Fault& fault) {
    return fault.calls.count(purpose) != 0;
  });
  if (isInFaults) return {};
  all.erase(all.begin() + 1, all.end());
  return all;
}

/// The result of a run with faults.
struct Outcome {
  Ended ended;
  std::string output;  ///< on standard output and standard error
  const Fault* fault;
  Purposes failed;         ///< the purposes of the calls that were changed
  std::set<long> changed;  ///< the numbers of these calls
  int count = 0;           ///< how many there were

  const std::string& answer() const { return ended.answer; }
  bool hasFailed(const std::string& purpose) const { return failed.count(purpose) != 0; }

  /// Returns whether a call of this kind failed with `error`.
  bool hasFailed(const std::string& purpose, int error) const {
    return hasFailed(purpose) && fault->error == error;
  }

  /// Returns whether no call returned an error.
  bool isHarmless() const { return count == 0 || fault->error == 0; }

  /// Returns whether each call that failed was interrupted and is one of `calls`, which the caller
  /// repeats.
  bool isRepeatable(const Purposes& calls) const {
    return isHarmless() || (fault->error == EINTR && std::includes(calls.begin(), calls.end(),
                                                                   failed.begin(), failed.end()));
  }
};

/// Purposes of which every call fails, with their errors.
using Lacking = std::map<std::string, int>;

/// An operation that meets faults. `check` looks at the working directory after each run.
struct Operation {
  std::string what;
  Contents before;
  Work run;
  std::function<void(const Outcome&)> check;
  Lacking lacking = {};       ///< what the system cannot do at all
  std::string function = "";  ///< the only function that makes system calls, if there is only one
  /// Describes the result for users, where the answer alone does not.
  std::function<std::string(const Outcome&)> describe = {};
  bool isFresh = false;  ///< whether each run has a process of its own
};

/// Runs operations with faults.
class FaultInjection : public InTemporaryDirectory {
 protected:
  /// Synchronising takes no time in memory.
  FaultInjection() : InTemporaryDirectory(directoryInMemory()) {}

  void SetUp() override {
    if (!canTrace()) GTEST_SKIP() << "no process can be traced here";
    output_ = memfd_create("output", MFD_CLOEXEC);
    ASSERT_NE(output_, -1);
  }

  ~FaultInjection() override {
    if (output_ != -1) close(output_);
  }

  void TearDown() override { RecordProperty("failed_calls", failedCalls_); }

  /// Runs the operation once for each of its calls and each fault, with only this call failing, and
  /// with all calls from this one on failing. Calls that only follow a failure of another call fail
  /// in operations that lack the other call.
  void withEveryFault(const Operation& operation) {
    const int failedBefore = failedCalls_;
    TracedChild child(withOutput(operation.run));
    const Fault none = {"no fault", 0, Share::kAll, {}, true};
    // The first run also fills caches, such as that of the time zone.
    for (const char* const run : {"first", "second"}) {
      makeContents(operation.before);
      if (operation.isFresh) child.end();
      const Outcome outcome = outcomeOf(child, operation.lacking, none, 1, false);
      EXPECT_EQ(outcome.ended.status, 0) << operation.what << ", " << run << " run";
    }
    descriptors_ = child.descriptors();
    const std::set<long> calls = made_;
    for (const Fault& fault : faults()) withFault(child, operation, fault);
    for (const long call : calls) {
      if (!operation.function.empty()) {
        FailingFunctions::all().addCall(operation.function, systemCallName(call), false);
      }
      for (const Fault& fault : documentedFaults(call)) withFault(child, operation, fault);
    }
    FailingFunctions::all().addOperation(failedCalls_ - failedBefore);
  }

  /// Returns the system calls of `work` that may fail, apart from those of its first run.
  std::set<long> callsOf(const Work& work) {
    TracedChild child(work);
    const Fault none = {"no fault", 0, Share::kAll, {}, true};
    for (const bool isFirst : {true, false}) {
      EXPECT_EQ(outcomeOf(child, {}, none, 1, false).ended.status, 0) << isFirst;
    }
    return made_;
  }

  /// Runs `child` with `fault` at its call `number`, counted from 1, or at all calls from there on.
  Outcome outcomeOf(TracedChild& child, const Lacking& lacking, const Fault& fault, int number,
                    bool isForGood) {
    Outcome outcome;
    outcome.fault = &fault;
    EXPECT_EQ(ftruncate(output_, 0) + lseek(output_, 0, SEEK_SET), 0);
    int calls = 0;
    int matching = 0;
    made_.clear();
    const auto intervene = [&](long call) -> Intervention {
      constexpr int mostCalls = 20000;
      Intervention end;
      end.kills = ++calls > mostCalls;
      if (end.kills) return end;
      if (isOfRuntime(call)) return {};
      const std::string purpose = purposeOf(call);
      if (purpose.empty()) return {};
      if (const auto error = lacking.find(purpose); error != lacking.end()) return {error->second};
      made_.insert(call);
      if (!fault.concerns(call)) return {};
      ++matching;
      if (isForGood ? matching < number : matching != number) return {};
      outcome.failed.insert(purpose);
      outcome.changed.insert(call);
      ++outcome.count;
      return {fault.error, purpose == "close", fault.share};
    };
    outcome.ended = child.run(intervene);
    outcome.output = readFile("/proc/self/fd/" + std::to_string(output_));
    return outcome;
  }

  /// Returns `work` with both standard streams where the test reads them.
  Work withOutput(const Work& work) const {
    return [this, work](Report& report) {
      report.watch(false);
      dup2(output_, STDOUT_FILENO);
      dup2(output_, STDERR_FILENO);
      report.watch(true);
      return work(report);
    };
  }

 private:
  void withFault(TracedChild& child, const Operation& operation, const Fault& fault) {
    withFault(child, operation, fault, false);
    if (fault.mayLast) withFault(child, operation, fault, true);
  }

  void withFault(TracedChild& child, const Operation& operation, const Fault& fault,
                 bool isForGood) {
    Outcome outcome;
    int number = 0;
    do {
      ++number;
      SCOPED_TRACE(operation.what + ": " + fault.what + " at call " + std::to_string(number) +
                   (isForGood ? " and all that follow" : ""));
      makeContents(operation.before);
      if (operation.isFresh) child.end();
      outcome = outcomeOf(child, operation.lacking, fault, number, isForGood);
      if (isAbortedByCLibrary(outcome)) {
        EXPECT_EQ(contents(), operation.before);
        note(operation, outcome, "the C library aborts the process");
        continue;
      }
      EXPECT_TRUE(WIFEXITED(outcome.ended.status)) << outcome.ended.status;
      EXPECT_NE(outcome.answer(), "another exception");
      if (child.isThere()) {
        EXPECT_EQ(child.descriptors(), descriptors_) << "a descriptor is left open";
      }
      // A check may change the files.
      note(operation, outcome, resultOf(operation, outcome));
      operation.check(outcome);
      if (hasNewFailure()) {
        ADD_FAILURE() << "calls that failed: " << testing::PrintToString(outcome.failed) << "\n"
                      << "answer: " << outcome.answer();
        hasNewFailure();
      }
    } while (outcome.count != 0);
  }

  /// Returns whether the C library has ended the process, which the program cannot prevent: expat
  /// takes random numbers from it, and it asserts that a buffer of the right size is long enough
  /// for the name of the working directory.
  static bool isAbortedByCLibrary(const Outcome& outcome) {
    const int status = outcome.ended.status;
    const bool isAborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    return isAborted && (outcome.failed == Purposes{"getrandom"} ||
                         (outcome.failed == Purposes{"getcwd"} && outcome.fault->error == ERANGE));
  }

  static std::string resultOf(const Operation& operation, const Outcome& outcome) {
    if (outcome.ended.status != 0) {
      return "the process ends with status " + std::to_string(WEXITSTATUS(outcome.ended.status));
    }
    return operation.describe ? operation.describe(outcome) : outcome.answer();
  }

  /// Adds the result to those of the function, unless calls of several kinds failed.
  void note(const Operation& operation, const Outcome& outcome, const std::string& result) {
    failedCalls_ += outcome.count;
    if (operation.function.empty()) return;
    FailingFunctions& all = FailingFunctions::all();
    for (const long call : outcome.changed) {
      all.addCall(operation.function, systemCallName(call), true);
    }
    if (outcome.changed.size() != 1) return;
    const int error = outcome.fault->error;
    all.addFailure(operation.function, systemCallName(*outcome.changed.begin()),
                   error == 0 ? "fewer bytes" : errorName(error), result, outcome.count);
  }

  /// Returns whether an expectation has failed since the last call.
  bool hasNewFailure() {
    const auto* const result = testing::UnitTest::GetInstance()->current_test_info()->result();
    const int before = parts_;
    parts_ = result->total_part_count();
    return parts_ != before;
  }

  int parts_ = 0;
  int output_ = -1;
  int failedCalls_ = 0;
  std::size_t descriptors_ = 0;  ///< that are open after a run without faults
  std::set<long> made_;          ///< the calls of the last run that may fail
};

#endif  // FAULT_INJECTION_H
