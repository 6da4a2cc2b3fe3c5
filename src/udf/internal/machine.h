/// Rejects, at compile time, machines on which the library would not build or would give different
/// results. The file includes nothing, so that a compiler can check it for a machine whose headers
/// are not installed.
#ifndef ZN_INTERNAL_MACHINE_H
#define ZN_INTERNAL_MACHINE_H

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "zn_udf supports little-endian hosts only: its byte-order functions are constant");

static_assert(__FLT_EVAL_METHOD__ == 0,
              "zn_udf needs double arithmetic without excess precision: on 32-bit x86, compile it "
              "with -msse2 -mfpmath=sse");

static_assert(static_cast<char>(-1) < 0,
              "zn_udf orders the bytes in a pattern as signed characters: compile it with "
              "-fsigned-char");

#if defined(__APPLE__) && defined(__ENVIRONMENT_MAC_OS_X_VERSION_MIN_REQUIRED__)
static_assert(__ENVIRONMENT_MAC_OS_X_VERSION_MIN_REQUIRED__ >= 130300,
              "zn_udf needs macOS 13.3 or later, whose C++ library has std::to_chars for doubles: "
              "set CMAKE_OSX_DEPLOYMENT_TARGET");
#endif

#endif  // ZN_INTERNAL_MACHINE_H
