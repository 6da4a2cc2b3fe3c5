/// The inputs that memory_bench prepares for memory_case.
#ifndef MEMORY_CASE_H
#define MEMORY_CASE_H

#include <cstddef>

namespace memory_case {

constexpr const char* kStore = "large";
constexpr int kSettings = 100000;
constexpr std::size_t kTextSize = std::size_t{16} << 20;
constexpr std::size_t kDumpSize = std::size_t{8} << 20;
constexpr std::size_t kFiles = 100000;

}  // namespace memory_case

#endif  // MEMORY_CASE_H
