// Asks for a text that has a default, and then for permission.
#include <zn_output.h>
#include <zn_str.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

// Returns the answer, or `usual` if the answer is blank or the input has ended.
std::string ask(const std::string& question, const std::string& usual) {
  std::cout << question << " [" << usual << "] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  answer = zn_lib::allTrim(answer);
  return answer.empty() ? usual : answer;
}

}  // namespace

int main() {
  // The prompts of the library would miss what std::cin has buffered.
  std::setvbuf(stdin, nullptr, _IONBF, 0);

  const std::string colour = ask("Colour?", "blue");
  std::cout << colour << '\n';
  const std::string size = ask("Size?", "7");
  std::cout << size << '\n';

  // An empty answer and the end of input are a "no", so ask such that "no" is the safe answer.
  if (!zn_lib::yesOrNo("Overwrite the old picture? [y/N] ")) {
    std::cout << "Kept the old picture\n";
    return 0;
  }
  std::cout << "Overwrote the old picture\n";
}
