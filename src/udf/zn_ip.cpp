#include "zn_ip.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <regex>

#include "tokenizer.h"
#include "zn_pattern.h"

namespace zn_lib {
namespace {

const Pattern ipv4 = compilePattern("([0-5]{1,3})\\.([0-5]{1,3})\\.([0-5]{1,3})\\.([0-5]{1,3})");

constexpr std::size_t kShortestText = sizeof("0.0.0.0") - 1;
constexpr std::size_t kLongestText = sizeof("255.255.255.255") - 1;

bool isLowDigit(char c) { return c >= '0' && c <= '5'; }

/// The text of an address in network byte order.
std::string addressText(int family, const void* address) {
  std::array<char, 1024> buffer;
  return inet_ntop(family, address, buffer.data(), buffer.size());
}

}  // namespace

bool IPv4::set(const std::string& text) {
  in_addr address;
  if (!validFormat(text) || inet_pton(AF_INET, text.c_str(), &address) != 1) return false;
  return set(address.s_addr);
}

bool IPv4::set(unsigned int value) {
  binary = value;
  binaryToBlocks(value);
  return true;
}

bool IPv4::validFormat(const std::string& text) const {
  if (text.size() < kShortestText || text.size() > kLongestText) return false;
  std::size_t points = 0;
  std::size_t digits = 0;  // of the last part
  for (const char c : text) {
    if (c != '.' && !isLowDigit(c)) return false;
    if (c == '.' ? digits == 0 : digits == 3) return std::regex_match(text, ipv4);
    points += c == '.' ? 1 : 0;
    digits = c == '.' ? 0 : digits + 1;
  }
  if (points != 3) return false;
  return digits > 0 || std::regex_match(text, ipv4);
}

void IPv4::textToBlocks(const std::string& text) {
  std::fill(std::begin(blocks), std::end(blocks), static_cast<unsigned char>(0));
  const Tokenizer parts(text, ".");
  const std::size_t count = std::min(parts.tokens.size(), std::size(blocks));
  for (std::size_t i = 0; i < count; ++i) {
    blocks[i] = static_cast<unsigned char>(std::stoi(parts.tokens[i]));
  }
}

void IPv4::binaryToBlocks(unsigned int value) { std::memcpy(blocks, &value, sizeof blocks); }

int IPv4::blocksToBinary() {
  std::memcpy(&binary, blocks, sizeof binary);
  return 1;
}

std::string IPv4::text() const { return addressText(AF_INET, &binary); }

int IPv4::getLevel() const {
  int level = static_cast<int>(std::size(blocks)) - 1;
  while (level >= 0 && blocks[level] == 0) --level;
  return level;
}

bool IPv6::set(const std::string& text) {
  in6_addr address;
  if (inet_pton(AF_INET6, text.c_str(), &address) != 1) return false;
  binary = address;
  return true;
}

std::string IPv6::text() const { return addressText(AF_INET6, &binary); }

}  // namespace zn_lib
