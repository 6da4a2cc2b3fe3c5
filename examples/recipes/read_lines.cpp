// Reads the lines of a file, and skips comments and empty lines.
#include <zn_readfile.h>
#include <zn_str.h>

#include <fstream>
#include <iostream>
#include <string>

int main() {
  std::ofstream("places.txt") << "# My places\r\n\r\n  Bergen\r\nUtrecht";

  std::string name = "places.txt";
  zn_lib::ReadFile places;
  places.setFileName(name);
  if (!places.fileOpen()) {
    std::cerr << "Cannot open " << places.getFileName() << '\n';
    return 1;
  }

  // The last line counts even without a line feed at its end. allTrim removes a carriage return
  // too.
  std::string line;
  for (int number = 1; std::getline(places.file, line); ++number) {
    line = zn_lib::allTrim(line);
    if (line.empty() || line.front() == '#') continue;
    std::cout << number << ": " << line << '\n';
  }
  if (places.file.bad()) {
    std::cerr << "Cannot read " << places.getFileName() << '\n';
    return 1;
  }
}
