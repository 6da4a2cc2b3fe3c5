/// Reads any bytes as an error catalog, and compares the result with expat alone.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_error.h>

#include <string>

#include "fuzz_check.h"
#include "fuzz_files.h"
#include "fuzz_xml.h"

namespace {

using Catalog = std::map<int, std::string, zn_lib::error_order>;

void compare(const Catalog& actual, const fuzz::Catalog& expected) {
  fuzz::expectSame("entries", actual.size(), expected.size());
  auto own = actual.begin();
  for (const auto& [id, message] : expected) {
    fuzz::expectSame("id", own->first, id);
    fuzz::expectSame("message", own->second, message);
    ++own;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const std::string xml = fuzz::consumeDocument(input);
  static const fuzz::TemporaryDirectory directory;
  std::string name = directory.file("errors");
  writeFile(name, xml);
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  reader.setFileName(name);
  fuzz::expectSame("parseFile", reader.parseFile(), true);

  const fuzz::Catalog expected = fuzz::CatalogReader(xml).catalog;
  compare(reader.event->data, expected);

  Catalog catalog = {{0, "old"}, {1, "old"}};
  fuzz::Catalog merged = expected;
  merged.insert({{0, "old"}, {1, "old"}});
  Catalog exported = catalog;
  fuzz::expectSame("readErrorFile", zn_lib::readErrorFile(directory.file("errors"), catalog), true);
  compare(catalog, merged);
  reader.event->exportData(exported);
  compare(exported, merged);
  return 0;
}
