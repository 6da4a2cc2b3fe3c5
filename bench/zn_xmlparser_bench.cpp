/// Parsing a document with the object and its virtual callbacks, compared with expat's functions,
/// and with expat without callbacks.
#include <zn_xmlparser.h>

#include <string>

#include "bench_expat.h"
#include "bench_rows.h"

namespace {

/// Returns about `size` bytes of short elements, each with an attribute.
std::string documentOf(std::size_t size) {
  const std::string element = "<entry number='1'>a few words of text</entry>\n";
  std::string document = "<entries>\n";
  document.reserve(size + element.size());
  while (document.size() < size) document += element;
  return document + "</entries>\n";
}

class CountingHandler : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char*, const XML_Char**) override { ++elements; }
  void OnCharacterData(const XML_Char*, int length) override { bytes += length; }

  long elements = 0;
  long bytes = 0;
};

long countByObject(const std::string& document) {
  CountingHandler handler;
  XMLParser parser(&handler);
  parser.Create("UTF-8", nullptr);
  parser.EnableElementHandler(true);
  parser.EnableCharacterDataHandler(true);
  parser.Parse(document.data(), document.size(), true);
  return handler.elements + handler.bytes;
}

long countByFunctions(const std::string& document) {
  bench::Counter counter;
  const bench::Parser parser = bench::makeParser();
  setHandlers(parser.get(), counter);
  XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), true);
  return counter.elements + counter.bytes;
}

bool parseWithoutCallbacks(const std::string& document) {
  const bench::Parser parser = bench::makeParser();
  return XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), true) ==
         XML_STATUS_OK;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string document = documentOf(std::size_t{8} << 20);
  bench::addScan("XMLParser_8MiB/zn_udf", document, countByObject);
  bench::addScan("XMLParser_8MiB/bare_expat", document, countByFunctions);
  bench::addScan("XMLParser_8MiB/baseline:expat_without_callbacks", document,
                 parseWithoutCallbacks);
  constexpr int smallestDocument = 64;
  bench::addGrowth("XMLParser", smallestDocument, bench::kLargeText, documentOf, countByObject);
  return bench::runRows(argc, argv);
}
