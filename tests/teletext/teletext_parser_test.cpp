// SPDX-License-Identifier: MIT
#include "teletext/teletext_parser.h"

#include <gtest/gtest.h>

#include "testkit/encoders/teletext_encoder.h"
#include "tests/teletext/page_text.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

using encoders::headerPacket;
using encoders::rowPacket;
using encoders::teletextDataField;
using encoders::TeletextHeader;
using encoders::TeletextPacket;
using encoders::TeletextTriplet;
using Bytes = std::vector<std::uint8_t>;
using Packets = std::vector<TeletextPacket>;

constexpr std::uint32_t kPage = 0x888;

// Codes of rows stand as \v for start box, \n for end box and, in octal, \1 to \7 for colours and
// \14 to \17 for sizes.
constexpr std::string_view kBox = "\v\vab\n\n";

TeletextPacket enhancements(std::uint32_t designation,
                            const std::vector<TeletextTriplet>& triplets) {
  return encoders::enhancementPacket(kPage, designation, triplets);
}

class TeletextParserTest : public testing::Test {
 protected:
  void feed(const Bytes& field) {
    parser_.parse(field.data(), static_cast<std::int64_t>(field.size()), ++time_, true);
  }
  void feed(const Packets& packets) { feed(teletextDataField(packets)); }

  std::string shown() { return describe(parser_.currentSubtitle(time_)); }

  /// What a page of these packets after a header looks like.
  std::string page(Packets packets, const TeletextHeader& header = {.page = kPage}) {
    packets.insert(packets.begin(), headerPacket(header));
    feed(packets);
    return shown();
  }

  /// What row 20 of a page looks like.
  std::string row(std::string_view codes, const TeletextHeader& header = {.page = kPage}) {
    const std::string lines = page({rowPacket(kPage, 20, codes)}, header);
    EXPECT_EQ(lines.substr(0, 3), "20:");
    return lines.substr(3, lines.find('\n') - 3);
  }

  TeletextParser parser_{kPage, 0};
  MediaTime time_ = 0;
};

TEST_F(TeletextParserTest, BoxesOpenAtTheSecondStartAndCloseAfterTheFirstEnd) {
  EXPECT_EQ(row("ab\v\vcd\n\nef"), " 3/7/12 ' cd '");
  EXPECT_EQ(row("ab\vcd"), "") << "one code opens nothing";
  EXPECT_EQ(row("\v\vab\vcd\n\n"), " 1/7/12 ' ab'") << "one code within a box closes it";
  EXPECT_EQ(row("\v\v\vab\n\n"), " 1/7/12 '  ab '");
  EXPECT_EQ(row("\v\vab\ncd\n\n"), " 1/7/12 ' ab cd '") << "one end code closes nothing";
  EXPECT_EQ(row("\v\vab\n\bcd"), " 1/7/12 ' ab '") << "flash after an end";
  EXPECT_EQ(row("\v\vab\n\tcd"), " 1/7/12 ' ab '") << "steady after an end";
  EXPECT_EQ(row("\v\vab\b\ncd\n\n"), " 1/7/12 ' ab  cd '") << "but not before one";
  EXPECT_EQ(row(std::string(36, ' ') + "\v\vab"), " 37/7/12 ' ab'") << "open to the edge";
}

TEST_F(TeletextParserTest, ColoursAndSizesOpenRunsWithTheirOwnCell) {
  EXPECT_EQ(row("\v\vab\3cd\3ef\7g\n\n"), " 1/7/12 ' ab' 4/3/12 ' cd ef' 10/7/12 ' g '");
  EXPECT_EQ(row("\15\v\vab\14cd\16e\17f\n\n"),
            " 2/7/13 ' ab' 5/7/12 ' cd' 8/7/14 ' e' 10/7/15 ' f '");
  EXPECT_EQ(row("\2\v\v\6ab\n\n"), " 2/2/12 ' ' 3/6/12 ' ab '");
  EXPECT_EQ(row({"\v\v\0\21\37a\n\n", 8}), " 1/7/12 '    a '") << "mosaic codes are blanks";
  EXPECT_EQ(row("\v\vab\n\n  \v\vcd\n\n"), " 1/7/12 ' ab  cd '") << "one run of two boxes";
  EXPECT_EQ(row("\v\vab\n\n\1\v\vcd\n\n"), " 1/7/12 ' ab ' 8/1/12 ' cd '");
}

