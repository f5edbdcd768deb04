// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/timed_text/writer_bench.h"
#include "timed_text/converter_to_webvtt.h"
#include "timed_text/converter_to_youtube_srt.h"

namespace korr::encoding::subtitling::ttml {
namespace {

using WebVtt = WriterBench<ConverterToWebVtt>;
using Srt = WriterBench<ConverterToYoutubeSrt>;

TeletextText::Run teletextRun(std::string_view ascii) {
  return {.column = 0, .glyphs = glyphs(ascii)};
}

CaptionText::TextRun captionRun(std::string_view ascii, bool underline = false,
                                bool italic = false) {
  return {.glyphs = glyphs(ascii), .underline = underline, .italic = italic};
}

CaptionText captions(std::vector<std::vector<CaptionText::TextRun>> rows) {
  CaptionText text;
  for (auto& runs : rows) text.rows.emplace_back().runs = std::move(runs);
  return text;
}

TEST(WebVttWriter, WritesEveryTeletextRunAsALineWithoutItsFirstCell) {
  const TeletextText page{
      {{.number = 12, .runs = {teletextRun("XHELLO"), teletextRun(""), teletextRun("X")}},
       {.number = 14, .runs = {{.glyphs = {GlyphText("é"), GlyphText("ü"), GlyphText("€")}}}}}};
  EXPECT_EQ(WebVtt().convert(page), "line:50%\nHELLO\n\nü€\n");
}

TEST(WebVttWriter, PlacesATeletextPageByItsHighestRow) {
  const auto rowsAt = [](std::vector<std::int32_t> numbers) {
    TeletextText page;
    for (const auto number : numbers) page.rows.push_back({.number = number, .runs = {}});
    return WebVtt().convert(page);
  };
  EXPECT_EQ(rowsAt({2, 20}), "line:8%\n");
  EXPECT_EQ(rowsAt({20, 2}), "line:8%\n");
  EXPECT_EQ(rowsAt({24}), "line:100%\n");
  EXPECT_EQ(rowsAt({0}), "line:0%\n");
  EXPECT_EQ(rowsAt({}), "");
}

TEST(WebVttWriter, WritesCaptionRowsAsLinesWithTagsAroundEachRun) {
  EXPECT_EQ(WebVtt().convert(captions({{captionRun("A", true, true)}})),
            "line:100%\n<u><i>A</i></u>\n");
  EXPECT_EQ(WebVtt().convert(captions(
                {{captionRun("a<"), captionRun("b", false, true)}, {}, {captionRun("c", true)}})),
            "line:100%\na<<i>b</i>\n\n<u>c</u>\n");
}

TEST(WebVttWriter, WritesNothingForACaptionScreenWithoutText) {
  EXPECT_EQ(WebVtt().convert(captions({})), "");
  EXPECT_EQ(WebVtt().convert(captions({{}, {captionRun("")}})), "");
  EXPECT_EQ(WebVtt().convert(captions({{captionRun("", true)}})), "line:100%\n<u></u>\n");
}

TEST(SrtWriter, EndsEveryCaptionRowAndWritesNoStyle) {
  EXPECT_EQ(Srt().convert(captions(
                {{captionRun("X", true), captionRun("Y", false, true)}, {}, {captionRun("Z")}})),
            "XY<br><br>Z<br>");
  EXPECT_EQ(Srt().convert(captions({})), "");
}

TEST(TextWriters, RefuseWhatTheyCannotExpress) {
  constexpr auto kUnknown = static_cast<SubtitleKind>(3);
  EXPECT_EQ(WebVtt().convert(SubtitleKind::Bitmap), "Unexpected subtitle type");
  EXPECT_EQ(WebVtt().convert(kUnknown), "internal assertion failure");
  EXPECT_EQ(Srt().convert(SubtitleKind::TeletextText), "Unexpected input subtitle type");
  EXPECT_EQ(Srt().convert(SubtitleKind::Bitmap), "Unexpected subtitle type");
  EXPECT_EQ(Srt().convert(kUnknown), "internal assertion failure");
}

TEST(TextWriters, HaveNoInitialDocument) {
  EXPECT_EQ(WebVtt().initialDocument(CaptionText{}), "");
  EXPECT_EQ(Srt().initialDocument(CaptionText{}), "");
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
