/// Memory that a process shares with its children.
#ifndef SHARED_MEMORY_H
#define SHARED_MEMORY_H

#include <sys/mman.h>

#include <new>
#include <stdexcept>

/// A value in memory that child processes share. It survives the children.
template <class Value>
class SharedMemory {
 public:
  SharedMemory()
      : memory_(mmap(nullptr, sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1,
                     0)) {
    if (memory_ == MAP_FAILED) throw std::runtime_error("no shared memory");
    value_ = new (memory_) Value{};
  }
  ~SharedMemory() { munmap(memory_, sizeof(Value)); }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  Value* operator->() const { return value_; }

 private:
  void* const memory_;
  Value* value_;
};

#endif  // SHARED_MEMORY_H
