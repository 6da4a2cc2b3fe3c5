// Prints the version and the shared constants.
#include <zn_common.h>

#include <iostream>

#if ZN_UDF_VERSION < 101
#error "this program needs zn_udf 1.1 or later"
#endif

int main() {
  std::cout << "zn_udf " << zn_udf_1VersionNumber << '\n';

  // The version text for what(1) ends with a line feed.
  std::cout << zn_udf_1VersionString;

  const std::string word = "maybe";
  std::cout << zn_lib::BRACKET[0] << word << zn_lib::BRACKET[1] << zn_lib::CURLY_BRACKET
            << zn_lib::SQUARE_BRACKET << '\n';
  std::cout << "no date: \"" << zn_lib::BLANK_DATE_STR << "\"\n";
}
