/// Reference model of the XML readers: expat alone, with handlers that apply the documented rules.
#ifndef FUZZ_XML_H
#define FUZZ_XML_H

#include <expat.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <map>
#include <string>

#include "expat_handlers.h"
#include "whitespace.h"

namespace fuzz {

constexpr std::size_t kBlock = 8192;

/// Feeds `bytes` to an expat parser in the blocks in which the library reads a file. The parser
/// reports to `state` as `setHandlers` says.
template <class State>
void parse(const std::string& bytes, State& state) {
  const XML_Parser parser = XML_ParserCreate("UTF-8");
  setHandlers(parser, state);
  std::size_t at = 0;
  bool isLast = false;
  XML_Status status = XML_STATUS_OK;
  while (!isLast && status != XML_STATUS_ERROR) {
    const std::size_t count = std::min(kBlock, bytes.size() - at);
    // The end of a file that fills its last block is only noticed by one more read.
    isLast = count < kBlock;
    status = XML_Parse(parser, bytes.data() + at, static_cast<int>(count), isLast);
    at += count;
  }
  XML_ParserFree(parser);
}

struct Setting {
  std::string value;
  std::string type = "TEXT";
  std::string describe;
};

using Settings = std::map<std::string, Setting>;

/// Reads a file of settings.
class SettingsReader {
 public:
  explicit SettingsReader(const std::string& bytes) { parse(bytes, *this); }

  void start(const std::string& name, const XML_Char** attributes) {
    open_ = name == "CONFIGURATION" ? "" : name;
    hasText_ = false;
    if (open_.empty() || attributes[0] == nullptr) return;
    settings[open_].type = attributes[1];
    if (attributes[2] != nullptr) settings[open_].describe = attributes[3];
  }

  void end(const std::string&) { open_.clear(); }

  void text(const XML_Char* bytes, int length) {
    if (open_.empty() || length == 0) return;
    std::string& value = settings[open_].value;
    if (!hasText_) value.clear();
    value += withoutLeadingWhitespace({bytes, static_cast<std::size_t>(length)});
    hasText_ = true;
  }

  Settings settings;

 private:
  std::string open_;  // the element whose text is a value, or empty
  bool hasText_ = false;
};

using Catalog = std::map<int, std::string>;

/// Reads an error catalog.
class CatalogReader {
 public:
  explicit CatalogReader(const std::string& bytes) { parse(bytes, *this); }

  void start(const std::string& name, const XML_Char**) { tag_ = name; }

  void end(const std::string& name) {
    tag_ = name;
    if (name == "ERROR") catalog[id_] = message_;
  }

  void text(const XML_Char* bytes, int length) {
    const std::string piece = withoutLeadingWhitespace({bytes, static_cast<std::size_t>(length)});
    if (tag_ == "ID") id_ = leadingNumber(piece);
    if (tag_ == "MESSAGE") message_ = piece;
  }

  Catalog catalog;

 private:
  /// Returns the low bits of the number, which is limited to the range of long long.
  static int leadingNumber(const std::string& text) {
    std::size_t at = 0;
    const bool isNegative = !text.empty() && text[0] == '-';
    if (isNegative || (!text.empty() && text[0] == '+')) ++at;
    constexpr unsigned long long most = LLONG_MAX;
    const unsigned long long limit = isNegative ? most + 1 : most;
    unsigned long long value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
      const unsigned digit = static_cast<unsigned>(text[at] - '0');
      value = value > (limit - digit) / 10 ? limit : value * 10 + digit;
    }
    return static_cast<int>(static_cast<unsigned>(isNegative ? 0 - value : value));
  }

  std::string tag_;
  int id_ = 0;
  std::string message_;
};

/// Returns `document` with `count` spaces after its first tag. They move the rest to the end of a
/// block.
inline std::string padded(const std::string& document, std::size_t count) {
  const std::size_t end = document.find('>');
  if (end == std::string::npos) return document;
  return document.substr(0, end + 1) + std::string(count, ' ') + document.substr(end + 1);
}

/// Returns all remaining bytes of the input, padded at random.
inline std::string consumeDocument(FuzzedDataProvider& input) {
  const std::size_t padding = input.ConsumeIntegralInRange<std::size_t>(0, 3 * kBlock);
  return padded(input.ConsumeRemainingBytesAsString(), padding);
}

}  // namespace fuzz

#endif  // FUZZ_XML_H
