// Stores values with any characters in a settings file, which escapes nothing itself.
#include <zn_setcfg.h>

#include <cstdlib>
#include <iostream>
#include <string>

namespace {

// Returns `text` with "%" and two hexadecimal digits for each byte that is not a letter or digit.
std::string encoded(const std::string& text) {
  const std::string digits = "0123456789ABCDEF";
  const std::string kept = digits + "GHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (kept.find(character) != std::string::npos) {
      result += character;
    } else {
      result += {'%', digits[byte / 16U], digits[byte % 16U]};
    }
  }
  return result;
}

// Returns the text that was encoded.
std::string decoded(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      result += static_cast<char>(std::strtol(text.substr(i + 1, 2).c_str(), nullptr, 16));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

int main() {
  zn_lib::Configuration settings("TOOL", "tool");
  const std::string snippet = "  if (a < b && c > d)\n\treturn 'x';\n";
  settings.set("snippet", encoded(snippet));
  const bool isWritten = settings.save();

  zn_lib::Configuration stored("TOOL", "tool");
  stored.load();
  const std::string value = stored.get("snippet").value;
  if (!isWritten || decoded(value) != snippet) {
    std::cerr << "Cannot save " << settings.getConfigurationFile() << '\n';
    return 1;
  }
  std::cout << value << '\n' << decoded(value);
}
