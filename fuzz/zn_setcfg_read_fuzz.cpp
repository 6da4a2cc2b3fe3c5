/// Reads any bytes as settings, and compares the result with expat alone.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_setcfg.h>

#include <string>

#include "fuzz_check.h"
#include "fuzz_files.h"
#include "fuzz_xml.h"

namespace {

using fuzz::expectSame;

void compare(const zn_lib::config_map& actual, const fuzz::Settings& expected) {
  expectSame("entries", actual.size(), expected.size());
  auto own = actual.begin();
  for (const auto& [key, setting] : expected) {
    expectSame("key", own->first, key);
    expectSame("type", own->second.type, setting.type);
    expectSame("describe", own->second.describe, setting.describe);
    expectSame("value", own->second.value, setting.value);
    ++own;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const std::string xml = fuzz::consumeDocument(input);
  static const fuzz::TemporaryDirectory directory;
  std::string name = directory.file("settings");
  writeFile(name, xml);
  zn_lib::ReadXml<zn_lib::ConfigEvent> reader;
  reader.setFileName(name);
  expectSame("parseFile", reader.parseFile(), true);

  const fuzz::Settings expected = fuzz::SettingsReader(xml).settings;
  compare(reader.event->data, expected);

  // The export replaces settings with the same key and keeps the others.
  zn_lib::config_map target;
  fuzz::Settings merged = expected;
  for (const char* key : {"a", "k", "\xFF"}) {
    target[key].value = "old";
    merged.insert({key, {"old", "TEXT", ""}});
  }
  reader.event->exportData(target);
  compare(target, merged);
  return 0;
}
