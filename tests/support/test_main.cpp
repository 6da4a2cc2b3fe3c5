/// The main function of the test programs, which may run in a foreign locale.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <locale>
#include <string>

namespace {

/// A C++ locale that writes numbers as 1.234.567,5.
class Grouping : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "wahr"; }
};

/// Sets the C locale that ZN_UDF_TEST_LOCALE names, and a global C++ locale that groups digits if
/// ZN_UDF_TEST_GROUPING is set. Returns false if there is no such locale.
bool enterForeignLocale() {
  const char* const name = std::getenv("ZN_UDF_TEST_LOCALE");
  if (name != nullptr && std::setlocale(LC_ALL, name) == nullptr) {
    std::cerr << "cannot enter locale " << name << '\n';
    return false;
  }
  if (std::getenv("ZN_UDF_TEST_GROUPING") != nullptr) {
    std::locale::global(std::locale(std::locale::classic(), new Grouping));
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!enterForeignLocale()) return EXIT_FAILURE;
  return RUN_ALL_TESTS();
}
