#include "copy.h"

#ifdef __linux__
#include <sys/sendfile.h>
#endif
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace zn_lib::internal {
namespace {

#ifdef __linux__

/// Returns true for a regular file that the kernel copies noticeably faster than two calls do. The
/// files of /proc have the size 0, whatever they contain.
bool isLongFile(const Descriptor& file) {
  constexpr off_t longest = 128 * 1024;
  struct stat status;
  return fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > longest;
}

/// Lets the kernel copy what it can. Returns false if the target has reached the largest size that
/// the process may write.
bool copyInKernel(const Descriptor& source, const Descriptor& target) {
  // The pieces are limited so that signals are handled in between.
  constexpr std::size_t piece = std::size_t{16} << 20;
  ssize_t count;
  do {
    count = copy_file_range(source.number(), nullptr, target.number(), nullptr, piece, 0);
  } while (count > 0);
  if (count == 0) return true;
  // With EFBIG, the process has already received SIGXFSZ, which each further call would repeat.
  if (errno == EFBIG) return false;
  do {  // also between file systems
    count = sendfile(target.number(), source.number(), nullptr, piece);
  } while (count > 0);
  return count == 0 || errno != EFBIG;
}

#endif

}  // namespace

void copyContents(const Descriptor& source, const Descriptor& target) {
#ifdef __linux__
  if (isLongFile(source) && !copyInKernel(source, target)) return;
#endif
  // This copies whatever the kernel has left or refused.
  std::array<char, 32 * 1024> block;
  ssize_t count;
  do {
    count = readSome(source, block.data(), block.size());
  } while (count > 0 && writeAll(target, {block.data(), static_cast<std::size_t>(count)}));
}

}  // namespace zn_lib::internal
