// Plays another major version of the library: a few of its names, with other results.
#include <zn_file.h>
#include <zn_str.h>

namespace zn_lib {

std::string stringToUpper(const std::string& text) { return "second " + text; }

FileName::FileName() = default;

FileName::~FileName() = default;

void FileName::setFileName(std::string& name) { nameParts.name = name; }

std::string FileName::getFileName() { return "second " + nameParts.name; }

}  // namespace zn_lib
