// Messages from a catalog, and the system's last error.
#include <zn_error.h>
#include <zn_output.h>

#include <fstream>
#include <iostream>
#include <map>
#include <string>

int main() {
  // Nothing stands between the elements of one error: a line break there would be taken for text.
  std::ofstream("errors.xml") << "<ERRORS>\n"
                                 "<ERROR><ID>1</ID><MESSAGE>No such place</MESSAGE></ERROR>\n"
                                 "<ERROR><ID>2</ID><MESSAGE>No such date</MESSAGE></ERROR>\n"
                                 "</ERRORS>\n";
  std::map<int, std::string, zn_lib::error_order> catalog;

  // Always true, for a missing file too: look at what was read.
  zn_lib::readErrorFile("errors.xml", catalog);
  std::cout << catalog.size() << " messages, the second: " << catalog[2] << '\n';

  zn_lib::setVerbose(true);
  zn_lib::showErrorList(catalog);

  // To standard error: ERROR: #1<tab>No such place
  zn_lib::showErrorMessage(catalog, 1);

  // To standard error: ERROR: System error #2. No such file or directory
  if (!std::ifstream("missing.txt").is_open()) zn_lib::systemError();
}
