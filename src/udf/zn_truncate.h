/// Conversions of doubles to integers that are defined for every value.
#ifndef ZN_TRUNCATE_H
#define ZN_TRUNCATE_H

namespace zn_lib {

/// `value` cut toward zero. A negative value wraps, as an integer conversion does; NaN and what 64
/// bits cannot hold give 0.
constexpr unsigned long long truncateToUnsigned64(double value) {
  constexpr double twoTo63 = 9223372036854775808.0;
  if (value >= 0.0 && value < 2.0 * twoTo63) return static_cast<unsigned long long>(value);
  if (value < 0.0 && value >= -twoTo63) {
    return static_cast<unsigned long long>(static_cast<long long>(value));
  }
  return 0;
}

}  // namespace zn_lib

#endif  // ZN_TRUNCATE_H
