#include "zn_ip.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

#include "internal/definitions.h"
#include "tokenizer.h"

namespace zn_lib {
namespace {

constexpr bool isLowDigit(char c) { return c >= '0' && c <= '5'; }

/// Recognises the form `ipv4`: four parts of one to three digits from 0 to 5, separated by dots.
bool scanIpv4(std::string_view text) {
  constexpr int parts = 4;
  constexpr std::size_t mostDigits = 3;
  for (int part = 0; part < parts; ++part) {
    if (part > 0) {
      if (text.empty() || text.front() != '.') return false;
      text.remove_prefix(1);
    }
    std::size_t digits = 0;
    while (digits < mostDigits && digits < text.size() && isLowDigit(text[digits])) ++digits;
    if (digits == 0) return false;
    text.remove_prefix(digits);
  }
  return text.empty();
}

/// Returns the text of an address, which is in network byte order.
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
  const bool isValid = scanIpv4(text);
  internal::verify(internal::definitions::ipv4, text, isValid);
  return isValid;
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
