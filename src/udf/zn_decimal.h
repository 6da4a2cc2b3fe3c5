/// Doubles as decimal text, whatever the locale.
#ifndef ZN_DECIMAL_H
#define ZN_DECIMAL_H

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "zn_machine.h"

namespace zn_lib {

/// `value` as a stream writes it in `format` with `precision`. `buffer` must be large enough; the
/// result may lie in it.
template <std::size_t size>
std::string_view decimalText(double value, std::chars_format format, int precision,
                             std::array<char, size>& buffer) {
  // Standard libraries differ in what they say of a NaN; streams write its sign and no more.
  if (std::isnan(value)) return std::signbit(value) ? "-nan" : "nan";
  char* const begin = buffer.data();
  const char* const end = std::to_chars(begin, begin + size, value, format, precision).ptr;
  return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace zn_lib

#endif  // ZN_DECIMAL_H
