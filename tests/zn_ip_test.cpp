#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <tokenizer.h>
#include <zn_ip.h>

#include <limits>
#include <regex>
#include <stdexcept>
#include <string>

#include "reference_engine.h"
#include "samples.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using namespace std::string_literals;

std::string blocksOf(const zn_lib::IPv4& address) {
  std::string text;
  for (const unsigned char block : address.blocks) text += std::to_string(int{block}) + " ";
  return text;
}

TEST(ZnIp, HeaderExamples) {
  zn_lib::IPv4 address;
  EXPECT_TRUE(address.set("10.20.0.0"));
  EXPECT_EQ(address.getLevel(), 1);
  EXPECT_FALSE(address.set("127.0.0.1"));
  EXPECT_TRUE(address.set(inet_addr("8.8.8.8")));
  EXPECT_EQ(address.text(), "8.8.8.8");
}

TEST(IPv4, IsInitiallyZero) {
  const zn_lib::IPv4 address;
  EXPECT_EQ(address.binary, 0u);
  EXPECT_EQ(blocksOf(address), "0 0 0 0 ");
  EXPECT_EQ(address.text(), "0.0.0.0");
  EXPECT_EQ(address.getLevel(), -1);
}

TEST(IPv4, SetAcceptsDigitsUpToFive) {
  const struct {
    const char* text;
    const char* blocks;
    int level;
  } accepted[] = {
      {"10.0.0.1", "10 0 0 1 ", 3},       {"255.255.255.0", "255 255 255 0 ", 2},
      {"100.50.25.1", "100 50 25 1 ", 3}, {"0.0.0.0", "0 0 0 0 ", -1},
      {"10.0.0.0", "10 0 0 0 ", 0},       {"10.20.0.0", "10 20 0 0 ", 1},
      {"10.20.30.0", "10 20 30 0 ", 2},   {"10.20.30.40", "10 20 30 40 ", 3},
      {"10.0.30.0", "10 0 30 0 ", 2},     {"255.255.255.255", "255 255 255 255 ", 3},
  };
  for (const auto& c : accepted) {
    zn_lib::IPv4 address;
    EXPECT_TRUE(address.set(c.text)) << c.text;
    EXPECT_EQ(address.text(), c.text);
    EXPECT_EQ(address.binary, inet_addr(c.text)) << c.text;
    EXPECT_EQ(blocksOf(address), c.blocks) << c.text;
    EXPECT_EQ(address.getLevel(), c.level) << c.text;
  }
}

TEST(IPv4, RejectedTextChangesNothing) {
  for (const std::string& text :
       {"192.168.1.1"s, "127.0.0.1"s, "10.0.0.9"s,    "8.8.8.8"s,  "555.1.1.1"s,
        "555.0.0.0"s,   "1.2.3"s,     "010.0.0.1"s,   "00.0.0.0"s, "1.2.3.4.5"s,
        "1.2.3.4."s,    ".1.2.3.4"s,  "1..2.3"s,      "1.2.3.4 "s, " 1.2.3.4"s,
        "1.2.3.4\n"s,   "1.2.3.4\0"s, "1.2.3.4\0.5"s, ""s,         "...."s,
        "1111.1.1.1"s,  "1.2.3.+4"s,  "256.1.1.1"s}) {
    zn_lib::IPv4 address;
    ASSERT_TRUE(address.set("10.20.30.40"));
    EXPECT_FALSE(address.set(text)) << text;
    EXPECT_EQ(address.text(), "10.20.30.40") << text;
    EXPECT_EQ(blocksOf(address), "10 20 30 40 ") << text;
  }
}

TEST(IPv4, SetAcceptsTheFormIfInetPtonDoes) {
  int accepted = 0;
  const auto agrees = [&accepted](const std::string& text) {
    zn_lib::IPv4 address;
    in_addr expected = {};
    const bool isAddress = address.validFormat(text) && inet_pton(AF_INET, text.c_str(), &expected);
    ASSERT_EQ(address.set(text), isAddress) << text;
    ASSERT_EQ(address.binary, expected.s_addr) << text;
    accepted += isAddress;
  };
  forEveryText("05.", 9, agrees);
  std::mt19937 random(7);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (int part = 0; part < 4; ++part) {
      text += (part > 0 ? "." : "") + randomText(random, "012345", 1 + random() % 3);
    }
    agrees(text);
  }
  EXPECT_GT(accepted, 1000);
}

