#include "zn_writefile.h"

#include <unistd.h>

#include "zn_output.h"

namespace zn_lib {

WriteFile::WriteFile() = default;

WriteFile::~WriteFile() { fileClose(); }

bool WriteFile::fileOpen() {
  const std::string name = getFileName();
  if (append) {
    overwrite = true;
  } else if (!overwrite && access(name.c_str(), F_OK) == 0) {
    errorMessage("File name exists");
  }
  file.open(name, append ? std::ios_base::app : std::ios_base::trunc);
  return file.is_open();
}

void WriteFile::fileClose() {
  if (!file.is_open()) return;
  file.flush();
  file.close();
}

}  // namespace zn_lib
