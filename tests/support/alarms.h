/// Signals that arrive during a test.
#ifndef ALARMS_H
#define ALARMS_H

#include <sys/time.h>

#include <csignal>

inline volatile std::sig_atomic_t alarms;

/// Sends SIGALRM to this process ten times a second, for the lifetime of the object. `flags` are
/// those of the handler, which counts `alarms`.
class Alarms {
 public:
  explicit Alarms(int flags) {
    alarms = 0;
    struct sigaction action{};
    action.sa_handler = [](int) { alarms = alarms + 1; };
    action.sa_flags = flags;
    sigaction(SIGALRM, &action, &action_);
    const itimerval every{{0, 100000}, {0, 100000}};
    setitimer(ITIMER_REAL, &every, nullptr);
  }

  ~Alarms() {
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &action_, nullptr);
  }

  Alarms(const Alarms&) = delete;
  Alarms& operator=(const Alarms&) = delete;

 private:
  struct sigaction action_;
};

#endif  // ALARMS_H
