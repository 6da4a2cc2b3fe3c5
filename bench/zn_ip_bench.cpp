/// IPv4 and IPv6 addresses, compared with the conversions of the C library, with a network library,
/// and with the regular expression that defines the accepted texts.
#include <arpa/inet.h>
#include <zn_ip.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <regex>
#include <string>

#include "../src/udf/internal/definitions.h"
#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_BOOST
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/address_v6.hpp>
#include <boost/system/error_code.hpp>
#endif
#ifdef ZN_UDF_HAVE_RE2
#include <re2/re2.h>
#endif

namespace {

using bench::addRow;

using Blocks = std::array<unsigned char, 4>;

void addSetRows(const std::string& name, const std::string& text) {
  addRow(name + "/zn_udf", text, [](const std::string& t) {
    zn_lib::IPv4 address;
    address.set(t);
    return address;
  });
  addRow(name + "/baseline:inet_pton", text, [](const std::string& t) {
    in_addr address{};
    inet_pton(AF_INET, t.c_str(), &address);
    return address;
  });
#ifdef ZN_UDF_HAVE_BOOST
  // It accepts every address, also with digits above 5.
  addRow(name + "/boost_asio", text, [](const std::string& t) {
    boost::system::error_code error;
    return boost::asio::ip::make_address_v4(t, error);
  });
#endif
}

/// Returns whether `text` consists of four groups of one to three digits.
bool hasFormat(const std::string& text) {
  int groups = 1;
  int digits = 0;
  for (const char c : text) {
    if (c >= '0' && c <= '5') {
      if (++digits > 3) return false;
    } else {
      if (c != '.' || digits == 0 || ++groups > 4) return false;
      digits = 0;
    }
  }
  return groups == 4 && digits != 0;
}

void addFormatRows(const std::string& name, const std::string& text) {
  const zn_lib::IPv4 address;
  addRow(name + "/zn_udf", text,
         [address](const std::string& t) { return address.validFormat(t); });
  addRow(name + "/baseline:hand_loop", text, hasFormat);
  const std::regex pattern(zn_lib::internal::definitions::ipv4.expression);
  addRow(name + "/std_regex", text,
         [pattern](const std::string& t) { return std::regex_match(t, pattern); });
#ifdef ZN_UDF_HAVE_RE2
  static const RE2 re2(zn_lib::internal::definitions::ipv4.expression);
  addRow(name + "/RE2", text, [](const std::string& t) { return RE2::FullMatch(t, re2); });
#endif
}

/// Returns the dotted text of an address in network byte order.
std::string dottedText(unsigned int binary) {
  Blocks blocks;
  std::memcpy(blocks.data(), &binary, blocks.size());
  std::array<char, INET_ADDRSTRLEN> buffer;
  char* end = buffer.data();
  for (const unsigned block : blocks) {
    if (end != buffer.data()) *end++ = '.';
    end = std::to_chars(end, buffer.data() + buffer.size(), block).ptr;
  }
  return {buffer.data(), end};
}

void addTextRows(const std::string& text) {
  zn_lib::IPv4 address;
  address.set(text);
  addRow("IPv4_text/zn_udf", address, [](const zn_lib::IPv4& a) { return a.text(); });
  addRow("IPv4_text/baseline:to_chars", address.binary, dottedText);
#ifdef ZN_UDF_HAVE_BOOST
  addRow("IPv4_text/boost_asio", boost::asio::ip::make_address_v4(text),
         [](const boost::asio::ip::address_v4& a) { return a.to_string(); });
#endif
  addRow("IPv4_text/inet_ntop", address.binary, [](unsigned int binary) {
    std::array<char, INET_ADDRSTRLEN> buffer;
    return std::string(inet_ntop(AF_INET, &binary, buffer.data(), INET_ADDRSTRLEN));
  });
}

void addBlockRows(const std::string& text) {
  addRow("IPv4_textToBlocks/zn_udf", text, [](const std::string& t) {
    zn_lib::IPv4 address;
    address.textToBlocks(t);
    return address;
  });
  addRow("IPv4_textToBlocks/sscanf", text, [](const std::string& t) {
    Blocks blocks{};
    std::sscanf(t.c_str(), "%hhu.%hhu.%hhu.%hhu", &blocks[0], &blocks[1], &blocks[2], &blocks[3]);
    return blocks;
  });
  addRow("IPv4_textToBlocks/baseline:inet_pton", text, [](const std::string& t) {
    Blocks blocks{};
    inet_pton(AF_INET, t.c_str(), blocks.data());
    return blocks;
  });
}

void addSixRows(const std::string& text) {
  addRow("IPv6_set/zn_udf", text, [](const std::string& t) {
    zn_lib::IPv6 address;
    address.set(t);
    return address;
  });
  addRow("IPv6_set/baseline:inet_pton", text, [](const std::string& t) {
    in6_addr address{};
    inet_pton(AF_INET6, t.c_str(), &address);
    return address;
  });
  zn_lib::IPv6 address;
  address.set(text);
  addRow("IPv6_text/zn_udf", address, [](const zn_lib::IPv6& a) { return a.text(); });
  addRow("IPv6_text/baseline:inet_ntop", address.binary, [](const in6_addr& binary) {
    std::array<char, INET6_ADDRSTRLEN> buffer;
    return std::string(inet_ntop(AF_INET6, &binary, buffer.data(), INET6_ADDRSTRLEN));
  });
#ifdef ZN_UDF_HAVE_BOOST
  using boost::asio::ip::make_address_v6;
  addRow("IPv6_set/boost_asio", text, [](const std::string& t) {
    boost::system::error_code error;
    return make_address_v6(t, error);
  });
  addRow("IPv6_text/boost_asio", make_address_v6(text),
         [](const boost::asio::ip::address_v6& a) { return a.to_string(); });
#endif
}

}  // namespace

int main(int argc, char** argv) {
  const std::string accepted = "10.20.30.40";
  const std::string refused = "192.168.0.1";  // has digits above 5
  addSetRows("IPv4_set_accepted", accepted);
  addSetRows("IPv4_set_refused", refused);
  addFormatRows("IPv4_validFormat_accepted", accepted);
  addFormatRows("IPv4_validFormat_refused", refused);
  addFormatRows("IPv4_validFormat_three_parts", "10.20.30");
  addTextRows(accepted);
  addBlockRows(accepted);
  addSixRows("2001:db8::8a2e:370:7334");
  return bench::runRows(argc, argv);
}
