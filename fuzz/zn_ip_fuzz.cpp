/// Compares addresses with the conversions of the C library, and the format of IPv4 texts with its
/// definition.
#include <arpa/inet.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_ip.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <string>

#include "fuzz_check.h"
#include "reference_engine.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using fuzz::expectSame;

const reference::Engine ipv4 = reference::engine(definitions::ipv4);

std::string blocksOf(const zn_lib::IPv4& address) {
  return {std::begin(address.blocks), std::end(address.blocks)};
}

std::string bytesOf(unsigned int value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

std::string dotted(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) text += std::to_string(static_cast<unsigned char>(c)) + ".";
  text.pop_back();
  return text;
}

int levelOf(const std::string& bytes) {
  const std::size_t last = bytes.find_last_not_of('\0');
  return last == std::string::npos ? -1 : static_cast<int>(last);
}

/// Checks all fields and queries of an address in network byte order.
void checkAddress(zn_lib::IPv4& address, unsigned int value) {
  const std::string bytes = bytesOf(value);
  expectSame("binary", address.binary, value);
  expectSame("blocks", blocksOf(address), bytes);
  expectSame("text", address.text(), dotted(bytes));
  expectSame("getLevel", address.getLevel(), levelOf(bytes));
  address.binary = ~value;
  expectSame("blocksToBinary", address.blocksToBinary(), 1);
  expectSame("binary of blocks", address.binary, value);
}

void values(unsigned int value, unsigned int other) {
  zn_lib::IPv4 address;
  checkAddress(address, 0);
  expectSame("set", address.set(value), true);
  checkAddress(address, value);
  address.binaryToBlocks(other);
  expectSame("blocks of a value", blocksOf(address), bytesOf(other));
  expectSame("the value itself", address.binary, value);
}

void texts(const std::string& text, unsigned int before) {
  zn_lib::IPv4 address;
  const bool isValid = text.size() <= fuzz::kShortText && std::regex_match(text, ipv4);
  expectSame("validFormat", address.validFormat(text), isValid);

  in_addr converted;
  const bool isTaken = isValid && inet_pton(AF_INET, text.c_str(), &converted) == 1;
  address.set(before);
  expectSame("set", address.set(text), isTaken);
  checkAddress(address, isTaken ? converted.s_addr : before);
}

/// Reference model of textToBlocks. Sets `error` to the exception that it throws.
std::string blocksFrom(const std::string& text, std::string& error) {
  std::string blocks(4, '\0');
  std::size_t start = 0;
  for (char& block : blocks) {
    if (start > text.size() || (start == text.size() && start > 0)) break;
    const std::size_t end = std::min(text.find('.', start), text.size());
    const std::string part = text.substr(start, end - start);
    char* stop = nullptr;
    const long long value = std::strtoll(part.c_str(), &stop, 10);
    const bool isNumber = stop != part.c_str();
    const bool isInt = value >= INT_MIN && value <= INT_MAX;
    if (!isNumber || !isInt) {
      error = isNumber ? "out_of_range" : "invalid_argument";
      break;
    }
    block = static_cast<char>(value);
    start = end + 1;
  }
  return blocks;
}

void parts(const std::string& text) {
  zn_lib::IPv4 address;
  address.set(~0u);
  std::string error, expected;
  const std::string blocks = blocksFrom(text, expected);
  try {
    address.textToBlocks(text);
  } catch (const std::invalid_argument&) {
    error = "invalid_argument";
  } catch (const std::out_of_range&) {
    error = "out_of_range";
  }
  expectSame("exception", error, expected);
  expectSame("textToBlocks", blocksOf(address), blocks);
  expectSame("binary stays", address.binary, ~0u);
}

std::string bytesOf(const zn_lib::IPv6& address) {
  std::string bytes(sizeof address.binary, '\0');
  std::memcpy(bytes.data(), &address.binary, bytes.size());
  return bytes;
}

void longValues(std::string bytes) {
  bytes.resize(sizeof(in6_addr));
  zn_lib::IPv6 address, again;
  std::memcpy(&address.binary, bytes.data(), bytes.size());
  char text[INET6_ADDRSTRLEN];
  inet_ntop(AF_INET6, bytes.data(), text, sizeof text);
  expectSame("IPv6::text", address.text(), std::string(text));
  fuzz::expect("its text must be an address", again.set(text));
  expectSame("round trip", bytesOf(again), bytes);
}

void longTexts(const std::string& text) {
  in6_addr converted;
  const bool isTaken = inet_pton(AF_INET6, text.c_str(), &converted) == 1;
  zn_lib::IPv6 address, expected;
  if (isTaken) expected.binary = converted;
  expectSame("IPv6::set", address.set(text), isTaken);
  expectSame("IPv6::binary", bytesOf(address), bytesOf(expected));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int group = input.ConsumeIntegralInRange(0, 4);
  const unsigned int value = input.ConsumeIntegral<unsigned int>();
  const unsigned int other = input.ConsumeIntegral<unsigned int>();
  const std::string text = input.ConsumeRemainingBytesAsString();
  switch (group) {
    case 0:
      values(value, other);
      texts(dotted(bytesOf(value)), other);
      break;
    case 1:
      texts(text, value);
      break;
    case 2:
      parts(text);
      break;
    case 3:
      longValues(text);
      break;
    default:
      longTexts(text);
      break;
  }
  return 0;
}
