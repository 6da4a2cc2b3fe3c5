/// Error catalogs, read: against the parser that the library uses, with a map and alone.
#include <zn_error.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "bench_expat.h"
#include "bench_files.h"
#include "bench_rows.h"

namespace {

using Catalog = std::map<int, std::string, zn_lib::error_order>;

void writeCatalog(const std::string& file, std::size_t count) {
  std::ofstream out(file);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ERRORS>\n";
  for (std::size_t i = 1; i <= count; ++i) {
    out << "<ERROR><ID>" << i << "</ID><MESSAGE>Message of the error with the number " << i
        << "</MESSAGE></ERROR>\n";
  }
  out << "</ERRORS>\n";
}

Catalog readCatalog(const std::string& file) {
  Catalog catalog;
  zn_lib::readErrorFile(file, catalog);
  return catalog;
}

/// A catalog as a program reads it that has the parser and nothing else.
class BareReader {
 public:
  Catalog read(const std::string& file) {
    const bench::Parser parser = bench::makeParser();
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), &start, &end);
    XML_SetCharacterDataHandler(parser.get(), &text);
    bench::parseFile(parser.get(), file);
    return std::move(catalog_);
  }

 private:
  static void XMLCALL start(void* reader, const XML_Char*, const XML_Char**) {
    static_cast<BareReader*>(reader)->text_.clear();
  }

  static void XMLCALL end(void* reader, const XML_Char* name) {
    auto* const self = static_cast<BareReader*>(reader);
    const std::string element = name;
    if (element == "ID") self->id_ = std::atoi(self->text_.c_str());
    if (element == "MESSAGE") self->catalog_[self->id_] = self->text_;
  }

  static void XMLCALL text(void* reader, const XML_Char* text, int length) {
    static_cast<BareReader*>(reader)->text_.append(text, static_cast<std::size_t>(length));
  }

  Catalog catalog_;
  int id_ = 0;
  std::string text_;
};

}  // namespace

int main(int argc, char** argv) {
  const bench::TemporaryDirectory directory;
  const std::string file = directory.file("errors.xml");
  writeCatalog(file, 10000);
  bench::addClockRow("readErrorFile_10000/zn_udf", file, readCatalog);
  bench::addClockRow("readErrorFile_10000/expat_and_map", file,
                     [](const std::string& f) { return BareReader().read(f); });
  bench::addClockRow("readErrorFile_10000/limit:expat_alone", file, bench::countOfFile);

  constexpr int fewest = 64;
  constexpr int most = 100000;
  const auto ofSize = [growing = directory.file("growing.xml")](std::size_t size) {
    writeCatalog(growing, size);
    return growing;
  };
  bench::addGrowth("readErrorFile", fewest, most, ofSize, readCatalog);
  return bench::runRows(argc, argv);
}
