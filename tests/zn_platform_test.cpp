#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <zn_output.h>
#include <zn_platform.h>

#include <cerrno>
#include <iostream>
#include <limits>
#include <string>

#include "captured_stream.h"
#include "output_capture.h"

namespace {

bool unameFails = false;

/// Returns the answer of the system, without the library.
utsname askSystem() {
  utsname system{};
  EXPECT_EQ(syscall(SYS_uname, &system), 0);
  return system;
}

}  // namespace

/// Replaces the function of the C library, for the library under test too, so that it can fail.
extern "C" __attribute__((visibility("default"))) int uname(utsname* system) noexcept {
  if (unameFails) {
    errno = EFAULT;
    return -1;
  }
  return static_cast<int>(syscall(SYS_uname, system));
}

namespace {

class Platform : public testing::Test {
 protected:
  ~Platform() override {
    unameFails = false;
    zn_lib::setVerbose(false);
  }
};

TEST_F(Platform, HeaderExamples) {
  const utsname system = askSystem();
  EXPECT_EQ(zn_lib::getOSName(), system.sysname);
  EXPECT_EQ(zn_lib::getOSRelease(), system.release);
  EXPECT_FALSE(zn_lib::IsBigEndian());
  EXPECT_EQ(zn_lib::rotate2b(-2), -2);
  EXPECT_EQ(zn_lib::rotate4b(0x12345678), 0x12345678u);
}

TEST_F(Platform, WritesSixLinesRegardlessOfTheVerboseFlag) {
  const utsname system = askSystem();
  using namespace std::string_literals;
  const std::string lines =
      "Platform information\n"
      "------------------------------\n"
      "Name of OS          : "s +
      system.sysname + "\nRelease level       : " + system.release +
      "\nHardware type       : " + system.machine + "\nName of network node: " + system.nodename +
      '\n';
  for (const bool verbose : {false, true}) {
    zn_lib::setVerbose(verbose);
    const Written text = written([] { EXPECT_TRUE(zn_lib::platformInfo()); });
    EXPECT_EQ(text.out, lines);
    EXPECT_EQ(text.err, "");
  }
}

TEST_F(Platform, FlushesEachLine) {
  // A buffer that counts the lines that are flushed one by one replaces the terminal.
  class Terminal : public std::streambuf {
   public:
    int lines = 0, flushes = 0;

   private:
    int overflow(int c) override {
      if (c == '\n') ++lines;
      return c;
    }
    int sync() override {
      if (++flushes != lines) flushes = std::numeric_limits<int>::min();
      return 0;
    }
  } terminal;
  {
    const RedirectedStream redirected(std::cout, &terminal);
    zn_lib::platformInfo();
  }
  EXPECT_EQ(terminal.lines, 6);
  EXPECT_EQ(terminal.flushes, 6);
}

TEST_F(Platform, ReportsUnknownIfTheSystemCallFails) {
  unameFails = true;
  for (const bool verbose : {false, true}) {
    zn_lib::setVerbose(verbose);
    const Written text = written([] {
      EXPECT_FALSE(zn_lib::platformInfo());
      EXPECT_EQ(zn_lib::getOSName(), "unknown");
      EXPECT_EQ(zn_lib::getOSRelease(), "unknown");
    });
    EXPECT_EQ(text.out, "");
    EXPECT_EQ(text.err, "");
  }
}

TEST_F(Platform, AsksTheSystemEachTime) {
  const utsname system = askSystem();
  for (int i = 0; i < 2; ++i) {
    unameFails = true;
    EXPECT_EQ(zn_lib::getOSName(), "unknown");
    EXPECT_EQ(zn_lib::getOSRelease(), "unknown");
    unameFails = false;
    EXPECT_EQ(zn_lib::getOSName(), system.sysname);
    EXPECT_EQ(zn_lib::getOSRelease(), system.release);
  }
}

TEST(ByteOrder, RotationsReturnTheirArgument) {
  static_assert(sizeof(short) == 2 && sizeof(unsigned int) == 4);
  for (int value = std::numeric_limits<short>::min(); value <= std::numeric_limits<short>::max();
       ++value) {
    ASSERT_EQ(zn_lib::rotate2b(static_cast<short>(value)), value);
  }
  for (const unsigned int value : {0u, 1u, 0x12345678u, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    EXPECT_EQ(zn_lib::rotate4b(value), value);
  }
  EXPECT_FALSE(zn_lib::IsBigEndian());
}

}  // namespace
