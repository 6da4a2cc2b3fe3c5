/// Standard input and output that lead elsewhere.
#ifndef REDIRECTED_DESCRIPTOR_H
#define REDIRECTED_DESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

/// Opens the file `name` with `flags` as `descriptor`, for the lifetime of the object.
class RedirectedDescriptor {
 public:
  RedirectedDescriptor(int descriptor, const char* name, int flags) : descriptor_(descriptor) {
    flush();
    before_ = dup(descriptor);
    const int target = open(name, flags, 0600);
    dup2(target, descriptor);
    close(target);
  }
  ~RedirectedDescriptor() {
    flush();
    if (before_ >= 0) {
      dup2(before_, descriptor_);
      close(before_);
    } else {
      close(descriptor_);
    }
  }
  RedirectedDescriptor(const RedirectedDescriptor&) = delete;
  RedirectedDescriptor& operator=(const RedirectedDescriptor&) = delete;

 private:
  static void flush() {
    std::cout.flush();
    std::fflush(nullptr);
  }

  const int descriptor_;
  int before_ = -1;
};

#endif  // REDIRECTED_DESCRIPTOR_H
