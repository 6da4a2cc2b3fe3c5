/// Children in whose system calls a test intervenes. For Linux on x86-64: it changes registers.
#ifndef TRACED_CHILD_H
#define TRACED_CHILD_H

#include <stdio_ext.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <iostream>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "files.h"
#include "shared_memory.h"
#include "tracee.h"

/// How much of its bytes a call transfers.
enum class Share { kAll, kHalf, kOneByte };

/// What happens to a system call.
struct Intervention {
  int error = 0;              ///< the error that the call returns; 0 for none
  bool isMade = false;        ///< whether the call has its effect although it returns an error
  Share share = Share::kAll;  ///< of the bytes asked for
  bool kills = false;         ///< whether the child is killed before the call
};

/// Decides about each call that a watched child makes, by the number of the call.
using Intervene = std::function<Intervention(long call)>;

/// How a child ended.
struct Ended {
  int status = 0;      ///< as waitpid returns it
  std::string answer;  ///< what the work returned; empty if it did not return
  std::string text;    ///< further text that the work reported
};

/// The report of a child to the test, in shared memory: it needs no system call.
class Report {
 public:
  /// Lets the test intervene in the calls that follow, or not.
  void watch(bool on) { memory_->isWatched = on; }
  bool isWatched() const { return memory_->isWatched; }
  /// Sets whether the child ends instead of working once more.
  void end(bool on) { memory_->hasEnded = on; }
  bool hasEnded() const { return memory_->hasEnded; }
  void setAnswer(const std::string& answer) { copyTo(memory_->answer, answer); }
  void setText(const std::string& text) { copyTo(memory_->text, text); }
  std::string answer() const { return memory_->answer; }
  std::string text() const { return memory_->text; }

 private:
  struct Memory {
    std::atomic<bool> isWatched{false};
    std::atomic<bool> hasEnded{false};
    char answer[64] = "";
    char text[16384] = "";
  };

  template <std::size_t size>
  static void copyTo(char (&target)[size], const std::string& text) {
    target[text.copy(target, size - 1)] = '\0';
  }

  SharedMemory<Memory> memory_;
};

/// The system call at which a child has stopped.
class StoppedCall {
 public:
  explicit StoppedCall(pid_t child) : child_(child) {
    ptrace(PTRACE_GETREGS, child_, nullptr, &registers_);
  }

  long number() const { return static_cast<long>(registers_.orig_rax); }

  /// At the entry: suppresses the call.
  void suppress() {
    registers_.orig_rax = std::numeric_limits<unsigned long long>::max();
    store();
  }

  /// At the entry: reduces the number of bytes. A call for several buffers becomes one for the
  /// first buffer that is not empty.
  void cutShort(Share share) {
    if (number() == SYS_writev || number() == SYS_readv) {
      unsigned long long part = registers_.rsi;
      while (peek(part + offsetof(iovec, iov_len)) == 0) part += sizeof(iovec);
      registers_.orig_rax = number() == SYS_writev ? SYS_write : SYS_read;
      registers_.rdx = peek(part + offsetof(iovec, iov_len));
      registers_.rsi = peek(part + offsetof(iovec, iov_base));
    }
    registers_.rdx =
        share == Share::kHalf ? (registers_.rdx + 1) / 2 : std::min(registers_.rdx, 1ULL);
    store();
  }

  /// At the exit: returns `error` to the caller, unless it is 0. The caller expects the registers
  /// with which it `entered`.
  void giveBack(const StoppedCall& entered, int error) {
    registers_.rsi = entered.registers_.rsi;
    registers_.rdx = entered.registers_.rdx;
    if (error != 0) registers_.rax = static_cast<unsigned long long>(-error);
    store();
  }

 private:
  void store() { ptrace(PTRACE_SETREGS, child_, nullptr, &registers_); }

  unsigned long long peek(unsigned long long address) const {
    return static_cast<unsigned long long>(ptrace(PTRACE_PEEKDATA, child_, address, nullptr));
  }

  pid_t child_;
  user_regs_struct registers_{};
};

/// The work of a child. It returns its answer.
using Work = std::function<std::string(Report&)>;

/// A child that repeats the same work while the test intervenes. It is forked again only if the
/// work has ended it, because forking takes most of the time.
class TracedChild {
 public:
  explicit TracedChild(Work work) : work_(std::move(work)) {}