TEST(IPv4, SetAcceptsAnyValue) {
  zn_lib::IPv4 address;
  EXPECT_TRUE(address.set(htonl(0x7F000001u)));
  EXPECT_EQ(address.text(), "127.0.0.1");
  EXPECT_EQ(blocksOf(address), "127 0 0 1 ");
  for (const unsigned value : {0u, 1u, 0xFFFFFFFFu, 0xFF000000u, 0x80u, 0x01020304u}) {
    EXPECT_TRUE(address.set(value));
    EXPECT_EQ(address.binary, value);
    zn_lib::IPv4 back;
    back.textToBlocks(address.text());
    EXPECT_EQ(blocksOf(back), blocksOf(address));
  }
}

TEST(IPv4, ValidFormatAgreesWithItsDefinition) {
  const reference::Engine ipv4 = reference::engine(definitions::ipv4);
  const zn_lib::IPv4 address;
  int matches = 0;
  const auto agrees = [&](const std::string& text) {
    const bool expected = std::regex_match(text, ipv4);
    matches += expected;
    ASSERT_EQ(address.validFormat(text), expected) << text;
  };
  forEveryText("05.", 11, agrees);
  forEveryText("5.69 \n\0"s, 6, agrees);
  EXPECT_GT(matches, 1000);

  std::mt19937 random(4);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (int part = 0; part < 4; ++part) {
      text += (part > 0 ? "." : "") + randomText(random, "012345", 1 + random() % 3);
    }
    agrees(text);
    text[random() % text.size()] = "0156.x\n"[random() % 7];
    agrees(text);
    text.insert(random() % text.size(), 1, "05."[random() % 3]);
    agrees(text);
  }
}

TEST(IPv4, TextToBlocksReadsPartsInOrder) {
  const struct {
    const char* text;
    const char* blocks;
  } cases[] = {
      {"1.2.3.4", "1 2 3 4 "}, {"1.2.3.4.5.x", "1 2 3 4 "},        {"1.2", "1 2 0 0 "},
      {"7", "7 0 0 0 "},       {"256.257.511.-1", "0 1 255 255 "}, {" 1.+2.3x.4 ", "1 2 3 4 "},
      {"9.", "9 0 0 0 "},      {"192.168.0.1", "192 168 0 1 "},
  };
  for (const auto& c : cases) {
    zn_lib::IPv4 address;
    address.set(htonl(0x05050505u));
    address.textToBlocks(c.text);
    EXPECT_EQ(blocksOf(address), c.blocks) << c.text;
    EXPECT_EQ(address.text(), "5.5.5.5") << "binary stays";
  }
}

TEST(IPv4, TextToBlocksThrowsNumberErrors) {
  const struct {
    const char* text;
    const char* blocks;
  } invalid[] = {{"", "0 0 0 0 "},
                 {"a.b.c.d", "0 0 0 0 "},
                 {"1.x.3.4", "1 0 0 0 "},
                 {"1.2..4", "1 2 0 0 "},
                 {".1", "0 0 0 0 "}};
  for (const auto& c : invalid) {
    zn_lib::IPv4 address;
    address.set(htonl(0x05050505u));
    EXPECT_THROW(address.textToBlocks(c.text), std::invalid_argument) << c.text;
    EXPECT_EQ(blocksOf(address), c.blocks) << c.text;
  }
  zn_lib::IPv4 address;
  EXPECT_THROW(address.textToBlocks("1.99999999999.3.4"), std::out_of_range);
  EXPECT_EQ(blocksOf(address), "1 0 0 0 ");
}

/// Returns the blocks of a text and what textToBlocks throws, by a plain model: std::stoi of each
/// token.
std::string blocksByTokens(const std::string& text) {
  zn_lib::IPv4 address;
  const zn_lib::Tokenizer parts(text, ".");
  for (std::size_t i = 0; i < parts.tokens.size() && i < 4; ++i) {
    try {
      address.blocks[i] = static_cast<unsigned char>(std::stoi(parts.tokens[i]));
    } catch (const std::logic_error& error) {
      return blocksOf(address) + error.what();
    }
  }
  return blocksOf(address);
}

