/// Child processes whose system calls a test follows.
#ifndef TRACEE_H
#define TRACEE_H

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

/// A child that stops at each system call, also of a program that it executes. It does not survive
/// the object.
class Tracee {
 public:
  enum class Stop {
    kEntry,   ///< before a system call
    kExit,    ///< after a system call
    kPaused,  ///< by SIGSTOP
    kEnded,
  };

  /// Forks a child that runs `work` once `next` is called.
  explicit Tracee(const std::function<void()>& work) {
    std::fflush(nullptr);  // the child has a copy of the buffers
    child_ = fork();
    if (child_ == 0) {
      if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
      raise(SIGSTOP);
      work();
      _exit(0);
    }
    if (child_ < 0) return;
    if (waitpid(child_, &status_, 0) == child_ && WIFSTOPPED(status_)) {
      ptrace(PTRACE_SETOPTIONS, child_, nullptr,
             PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACEEXEC);
    } else {
      child_ = -1;
    }
  }
  ~Tracee() { end(); }
  Tracee(const Tracee&) = delete;
  Tracee& operator=(const Tracee&) = delete;

  /// Returns false if this process may not trace another, and after the end of the child.
  bool isTraced() const { return child_ > 0; }

  /// Lets the child run to its next stop. Other signals than SIGSTOP reach it.
  Stop next() {
    constexpr int callStop = SIGTRAP | 0x80;
    constexpr int executed = SIGTRAP | (PTRACE_EVENT_EXEC << 8);
    for (long signal = 0; ptrace(PTRACE_SYSCALL, child_, nullptr, signal) == 0;) {
      if (waitpid(child_, &status_, 0) != child_ || !WIFSTOPPED(status_)) {
        child_ = -1;
        return Stop::kEnded;
      }
      signal = status_ >> 8 == executed ? 0 : WSTOPSIG(status_);
      if (signal == SIGSTOP) return Stop::kPaused;
      if (signal == callStop) {
        isInCall_ = !isInCall_;
        return isInCall_ ? Stop::kEntry : Stop::kExit;
      }
    }
    end();
    return Stop::kEnded;
  }

  /// Kills the child.
  void end() {
    if (child_ <= 0) return;
    kill(child_, SIGKILL);
    waitpid(child_, &status_, 0);
    child_ = -1;
  }

  pid_t id() const { return child_; }

  /// Returns the last status from waitpid.
  int status() const { return status_; }

 private:
  pid_t child_ = -1;
  int status_ = 0;
  bool isInCall_ = false;
};

/// A system call that a child has made.
struct SystemCall {
  long number;
  std::vector<unsigned long long> arguments;
  long long result;
};

/// Reports the system calls of a child, one after the other.
class CallTracer {
 public:
  /// Runs `work` in a child and calls `atCall` after each system call, while the child is stopped.
  /// Returns false if no process can be traced, or the system does not describe its calls.
  bool run(const std::function<void()>& work,
           const std::function<void(const SystemCall&)>& atCall) {
    Tracee child(work);
    if (!child.isTraced()) return false;
    child_ = child.id();
    SystemCall call{};
    for (Tracee::Stop stop; (stop = child.next()) != Tracee::Stop::kEnded;) {
      __ptrace_syscall_info info{};
      if (ptrace(PTRACE_GET_SYSCALL_INFO, child_, sizeof(info), &info) <= 0) return false;
      if (stop == Tracee::Stop::kEntry) {
        call.number = static_cast<long>(info.entry.nr);
        call.arguments.assign(std::begin(info.entry.args), std::end(info.entry.args));
      } else if (stop == Tracee::Stop::kExit) {
        call.result = info.exit.rval;
        atCall(call);
      }
    }
    return true;
  }

  /// Returns `size` bytes of the child's memory. Valid within `atCall`, as is `textAt`.
  std::string bytesAt(unsigned long long address, std::size_t size) const {
    std::string bytes(size, '\0');
    iovec local{bytes.data(), bytes.size()};
    iovec remote{reinterpret_cast<void*>(address), size};
    EXPECT_EQ(process_vm_readv(child_, &local, 1, &remote, 1, 0), static_cast<ssize_t>(size));
    return bytes;
  }

  /// Returns the text in the child's memory that ends with a NUL.
  std::string textAt(unsigned long long address) const {
    std::string text;
    for (char c; (c = bytesAt(address + text.size(), 1).front()) != '\0';) text += c;
    return text;
  }

 private:
  pid_t child_ = -1;
};

/// Runs `work` in a child that is killed at the entry of its system call `number`, counted from 1.
/// Returns false if the child ends before.
inline bool isKilledAtCall(int number, const std::function<void()>& work) {
  Tracee child(work);
  EXPECT_TRUE(child.isTraced()) << "the child cannot be traced";
  int calls = 0;
  while (child.isTraced()) {
    if (child.next() == Tracee::Stop::kEntry && ++calls == number) return true;
  }
  return false;
}

#endif  // TRACEE_H
