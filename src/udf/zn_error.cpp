#include "zn_error.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "internal/maps.h"
#include "zn_file.h"
#include "zn_output.h"
#include "zn_str.h"

namespace zn_lib {

// Comparisons with a view are inlined, unlike those with a string literal.
using namespace std::string_view_literals;

template class XmlEvent<std::map<int, std::string, error_order>>;
template class ReadXml<ErrorEvent>;

// The members of FileName, which zn_file.h declares.

FileName::FileName() = default;

FileName::~FileName() = default;

void FileName::setFileName(std::string& name) { nameParts = splitFileName(name); }

std::string FileName::getFileName() {
  std::string name = createFileName(nameParts.path, nameParts.name, nameParts.extension);
  checkHomePath(name);
  return name;
}

bool error_order::operator()(int a, int b) const { return a < b; }

ErrorEvent::ErrorEvent() = default;

void ErrorEvent::OnStartElement(const XML_Char* name, const XML_Char**) { tag = name; }

void ErrorEvent::OnEndElement(const XML_Char* name) {
  // `tag` becomes the element that ends, not its parent, so text after an end tag counts as text of
  // that element.
  tag = name;
  // Most catalogs are in the order of their numbers.
  if (tag == "ERROR"sv) data.insert_or_assign(data.end(), id, message);
}

void ErrorEvent::OnCharacterData(const XML_Char* text, int length) {
  if (tag == "ID"sv) {
    // Unlike atoi, this is defined for numbers of any length, and does not depend on the size of a
    // long.
    id = static_cast<int>(std::strtoll(skipWhiteSpace(text, length).c_str(), nullptr, 10));
  } else if (tag == "MESSAGE"sv) {
    message = skipWhiteSpace(text, length);
  }
}

void ErrorEvent::exportData(std::map<int, std::string, error_order>& catalog) {
  for (const auto& [number, text] : data) catalog.insert_or_assign(number, text);
}

bool readErrorFile(std::string fileName, std::map<int, std::string, error_order>& catalog) {
  ReadXml<ErrorEvent> reader;
  reader.setFileName(fileName);
  reader.parseFile();
  internal::moveEntries(reader.event->data, catalog);
  return true;
}

void showErrorMessage(std::map<int, std::string, error_order>& catalog, int id) {
  errorMessage("#" + std::to_string(id) + "\t" + catalog[id]);
}

void showErrorList(std::map<int, std::string, error_order>& catalog) {
  if (!isVerbose()) return;
  const std::string line = replicateChar('-', 70) + "\n";
  std::string text = "Error list\n" + line;
  for (const auto& [number, message] : catalog) {
    // A message ends at its first NUL, like everything that the library prints.
    text += std::to_string(number) + " " + message.c_str() + "\n";
  }
  display(text + line);
}

void systemError() {
  const int number = errno;
  errorMessage("System error #" + std::to_string(number) + ". " + std::strerror(number));
}

}  // namespace zn_lib
