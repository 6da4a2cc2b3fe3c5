#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <zn_common.h>

#include <memory>
#include <string>

namespace {

struct Unload {
  void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, Unload>;

Library load() { return Library(dlopen(ZN_UDF_LIBRARY, RTLD_NOW | RTLD_LOCAL)); }

bool isLoaded() {
  return Library(dlopen(ZN_UDF_LIBRARY, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD)) != nullptr;
}

TEST(Constants, HoldTheOpeningBracketFirst) {
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

TEST(Unloading, LeavesNothingMapped) {
  ASSERT_FALSE(isLoaded());
  {
    const Library library = load();
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(isLoaded());
  }
  EXPECT_FALSE(isLoaded());
}

// A single pattern that is built by loading and not destroyed by unloading would leave some
// kilobytes each time.
TEST(Unloading, FreesWhatLoadingBuilt) {
  constexpr int cycles = 200;
  constexpr std::size_t allocatorCaches = 100 * cycles;
  const auto inUse = [] { return mallinfo2().uordblks; };
  const auto loadAndUnload = [] {
    for (int i = 0; i < cycles; ++i) ASSERT_NE(load(), nullptr) << dlerror();
  };
  loadAndUnload();  // what the standard library keeps once it has been used
  const std::size_t before = inUse();
  loadAndUnload();
  EXPECT_LT(inUse(), before + allocatorCaches);
}

}  // namespace
