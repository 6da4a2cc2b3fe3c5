/// Files that cannot be read to their end, for example because the disk fails. A failed read counts
/// as the end of the file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zn_error.h>
#include <zn_file.h>
#include <zn_output.h>
#include <zn_readfile.h>
#include <zn_setcfg.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <map>
#include <string>

#include "next_definition.h"
#include "output_capture.h"
#include "stored_xml.h"
#include "temporary_files.h"

namespace {

/// The behaviour of reads from files that the library under test opens.
struct Reads {
  bool areWatched = false;
  long left = LONG_MAX;   // the bytes until a read fails
  std::size_t most = 0;   // the bytes that a read returns at most; 0 for no limit
  int interruptions = 0;  // the number of reads that fail with EINTR first
  int error = EIO;        // the error of a failed read
  int failures = 0;       // the number of failed reads so far
  int calls = 0;          // the number of reads so far
} reads;

}  // namespace

// These functions replace those of the C library, for the streams of the C++ library and for the
// library under test.
extern "C" {

__attribute__((visibility("default"))) ssize_t read(int descriptor, void* buffer,
                                                    std::size_t size) {
  static const auto next = nextDefinition<ssize_t (*)(int, void*, std::size_t)>("read");
  if (!reads.areWatched) return next(descriptor, buffer, size);
  ++reads.calls;
  if (reads.interruptions > 0) {
    --reads.interruptions;
    errno = EINTR;
    return -1;
  }
  if (reads.left == 0) {
    ++reads.failures;
    errno = reads.error;
    return -1;
  }
  if (reads.most != 0) size = std::min(size, reads.most);
  const ssize_t count =
      next(descriptor, buffer, std::min(size, static_cast<std::size_t>(reads.left)));
  if (count > 0) reads.left -= count;
  return count;
}

/// The C library does not call `read` by its name. To make it fail, the descriptor is redirected to
/// a directory, which cannot be read.
__attribute__((visibility("default"))) std::size_t fread(void* buffer, std::size_t size,
                                                         std::size_t count, std::FILE* stream) {
  static const auto next =
      nextDefinition<std::size_t (*)(void*, std::size_t, std::size_t, std::FILE*)>("fread");
  if (!reads.areWatched) return next(buffer, size, count, stream);
  ++reads.calls;
  const std::size_t bytes = std::min(size * count, static_cast<std::size_t>(reads.left));
  const std::size_t done = bytes == 0 ? 0 : next(buffer, 1, bytes, stream);
  reads.left -= static_cast<long>(done);
  if (reads.left == 0 && bytes < size * count) {
    ++reads.failures;
    const int directory = open("/", O_RDONLY | O_CLOEXEC);
    dup2(directory, fileno(stream));
    close(directory);
    // The bytes that the stream has read ahead are dropped.
    char more;
    while (next(&more, 1, 1, stream) != 0) {
    }
    EXPECT_NE(std::ferror(stream), 0);
  }
  return done / size;
}
}

