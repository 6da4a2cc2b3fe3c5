/// Rows whose instructions callgrind counts, for bench/instructions. bench_rows.h includes this
/// file.
///
/// Only the rows of the library are counted, and of these only the rows that are measured in
/// processor time and those that are added by `addCountedClockRow`.
#ifndef BENCH_COUNTING_H
#define BENCH_COUNTING_H

#include <expat.h>
#include <gnu/libc-version.h>
#include <stdlib.h>
#include <valgrind/callgrind.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

/// Replaces the function of the C library in the whole program. expat salts its hash tables with
/// random bytes, so that the number of collisions would vary from run to run.
extern "C" void arc4random_buf(void* buffer, std::size_t size) noexcept {
  std::memset(buffer, 1, size);
}

namespace bench {

struct CountedRow {
  std::string work;
  std::function<void()> run;
};

inline std::vector<CountedRow>& countedRows() {
  static std::vector<CountedRow> rows;
  return rows;
}

/// Prevents the compiler from predicting or discarding `value`.
template <class Value>
void hide(Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

template <class Input, class Operation>
void addRow(const std::string& name, const Input& input, Operation operation) {
  constexpr std::string_view ours = "/zn_udf";
  const std::size_t slash = name.find('/');
  if (name.substr(slash) != ours) return;
  countedRows().push_back({name.substr(0, slash), [input = input, operation]() mutable {
                             hide(input);
                             auto result = operation(input);
                             hide(result);
                           }});
}

template <class Input, class Operation>
void addClockRow(const std::string&, const Input&, Operation) {}

template <class MakeInput, class Operation>
void addLateClockRow(const std::string&, MakeInput, Operation, int = 0) {}

template <class Input, class Operation>
void addCountedClockRow(const std::string& name, const Input& input, Operation operation) {
  addRow(name, input, operation);
}

template <class Operation>
void addScan(const std::string& name, const std::string& text, Operation operation) {
  addRow(name, text, operation);
}

template <class MakeInput, class Operation>
void addGrowth(const std::string&, int, int, MakeInput, Operation, const std::string& = "") {}

/// Runs each row, and has callgrind write the instructions of one call to a file. With the argument
/// --toolchain, prints what the counts depend on.
inline int runRows(int argc, char** argv) {
  if (argc == 2 && argv[1] == std::string_view("--toolchain")) {
    const XML_Expat_Version expat = XML_ExpatVersionInfo();
    std::cout << "g++ " << __VERSION__ << ", glibc " << gnu_get_libc_version() << ", expat "
              << expat.major << '.' << expat.minor << '.' << expat.micro << '\n';
    return 0;
  }
  CALLGRIND_START_INSTRUMENTATION;
  for (const CountedRow& row : countedRows()) {
    // The first call binds symbols, runs initialisers and fills the lists of the allocator.
    row.run();
    CALLGRIND_ZERO_STATS;
    row.run();
    CALLGRIND_DUMP_STATS_AT(row.work.c_str());
  }
  return 0;
}

}  // namespace bench

#endif  // BENCH_COUNTING_H
