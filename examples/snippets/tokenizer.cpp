// Splits text at characters and at a pattern, and sorts the tokens.
#include <tokenizer.h>

#include <iostream>
#include <string>

namespace {

void print(const zn_lib::Tokenizer& list) {
  for (const std::string& token : list.tokens) std::cout << '[' << token << ']';
  std::cout << '\n';
}

}  // namespace

int main() {
  // Every delimiter ends a token, which may be empty. No text follows the last delimiter here.
  zn_lib::Tokenizer list("pear,apple,,fig,", ",");
  print(list);

  list.sortTokens();
  print(list);

  // A hyphen at an end stands for itself, while "a-c" is a range of delimiters.
  list.split("1-2+3", "+-");
  print(list);

  list.splitMulti("one, two,three", ", ?");
  print(list);
  std::cout << list.getToken(1) << ", and after the end \"" << list.getToken(9) << "\"\n";

  // The base stays set on the stream until another one is set.
  std::cout << zn_lib::setHexadecimal << 31 << zn_lib::setDecimal << ' ' << 31 << '\n';
}
