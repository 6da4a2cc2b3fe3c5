/// Code run in a child whose system calls the test sees and can make fail.
#ifndef TRACED_CHILD_H
#define TRACED_CHILD_H

#include <stdio_ext.h>
#include <sys/mman.h>
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
#include <cstdio>
#include <cstring>
#include <functional>
#include <iostream>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

/// How much a call that transfers bytes may transfer.
enum class Share { kAll, kHalf, kOneByte };

/// What the test has the system do with a call.
struct Intervention {
  int error = 0;              ///< with which the call fails; 0 for one that goes through
  bool isMade = false;        ///< whether a call that fails has its effect all the same
  Share share = Share::kAll;  ///< of the bytes asked for
};

/// Asked at each call that the child makes, by its number, while it is watched.
using Intervene = std::function<Intervention(long call)>;

/// How a child ended.
struct Ended {
  int status = 0;      ///< as waitpid tells it
  std::string answer;  ///< of the code that ran; empty where it did not come to its end
  std::string text;    ///< what else it told
};

/// The memory that a child has in common with the test, for what it tells: telling makes no call.
class Report {
 public:
  Report() {
    void* const memory =
        mmap(nullptr, sizeof(Memory), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
    memory_ = new (memory) Memory;
  }
  ~Report() { munmap(memory_, sizeof(Memory)); }
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  void watch(bool on) { memory_->isWatched = on; }
  bool isWatched() const { return memory_->isWatched; }
  void setAnswer(const std::string& answer) { copyTo(memory_->answer, answer); }
  void setText(const std::string& text) { copyTo(memory_->text, text); }
  std::string answer() const { return memory_->answer; }
  std::string text() const { return memory_->text; }

 private:
  struct Memory {
    std::atomic<bool> isWatched{false};
    char answer[64] = "";
    char text[16384] = "";
  };

  template <std::size_t size>
  static void copyTo(char (&target)[size], const std::string& text) {
    target[text.copy(target, size - 1)] = '\0';
  }

  Memory* memory_;
};

/// The system call at which a child has stopped.
class StoppedCall {
 public:
  explicit StoppedCall(pid_t child) : child_(child) {
    ptrace(PTRACE_GETREGS, child_, nullptr, &registers_);
  }

  long number() const { return static_cast<long>(registers_.orig_rax); }

  /// At its entry: no call is made.
  void leaveOut() {
    registers_.orig_rax = std::numeric_limits<unsigned long long>::max();
    store();
  }

  /// At its entry: a transfer of fewer bytes. One of several parts becomes one of the first part
  /// that has any.
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

  /// At its exit: what the caller sees. Its registers are those that it `entered` with, which it
  /// counts on.
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

/// What a child does: it gives its answer.
using Work = std::function<std::string(Report&)>;

/// A child that does the same work again and again, in which the test intervenes. It is forked
/// anew only where the work ended it: forking is what takes the time.
class TracedChild {
 public:
  explicit TracedChild(Work work) : work_(std::move(work)) {}
  ~TracedChild() {
    if (child_ <= 0) return;
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  TracedChild(const TracedChild&) = delete;
  TracedChild& operator=(const TracedChild&) = delete;

  /// Has the work done once. The first time fills caches: that of the time zone, those of a
  /// sanitizer, which takes calls of its own for them.
  Ended run(const Intervene& intervene) {
    report_.setAnswer("");
    report_.setText("");
    Ended ended;
    if (child_ <= 0 && !start()) {
      ended.status = -1;
      return ended;
    }
    ended.status = follow(intervene);
    if (WIFSTOPPED(ended.status)) {
      ended.status = 0;
    } else {
      child_ = -1;
    }
    ended.answer = report_.answer();
    ended.text = report_.text();
    return ended;
  }

 private:
  bool start() {
    std::fflush(nullptr);  // what the child would write once more
    child_ = fork();
    if (child_ == 0) workForGood();
    int status = 0;
    if (child_ < 0 || waitpid(child_, &status, 0) != child_ || !WIFSTOPPED(status)) {
      child_ = -1;
      return false;
    }
    ptrace(PTRACE_SETOPTIONS, child_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    return true;
  }

  /// In the child, which has ten seconds for each time.
  [[noreturn]] void workForGood() {
    constexpr unsigned deadlineSeconds = 10;
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(98);
    while (true) {
      raise(SIGSTOP);
      alarm(deadlineSeconds);
      forgetOutput();
      report_.setAnswer(answer());
      alarm(0);
      while (wait(nullptr) > 0) {
      }
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

  /// Of the time before, which may have failed.
  static void forgetOutput() {
    __fpurge(stdout);
    std::clearerr(stdout);
    std::clearerr(stderr);
    std::cout.clear();
    std::cerr.clear();
  }

  /// Follows the child until it has done its work, or has ended: its status as waitpid tells it.
  int follow(const Intervene& intervene) {
    constexpr int callStop = SIGTRAP | 0x80;
    bool isEntry = true;
    Intervention intervention;
    StoppedCall entered(child_);
    int status = 0;
    for (long signal = 0; ptrace(PTRACE_SYSCALL, child_, nullptr, signal) == 0;) {
      if (waitpid(child_, &status, 0) != child_ || !WIFSTOPPED(status)) break;
      signal = 0;
      if (WSTOPSIG(status) == SIGSTOP) break;
      if (WSTOPSIG(status) != callStop) {
        signal = WSTOPSIG(status);
      } else if (!isEntry) {
        if (intervention.error != 0 || intervention.share != Share::kAll) {
          StoppedCall(child_).giveBack(entered, intervention.error);
        }
        isEntry = true;
      } else {
        isEntry = false;
        intervention = Intervention();
        if (!report_.isWatched()) continue;
        entered = StoppedCall(child_);
        intervention = intervene(entered.number());
        StoppedCall changed = entered;
        if (intervention.error != 0 && !intervention.isMade) changed.leaveOut();
        if (intervention.share != Share::kAll) changed.cutShort(intervention.share);
      }
    }
    return status;
  }

  const Work work_;
  Report report_;
  pid_t child_ = -1;
};

/// Does `work` once in a child, intervening.
inline Ended runTraced(const Work& work, const Intervene& intervene) {
  TracedChild child(work);
  return child.run(intervene);
}

/// Whether this machine lets a process trace its child, and change what it does.
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
