/// Whether this is a run for hours, at full lengths; otherwise a test takes its share of a daily
/// run.
#ifndef LONG_RUN_H
#define LONG_RUN_H

#include <cstdlib>

inline bool isLongRun() { return std::getenv("ZN_UDF_LONG_RUN") != nullptr; }

#endif  // LONG_RUN_H
