/// IPv4 addresses, against the C library's own conversions and the pattern that defines the
/// accepted texts.
#include <arpa/inet.h>
#include <zn_ip.h>

#include <array>
#include <cstdio>
#include <regex>
#include <string>

#include "bench_rows.h"

namespace {

using bench::addRow;
using Blocks = std::array<unsigned char, 4>;

void addSetRows(const std::string& name, const std::string& text) {
  addRow(name + "/zn_udf", text, [](const std::string& t) {
    zn_lib::IPv4 address;
    address.set(t);
    return address;
  });
  addRow(name + "/inet_pton", text, [](const std::string& t) {
    in_addr address{};
    inet_pton(AF_INET, t.c_str(), &address);
    return address;
  });
}

void addFormatRows(const std::string& name, const std::string& text) {
  const zn_lib::IPv4 address;
  addRow(name + "/zn_udf", text,
         [address](const std::string& t) { return address.validFormat(t); });
  const std::regex pattern(R"(([0-5]{1,3})\.([0-5]{1,3})\.([0-5]{1,3})\.([0-5]{1,3}))");
  addRow(name + "/std_regex", text,
         [pattern](const std::string& t) { return std::regex_match(t, pattern); });
}

void addTextRows(const std::string& text) {
  zn_lib::IPv4 address;
  address.set(text);
  addRow("text/zn_udf", address, [](const zn_lib::IPv4& a) { return a.text(); });
  addRow("text/inet_ntop", address.binary, [](unsigned int binary) {
    std::array<char, INET_ADDRSTRLEN> buffer;
    return std::string(inet_ntop(AF_INET, &binary, buffer.data(), INET_ADDRSTRLEN));
  });
}

void addBlockRows(const std::string& text) {
  addRow("textToBlocks/zn_udf", text, [](const std::string& t) {
    zn_lib::IPv4 address;
    address.textToBlocks(t);
    return address;
  });
  addRow("textToBlocks/sscanf", text, [](const std::string& t) {
    Blocks blocks{};
    std::sscanf(t.c_str(), "%hhu.%hhu.%hhu.%hhu", &blocks[0], &blocks[1], &blocks[2], &blocks[3]);
    return blocks;
  });
  addRow("textToBlocks/inet_pton", text, [](const std::string& t) {
    Blocks blocks{};
    inet_pton(AF_INET, t.c_str(), blocks.data());
    return blocks;
  });
}

}  // namespace

int main(int argc, char** argv) {
  const std::string accepted = "10.20.30.40";
  const std::string refused = "192.168.0.1";  // has digits above 5
  addSetRows("set_accepted", accepted);
  addSetRows("set_refused", refused);
  addFormatRows("validFormat_accepted", accepted);
  addFormatRows("validFormat_refused", refused);
  addFormatRows("validFormat_three_parts", "10.20.30");
  addTextRows(accepted);
  addBlockRows(accepted);
  return bench::runRows(argc, argv);
}
