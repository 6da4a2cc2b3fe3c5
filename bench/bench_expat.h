/// The parser that the library uses, without the library.
#ifndef BENCH_EXPAT_H
#define BENCH_EXPAT_H

#include <expat.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

#include "expat_handlers.h"

namespace bench {

using Parser = std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)>;

inline Parser makeParser() { return {XML_ParserCreate("UTF-8"), &XML_ParserFree}; }

/// Feeds `file` to `parser` in blocks of the size that the library reads.
inline void parseFile(XML_Parser parser, const std::string& file) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(file.c_str(), "r"),
                                                           &std::fclose);
  std::array<char, 8192> block;
  std::size_t count = block.size();
  while (count == block.size()) {
    count = std::fread(block.data(), 1, block.size(), in.get());
    XML_Parse(parser, block.data(), static_cast<int>(count), count < block.size());
  }
}

/// Parses `file` and reports to `handler` as `setHandlers` says.
template <class Handler>
void parseFile(const std::string& file, Handler& handler) {
  const Parser parser = makeParser();
  setHandlers(parser.get(), handler);
  parseFile(parser.get(), file);
}

/// Counts what the parser reports.
struct Counter {
  void start(const XML_Char*, const XML_Char**) { ++elements; }
  void end(const XML_Char*) {}
  void text(const XML_Char*, int length) { bytes += length; }

  long elements = 0;
  long bytes = 0;
};

/// Parses `file` and keeps none of it. This is the baseline of readers that use this parser.
inline long countOfFile(const std::string& file) {
  Counter counter;
  parseFile(file, counter);
  return counter.elements + counter.bytes;
}

}  // namespace bench

#endif  // BENCH_EXPAT_H
