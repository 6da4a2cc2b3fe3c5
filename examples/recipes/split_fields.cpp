// Splits lines of comma-separated fields, of which some are in quotes.
#include <tokenizer.h>
#include <zn_str.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace {

// Returns a field without its quotes. Two quotes inside stand for one.
std::string unquoted(std::string field) {
  if (field.size() < 2 || field.front() != '"' || field.back() != '"') return field;
  field = field.substr(1, field.size() - 2);
  for (std::size_t at = 0; (at = field.find("\"\"", at)) != std::string::npos; ++at) {
    field.erase(at, 1);
  }
  return field;
}

// Returns the fields of a line. A quote that is never closed makes the rest of the line one field.
std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields;
  bool isOpen = false;

  // Every comma ends a token. The one that is added here ends the last field, even an empty one.
  for (const std::string& token : zn_lib::Tokenizer(line + ',', ",").tokens) {
    if (isOpen) {
      fields.back() += ',' + token;
    } else {
      fields.push_back(token);
    }
    isOpen = std::count(fields.back().begin(), fields.back().end(), '"') % 2 != 0;
  }
  for (std::string& field : fields) field = unquoted(zn_lib::allTrim(field));
  return fields;
}

}  // namespace

int main() {
  for (const char* const line : {"tea, 1.50,", "\"cake, large\",4,\"a \"\"gift\"\"\"", ""}) {
    for (const std::string& field : fieldsOf(line)) std::cout << '[' << field << ']';
    std::cout << '\n';
  }
}
