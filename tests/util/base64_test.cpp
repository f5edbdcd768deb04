// SPDX-License-Identifier: MIT
#include "util/base64.h"

#include <gmock/gmock.h>

namespace korr::util {
namespace {

using testing::Optional;

std::vector<std::uint8_t> bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

void expectPair(const std::vector<std::uint8_t>& bytes, const std::string& text) {
  EXPECT_EQ(encodeBase64(bytes), text);
  EXPECT_THAT(decodeBase64(text), Optional(bytes)) << text;
}

// RFC 4648, clause 10: "foobar" and all that it begins with.
TEST(Base64, GivesTheVectorsOfItsStandard) {
  const std::string_view foobar = "foobar";
  std::size_t length = 0;
  for (const char* text : {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"})
    expectPair(bytesOf(foobar.substr(0, length++)), text);
}

TEST(Base64, UsesEveryCharacterOfTheAlphabet) {
  expectPair({0x00, 0x10, 0x83, 0x10, 0x51, 0x87, 0x20, 0x92, 0x8b, 0x30, 0xd3, 0x8f,
              0x41, 0x14, 0x93, 0x51, 0x55, 0x97, 0x61, 0x96, 0x9b, 0x71, 0xd7, 0x9f,
              0x82, 0x18, 0xa3, 0x92, 0x59, 0xa7, 0xa2, 0x9a, 0xab, 0xb2, 0xdb, 0xaf,
              0xc3, 0x1c, 0xb3, 0xd3, 0x5d, 0xb7, 0xe3, 0x9e, 0xbb, 0xf3, 0xdf, 0xbf},
             "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64, PutsTheSeparatorAfterEvery64Groups) {
  const auto encode = [](std::size_t bytes) {
    return encodeBase64(std::vector<std::uint8_t>(bytes), "\r\n");
  };
  const std::string line(256, 'A');
  EXPECT_EQ(encode(189), std::string(252, 'A'));
  EXPECT_EQ(encode(192), line + "\r\n");
  EXPECT_EQ(encode(193), line + "\r\nAA==");
  EXPECT_EQ(encode(384), line + "\r\n" + line + "\r\n");
  // A padded group completes the run as well.
  EXPECT_EQ(encode(190), line.substr(0, 254) + "==\r\n");
  EXPECT_EQ(encode(191), line.substr(0, 255) + "=\r\n");
}

TEST(Base64, RefusesWhatIsNotBase64ToTheLetter) {
  for (const char* text : {"Zg", "Zg=", "Zm9vA", "A===", "====", "=AAA", "Zg==Zg==", "Zm8=Zm9v",
                           "Zm9-", "Zm 9", "Zm9v\r\n\r\n", "Zm9\xC3"}) {
    EXPECT_EQ(decodeBase64(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace korr::util
