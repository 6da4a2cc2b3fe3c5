#include "model_xml.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "call.h"
#include "expat_handlers.h"
#include "whitespace.h"

namespace histories {
namespace {

constexpr std::size_t kBlock = 8192;

template <class Events>
void read(Events& events, const std::string& bytes) {
  const XML_Parser parser = XML_ParserCreate("UTF-8");
  setHandlers(parser, events);
  for (std::size_t at = 0;; at += kBlock) {
    const std::size_t count = std::min(kBlock, bytes.size() - at);
    const bool isLast = count < kBlock;
    const XML_Status status = XML_Parse(parser, bytes.data() + at, static_cast<int>(count), isLast);
    if (isLast || status == XML_STATUS_ERROR) break;
  }
  XML_ParserFree(parser);
}

/// Returns the number at the start of `text`, whose lowest 32 bits count. A number beyond 64 bits
/// is the largest or the smallest of them.
int leadingNumber(const std::string& text) {
  std::size_t at = 0;
  const bool isNegative = !text.empty() && text[0] == '-';
  if (isNegative || (!text.empty() && text[0] == '+')) ++at;
  constexpr unsigned long long largest = ~0ULL / 2;
  unsigned long long value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    const unsigned digit = static_cast<unsigned>(text[at] - '0');
    value = value > (largest - digit) / 10 ? largest + 1 : value * 10 + digit;
  }
  value = isNegative ? 0 - value : std::min(value, largest);
  return static_cast<int>(static_cast<unsigned>(value & 0xFFFFFFFFU));
}

}  // namespace

std::string shown(const Setting& setting) {
  return shown(setting.value) + "|" + shown(setting.type) + "|" + shown(setting.describe);
}

std::string withoutIndentation(const char* text, int length) {
  std::string piece;
  for (int i = 0; i < length && text[i] != '\0'; ++i) piece += text[i];
  return withoutLeadingWhitespace(piece);
}

void SettingsEvents::start(const std::string& name, const XML_Char** attributes) {
  element = name;
  lastElement.clear();
  if (name.empty() || name == "CONFIGURATION" || attributes[0] == nullptr) return;
  data[name].type = attributes[1];
  if (attributes[2] != nullptr) data[name].describe = attributes[3];
}

void SettingsEvents::end(const std::string&) { element.clear(); }

void SettingsEvents::text(const XML_Char* bytes, int length) {
  if (length < 1 || element.empty() || element == "CONFIGURATION") return;
  const std::string piece = withoutIndentation(bytes, length);
  std::string& value = data[element].value;
  value = lastElement == element ? value + piece : piece;
  lastElement = element;
}

void CatalogEvents::start(const std::string& name, const XML_Char**) { tag = name; }

void CatalogEvents::end(const std::string& name) {
  tag = name;
  if (name == "ERROR") data[id] = message;
}

void CatalogEvents::text(const XML_Char* bytes, int length) {
  const std::string piece = withoutIndentation(bytes, length);
  if (tag == "ID") id = leadingNumber(piece);
  if (tag == "MESSAGE") message = piece;
}

void readBy(SettingsEvents& events, const std::string& bytes) { read(events, bytes); }
void readBy(CatalogEvents& events, const std::string& bytes) { read(events, bytes); }

}  // namespace histories