TEST_F(TeletextParserTest, OnlyRowsAfterASubtitleHeaderOfThePageAreShown) {
  const auto line = rowPacket(kPage, 5, kBox);
  EXPECT_EQ(page({line}, {.page = kPage, .subtitle = false}), "");
  EXPECT_EQ(page({line}, {.page = 0x887}), "");
  EXPECT_EQ(page({rowPacket(0x788, 5, kBox)}), "") << "another magazine";
  EXPECT_EQ(page({line, headerPacket({.page = 0x889}), rowPacket(kPage, 6, "\v\vcd\n\n")}),
            "5: 1/7/12 ' ab '\n");
  EXPECT_EQ(page({line, headerPacket({.page = 0x788}), rowPacket(kPage, 6, "\v\vcd\n\n")}),
            "5: 1/7/12 ' ab '\n6: 1/7/12 ' cd '\n")
      << "headers of other magazines do not matter";
  EXPECT_EQ(page({line, rowPacket(kPage, 25, kBox), rowPacket(kPage, 30, kBox)}),
            "5: 1/7/12 ' ab '\n");
}

TEST_F(TeletextParserTest, EveryHeaderOfThePageEmptiesIt) {
  page({rowPacket(kPage, 5, kBox)});
  EXPECT_EQ(page({rowPacket(kPage, 6, kBox)}, {.page = kPage, .erasePage = false}),
            "6: 1/7/12 ' ab '\n");
  EXPECT_EQ(page({}, {.page = kPage, .erasePage = false, .subtitle = false}), "");
}

TEST_F(TeletextParserTest, AHeaderShowsItsOwnRowUnlessSuppressed) {
  EXPECT_EQ(page({}, {.page = kPage, .suppressHeader = false, .text = kBox}), "0: 9/7/12 ' ab '\n");
  EXPECT_EQ(page({}, {.page = kPage, .text = kBox}), "");
}

TEST_F(TeletextParserTest, MagazineEightIsMagazineZeroOnAir) {
  TeletextParser parser(0x088, 0);
  const auto field =
      teletextDataField(Packets{headerPacket({.page = kPage}), rowPacket(kPage, 20, kBox)});
  parser.parse(field.data(), static_cast<std::int64_t>(field.size()), 1, true);
  EXPECT_EQ(describe(parser.currentSubtitle(1)), "20: 1/7/12 ' ab '\n");
}

TEST_F(TeletextParserTest, NationalLettersFollowTheHeadersOption) {
  EXPECT_EQ(row("\v\v[{|}~\n\n", {.page = kPage, .nationalOption = 1}), " 1/7/12 ' Ääöüß '");
  EXPECT_EQ(row("\v\v[{|}~\n\n", {.page = kPage, .nationalOption = 4}), " 1/7/12 ' ëâôûç '");
  EXPECT_EQ(row("\v\va[{|}~b\x7F\n\n", {.page = kPage, .nationalOption = 7}), " 1/7/12 ' ab■ '")
      << "no letters there: no cells";
}

TEST_F(TeletextParserTest, EnhancementsReplaceTheBoxedCellsOfLaterRows) {
  const auto packet = enhancements(0, {TeletextTriplet::row(20),
                                       {3, 0x12, 'e'},
                                       {4, 0x0F, 'q'},
                                       {5, 0x09, 'X'},
                                       {6, 0x10, '*'},
                                       {30, 0x0F, 'y'},
                                       {7, 0x01, 'Y'},
                                       TeletextTriplet::row(24),
                                       {3, 0x18, 'o'},
                                       TeletextTriplet::termination(),
                                       {5, 0x0F, 'y'}});
  const std::string_view codes = "\v\v a....b\n\n";
  EXPECT_EQ(page({packet, rowPacket(kPage, 20, codes), rowPacket(kPage, 24, codes)}),
            "20: 1/7/12 '  éæX@.b '\n24: 1/7/12 '  ö....b '\n")
      << "outside a box nothing opens";
  EXPECT_EQ(page({rowPacket(kPage, 20, codes), packet}), "20: 1/7/12 '  a....b '\n") << "too late";
  EXPECT_EQ(page({packet, headerPacket({.page = kPage}), rowPacket(kPage, 20, codes)}),
            "20: 1/7/12 '  a....b '\n")
      << "the next header ends them";
}

