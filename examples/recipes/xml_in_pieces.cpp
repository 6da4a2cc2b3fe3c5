// Reads an XML file of any size in pieces, and reports the position of an error.
#include <zn_xmlparser.h>

#include <array>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

namespace {

// Counts the books. No exception may leave a callback, and none can be thrown here.
class Books : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char**) override {
    if (std::strcmp(name, "book") == 0) ++count;
  }

  int count = 0;
};

}  // namespace

int main() {
  const std::string name = "books.xml";
  std::ofstream(name) << "<books>\n  <book>Emma</book>\n  <book>Persuasion</boook>\n</books>\n";

  Books books;
  XMLParser parser(&books);
  if (!parser.Create(nullptr, nullptr)) {
    std::cerr << "Cannot create a parser\n";
    return 1;
  }
  parser.EnableStartElementHandler(true);

  std::ifstream file(name, std::ios::binary);
  std::array<char, 8192> block{};
  bool isParsed = true;
  while (isParsed && file.good()) {
    file.read(block.data(), block.size());
    isParsed = parser.Parse(block.data(), static_cast<std::size_t>(file.gcount()), file.eof());
  }
  if (!file.is_open() || file.bad()) {
    std::cerr << "Cannot read " << name << '\n';
    return 1;
  }

  // Lines count from 1, columns from 0.
  if (!isParsed) {
    std::cout << name << ':' << parser.GetCurrentLineNumber() << ':'
              << parser.GetCurrentColumnNumber() + 1 << ": " << parser.GetErrorString() << '\n';
  }
  std::cout << books.count << " books\n";
}