TEST(IPv4, TextToBlocksReadsTokens) {
  const auto agrees = [](const std::string& text) {
    zn_lib::IPv4 address;
    std::string thrown;
    try {
      address.textToBlocks(text);
    } catch (const std::logic_error& error) {
      thrown = error.what();
    }
    ASSERT_EQ(blocksOf(address) + thrown, blocksByTokens(text)) << text;
  };
  forEveryText("1.+ x", 6, agrees);
  for (const std::string& text :
       {"999999999.1000000000.2147483647.4"s, "2147483648"s, "-2147483648.1"s, "1\0.2.3\0x.4"s,
        "00000000000000000255.1"s, "0x10.010.1e1.\v7"s}) {
    agrees(text);
  }
  std::mt19937 random(8);
  for (int i = 0; i < 20000; ++i) {
    agrees(randomText(random, "0123456789....+- \n\0x"s, random() % 24));
  }
}

TEST(IPv4, TextIsThatOfInetNtop) {
  std::mt19937 random(9);
  for (int i = 0; i < 20000; ++i) {
    zn_lib::IPv4 address;
    address.binary = static_cast<unsigned>(random()) & static_cast<unsigned>(random());
    char expected[INET_ADDRSTRLEN];
    ASSERT_EQ(address.text(), inet_ntop(AF_INET, &address.binary, expected, sizeof expected));
  }
}

TEST(IPv4, BlocksAndBinaryConvertBothWays) {
  zn_lib::IPv4 address;
  address.binaryToBlocks(htonl(0xC0A80001u));
  EXPECT_EQ(blocksOf(address), "192 168 0 1 ");
  EXPECT_EQ(address.binary, 0u);
  EXPECT_EQ(address.blocksToBinary(), 1);
  EXPECT_EQ(address.binary, htonl(0xC0A80001u));
  EXPECT_EQ(address.text(), "192.168.0.1");
}

TEST(IPv6, AcceptsWhatThePlatformAccepts) {
  zn_lib::IPv6 address;
  EXPECT_EQ(address.text(), "::");
  EXPECT_TRUE(address.set("::1"));
  EXPECT_EQ(address.text(), "::1");
  EXPECT_EQ(address.binary.s6_addr[15], 1);
  EXPECT_TRUE(address.set("2001:DB8:0:0:0:0:0:42"));
  EXPECT_EQ(address.text(), "2001:db8::42");
  EXPECT_TRUE(address.set("::ffff:192.168.0.1"));
  EXPECT_EQ(address.text(), "::ffff:192.168.0.1");
  EXPECT_TRUE(address.set("::2\0junk"s)) << "text ends at its first NUL";
  EXPECT_EQ(address.text(), "::2");
}

TEST(IPv6, RejectedTextChangesNothing) {
  zn_lib::IPv6 address;
  ASSERT_TRUE(address.set("fe80::5"));
  for (const char* text : {"1:2:3:4:5:6:7:8:9", "", "::1 ", "10.0.0.1", "g::", ":::", "::1%eth0"}) {
    EXPECT_FALSE(address.set(text)) << text;
    EXPECT_EQ(address.text(), "fe80::5") << text;
  }
}

TEST(LongText, IsRejected) {
  zn_lib::IPv4 v4;
  zn_lib::IPv6 v6;
  for (const char c : {'1', '.', ':', 'x', '\0'}) {
    EXPECT_FALSE(v4.set(std::string(kLongText, c))) << c;
    EXPECT_FALSE(v4.validFormat(std::string(kLongText, c))) << c;
    EXPECT_FALSE(v6.set(std::string(kLongText, c))) << c;
  }
  EXPECT_THROW(v4.textToBlocks(std::string(kLongText, '1')), std::out_of_range);
  EXPECT_THROW(v4.textToBlocks(std::string(kLongText, '.')), std::invalid_argument);
}

}  // namespace
