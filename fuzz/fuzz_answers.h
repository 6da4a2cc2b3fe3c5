/// Prints what the checks of a fuzzer compare, so that the answers of two machines can be compared.
#ifndef FUZZ_ANSWERS_H
#define FUZZ_ANSWERS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

// The digits of a number that are printed. A fuzzer of numbers that differ in their last digits
// defines fewer.
#ifndef ZN_UDF_FUZZ_DIGITS
#define ZN_UDF_FUZZ_DIGITS 17
#endif

namespace fuzz {

/// Prints answers, one on each line, once `enable` is called.
class Answers {
 public:
  bool areEnabled() const { return isEnabled_; }
  void enable() { isEnabled_ = true; }

  /// Prints a fixed word for this name, which is another one in each run.
  void hide(const std::string& name) { hidden_ = name; }

  void print(const char* what, std::string value) const {
    if (!hidden_.empty()) replace(value, hidden_, "(temporary)");
    // The sign of a NaN differs between processors.
    replace(value, "-nan", "nan");
    constexpr std::size_t most = 200;
    if (value.size() > most) value = value.substr(0, most) + "... " + summary(value);
    std::printf("%s = %s\n", what, value.c_str());
  }

 private:
  static void replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
      text.replace(at, from.size(), to);
    }
  }

  /// Returns the size of a text and its FNV-1a hash.
  static std::string summary(const std::string& text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return std::to_string(text.size()) + " bytes, hash " + std::to_string(hash);
  }

  bool isEnabled_ = false;
  std::string hidden_;
};

inline Answers answers;

}  // namespace fuzz

#endif  // FUZZ_ANSWERS_H
