/// The memory that this process has allocated and not freed.
#ifndef MEMORY_IN_USE_H
#define MEMORY_IN_USE_H

#include <malloc.h>

#include <cstddef>
#include <cstdlib>

inline std::size_t bytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// Returns false if another allocator, such as that of a sanitizer, replaces the one that counts.
inline bool bytesAreCounted() {
  constexpr std::size_t size = 1000000;
  const std::size_t before = bytesInUse();
  void* volatile const block = std::malloc(size);
  const std::size_t after = bytesInUse();
  std::free(block);
  return after >= before + size;
}

#endif  // MEMORY_IN_USE_H
