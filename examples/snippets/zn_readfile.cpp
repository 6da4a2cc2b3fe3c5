// Writes a log, appends to it and reads it.
#include <zn_readfile.h>
#include <zn_writefile.h>

#include <iostream>
#include <string>

int main() {
  std::string name = "run.log";

  zn_lib::WriteFile log;
  log.setFileName(name);
  if (!log.fileOpen()) return 1;
  log.file << "started\n";
  log.fileClose();

  // Without `append`, opening the file again would empty it.
  log.append = true;
  if (!log.fileOpen()) return 1;
  log.file << "ended\n";
  log.fileClose();

  zn_lib::ReadFile reader;
  reader.setFileName(name);
  if (!reader.fileOpen()) return 1;
  std::string first;
  std::getline(reader.file, first);
  std::cout << "first line: " << first << '\n';

  // cat prints the rest, and an extra empty line because the file ends in a newline.
  reader.cat();
  std::cout << "that was " << reader.getFileName() << '\n';
}
