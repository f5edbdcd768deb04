#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "timed_text/converter_to_webvtt.h"
#include "timed_text/converter_to_youtube_srt.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::ttml {
namespace {

/// Yields what `make` makes.
class Container final : public ISubtitleContainer {
 public:
  explicit Container(std::function<Subtitle()> make) : make_(std::move(make)) {}
  Subtitle currentSubtitle(MediaTime) override { return make_(); }

 private:
  std::function<Subtitle()> make_;
};

/// The document over what was in the buffer before.
template <class Converter>
std::string convert(std::function<Subtitle()> make) {
  Container container(std::move(make));
  Converter converter(container);
  ByteBuffer out{'o', 'l', 'd'};
  converter.convert(out, 0);
  return std::string(asText(out));
}

template <class Converter, class Text>
std::string document(const Text& text) {
  return convert<Converter>([&] { return Subtitle(text); });
}

template <class Converter>
std::string errorOf(SubtitleKind kind) {
  try {
    convert<Converter>([kind] { return Subtitle(kind); });
  } catch (const util::TessaryException& error) {
    return error.what();
  }
  return "no error";
}

std::vector<GlyphText> cells(std::string_view ascii) {
  std::vector<GlyphText> glyphs;
  for (const char c : ascii) glyphs.emplace_back(c);
  return glyphs;
}

TeletextText::Run teletextRun(std::string_view ascii) {
  return {.column = 0, .glyphs = cells(ascii)};
}

CaptionText::TextRun captionRun(std::string_view ascii, bool underline = false,
                                bool italic = false) {
  CaptionText::TextRun run;
  run.glyphs = cells(ascii);
  run.underline = underline;
  run.italic = italic;
  return run;
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
  EXPECT_EQ(document<ConverterToWebVtt>(page), "line:50%\nHELLO\n\nü€\n");
}

TEST(WebVttWriter, PlacesATeletextPageByItsHighestRow) {
  const auto rowsAt = [](std::vector<std::int32_t> numbers) {
    TeletextText page;
    for (const auto number : numbers) page.rows.push_back({.number = number, .runs = {}});
    return document<ConverterToWebVtt>(page);
  };
  EXPECT_EQ(rowsAt({2, 20}), "line:8%\n");
  EXPECT_EQ(rowsAt({20, 2}), "line:8%\n");
  EXPECT_EQ(rowsAt({24}), "line:100%\n");
  EXPECT_EQ(rowsAt({0}), "line:0%\n");
  EXPECT_EQ(rowsAt({}), "");
}

TEST(WebVttWriter, WritesCaptionRowsAsLinesWithTagsAroundEachRun) {
  EXPECT_EQ(document<ConverterToWebVtt>(captions({{captionRun("A", true, true)}})),
            "line:100%\n<u><i>A</i></u>\n");
  EXPECT_EQ(document<ConverterToWebVtt>(captions(
                {{captionRun("a<"), captionRun("b", false, true)}, {}, {captionRun("c", true)}})),
            "line:100%\na<<i>b</i>\n\n<u>c</u>\n");
}

TEST(WebVttWriter, WritesNothingForACaptionScreenWithoutText) {
  EXPECT_EQ(document<ConverterToWebVtt>(captions({})), "");
  EXPECT_EQ(document<ConverterToWebVtt>(captions({{}, {captionRun("")}})), "");
  EXPECT_EQ(document<ConverterToWebVtt>(captions({{captionRun("", true)}})),
            "line:100%\n<u></u>\n");
}

TEST(WebVttWriter, RefusesWhatItCannotExpress) {
  EXPECT_EQ(errorOf<ConverterToWebVtt>(SubtitleKind::Bitmap), "Unexpected subtitle type");
  EXPECT_EQ(errorOf<ConverterToWebVtt>(static_cast<SubtitleKind>(3)), "internal assertion failure");
}

TEST(SrtWriter, EndsEveryCaptionRowAndWritesNoStyle) {
  EXPECT_EQ(document<ConverterToYoutubeSrt>(captions(
                {{captionRun("X", true), captionRun("Y", false, true)}, {}, {captionRun("Z")}})),
            "XY<br><br>Z<br>");
  EXPECT_EQ(document<ConverterToYoutubeSrt>(captions({})), "");
}

TEST(SrtWriter, RefusesWhatItCannotExpress) {
  EXPECT_EQ(errorOf<ConverterToYoutubeSrt>(SubtitleKind::TeletextText),
            "Unexpected input subtitle type");
  EXPECT_EQ(errorOf<ConverterToYoutubeSrt>(SubtitleKind::Bitmap), "Unexpected subtitle type");
  EXPECT_EQ(errorOf<ConverterToYoutubeSrt>(static_cast<SubtitleKind>(3)),
            "internal assertion failure");
}

TEST(TextWriters, HaveNoInitialDocument) {
  Container container([] { return Subtitle(CaptionText{}); });
  ByteBuffer out{'o', 'l', 'd'};
  ConverterToWebVtt(container).initialDocument(out);
  EXPECT_TRUE(out.empty());
  out = {'o', 'l', 'd'};
  ConverterToYoutubeSrt(container).initialDocument(out);
  EXPECT_TRUE(out.empty());
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
