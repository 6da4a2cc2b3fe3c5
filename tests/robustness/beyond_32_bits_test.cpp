/// Sizes and times that do not fit in 32 bits. Machines of 32 bits have separate functions for
/// them.
#include <gtest/gtest.h>
#include <zn_datetime.h>
#include <zn_error.h>
#include <zn_readfile.h>
#include <zn_setcfg.h>

#include <ctime>
#include <filesystem>
#include <string>

#include "stored_xml.h"
#include "temporary_files.h"

namespace {

std::time_t now = 0;

}  // namespace

/// Replaces the clock of the C library, for the library under test too.
extern "C" __attribute__((visibility("default"))) std::time_t time(std::time_t* result) noexcept {
  if (result != nullptr) *result = now;
  return now;
}

namespace {

static_assert(sizeof(std::time_t) == 8 && sizeof(off_t) == 8,
              "the tests must be built like the library");

TEST(Clock, WorksAfterJanuary2038) {
  const struct {
    long long seconds;
    unsigned short year;
  } cases[] = {{2145916800, 2038}, {2147483648 + 86400, 2038}, {4102488000, 2100}};
  for (const auto& c : cases) {
    now = static_cast<std::time_t>(c.seconds);
    zn_lib::date_time_record today;
    zn_lib::getToday(today);
    EXPECT_EQ(today.year, c.year) << c.seconds;
    EXPECT_EQ(zn_lib::getTodayAsISO().substr(0, 4), std::to_string(c.year));
  }
}

class LargeFiles : public InTemporaryDirectory {
 protected:
  /// Writes a sparse file of 3 GiB that begins with `text`.
  static void writeLargeFile(const std::string& name, const std::string& text) {
    writeFile(name, text);
    std::filesystem::resize_file(name, 3ULL << 30);
  }
};

TEST_F(LargeFiles, SettingsAreLoadedAndKept) {
  writeLargeFile("config.xml", "<CONFIGURATION><k data_type='TEXT'>v</k></CONFIGURATION>");
  {
    zn_lib::Configuration store;
    EXPECT_TRUE(store.load());
    EXPECT_EQ(store.get("k").value, "v");
    store.set("new", "1");
    EXPECT_TRUE(store.save());
  }
  zn_lib::Configuration store;
  EXPECT_TRUE(store.load());
  EXPECT_EQ(store.get("k").value, "v");
  EXPECT_EQ(store.get("new").value, "1");
}

TEST_F(LargeFiles, CatalogsAreRead) {
  writeLargeFile("errors.xml", "<E>" + errorXml("1", "m") + "</E>");
  Catalog catalog;
  EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
  EXPECT_EQ(catalog[1], "m");
}

TEST_F(LargeFiles, AreOpened) {
  writeLargeFile("a", "text");
  zn_lib::ReadFile in;
  std::string name = "a";
  in.setFileName(name);
  ASSERT_TRUE(in.fileOpen());
  in.file.seekg(0, std::ios_base::end);
  EXPECT_EQ(static_cast<long long>(in.file.tellg()), 3LL << 30);
}

}  // namespace
