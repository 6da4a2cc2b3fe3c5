/// Output on the descriptors of the standard streams.
#ifndef OUTPUT_CAPTURE_H
#define OUTPUT_CAPTURE_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

struct Written {
  std::string out, err;
};

/// Returns what `run` writes to standard output and standard error.
inline Written written(const std::function<void()>& run) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  run();
  return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

#endif  // OUTPUT_CAPTURE_H
