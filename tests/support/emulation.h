/// Tests that take what an emulator of another machine's processor does not have.
#ifndef EMULATION_H
#define EMULATION_H

#include <gtest/gtest.h>

#ifdef ZN_UDF_IS_EMULATED
/// An emulated program cannot execute itself once more.
constexpr const char* kDeathTestStyle = "fast";
/// How many times as long an emulated program may take.
constexpr int kSlowdown = 10;
#define SKIP_UNDER_EMULATOR(reason) GTEST_SKIP() << (reason)
#else
constexpr const char* kDeathTestStyle = "threadsafe";
constexpr int kSlowdown = 1;
#define SKIP_UNDER_EMULATOR(reason) static_cast<void>(0)
#endif

#endif  // EMULATION_H
