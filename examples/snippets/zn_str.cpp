// Cleans a line of a price list and prints it in columns.
#include <zn_str.h>

#include <iostream>
#include <string>

int main() {
  const std::string name = zn_lib::removeQuotes(zn_lib::allTrim("  \"green tea\"\r\n"));
  const std::string price = "1,250.50";

  // leftPad moves the text to the left of its field, and rightPad to the right.
  std::cout << zn_lib::leftPad(name, 12, '.') << zn_lib::rightPad(price, 12, '.') << '\n';

  // isNumber accepts commas after digits. stringToDouble stops at the first one.
  if (zn_lib::isNumber(price)) {
    std::cout << zn_lib::stringToDouble(price) << " is "
              << zn_lib::stringToDouble(zn_lib::removeChar(price, ',')) << " without its comma\n";
  }

  // The whole text must be a keyword, so a space after it makes the result false.
  std::cout << std::boolalpha << zn_lib::stringToBool("YES") << ' ' << zn_lib::stringToBool("yes ")
            << '\n';

  // Only the first occurrence is replaced.
  std::cout << zn_lib::replaceString("a.b.c", ".", "/") << ' ' << zn_lib::percentString(1, 3, 2)
            << '\n';
}
