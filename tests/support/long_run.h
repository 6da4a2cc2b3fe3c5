/// Long runs, which take hours and use texts of full length.
#ifndef LONG_RUN_H
#define LONG_RUN_H

#include <cstdlib>

/// Returns false in a daily run, which takes a part of the time.
inline bool isLongRun() { return std::getenv("ZN_UDF_LONG_RUN") != nullptr; }

#endif  // LONG_RUN_H
