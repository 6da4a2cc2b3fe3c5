// A host of two plugins, each of which links another major version of the library. It is either
// linked with the plugins or loads those that its arguments name. It prints the answer of each
// plugin.
#include <dlfcn.h>

#include <iostream>
#include <string>

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (dlopen(argv[i], RTLD_NOW | RTLD_GLOBAL) == nullptr) {
      std::cerr << dlerror() << '\n';
      return 1;
    }
  }
  for (const char* name : {"firstAnswer", "secondAnswer"}) {
    const auto ask = reinterpret_cast<void (*)(std::string&)>(dlsym(RTLD_DEFAULT, name));
    if (ask == nullptr) {
      std::cerr << dlerror() << '\n';
      return 1;
    }
    std::string answer;
    ask(answer);
    std::cout << answer << '\n';
  }
}
