/// Conversions of doubles that are defined for every value and do not depend on the locale.
#ifndef ZN_INTERNAL_NUMBERS_H
#define ZN_INTERNAL_NUMBERS_H

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "machine.h"

namespace zn_lib::internal {

/// Returns `value` as a stream writes it in `format` with `precision`. The result may refer to
/// `buffer`, which must be large enough.
template <std::size_t size>
std::string_view decimalText(double value, std::chars_format format, int precision,
                             std::array<char, size>& buffer) {
  // The text that to_chars writes for a NaN depends on the standard library. Streams write "nan"
  // and its sign.
  if (std::isnan(value)) return std::signbit(value) ? "-nan" : "nan";
  char* const begin = buffer.data();
  const char* const end = std::to_chars(begin, begin + size, value, format, precision).ptr;
  return {begin, static_cast<std::size_t>(end - begin)};
}

/// Returns `value` truncated toward zero. A negative value wraps, as in an integer conversion. NaN
/// and values that do not fit in 64 bits become 0.
constexpr unsigned long long truncateToUnsigned64(double value) {
  constexpr double twoTo63 = 9223372036854775808.0;
  // Most processors have an instruction for the conversion to signed integers only.
  if (value >= -twoTo63 && value < twoTo63) {
    return static_cast<unsigned long long>(static_cast<long long>(value));
  }
  if (value >= twoTo63 && value < 2.0 * twoTo63) return static_cast<unsigned long long>(value);
  return 0;
}

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_NUMBERS_H
