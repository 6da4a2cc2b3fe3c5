// Prints the elements of an XML text as an indented list, and the position of an error.
#include <zn_xmlparser.h>

#include <iomanip>
#include <iostream>

namespace {

// No exception may leave a callback, and nothing here throws one.
class Outline : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    std::cout << std::setw(2 * depth++) << "" << name;
    for (; *attributes != nullptr; attributes += 2) {
      std::cout << ' ' << attributes[0] << '=' << attributes[1];
    }
    std::cout << '\n';
  }
  void OnEndElement(const XML_Char*) override { --depth; }

 private:
  int depth = 0;
};

}  // namespace

int main() {
  Outline outline;
  XMLParser parser(&outline);

  // Every callback of a new parser is off.
  parser.Create(nullptr, nullptr);
  parser.EnableElementHandler(true);

  if (!parser.Parse("<menu><tea price='2'/>\n<cake></menu>", true)) {
    std::cout << "line " << parser.GetCurrentLineNumber() << ": " << parser.GetErrorString()
              << '\n';
  }
}
