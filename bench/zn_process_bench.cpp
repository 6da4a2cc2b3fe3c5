/// Running a program that does nothing, compared with the functions of the system.
#include <sys/mman.h>
#include <zn_process.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "bench_process.h"
#include "bench_rows.h"

namespace {

constexpr const char* kProgram = "/bin/true";
constexpr const char* kArgument = "argument";

int runByFork(const std::string& program) {
  const pid_t child = fork();
  if (child == 0) {
    execl(program.c_str(), program.c_str(), kArgument, static_cast<char*>(nullptr));
    _exit(1);
  }
  return bench::waitFor(child).ru_nsignals != 0;
}

int runBySpawn(const std::string& program) {
  return bench::runProgram({program, kArgument}).ru_nsignals != 0;
}

/// Resident memory, in pages of the usual size.
class ResidentMemory {
 public:
  explicit ResidentMemory(std::size_t size)
      : size_(size),
        memory_(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    if (memory_ == MAP_FAILED) throw std::bad_alloc();
    madvise(memory_, size_, MADV_NOHUGEPAGE);
    std::memset(memory_, 1, size_);
  }
  ~ResidentMemory() { munmap(memory_, size_); }
  ResidentMemory(const ResidentMemory&) = delete;
  ResidentMemory& operator=(const ResidentMemory&) = delete;

 private:
  const std::size_t size_;
  void* const memory_;
};

/// Adds a row that runs the program from a host with 2 GiB of memory in use. The memory is filled
/// only once for each repetition, because that takes longer than all the calls.
template <class Operation>
void addLargeHostRow(const std::string& implementation, Operation operation) {
  constexpr int calls = 50;
  bench::addLateClockRow(
      "childProcess_2GiB_host/" + implementation,
      [] { return std::make_shared<ResidentMemory>(std::size_t{2} << 30); },
      [operation](const auto&) { return operation(kProgram); }, calls);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string program = kProgram;
  const auto runByLibrary = [](const std::string& p) {
    return zn_lib::childProcess(p, kArgument, true);
  };
  bench::addClockRow("childProcess/zn_udf", program, runByLibrary);
  bench::addClockRow("childProcess/fork_exec", program, runByFork);
  bench::addClockRow("childProcess/baseline:posix_spawn", program, runBySpawn);
  addLargeHostRow("zn_udf", runByLibrary);
  addLargeHostRow("fork_exec", runByFork);
  addLargeHostRow("posix_spawn", runBySpawn);
  return bench::runRows(argc, argv);
}
