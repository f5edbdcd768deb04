#include "teletext/teletext_parser.h"

#include <gtest/gtest.h>

#include "samples/encoders/teletext_encoder.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

using encoders::enhancementPacket;
using encoders::headerPacket;
using encoders::rowPacket;
using encoders::teletextDataField;
using encoders::TeletextHeader;
using encoders::TeletextPacket;
using encoders::TeletextTriplet;
using Bytes = std::vector<std::uint8_t>;
using Packets = std::vector<TeletextPacket>;

constexpr std::uint32_t kPage = 0x888;

/// A page as lines such as "20: 4/7/12 'text'": row, then each run's column, colour, size and text.
std::string describe(const Subtitle& subtitle) {
  std::string result;
  for (const auto& row : subtitle.teletextText()->rows) {
    result += std::to_string(row.number) + ":";
    for (const auto& run : row.runs) {
      result += ' ' + std::to_string(run.column) + '/' +
                std::to_string(static_cast<std::uint32_t>(run.colour)) + '/' +
                std::to_string(static_cast<std::uint32_t>(run.size)) + " '";
      for (const auto& glyph : run.glyphs) result += glyph.view();
      result += '\'';
    }
    result += '\n';
  }
  return result;
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

  std::string row(std::string_view codes, const TeletextHeader& header = {.page = kPage}) {
    return page({rowPacket(kPage, 20, codes)}, header);
  }

  TeletextParser parser_{kPage, 0};
  MediaTime time_ = 0;
};

TEST_F(TeletextParserTest, BoxesOpenAtTheSecondStartAndCloseAfterTheFirstEnd) {
  EXPECT_EQ(row("ab\v\vcd\n\nef"), "20: 3/7/12 ' cd '\n");
  EXPECT_EQ(row("ab\vcd"), "20:\n") << "one code opens nothing";
  EXPECT_EQ(row("\v\vab\vcd\n\n"), "20: 1/7/12 ' ab'\n") << "one code within a box closes it";
  EXPECT_EQ(row("\v\v\vab\n\n"), "20: 1/7/12 '  ab '\n");
  EXPECT_EQ(row("\v\vab\ncd\n\n"), "20: 1/7/12 ' ab cd '\n") << "one end code closes nothing";
  EXPECT_EQ(row("\v\vab\n\x08"
                "cd"),
            "20: 1/7/12 ' ab '\n")
      << "flash after an end";
  EXPECT_EQ(row("\v\vab\n\x09"
                "cd"),
            "20: 1/7/12 ' ab '\n")
      << "steady after an end";
  EXPECT_EQ(row("\v\vab\x08\ncd\n\n"), "20: 1/7/12 ' ab  cd '\n") << "but not before one";
  EXPECT_EQ(row(std::string(36, ' ') + "\v\vab"), "20: 37/7/12 ' ab'\n") << "open to the edge";
}

TEST_F(TeletextParserTest, ASecondBoxContinuesTheRunUnlessColourOrSizeDiffer) {
  EXPECT_EQ(row("\v\vab\n\n  \v\vcd\n\n"), "20: 1/7/12 ' ab  cd '\n");
  EXPECT_EQ(row("\v\vab\n\n\x01\v\vcd\n\n"), "20: 1/7/12 ' ab ' 8/1/12 ' cd '\n");
}

TEST_F(TeletextParserTest, ColoursAndSizesOpenRunsWithTheirOwnCell) {
  EXPECT_EQ(row("\v\v"
                "ab\x03"
                "cd\x03"
                "ef\x07g\n\n"),
            "20: 1/7/12 ' ab' 4/3/12 ' cd ef' 10/7/12 ' g '\n");
  EXPECT_EQ(row("\x0D\v\v"
                "ab\x0C"
                "cd\x0E"
                "e\x0F"
                "f\n\n"),
            "20: 2/7/13 ' ab' 5/7/12 ' cd' 8/7/14 ' e' 10/7/15 ' f '\n");
  EXPECT_EQ(row("\x02\v\v\x06"
                "ab\n\n"),
            "20: 2/2/12 ' ' 3/6/12 ' ab '\n");
  EXPECT_EQ(row(std::string("\v\v") + '\0' +
                "\x11\x1F"
                "a\n\n"),
            "20: 1/7/12 '    a '\n")
      << "mosaic codes are blanks";
}

TEST_F(TeletextParserTest, OnlyRowsAfterASubtitleHeaderOfThePageAreShown) {
  const auto line = rowPacket(kPage, 5, "\v\vab\n\n");
  EXPECT_EQ(page({line}, {.page = kPage, .subtitle = false}), "");
  EXPECT_EQ(page({line}, {.page = 0x887}), "");
  EXPECT_EQ(page({rowPacket(0x788, 5, "\v\vab\n\n")}), "") << "another magazine";
  EXPECT_EQ(page({line, headerPacket({.page = 0x889}), rowPacket(kPage, 6, "\v\vcd\n\n")}),
            "5: 1/7/12 ' ab '\n");
  EXPECT_EQ(page({line, headerPacket({.page = 0x788}), rowPacket(kPage, 6, "\v\vcd\n\n")}),
            "5: 1/7/12 ' ab '\n6: 1/7/12 ' cd '\n")
      << "headers of other magazines do not matter";
  EXPECT_EQ(page({line, rowPacket(kPage, 25, "\v\vab\n\n"), rowPacket(kPage, 30, "\v\vab\n\n")}),
            "5: 1/7/12 ' ab '\n");
}

