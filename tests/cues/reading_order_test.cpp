// SPDX-License-Identifier: MIT
#include "cues/reading_order.h"

#include <gtest/gtest.h>

#include "cues/text_layout.h"
#include "testkit/cue_builder.h"

namespace korr::txsub {
namespace {

/// What a line that stands so on the screen reads like.
std::string read(std::string_view onScreen) {
  std::vector<TextSpan> spans{{.text = std::string(onScreen)}};
  toReadingOrder(spans);
  std::string text;
  for (const auto& span : spans) text += span.text;
  return text;
}

TEST(ReadingOrder, TurnsHebrewAround) {
  EXPECT_EQ(read(".למנהמ בוט ברע"), "ערב טוב מהנמל.");
  EXPECT_EQ(read("?(הגלפהה) ןמז המכ"), "כמה זמן (ההפלגה)?") << "brackets turn too";
  EXPECT_EQ(read("Plain text (left to right), 12:30."), "Plain text (left to right), 12:30.");
  EXPECT_EQ(read("Ж ♪"), "Ж ♪");
}

// What a player shows of the reading order is the line again (UAX #9).
TEST(ReadingOrder, KeepsNumbersAndForeignWordsTogether) {
  EXPECT_EQ(read(".12:30-ב BBC News-ב םויה"), "היום ב-BBC News ב-12:30.");
  EXPECT_EQ(read("50% ,1,000 :םיזוחא"), "אחוזים: 1,000, 50%");
  EXPECT_EQ(read("םולש hello world 5 ,בוט"), "טוב, hello world 5 שלום")
      << "a number goes with words";
  EXPECT_EQ(read("רדסב (BBC) ,5"), "\u200F5, (BBC) בסדר") << "brackets go with what they hold (N0)";
  EXPECT_EQ(read("The word is אבג, see?"), "The word is גבא, see?") << "mostly left to right";
}

TEST(ReadingOrder, MarksLinesThatBeginWithTheOtherDirection) {
  EXPECT_EQ(read("בוט ברע BBC"), "\u200FBBC ערב טוב");
  EXPECT_EQ(read("אב is a Hebrew word"), "\u200Eבא is a Hebrew word");
}

TEST(ReadingOrder, MakesPlainLettersOfArabicForms) {
  EXPECT_EQ(read("\uFEE1\uFEFC\uFEB3"), "سلام") << "a ligature is two letters";
  EXPECT_EQ(read("\uFEEA\uFED3 \uFEF2\uFE92\uFEE7"), "نبي فه");
  EXPECT_EQ(read("\u0661\u0662 \u060C\uFEFB"), "لا، \u0661\u0662")
      << "digits are read from left to right";
}

TEST(ReadingOrder, KeepsDiacriticsWithTheirLetters) {
  EXPECT_EQ(read("ב\u05B7א"), "אב\u05B7");
}

TEST(ReadingOrder, KeepsTheStyleOfEachCharacter) {
  const auto screen = layOut(teletext({{.number = 20,
                                        .runs = {teletextRun(5, " "), teletextRun(6, " (a), 12"),
                                                 teletextRun(14, " x", TeletextColour::Yellow)}}}));
  ASSERT_EQ(screen.size(), 1u);
  EXPECT_EQ(screen[0].lines.at(0).direction, TextDirection::LeftToRight);

  auto white = teletextRun(6, "  ");
  auto yellow = teletextRun(8, " ", TeletextColour::Yellow);
  for (const char* letter : {"!", "ב", "א"}) white.glyphs.emplace_back(std::string_view(letter));
  for (const char* letter : {"ד", "ג"}) yellow.glyphs.emplace_back(std::string_view(letter));
  yellow.column = 11;
  const auto hebrew = layOut(teletext({{.number = 20, .runs = {white, yellow}}}));
  const auto& line = hebrew.at(0).lines.at(0);
  EXPECT_EQ(line.direction, TextDirection::RightToLeft);
  EXPECT_EQ(line.column, 8u) << "it stays where it stood";
  ASSERT_EQ(line.spans.size(), 2u);
  EXPECT_EQ(line.spans[0].text + '|' + line.spans[1].text, "גד| אב!");
  EXPECT_EQ(line.spans[0].foreground, TextColour::Yellow);
}

}  // namespace
}  // namespace korr::txsub
