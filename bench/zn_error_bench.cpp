/// Reading error catalogs, compared with the parser that the library uses, with a map and alone.
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

/// Builds the catalog from what expat reports.
struct CatalogHandler {
  void start(const XML_Char*, const XML_Char**) { element.clear(); }

  void end(const XML_Char* name) {
    const std::string tag = name;
    if (tag == "ID") id = std::atoi(element.c_str());
    if (tag == "MESSAGE") catalog[id] = element;
  }

  void text(const XML_Char* bytes, int length) {
    element.append(bytes, static_cast<std::size_t>(length));
  }

  Catalog catalog;
  int id = 0;
  std::string element;  // the text of the current element
};

/// Reads a catalog by expat, without the library.
Catalog readByExpat(const std::string& file) {
  CatalogHandler handler;
  bench::parseFile(file, handler);
  return std::move(handler.catalog);
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  const std::string file = directory.file("errors.xml");
  writeCatalog(file, 10000);
  bench::addCountedClockRow("readErrorFile_10000/zn_udf", file, readCatalog);
  bench::addClockRow("readErrorFile_10000/expat_and_map", file, readByExpat);
  bench::addClockRow("readErrorFile_10000/baseline:expat_alone", file, bench::countOfFile);

  constexpr int fewest = 64;
  constexpr int most = 100000;
  const auto ofSize = [growing = directory.file("growing.xml")](std::size_t size) {
    writeCatalog(growing, size);
    return growing;
  };
  bench::addGrowth("readErrorFile", fewest, most, ofSize, readCatalog);
  return bench::runRows(argc, argv);
}