namespace {

/// Sets the behaviour of reads for the lifetime of the object. `reads` keeps the counters.
class Watched {
 public:
  explicit Watched(const Reads& behaviour) {
    reads = behaviour;
    reads.areWatched = true;
  }
  ~Watched() { reads.areWatched = false; }
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;
};

Reads failingAfter(long bytes) {
  Reads behaviour;
  behaviour.left = bytes;
  return behaviour;
}

class FailingReads : public InTemporaryDirectory {
 protected:
  FailingReads() { zn_lib::setVerbose(true); }
  ~FailingReads() override { zn_lib::setVerbose(false); }
};

/// Returns lines of text that are longer than the buffers of any reader.
std::string lines() {
  std::string text;
  for (int i = 0; text.size() < 100000; ++i) text += "line " + std::to_string(i) + "\n";
  return text;
}

/// Returns the output of `hexDump`.
std::string dumped(const std::string& name, const Reads& behaviour = {}) {
  const Written text = written([&] {
    const Watched watched(behaviour);
    EXPECT_TRUE(zn_lib::hexDump(name, 16));
  });
  EXPECT_EQ(text.err, "");
  return text.out;
}

/// Returns the output of `cat`.
std::string printed(const std::string& name, const Reads& behaviour = {}) {
  zn_lib::ReadFile file;
  std::string copy = name;
  file.setFileName(copy);
  const Written text = written([&] {
    const Watched watched(behaviour);
    EXPECT_TRUE(file.fileOpen());
    EXPECT_TRUE(file.cat());
  });
  EXPECT_EQ(text.err, "");
  return text.out;
}

/// Returns a catalog of `count` errors.
std::string catalogFile(int count) {
  std::string xml = "<E>";
  for (int id = 1; id <= count; ++id) xml += errorXml(std::to_string(id), "m") + "\n";
  return xml + "</E>";
}

// ---- Errors of the system

TEST_F(FailingReads, AFileWhoseFirstReadFails) {
  // The first page of a process is not mapped, so reading this file at its start fails with EIO.
  const std::string memory = "/proc/self/mem";
  EXPECT_NE(dumped(memory).find("\n\nffffffff \n"), std::string::npos);
  EXPECT_EQ(printed(memory), "\n");
  EXPECT_TRUE(zn_lib::fileCopy(memory, "copy", false));
  EXPECT_EQ(readFile("copy"), "");
  EXPECT_TRUE(isThere("copy"));

  zn_lib::ReadXml<zn_lib::ErrorEvent> catalog;
  std::string name = memory;
  catalog.setFileName(name);
  EXPECT_TRUE(catalog.parseFile());
  EXPECT_TRUE(catalog.event->data.empty());
  zn_lib::ReadXml<zn_lib::ConfigEvent> settings;
  settings.setFileName(name);
  EXPECT_TRUE(settings.parseFile());
  EXPECT_TRUE(settings.event->data.empty());
}

// ---- Errors after some bytes

constexpr long kPlaces[] = {0,    1,    15,   16,    17,    1022,  1023,
                            1024, 8191, 8192, 50000, 65535, 65536, 65537};

TEST_F(FailingReads, HexDumpEndsAtTheFailure) {
  const std::string text = lines();
  writeFile("a", text);
  for (const long place : kPlaces) {
    const std::string dump = dumped("a", failingAfter(place));
    EXPECT_GT(reads.failures, 0) << place;
    EXPECT_LT(reads.calls, 1000) << place;
    writeFile("whole", text.substr(0, static_cast<std::size_t>(place)));
    EXPECT_EQ(dump, dumped("whole")) << place;
  }
}

TEST_F(FailingReads, CatEndsAtTheFailure) {
  const std::string text = lines();
  writeFile("a", text);
  for (const long place : kPlaces) {
    writeFile("whole", text.substr(0, static_cast<std::size_t>(place)));
    const std::string expected = printed("whole");
    ASSERT_EQ(printed("a", failingAfter(place)), expected) << place;
    EXPECT_GT(reads.failures, 0) << place;
    EXPECT_LT(reads.calls, 1000) << place;
  }
}

TEST_F(FailingReads, CopyEndsAtTheFailure) {
  const std::string text = lines();
  writeFile("a", text);
  for (const long place : kPlaces) {
    {
      const Watched watched(failingAfter(place));
      EXPECT_TRUE(zn_lib::fileCopy("a", "copy", true)) << place;
      EXPECT_GT(reads.failures, 0) << place;
      EXPECT_LT(reads.calls, 1000) << place;
    }
    const std::string copy = readFile("copy");
    ASSERT_EQ(copy, text.substr(0, static_cast<std::size_t>(place))) << place;
  }
}

TEST_F(FailingReads, XmlIsReadUpToTheFailure) {
  const std::string xml = catalogFile(2000);
  const std::string settings = "<CONFIGURATION><k a='t'>" + lines() + "</k></CONFIGURATION>";
  writeFile("errors.xml", xml);
  writeFile("config.xml", settings);
  for (const long place : kPlaces) {
    Catalog catalog;
    zn_lib::Configuration store;
    {
      const Watched watched(failingAfter(place));
      EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog)) << place;
      EXPECT_EQ(reads.failures, 1) << place;
    }
    {
      const Watched watched(failingAfter(place));
      EXPECT_TRUE(store.load()) << place;
      EXPECT_EQ(reads.failures, 1) << place;
    }
    // The result is that of a file that ends there.
    writeFile("whole.xml", xml.substr(0, static_cast<std::size_t>(place)));
    Catalog expected;
    zn_lib::readErrorFile("whole.xml", expected);
    ASSERT_EQ(catalog, expected) << place;
    writeFile("whole.cfg", settings.substr(0, static_cast<std::size_t>(place)));
    zn_lib::Configuration whole("", "whole");
    whole.load();
    ASSERT_EQ(store.get("k").value, whole.get("k").value) << place;
  }
}

// ---- Short and interrupted reads

/// Returns the least number of reads for `size` bytes if each returns at most `most`. The streams
/// of libc++ call `fread`, which repeats short reads itself.
int fewestReads([[maybe_unused]] std::size_t size, [[maybe_unused]] std::size_t most) {
#ifdef _LIBCPP_VERSION
  return 1;
#else
  return static_cast<int>(size / most);
#endif
}

TEST_F(FailingReads, ShortAndInterruptedReadsChangeNothing) {
  const std::string text = lines();
  writeFile("a", text);
  const std::string dump = dumped("a");
  const std::string cat = printed("a");
  for (const std::size_t most : {std::size_t{1}, std::size_t{7}, std::size_t{4096}}) {
    Reads behaviour;
    behaviour.most = most;
    behaviour.interruptions = 3;
    ASSERT_EQ(dumped("a", behaviour), dump) << most;
    EXPECT_GT(reads.calls, fewestReads(text.size(), most))
        << "this function must be the one that reads";
    ASSERT_EQ(printed("a", behaviour), cat) << most;
    EXPECT_GT(reads.calls, fewestReads(text.size(), most))
        << "this function must be the one that reads";
    {
      const Watched watched(behaviour);
      EXPECT_TRUE(zn_lib::fileCopy("a", "copy", true)) << most;
    }
    ASSERT_EQ(readFile("copy"), text) << most;
  }
}

}  // namespace
