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
#include <vector>

#include "directory_contents.h"
#include "temporary_files.h"
#include "traced_child.h"

using Purposes = std::set<std::string>;

/// Returns the purpose of a system call that may fail, and an empty text for others.
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
      {SYS_rmdir, "unlink"},       {SYS_close, "close"},
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
  return found == purposes.end() ? "" : found->second;
}

/// A way in which system calls fail.
struct Fault {
  const char* what;
  int error;
  Share share;
  Purposes calls;
  bool mayLast;  ///< whether it may go on for good, which no caller survives for interruptions
};

/// Returns all faults. Those of a single purpose are for systems that lack nothing else.
inline const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = {
      {"EIO",
       EIO,
       Share::kAll,
       {"open",     "read", "write", "rename", "link",  "unlink", "close",
        "lseek",    "stat", "list",  "access", "mkdir", "chdir",  "getcwd",
        "truncate", "send", "uname", "sync",   "lock",  "chown",  "chmod"},
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
       {"open", "rename", "link", "unlink", "stat", "mkdir", "chdir", "getcwd"},
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
      {"EIO for removing", EIO, Share::kAll, {"unlink"}, true},
      {"EIO for closing", EIO, Share::kAll, {"close"}, true},
      {"ENOSPC for writing", ENOSPC, Share::kAll, {"write"}, true},
      {"half of the bytes", 0, Share::kHalf, {"read", "write"}, true},
      {"one byte", 0, Share::kOneByte, {"read", "write"}, false},
  };
  return all;
}

/// The result of a run with faults.
struct Outcome {
  Ended ended;
  std::string output;  ///< on standard output and standard error
  const Fault* fault;
  Purposes failed;  ///< the purposes of the calls that were changed
  int count = 0;    ///< the number of these calls

  const std::string& answer() const { return ended.answer; }
  bool hasFailed(const std::string& purpose) const { return failed.count(purpose) != 0; }

  /// Returns whether no call returned an error.
  bool isHarmless() const { return count == 0 || fault->error == 0; }

  /// Returns whether each call that failed was interrupted and is one of `calls`, which the caller
  /// repeats.
  bool isRepeatable(const Purposes& calls) const {
    return isHarmless() || (fault->error == EINTR && std::includes(calls.begin(), calls.end(),
                                                                   failed.begin(), failed.end()));
  }
};

/// An operation that meets faults. `check` looks at the working directory after each run.
struct Operation {
  const char* what;
  Contents before;
  Work run;
  std::function<void(const Outcome&)> check;
  Purposes lacking = {};  ///< what the system cannot do at all
};

/// Runs operations with faults.
class FaultInjection : public InTemporaryDirectory {
 protected:
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
  /// with all calls from this one on failing.
  void withEveryFault(const Operation& operation) {
    TracedChild child(withOutput(operation.run));
    makeContents(operation.before);
    child.run([](long) { return Intervention(); });
    for (const Fault& fault : faults()) {
      withFault(child, operation, fault, false);
      if (fault.mayLast) withFault(child, operation, fault, true);
    }
  }

  /// Runs `child` with `fault` at its call `number`, counted from 1, or at all calls from there on.
  Outcome outcomeOf(TracedChild& child, const Purposes& lacking, const Fault& fault, int number,
                    bool isForGood) {
    Outcome outcome;
    outcome.fault = &fault;
    EXPECT_EQ(ftruncate(output_, 0) + lseek(output_, 0, SEEK_SET), 0);
    int calls = 0;
    const auto intervene = [&](long call) -> Intervention {
      const std::string purpose = purposeOf(call);
      if (lacking.count(purpose) != 0) return {EPERM};
      if (fault.calls.count(purpose) == 0) return {};
      ++calls;
      if (isForGood ? calls < number : calls != number) return {};
      outcome.failed.insert(purpose);
      ++outcome.count;
      return {fault.error, purpose == "close", fault.share};
    };
    outcome.ended = child.run(intervene);
    outcome.output = readFile("/proc/self/fd/" + std::to_string(output_));
    return outcome;
  }

 private:
  void withFault(TracedChild& child, const Operation& operation, const Fault& fault,
                 bool isForGood) {
    Outcome outcome;
    int number = 0;
    do {
      ++number;
      SCOPED_TRACE(std::string(operation.what) + ": " + fault.what + " at call " +
                   std::to_string(number) + (isForGood ? " and all that follow" : ""));
      makeContents(operation.before);
      outcome = outcomeOf(child, operation.lacking, fault, number, isForGood);
      EXPECT_TRUE(WIFEXITED(outcome.ended.status)) << outcome.ended.status;
      EXPECT_NE(outcome.answer(), "another exception");
      operation.check(outcome);
      failedCalls_ += outcome.count;
      if (hasNewFailure()) {
        ADD_FAILURE() << "calls that failed: " << testing::PrintToString(outcome.failed);
        hasNewFailure();
      }
    } while (outcome.count != 0);
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
};

#endif  // FAULT_INJECTION_H
