// Words and fields: splitting at characters, splitting at a pattern, sorting.
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
  // Every delimiter ends a token, an empty one too; nothing follows the last delimiter here.
  zn_lib::Tokenizer list("pear,apple,,fig,", ",");
  print(list);

  list.sortTokens();
  print(list);

  // "a-c" is a range of delimiters; with the hyphen at an end it stands for itself.
  list.split("1-2+3", "+-");
  print(list);

  list.splitMulti("one, two,three", ", ?");
  print(list);
  std::cout << list.getToken(1) << ", and behind the end \"" << list.getToken(9) << "\"\n";

  // The base stays on the stream until another one is set.
  std::cout << zn_lib::setHexadecimal << 31 << zn_lib::setDecimal << ' ' << 31 << '\n';
}