TEST_F(TeletextParserTest, EveryHeaderOfThePageEmptiesIt) {
  page({rowPacket(kPage, 5, "\v\vab\n\n")});
  EXPECT_EQ(page({rowPacket(kPage, 6, "\v\vcd\n\n")}, {.page = kPage, .erasePage = false}),
            "6: 1/7/12 ' cd '\n");
  EXPECT_EQ(page({}, {.page = kPage, .erasePage = false, .subtitle = false}), "");
}

TEST_F(TeletextParserTest, AHeaderShowsItsOwnRowUnlessSuppressed) {
  const std::string_view codes = "\v\vab\n\n";
  EXPECT_EQ(page({}, {.page = kPage, .suppressHeader = false, .text = codes}),
            "0: 9/7/12 ' ab '\n");
  EXPECT_EQ(page({}, {.page = kPage, .text = codes}), "");
}

TEST_F(TeletextParserTest, MagazineEightIsMagazineZeroOnAir) {
  TeletextParser parser(0x088, 0);
  const auto field =
      teletextDataField(Packets{headerPacket({.page = 0x888}), rowPacket(0x888, 20, "\v\vab\n\n")});
  parser.parse(field.data(), static_cast<std::int64_t>(field.size()), 1, true);
  EXPECT_EQ(describe(parser.currentSubtitle(1)), "20: 1/7/12 ' ab '\n");
}

TEST_F(TeletextParserTest, NationalLettersFollowTheHeadersOption) {
  EXPECT_EQ(row("\v\v[{|}~\n\n", {.page = kPage, .nationalOption = 1}), "20: 1/7/12 ' Ääöüß '\n");
  EXPECT_EQ(row("\v\v[{|}~\n\n", {.page = kPage, .nationalOption = 4}), "20: 1/7/12 ' ëâôûç '\n");
  EXPECT_EQ(row("\v\va[{|}~b\x7F\n\n", {.page = kPage, .nationalOption = 7}),
            "20: 1/7/12 ' ab■ '\n")
      << "no letters there: no cells";
}

TEST_F(TeletextParserTest, EnhancementsReplaceTheBoxedCellsOfLaterRows) {
  const std::vector<TeletextTriplet> triplets = {TeletextTriplet::row(20),
                                                 {3, 0x12, 'e'},
                                                 {4, 0x0F, 'q'},
                                                 {5, 0x09, 'X'},
                                                 {6, 0x10, '*'},
                                                 {30, 0x0F, 'y'},
                                                 {7, 0x01, 'Y'},
                                                 TeletextTriplet::row(24),
                                                 {3, 0x18, 'o'},
                                                 TeletextTriplet::termination(),
                                                 {5, 0x0F, 'y'}};
  const auto enhancements = enhancementPacket(kPage, 0, triplets);
  const std::string_view codes = "\v\v a....b\n\n";
  EXPECT_EQ(page({enhancements, rowPacket(kPage, 20, codes), rowPacket(kPage, 24, codes)}),
            "20: 1/7/12 '  éæX@.b '\n24: 1/7/12 '  ö....b '\n")
      << "outside a box nothing opens";
  EXPECT_EQ(page({rowPacket(kPage, 20, codes), enhancements}), "20: 1/7/12 '  a....b '\n")
      << "too late";
  EXPECT_EQ(page({enhancements, headerPacket({.page = kPage}), rowPacket(kPage, 20, codes)}),
            "20: 1/7/12 '  a....b '\n")
      << "the next header ends them";
}

TEST_F(TeletextParserTest, EnhancementsSurviveDamageToOtherTriplets) {
  auto enhancements = enhancementPacket(
      kPage, 15,
      std::vector<TeletextTriplet>{TeletextTriplet::row(20), {2, 0x0F, 'q'}, {3, 0x0F, 'y'}});
  enhancements[3 + 3] ^= 0x03;  // two bits of the second
  enhancements[3 + 6] ^= 0x01;  // one of the third
  EXPECT_EQ(page({enhancements, rowPacket(kPage, 20, "\v\vaa\n\n")}), "20: 1/7/12 ' aø '\n");
}

TEST_F(TeletextParserTest, ChangesAreToldAgainstWhatWasYielded) {
  EXPECT_FALSE(parser_.hasChanged());
  const std::string first = row("\v\vab\n\n");
  EXPECT_FALSE(parser_.hasChanged());

  feed({headerPacket({.page = kPage}), rowPacket(kPage, 20, "\v\vab\n\n")});
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
  const Packets packets = {headerPacket({.page = kPage}), rowPacket(kPage, 20, "\v\vab\n\n")};
  const std::string expected = "20: 1/7/12 ' ab '\n";
  for (const std::uint8_t identifier : {std::uint8_t{0x10}, std::uint8_t{0x1F}}) {
    feed(teletextDataField(packets, encoders::kEbuTeletext, identifier));
    EXPECT_EQ(shown(), expected);
    feed({headerPacket({.page = kPage})});
    EXPECT_EQ(shown(), "");
  }
  for (const std::uint8_t identifier : {std::uint8_t{0x0F}, std::uint8_t{0x20}}) {
    feed(teletextDataField(packets, encoders::kEbuTeletext, identifier));
    EXPECT_EQ(shown(), "") << "also the time of an ignored payload counts";
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
  const Packets packets = {
      headerPacket({.page = kPage}),
      enhancementPacket(kPage, 0,
                        std::vector<TeletextTriplet>{TeletextTriplet::row(20), {3, 0x0F, 'q'}}),
      rowPacket(kPage, 20, "\v\vab\n\n")};
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
    const std::string result = shown();
    if (!isText || column > 5) {
      EXPECT_EQ(result, "20: 1/7/12 ' aæ '\n") << "bit " << bit;
    } else if (column == 2) {
      EXPECT_EQ(result, "20: 1/7/12 ' ■æ '\n") << "bit " << bit;
    }
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
