#include "zn_ip.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "internal/definitions.h"
#include "internal/text.h"

namespace zn_lib {
namespace {

constexpr bool isLowDigit(char c) { return c >= '0' && c <= '5'; }

/// Recognises the form `ipv4`: four parts of one to three digits from 0 to 5, separated by dots.
/// Calls `visit` with the value of each part, and with whether the part has leading zeros.
template <class Visit>
bool scanIpv4(std::string_view text, Visit visit) {
  constexpr int parts = 4;
  constexpr std::size_t mostDigits = 3;
  for (int part = 0; part < parts; ++part) {
    if (part > 0) {
      if (text.empty() || text.front() != '.') return false;
      text.remove_prefix(1);
    }
    std::size_t digits = 0;
    unsigned value = 0;
    while (digits < mostDigits && digits < text.size() && isLowDigit(text[digits])) {
      value = value * 10 + static_cast<unsigned>(text[digits++] - '0');
    }
    if (digits == 0) return false;
    visit(value, digits > 1 && text.front() == '0');
    text.remove_prefix(digits);
  }
  return text.empty();
}

/// Removes the first dotted part from `text`, and the dot after it. Returns the number that
/// std::stoi reads from the part.
int takeNumber(std::string_view& text) {
  constexpr std::size_t mostDigits = std::numeric_limits<int>::digits10;
  std::size_t size = 0;
  int number = 0;
  while (size < mostDigits && size < text.size() && internal::isDigit(text[size])) {
    number = number * 10 + (text[size++] - '0');
  }
  const bool areDigits = size > 0 && (size == text.size() || text[size] == '.');
  if (!areDigits) {
    size = std::min(text.find('.'), text.size());
    number = std::stoi(std::string(text.substr(0, size)));
  }
  text.remove_prefix(std::min(size + 1, text.size()));
  return number;
}

}  // namespace

bool IPv4::set(const std::string& text) {
  unsigned int address = 0;
  bool isAddress = true;  // inet_pton rejects leading zeros and parts above 255
  const bool isValid = scanIpv4(text, [&](unsigned part, bool hasLeadingZeros) {
    address = address << 8 | part;
    isAddress = isAddress && !hasLeadingZeros && part <= 255;
  });
  internal::verify(internal::definitions::ipv4, text, isValid);
  if (!isValid || !isAddress) return false;
  return set(htonl(address));
}

bool IPv4::set(unsigned int value) {
  binary = value;
  binaryToBlocks(value);
  return true;
}

bool IPv4::validFormat(const std::string& text) const {
  const bool isValid = scanIpv4(text, [](unsigned, bool) {});
  internal::verify(internal::definitions::ipv4, text, isValid);
  return isValid;
}

void IPv4::textToBlocks(const std::string& text) {
  std::fill(std::begin(blocks), std::end(blocks), static_cast<unsigned char>(0));
  std::string_view rest = text;
  for (unsigned char& block : blocks) {
    block = static_cast<unsigned char>(takeNumber(rest));
    if (rest.empty()) return;  // a dot at the end adds no part
  }
}

void IPv4::binaryToBlocks(unsigned int value) { std::memcpy(blocks, &value, sizeof blocks); }

int IPv4::blocksToBinary() {
  std::memcpy(&binary, blocks, sizeof binary);
  return 1;
}

std::string IPv4::text() const {
  std::array<unsigned char, sizeof binary> bytes;
  std::memcpy(bytes.data(), &binary, bytes.size());
  std::array<char, sizeof "255.255.255.255"> buffer;
  char* end = buffer.data();
  for (const unsigned char byte : bytes) {
    if (end != buffer.data()) *end++ = '.';
    end = std::to_chars(end, buffer.data() + buffer.size(), byte).ptr;
  }
  return {buffer.data(), end};
}

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

std::string IPv6::text() const {
  std::array<char, 1024> buffer;
  return inet_ntop(AF_INET6, &binary, buffer.data(), buffer.size());
}

}  // namespace zn_lib
