#include <gtest/gtest.h>

#include <utility>

#include "tests/txsub/output/cue_builder.h"
#include "txsub/output/cue_time.h"
#include "txsub/output/srt_file.h"
#include "txsub/output/webvtt_file.h"

namespace korr::txsub {
namespace {

using model::CaptionColour;
using model::TeletextColour;
using model::TeletextSize;

model::TeletextText::Run teletextRun(std::uint32_t column, std::string_view text,
                                     TeletextColour colour = TeletextColour::White,
                                     TeletextSize size = TeletextSize::Normal) {
  return {.column = column, .colour = colour, .size = size, .glyphs = glyphs(text)};
}

TEST(WebVttFile, PlacesACaptionWhereItsRowAndColumnLie) {
  EXPECT_EQ(webVttCues(cue(1500, 3000, captions({captionRow(15, {captionRun(4, "HELLO")})}))),
            "00:00:01.500 --> 00:00:03.000 line:84.67% position:20% align:start\n"
            "HELLO\n"
            "\n");
}

// Players ignore settings that are no percentage from 0 to 100, and show the text elsewhere.
TEST(WebVttFile, NamesOnlyPlacesOnThePicture) {
  auto subtitle = captions({captionRow(-2, {captionRun(0, "rolled away")}),
                            captionRow(14, {captionRun(28, std::string(60, ' ') + "far")})});
  EXPECT_EQ(webVttCues(cue(0, 1000, std::move(subtitle))),
            "00:00:00.000 --> 00:00:01.000 line:79.33% position:90% align:start\n"
            "far\n"
            "\n");
}

TEST(WebVttFile, WritesStylesAsTagsAndDefaultColourClasses) {
  auto run = captionRun(0, "both");
  run.italic = true;
  run.underline = true;
  auto coloured = captionRun(0, "colour");
  coloured.foreground = CaptionColour::Green;
  coloured.background = CaptionColour::Blue;
  EXPECT_EQ(webVttCues(cue(0, 1000, captions({captionRow(1, {run}), captionRow(2, {coloured})}))),
            "00:00:00.000 --> 00:00:01.000 line:10% position:10% align:start\n"
            "<u><i>both</i></u>\n"
            "<c.lime.bg_blue>colour</c>\n"
            "\n");
}

TEST(WebVttFile, EscapesWhatWouldReadAsMarkup) {
  const auto text = webVttCues(cue(0, 1, captions({captionRow(1, {captionRun(0, "a<b> & -->")})})));
  EXPECT_NE(text.find("\na&lt;b&gt; &amp; --&gt;\n"), std::string::npos) << text;
}

TEST(WebVttFile, LeavesControlCharactersOut) {
  const auto text =
      webVttCues(cue(0, 1, captions({captionRow(1, {captionRun(0, "a\n\n\r\x01z")})})));
  EXPECT_NE(text.find("\naz\n\n"), std::string::npos) << text;
}

TEST(WebVttFile, SplitsRowsThatStandApartAndKeepsTheirAlignment) {
  EXPECT_EQ(webVttCues(cue(0, 1000,
                           captions({captionRow(1, {captionRun(20, "TOP")}),
                                     captionRow(14, {captionRun(8, "centred line")}),
                                     captionRow(15, {captionRun(11, "below.")})}))),
            "00:00:00.000 --> 00:00:01.000 line:10% position:60% align:start\n"
            "TOP\n"
            "\n"
            "00:00:00.000 --> 00:00:01.000 line:79.33% position:45% align:center\n"
            "centred line\n"
            "below.\n"
            "\n");
}

TEST(WebVttFile, MakesOneLineOfATeletextRowAndTrimsItsBox) {
  model::TeletextText page;
  page.rows.push_back(
      {.number = 20,
       .runs = {teletextRun(5, "   Wer", TeletextColour::Yellow, TeletextSize::DoubleHeight),
                teletextRun(11, " da?  ", TeletextColour::White, TeletextSize::DoubleHeight)}});
  page.rows.push_back({.number = 21, .runs = {teletextRun(5, "     ")}});
  page.rows.push_back({.number = 22, .runs = {teletextRun(6, " Ich.", TeletextColour::Green)}});
  EXPECT_EQ(webVttCues(cue(0, 1000, model::Subtitle(page))),
            "00:00:00.000 --> 00:00:01.000 line:80% position:24% align:start\n"
            "<c.yellow>Wer</c> da?\n"
            "<c.lime>Ich.</c>\n"
            "\n");
}

TEST(PlayableFiles, SetTheBoxesOfATeletextRowApartByOneBlank) {
  model::TeletextText page;
  page.rows.push_back({.number = 20,
                       .runs = {teletextRun(7, " Wer da?   "),
                                teletextRun(20, "  Ich  bin's. ", TeletextColour::Yellow)}});
  EXPECT_EQ(webVttCues(cue(0, 1000, model::Subtitle(page))),
            "00:00:00.000 --> 00:00:01.000 line:80% position:50% align:center\n"
            "Wer da? <c.yellow>Ich bin's.</c>\n"
            "\n");
  EXPECT_EQ(srtText(model::Subtitle(page)), "Wer da? Ich bin's.\n");
}

TEST(PlayableFiles, SetWordsApartWhereACodeTookUpACell) {
  auto italic = captionRun(0, "very");
  italic.italic = true;
  const auto subtitle =
      captions({captionRow(15, {captionRun(0, "It is"), italic, captionRun(0, " good")})});
  EXPECT_EQ(srtText(subtitle), "It is <i>very</i> good\n");
}

TEST(SrtFile, WritesRowsAsLinesAndNothingForBlankOnes) {
  EXPECT_EQ(srtText(captions({captionRow(2, {captionRun(3, "one & <two>")}),
                              captionRow(3, {captionRun(0, "   ")}),
                              captionRow(9, {captionRun(0, "three ")})})),
            "one & <two>\nthree\n");
}

TEST(CueTimes, RoundToMillisecondsAndNeverToNothing) {
  const auto times = cueMilliseconds({.start = 14'999, .stop = 15'000, .subtitle = nullptr});
  EXPECT_EQ(times.start, 1U);
  EXPECT_EQ(times.stop, 2U);
  EXPECT_EQ(cueTimeText(360'000'001, ','), "100:00:00,001");
}

}  // namespace
}  // namespace korr::txsub
