// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cues/cue_time.h"
#include "cues/text_layout.h"
#include "files/srt_file.h"
#include "files/webvtt_file.h"
#include "testkit/cue_builder.h"
#include "tests/files/playable_text.h"

namespace korr::txsub {
namespace {

using model::CaptionColour;

// The cues of one subtitle, shown for a second.
std::string vttOf(model::Subtitle subtitle) {
  return webVttCues(cue(0, 1000, std::move(subtitle)));
}

TEST(WebVttFile, PlacesACaptionWhereItsRowAndColumnLie) {
  EXPECT_EQ(webVttCues(cue(1500, 3000, captions({captionRow(15, 4, "HELLO")}))),
            "00:00:01.500 --> 00:00:03.000 line:84.67% position:20% align:start\n"
            "HELLO\n\n");
}

// Players ignore settings that are no percentage from 0 to 100, and show the text elsewhere.
TEST(WebVttFile, NamesOnlyPlacesOnThePicture) {
  EXPECT_EQ(vttOf(captions({captionRow(-2, 0, "rolled away"),
                            captionRow(14, 28, std::string(60, ' ') + "far")})),
            "00:00:00.000 --> 00:00:01.000 line:79.33% position:90% align:start\n"
            "far\n\n");
}

TEST(WebVttFile, WritesStylesAsTagsAndDefaultColourClasses) {
  auto run = captionRun(0, "both");
  run.italic = true;
  run.underline = true;
  auto coloured = captionRun(0, "colour");
  coloured.foreground = CaptionColour::Green;
  coloured.background = CaptionColour::Blue;
  EXPECT_EQ(vttOf(captions({captionRow(1, {run}), captionRow(2, {coloured})})),
            "00:00:00.000 --> 00:00:01.000 line:10% position:10% align:start\n"
            "<u><i>both</i></u>\n"
            "<c.lime.bg_blue>colour</c>\n\n");
}

TEST(WebVttFile, EscapesMarkupAndLeavesControlCharactersOut) {
  EXPECT_THAT(vttOf(captions({captionRow(1, 0, "a<b> & -->"), captionRow(2, 0, "a\n\n\r\x01z")})),
              testing::EndsWith("\na&lt;b&gt; &amp; --&gt;\naz\n\n"));
}

TEST(WebVttFile, SplitsRowsThatStandApartAndKeepsTheirAlignment) {
  EXPECT_EQ(vttOf(captions({captionRow(1, 20, "TOP"), captionRow(14, 8, "centred line"),
                            captionRow(15, 11, "below.")})),
            "00:00:00.000 --> 00:00:01.000 line:10% position:60% align:start\n"
            "TOP\n\n"
            "00:00:00.000 --> 00:00:01.000 line:79.33% position:45% align:center\n"
            "centred line\n"
            "below.\n\n");
}

TEST(WebVttFile, MakesOneLineOfATeletextRowAndTrimsItsBox) {
  constexpr auto kDouble = TeletextSize::DoubleHeight;
  EXPECT_EQ(
      vttOf(teletext({{.number = 20,
                       .runs = {teletextRun(5, "   Wer", TeletextColour::Yellow, kDouble),
                                teletextRun(11, " da?  ", TeletextColour::White, kDouble)}},
                      {.number = 21, .runs = {teletextRun(5, "     ")}},
                      {.number = 22, .runs = {teletextRun(6, " Ich.", TeletextColour::Green)}}})),
      "00:00:00.000 --> 00:00:01.000 line:80% position:24% align:start\n"
      "<c.yellow>Wer</c> da?\n"
      "<c.lime>Ich.</c>\n\n");
}

TEST(PlayableFiles, HaveWideTeletextLettersWithoutTheCellsThatTheyCover) {
  auto wide = teletextRun(10, " a.b. .c.", TeletextColour::White, TeletextSize::DoubleWidth);
  for (std::size_t i = 2; i < wide.glyphs.size(); i += 2) wide.glyphs[i] = {};
  const auto subtitle = teletext({{.number = 20, .runs = {wide}}});
  EXPECT_EQ(srtText(subtitle), "ab c\n");
  const auto screen = layOut(subtitle);
  ASSERT_TRUE(screen.size() == 1 && screen[0].lines.size() == 1);
  EXPECT_EQ(screen[0].lines[0].column, 11u);
  EXPECT_EQ(screen[0].lines[0].columnCount, 8u);
}

// In WebVTT "start" is where a line begins to be read.
TEST(WebVttFile, PlacesLinesThatReadFromTheRightByTheSidesOfThePicture) {
  auto hebrew = teletextRun(3, " ");
  for (const char* letter : {"!", "ב", "א"}) hebrew.glyphs.emplace_back(std::string_view(letter));
  EXPECT_EQ(vttOf(teletext({{.number = 20, .runs = {hebrew}}})),
            "00:00:00.000 --> 00:00:01.000 line:80% position:18% align:left\nאב!\n\n");
  const auto mixed = vttOf(teletext(
      {{.number = 20, .runs = {hebrew}}, {.number = 21, .runs = {teletextRun(3, " ok.")}}}));
  EXPECT_THAT(mixed, testing::HasSubstr("align:start\nok.\n\n")) << "a cue has one direction";
}

TEST(PlayableFiles, SetTheBoxesOfATeletextRowApartByOneBlank) {
  const auto page = [] {
    return teletext({{.number = 20,
                      .runs = {teletextRun(7, " Wer da?   "),
                               teletextRun(20, "  Ich  bin's. ", TeletextColour::Yellow)}}});
  };
  EXPECT_EQ(vttOf(page()),
            "00:00:00.000 --> 00:00:01.000 line:80% position:50% align:center\n"
            "Wer da? <c.yellow>Ich bin's.</c>\n\n");
  EXPECT_EQ(srtText(page()), "Wer da? <font color=\"#ffff00\">Ich bin's.</font>\n");
}

TEST(PlayableFiles, SetWordsApartWhereACodeTookUpACell) {
  auto italic = captionRun(0, "very");
  italic.italic = true;
  EXPECT_EQ(
      srtText(captions({captionRow(15, {captionRun(0, "It is"), italic, captionRun(0, " good")})})),
      "It is <i>very</i> good\n");
  EXPECT_THAT(srtText(captions({captionRow(15, {captionRun(0, "YES"), captionRun(8, "NO")})})),
              testing::HasSubstr("YES     NO\n"))
      << "two speakers on one row";
}

TEST(SrtFile, WritesRowsAsLinesAndNothingForBlankOnes) {
  EXPECT_EQ(srtText(captions({captionRow(2, 3, "one & <two>"), captionRow(3, 0, "   "),
                              captionRow(9, 0, "three ")})),
            "one & <two>\nthree\n");
}

TEST(SrtFile, SaysWhatPlayersReadBesideTheTextUnlessPlain) {
  auto run = captionRun(0, "top -->");
  run.foreground = CaptionColour::Green;
  run.italic = true;
  const auto top = captions({captionRow(7, {run})});
  EXPECT_EQ(srtText(top), "{\\an8}<font color=\"#00ff00\"><i>top -- ></i></font>\n");
  EXPECT_EQ(srtText(top, SrtMarkup::Plain), "top -- >\n");
  EXPECT_EQ(srtText(captions({captionRow(1, 0, "a"), captionRow(8, 0, "b")})), "a\nb\n")
      << "row 8 reaches into the lower half";
}

// A style sheet cannot follow a cue.
TEST(WebVttFile, DefinesTheColoursThatItsCuesHave) {
  auto run = captionRun(0, "A");
  run.foreground = CaptionColour::Green;
  run.background = CaptionColour::Blue;
  const Cue coloured = cue(0, 1000, captions({captionRow(1, {run})}));
  const Cue white = cue(0, 1000, captions({captionRow(1, 0, "B")}));
  const PlayableRequest request{.format = PlayableFormat::WebVtt};
  EXPECT_THAT(playableText(request, {white, coloured}),
              testing::StartsWith("WEBVTT\n\nSTYLE\n::cue(.bg_blue) { background-color: blue }\n"
                                  "::cue(.lime) { color: lime }\n\n00:00:00.000"));
  EXPECT_THAT(playableText(request, {white}), testing::StartsWith("WEBVTT\n\n00:00:00.000"));
}

TEST(CueTimes, RoundToMillisecondsAndNeverToNothing) {
  const auto times = cueMilliseconds({.start = 5'000, .stop = 5'001, .subtitle = nullptr});
  EXPECT_EQ(times.start, 1U);
  EXPECT_EQ(times.stop, 2U);
  EXPECT_EQ(cueTimeText(360'000'001, ','), "100:00:00,001");
}

}  // namespace
}  // namespace korr::txsub