// EN 300 706, 12.3.4: packet 26 names letters of the basic set, or of one that it designates.
TEST_F(TeletextParserTest, EnhancementsNameLettersWithoutTheNationalOption) {
  constexpr TeletextHeader kGerman{.page = kPage, .nationalOption = 1};
  const auto packet = enhancements(0, {TeletextTriplet::row(20),
                                       {2, 0x10, '@'},
                                       {3, 0x09, '['},
                                       {4, 0x10, '{'},
                                       {5, 0x08, 4 << 3 | 4},  // Russian
                                       {5, 0x09, 'B'},
                                       {6, 0x0F, '['},
                                       {7, 0x08, 5 << 3},  // nothing: the page's own
                                       {7, 0x0F, '['},
                                       TeletextTriplet::row(21),
                                       {2, 0x09, 'B'}});
  EXPECT_EQ(
      page({packet, rowPacket(kPage, 20, "\v\v@[{....\n\n"), rowPacket(kPage, 21, "\v\v.@\n\n")},
           kGerman),
      "20: 1/7/12 ' @[{Бß . '\n21: 1/7/12 ' B§ '\n");
}

// EN 300 706, 12.3.3, table 27.
TEST_F(TeletextParserTest, EnhancementsFollowTheAddressesOfRows) {
  const auto shownAfter = [this](const std::vector<TeletextTriplet>& triplets) {
    return page({enhancements(0, triplets), rowPacket(kPage, 20, "\v\va\n\n"),
                 rowPacket(kPage, 21, "\v\va\n\n")});
  };
  const TeletextTriplet letter{2, 0x0F, 'q'};
  const auto row20 = TeletextTriplet::row(20);
  EXPECT_EQ(shownAfter({row20, {61, 0x01, 0}, letter}), "20: 1/7/12 ' a '\n21: 1/7/12 ' æ '\n")
      << "a full row colour moves";
  EXPECT_EQ(shownAfter({row20, {63, 0x07, 0}, letter}), "20: 1/7/12 ' a '\n21: 1/7/12 ' a '\n");
  EXPECT_EQ(shownAfter({row20, {62, 0x07, 0}, letter}), "20: 1/7/12 ' æ '\n21: 1/7/12 ' a '\n")
      << "row 0 has one address";
  for (const std::uint32_t definition : {0x15u, 0x16u, 0x17u}) {
    EXPECT_EQ(shownAfter({row20, {40, definition, 0}, letter}),
              "20: 1/7/12 ' a '\n21: 1/7/12 ' a '\n")
        << "an object's letters are not the page's";
  }
  EXPECT_EQ(shownAfter({row20, {40, 0x14, 0}, letter}), "20: 1/7/12 ' æ '\n21: 1/7/12 ' a '\n");
}

TEST_F(TeletextParserTest, EnhancementsOfARowWhoseAddressIsLostAreIgnored) {
  constexpr std::size_t kTriplet = 3;
  const auto shownAfter = [&](std::size_t byte, std::uint8_t wrongBits, std::uint32_t column) {
    auto packet = enhancements(0, {TeletextTriplet::row(20),
                                   {3, 0x0F, 'q'},
                                   TeletextTriplet::row(21),
                                   {column, 0x0F, 'y'},
                                   TeletextTriplet::row(22),
                                   {2, 0x0F, 'q'}});
    packet[3 + 2 * kTriplet + byte] ^= wrongBits;
    return page({packet, rowPacket(kPage, 20, "\v\vaaa\n\n"), rowPacket(kPage, 21, "\v\vaaa\n\n"),
                 rowPacket(kPage, 22, "\v\va\n\n")});
  };
  const std::string_view lost = "20: 1/7/12 ' aæa '\n21: 1/7/12 ' aaa '\n22: 1/7/12 ' æ '\n";
  EXPECT_EQ(shownAfter(2, 0x03, 4), lost) << "it still looks like a row's address";
  EXPECT_EQ(shownAfter(1, 0xC0, 2), lost) << "it looks like a column's, but columns go back";
}

