#include "zn_file.h"

namespace zn_lib {

FileName::FileName() = default;

FileName::~FileName() = default;

void FileName::setFileName(std::string& name) { nameParts = splitFileName(name); }

std::string FileName::getFileName() {
  std::string name = createFileName(nameParts.path, nameParts.name, nameParts.extension);
  checkHomePath(name);
  return name;
}

}  // namespace zn_lib
