/// Files that are read and written through descriptors.
#ifndef ZN_INTERNAL_DESCRIPTOR_H
#define ZN_INTERNAL_DESCRIPTOR_H

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace zn_lib::internal {

/// The mode of a new file, before the umask.
constexpr mode_t kNewFile = 0666;

/// Owns a file descriptor and closes it.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  void reset(int number = -1) {
    if (isOpen()) close(number_);
    number_ = number;
  }
  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

 private:
  int number_;
};

/// Reads up to `size` bytes and repeats interrupted calls. Returns the number of bytes, 0 at the
/// end of the file, or -1 if the read fails.
inline ssize_t readSome(const Descriptor& file, char* bytes, std::size_t size) {
  ssize_t count;
  do {
    count = read(file.number(), bytes, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

/// Returns false if not all of `bytes` could be written.
inline bool writeAll(const Descriptor& file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file.number(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_DESCRIPTOR_H