TEST_F(TeletextParserTest, EnhancementsSurviveDamageToOtherTriplets) {
  auto packet = enhancements(15, {TeletextTriplet::row(20), {2, 0x0F, 'q'}, {3, 0x0F, 'y'}});
  packet[3 + 3] ^= 0x03;  // two bits of the second
  packet[3 + 6] ^= 0x01;  // one of the third
  EXPECT_EQ(page({packet, rowPacket(kPage, 20, "\v\vaa\n\n")}), "20: 1/7/12 ' aø '\n");
}

TEST_F(TeletextParserTest, ChangesAreToldAgainstWhatWasYielded) {
  EXPECT_FALSE(parser_.hasChanged());
  const std::string first = page({rowPacket(kPage, 20, kBox)});
  EXPECT_FALSE(parser_.hasChanged());

  feed({headerPacket({.page = kPage}), rowPacket(kPage, 20, kBox)});
  EXPECT_FALSE(parser_.hasChanged()) << "sent again";
  feed({headerPacket({.page = kPage}), rowPacket(kPage, 20, " \v\vab\n\n")});
  EXPECT_TRUE(parser_.hasChanged()) << "moved by a column";
  EXPECT_TRUE(parser_.hasChanged());

  EXPECT_EQ(describe(parser_.currentSubtitle(time_ - 1)), first) << "another time, the old page";
  EXPECT_TRUE(parser_.hasChanged());
  EXPECT_EQ(shown(), "20: 2/7/12 ' ab '\n");
  EXPECT_FALSE(parser_.hasChanged());
}

TEST_F(TeletextParserTest, PayloadsAndUnitsOfOtherKindsAreSkipped) {
  const Packets packets = {headerPacket({.page = kPage}), rowPacket(kPage, 20, kBox)};
  const std::string expected = "20: 1/7/12 ' ab '\n";
  for (const int identifier : {0x10, 0x0F, 0x1F, 0x20}) {
    feed({headerPacket({.page = kPage})});
    feed(teletextDataField(packets, encoders::kEbuTeletext, static_cast<std::uint8_t>(identifier)));
    EXPECT_EQ(shown(), identifier / 16 == 1 ? expected : "")
        << identifier << ": also the time of an ignored payload counts";
  }
  feed(teletextDataField(packets, 0xC0));
  EXPECT_EQ(shown(), "");

  auto cut = teletextDataField(packets);
  cut.pop_back();
  feed(cut);
  EXPECT_EQ(shown(), "") << "a unit that is cut short";

  auto field = teletextDataField(packets);
  for (const std::size_t unit : {1u, 47u}) field[unit + 1] = 0;  // data_unit_length
  feed(field);
  EXPECT_EQ(shown(), expected) << "the step is always 46 bytes";
}

// A wrong bit costs one character at the most where Hamming codes do not mend it.
TEST_F(TeletextParserTest, ASingleWrongBitChangesNoMoreThanOneCharacter) {
  const Packets packets = {headerPacket({.page = kPage}),
                           enhancements(0, {TeletextTriplet::row(20), {3, 0x0F, 'q'}}),
                           rowPacket(kPage, 20, kBox)};
  const auto field = teletextDataField(packets);
  feed(field);
  EXPECT_EQ(shown(), "20: 1/7/12 ' aæ '\n");
  constexpr std::size_t kUnit = 46;
  constexpr std::size_t kPrefix = 4;  // data_unit_id to framing code
  for (std::size_t bit = 8; bit < field.size() * 8; ++bit) {
    const std::size_t inUnit = (bit / 8 - 1) % kUnit;
    if (inUnit < kPrefix) continue;
    auto damaged = field;
    damaged[bit / 8] ^= static_cast<std::uint8_t>(0x80 >> bit % 8);
    feed(damaged);
    const bool isText = bit / 8 >= 1 + 2 * kUnit + kPrefix + 2;
    const std::size_t column = inUnit - kPrefix - 2;
    const bool isLetter = isText && column == 2;
    if (isText && column <= 5 && !isLetter) continue;  // what makes and fills the box
    EXPECT_EQ(shown(), isLetter ? "20: 1/7/12 ' ■æ '\n" : "20: 1/7/12 ' aæ '\n") << "bit " << bit;
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
