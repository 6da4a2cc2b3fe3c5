/// Limits on what this process may use.
#ifndef RESOURCE_LIMITS_H
#define RESOURCE_LIMITS_H

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

/// Lets this process have no descriptor from `most` on, for the lifetime of the object.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t most) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit limit = {most, before_.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) throw std::runtime_error("no limit of descriptors");
  }
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit before_;
};

/// Limits the size of files to `bytes` bytes. Writes beyond it fail without a signal.
inline bool limitFileSize(rlim_t bytes) {
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes;
  return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

#endif  // RESOURCE_LIMITS_H
