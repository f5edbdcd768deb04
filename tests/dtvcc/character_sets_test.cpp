// SPDX-License-Identifier: MIT
#include "dtvcc/character_sets.h"

#include <gmock/gmock.h>

#include <string>

#include "dtvcc/codes.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

std::string textOf(CharacterCode first, CharacterCode last) {
  std::string text;
  for (CharacterCode code = first; code <= last; ++code) {
    text += characterOf(code, Charset::Utf16).view();
  }
  return text;
}

TEST(DtvccCharacters, FollowTheTablesOfG0ToG3) {
  EXPECT_EQ(
      textOf(0x20, 0x7F),
      " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuv"
      "wxyz{|}~♪");
  EXPECT_EQ(
      textOf(0xA0, 0xFF),
      " ¡¢£¤¥¦§¨©ª«¬-®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúû"
      "üýþÿ");
  EXPECT_EQ(
      textOf(kExtendedSet | 0x20, kExtendedSet | 0x7F),
      "  ___…____Š_Œ___█\u2018\u2019“”•___™š_œ℠_Ÿ" + std::string(16 * 3 + 6, '_') + "⅛⅜⅝⅞│┐└─┘┌");
  EXPECT_EQ(textOf(kExtendedSet | 0xA0, kExtendedSet | 0xA3), "㏄___");
}

TEST(DtvccCharacters, ReadTwoBytesAsUtf16OrEucKr) {
  const auto utf16 = [](CharacterCode unit) {
    return std::string(characterOf(kTwoBytes | unit, Charset::Utf16).view());
  };
  EXPECT_EQ(utf16(0x0041), "A");
  EXPECT_EQ(utf16(0x00E9), "é");
  EXPECT_EQ(utf16(0xAC00), "가");
  EXPECT_EQ(utf16(0x0007), "_") << "would break a file";
  EXPECT_EQ(utf16(0xFFFF), "_");
  EXPECT_EQ(utf16(0xD83D), "") << "half a character";
  EXPECT_EQ(surrogatePair(kTwoBytes | 0xD83D, kTwoBytes | 0xDEA2).view(), "🚢");
  EXPECT_EQ(surrogatePair(kTwoBytes | 0xD83D, kTwoBytes | 0x0041).view(), "");

  const auto eucKr = [](CharacterCode pair) {
    return std::string(characterOf(kTwoBytes | pair, Charset::EucKr).view());
  };
  // The corners of the table: symbols, syllables, Chinese characters.
  EXPECT_EQ(eucKr(0xA1A2), "、");
  EXPECT_EQ(eucKr(0xB0A1), "가");
  EXPECT_EQ(eucKr(0xC8FE), "힝");
  EXPECT_EQ(eucKr(0xCAA1), "伽");
  EXPECT_EQ(eucKr(0xFDFE), "詰");
  EXPECT_EQ(eucKr(0xA2FE), "_") << "the table has nothing there";
  EXPECT_EQ(eucKr(0xADA1), "_");
  EXPECT_EQ(eucKr(0xB0A0), "_") << "outside of the table";
}

TEST(DtvccCodes, AreAsLongAsTheirGroupSays) {
  const auto length = [](std::initializer_list<std::uint8_t> bytes) {
    return codeLength(std::vector<std::uint8_t>(bytes));
  };
  EXPECT_EQ(length({0x41}), 1u);
  EXPECT_EQ(length({0xE9}), 1u);
  EXPECT_EQ(length({0x0D}), 1u);
  EXPECT_EQ(length({0x11}), 2u);
  EXPECT_EQ(length({0x18}), 3u);
  EXPECT_EQ(length({0x10}), 2u) << "more must come";
  EXPECT_EQ(length({0x10, 0x41}), 2u);
  EXPECT_EQ(length({0x10, 0xA0}), 2u);
  EXPECT_EQ(length({0x10, 0x07}), 2u);
  EXPECT_EQ(length({0x10, 0x08}), 3u);
  EXPECT_EQ(length({0x10, 0x1F}), 5u);
  EXPECT_EQ(length({0x10, 0x87}), 6u);
  EXPECT_EQ(length({0x10, 0x8F}), 7u);
  EXPECT_EQ(length({0x10, 0x90}), 3u) << "more must come";
  EXPECT_EQ(length({0x10, 0x9F, 0x1F}), 34u);
  EXPECT_EQ(length({0x87}), 1u);
  EXPECT_EQ(length({0x88}), 2u);
  EXPECT_EQ(length({0x91}), 4u);
  EXPECT_EQ(length({0x93}), 1u);
  EXPECT_EQ(length({0x97}), 5u);
  EXPECT_EQ(length({0x9F}), 7u);
}

}  // namespace
}  // namespace korr::encoding::subtitling::dtvcc
