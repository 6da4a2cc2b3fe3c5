// Prints messages from a catalog, and the system's last error.
#include <zn_error.h>
#include <zn_output.h>

#include <fstream>
#include <iostream>
#include <map>
#include <string>

int main() {
  // The elements of one error follow each other directly. A line break between them would be read
  // as their text.
  std::ofstream("errors.xml") << "<ERRORS>\n"
                                 "<ERROR><ID>1</ID><MESSAGE>No such place</MESSAGE></ERROR>\n"
                                 "<ERROR><ID>2</ID><MESSAGE>No such date</MESSAGE></ERROR>\n"
                                 "</ERRORS>\n";
  std::map<int, std::string, zn_lib::error_order> catalog;

  // The result is true even for a missing file, so check the catalog.
  zn_lib::readErrorFile("errors.xml", catalog);
  std::cout << catalog.size() << " messages, the second: " << catalog[2] << '\n';

  zn_lib::setVerbose(true);
  zn_lib::showErrorList(catalog);

  // To standard error: ERROR: #1<tab>No such place
  zn_lib::showErrorMessage(catalog, 1);

  // To standard error: ERROR: System error #2. No such file or directory
  if (!std::ifstream("missing.txt").is_open()) zn_lib::systemError();
}
