/// Tests that an emulator of another processor cannot run.
#ifndef EMULATION_H
#define EMULATION_H

#include <gtest/gtest.h>

#ifdef ZN_UDF_IS_EMULATED
/// An emulated program cannot execute itself again.
constexpr const char* kDeathTestStyle = "fast";
/// The factor by which an emulated program may be slower.
constexpr int kSlowdown = 10;
#define SKIP_UNDER_EMULATOR(reason) GTEST_SKIP() << (reason)
#else
constexpr const char* kDeathTestStyle = "threadsafe";
constexpr int kSlowdown = 1;
#define SKIP_UNDER_EMULATOR(reason) static_cast<void>(0)
#endif

#endif  // EMULATION_H
