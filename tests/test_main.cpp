#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <locale>
#include <string>

namespace {

/// A C++ locale as a careless host may install it: 1.234.567,5.
class Grouping : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "wahr"; }
};

/// Takes on the C locale that ZN_UDF_TEST_LOCALE names, and a global C++ locale that groups digits.
bool enterForeignLocale(const char* name) {
  if (std::setlocale(LC_ALL, name) == nullptr) return false;
  std::locale::global(std::locale(std::locale::classic(), new Grouping));
  return *std::localeconv()->decimal_point == ',';
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const char* const foreign = std::getenv("ZN_UDF_TEST_LOCALE");
  if (foreign != nullptr && !enterForeignLocale(foreign)) {
    std::cerr << "cannot enter locale " << foreign << '\n';
    return EXIT_FAILURE;
  }
  return RUN_ALL_TESTS();
}
