// Splits and joins a file name, and copies, backs up and dumps a file.
#include <zn_file.h>
#include <zn_output.h>

#include <fstream>
#include <iostream>
#include <string>

int main() {
  std::string name = "C:\\data\\notes.old.txt";
  const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
  std::cout << parts.path << ' ' << parts.name << ' ' << parts.extension << '\n';
  std::cout << name << " is now written with slashes\n";
  std::cout << zn_lib::createFileName("data", "notes", "txt") << '\n';

  std::ofstream("notes.txt") << "Hello\n";
  std::cout << std::boolalpha << zn_lib::fileCopy("notes.txt", "copy.txt", false) << ' '
            << zn_lib::fileCopy("notes.txt", "copy.txt", false) << '\n';

  // True means only that the copy was attempted. The directory does not exist.
  std::cout << zn_lib::fileCopy("notes.txt", "missing/copy.txt", false) << '\n';

  // createBackup moves the file: notes.txt~ exists afterwards, and notes.txt does not.
  std::cout << zn_lib::createBackup("notes.txt") << ' ' << std::ifstream("notes.txt").is_open()
            << "\n\n";

  // The header is always printed, but the rows in verbose mode only. The end of the file appears as
  // one more byte.
  zn_lib::setVerbose(true);
  zn_lib::hexDump("copy.txt", 4);
}
