#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zn_common.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "emulation.h"
#include "long_run.h"
#include "memory_in_use.h"

namespace {

struct Unload {
  void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, Unload>;

/// Returns the file of the library. mutation_test.py tests others.
const char* libraryName() {
  const char* const other = std::getenv("ZN_UDF_TESTED_LIBRARY");
  return other == nullptr ? ZN_UDF_LIBRARY : other;
}

Library load() { return Library(dlopen(libraryName(), RTLD_NOW | RTLD_LOCAL)); }

bool isLoaded() {
  return Library(dlopen(libraryName(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD)) != nullptr;
}

TEST(Constants, BeginWithTheOpeningBracket) {
  EXPECT_EQ(zn_lib::BRACKET, "()");
  EXPECT_EQ(zn_lib::CURLY_BRACKET, "{}");
  EXPECT_EQ(zn_lib::SQUARE_BRACKET, "[]");
  EXPECT_EQ(zn_lib::BLANK_DATE_STR, "");
}

TEST(Version, IsDataWithCNames) {
  const Library library = load();
  ASSERT_NE(library, nullptr) << dlerror();
  const void* const text = dlsym(library.get(), "zn_udf_1VersionString");
  const void* const number = dlsym(library.get(), "zn_udf_1VersionNumber");
  ASSERT_NE(text, nullptr);
  ASSERT_NE(number, nullptr);
  EXPECT_STREQ(static_cast<const char*>(text), "@(#)PROGRAM:zn_udf.1  PROJECT:zn_lib-1.1\n");
  EXPECT_EQ(*static_cast<const double*>(number), 1.1);
}

TEST(Version, IsTheSameInHeadersLibraryAndProject) {
  const std::string version =
      std::to_string(ZN_UDF_VERSION_MAJOR) + "." + std::to_string(ZN_UDF_VERSION_MINOR);
  EXPECT_EQ(version, ZN_UDF_PROJECT_VERSION);
  EXPECT_EQ(ZN_UDF_VERSION, 100 * ZN_UDF_VERSION_MAJOR + ZN_UDF_VERSION_MINOR);
  const Library library = load();
  ASSERT_NE(library, nullptr) << dlerror();
  const void* const number = dlsym(library.get(), "zn_udf_1VersionNumber");
  ASSERT_NE(number, nullptr);
  EXPECT_EQ(*static_cast<const double*>(number),
            ZN_UDF_VERSION_MAJOR + ZN_UDF_VERSION_MINOR / 10.0);
}

TEST(Unloading, LeavesNothingMapped) {
  ASSERT_FALSE(isLoaded());
  {
    const Library library = load();
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(isLoaded());
  }
  EXPECT_FALSE(isLoaded());
}

/// Loads and unloads the library many times, so that small leaks add up.
void loadAndUnload(int cycles) {
  for (int i = 0; i < cycles; ++i) {
    ASSERT_NE(load(), nullptr) << dlerror();
    ASSERT_FALSE(isLoaded()) << i;
  }
}

// If unloading did not destroy a regular expression that loading compiles, each cycle would leak
// some kilobytes.
TEST(Unloading, FreesWhatLoadingAllocated) {
  const int cycles = isLongRun() ? 1000 : 200;
  const std::size_t allocatorCaches = 100 * static_cast<std::size_t>(cycles);
  RecordProperty("cycles", cycles);
  loadAndUnload(cycles);  // the standard library fills its caches
  const std::size_t before = bytesInUse();
  loadAndUnload(cycles);
  if (!bytesAreCounted()) GTEST_SKIP() << "the allocator of this program does not count";
  EXPECT_LT(bytesInUse(), before + allocatorCaches);
}

/// Returns the number of pages of this process that are in memory.
long residentPages() {
  long all = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident;
}

TEST(Unloading, ReturnsItsMemoryToTheSystem) {
  SKIP_UNDER_EMULATOR("the memory of the emulator would count");
  if (!bytesAreCounted()) GTEST_SKIP() << "the allocator of this program may keep freed memory";
  const int cycles = isLongRun() ? 1000 : 200;
  const long lessThanOneInEachCycle = cycles / 4;
  loadAndUnload(cycles);
  const long before = residentPages();
  ASSERT_GT(before, 0);
  loadAndUnload(cycles);
  EXPECT_LT(residentPages(), before + lessThanOneInEachCycle);
}

}  // namespace
