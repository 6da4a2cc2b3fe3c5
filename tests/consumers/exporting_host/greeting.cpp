#include <zn_str.h>

#include <string>

std::string greeting() { return zn_lib::stringToUpper("hello"); }