  ~TracedChild() { end(); }
  TracedChild(const TracedChild&) = delete;
  TracedChild& operator=(const TracedChild&) = delete;

  /// Returns whether the child is ready to repeat the work.
  bool isThere() const { return child_.has_value(); }

  /// Ends the child, so that another one does the work for the first time again. It ends by itself,
  /// because a killed process writes no coverage counters.
  void end() {
    if (!child_) return;
    report_.end(true);
    while (child_->next() != Tracee::Stop::kEnded) {
    }
    child_.reset();
    report_.end(false);
  }

  /// Returns the number of descriptors that the child has open.
  std::size_t descriptors() const {
    return namesIn("/proc/" + std::to_string(child_->id()) + "/fd").size();
  }

  /// Runs the work once. The first run also fills caches, such as that of the time zone and those
  /// of sanitizers, by system calls of its own.
  Ended run(const Intervene& intervene) {
    report_.setAnswer("");
    report_.setText("");
    report_.watch(false);
    if (!child_) child_.emplace([this] { repeatWork(); });
    Ended ended;
    ended.status = follow(intervene);
    if (!child_->isTraced()) child_.reset();
    ended.answer = report_.answer();
    ended.text = report_.text();
    return ended;
  }

 private:
  /// Runs in the child. Each round takes ten seconds at most.
  void repeatWork() {
    constexpr unsigned deadlineSeconds = 10;
    while (!report_.hasEnded()) {
      alarm(deadlineSeconds);
      discardOutput();
      report_.setAnswer(answer());
      alarm(0);
      while (wait(nullptr) > 0) {
      }
      raise(SIGSTOP);
    }
  }

  std::string answer() {
    const Watched watched(report_);
    try {
      return work_(report_);
    } catch (const std::bad_alloc&) {
      return "bad_alloc";
    } catch (...) {
      return "another exception";
    }
  }

  class Watched {
   public:
    explicit Watched(Report& report) : report_(report) { report_.watch(true); }
    ~Watched() { report_.watch(false); }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

   private:
    Report& report_;
  };

  /// Discards the buffered output and the stream errors of a failed round.
  static void discardOutput() {
    __fpurge(stdout);
    std::clearerr(stdout);
    std::clearerr(stderr);
    std::cout.clear();
    std::cerr.clear();
  }

  /// Follows the child until the work returns or the child ends. Returns 0 or the child's status,
  /// and -1 if there is no child.
  int follow(const Intervene& intervene) {
    if (!child_->isTraced()) return -1;
    const pid_t id = child_->id();
    StoppedCall entered(id);
    Intervention intervention;
    while (true) {
      switch (child_->next()) {
        case Tracee::Stop::kEntry:
          intervention = Intervention();
          if (!report_.isWatched()) break;
          entered = StoppedCall(id);
          intervention = intervene(entered.number());
          change(entered, intervention);
          if (!intervention.kills) break;
          child_->end();
          return child_->status();
        case Tracee::Stop::kExit:
          if (intervention.error != 0 || intervention.share != Share::kAll) {
            StoppedCall(id).giveBack(entered, intervention.error);
          }
          break;
        case Tracee::Stop::kPaused:
          return 0;
        case Tracee::Stop::kEnded:
          return child_->status();
      }
    }
  }

  static void change(StoppedCall call, const Intervention& intervention) {
    if (intervention.error != 0 && !intervention.isMade) call.suppress();
    if (intervention.share != Share::kAll) call.cutShort(intervention.share);
  }

  const Work work_;
  Report report_;
  std::optional<Tracee> child_;
};

/// Runs `work` once in a child while the test intervenes.
inline Ended runTraced(const Work& work, const Intervene& intervene) {
  TracedChild child(work);
  return child.run(intervene);
}

/// Returns whether this machine lets a process trace its child and change its system calls.
inline bool canTrace() {
  const Ended ended =
      runTraced([](Report&) { return std::string(syscall(SYS_getppid) == -1 ? "changed" : "not"); },
                [](long call) {
                  Intervention intervention;
                  if (call == SYS_getppid) intervention.error = EIO;
                  return intervention;
                });
  return ended.answer == "changed";
}

#endif  // TRACED_CHILD_H
