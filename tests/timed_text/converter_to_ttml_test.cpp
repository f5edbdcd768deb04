#include "timed_text/converter_to_ttml.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "tests/timed_text/ttml_fixture.h"

namespace korr::encoding::subtitling::ttml {
namespace {

std::vector<GlyphText> glyphs(std::string_view ascii) {
  std::vector<GlyphText> cells;
  for (const char c : ascii) cells.emplace_back(c);
  return cells;
}

TeletextText::Run teletextRun(std::string_view text, TeletextColour colour = TeletextColour::White,
                              TeletextSize size = TeletextSize::Normal) {
  return {.column = 0, .colour = colour, .size = size, .glyphs = glyphs(text)};
}

std::string attributeOf(const std::string& document, const std::string& name) {
  const std::string opening = " " + name + "=\"";
  const auto at = document.find(opening, document.find("xml:id=\"Style0\""));
  if (at == std::string::npos) return {};
  const auto value = at + opening.size();
  return document.substr(value, document.find('"', value) - value);
}

TEST(ConverterToTtml, WritesATeletextPage) {
  TeletextText page;
  page.rows = {
      {.number = 20,
       .runs = {teletextRun(" Wer da?", TeletextColour::Yellow, TeletextSize::DoubleHeight),
                teletextRun(" <&>")}},
      {.number = 22,
       .runs = {teletextRun(" Ich.", TeletextColour::Yellow, TeletextSize::DoubleHeight),
                teletextRun(" Nie", TeletextColour::Red)}}};
  EXPECT_EQ(TtmlWriter().convert(page),
            R"(<?xml version="1.0" encoding="UTF-8" ?>
<head>
  <styling>
    <style xml:id="textAlignment" tts:textAlign="center" />
    <style xml:id="Style0" tts:fontFamily="proportionalSansSerif" tts:backgroundColor="#00000099" tts:color="#FFFF00" tts:fontSize="1c 2c" />
    <style xml:id="Style1" tts:fontFamily="proportionalSansSerif" tts:backgroundColor="#00000099" tts:color="#FFFFFF" tts:fontSize="1c" />
    <style xml:id="Style3" tts:fontFamily="proportionalSansSerif" tts:backgroundColor="#00000099" tts:color="#FF0000" tts:fontSize="1c" />
  </styling>
  <body>
    <div>
      <p region="Region" style="textAlignment">
        <span style="Style0"> Wer da?</span>
      </p>
      <p region="Region" style="textAlignment">
        <span style="Style1"> &lt;&amp;&gt;</span>
      </p>
      <p region="Region" style="textAlignment">
        <br />
        <span style="Style0"> Ich.</span>
      </p>
      <p region="Region" style="textAlignment">
        <br />
        <span style="Style3"> Nie</span>
      </p>
    </div>
  </body>
</head>
)");
}

TEST(ConverterToTtml, WritesACaptionScreenAsEbuTt) {
  CaptionText screen;
  screen.rows.resize(3);
  screen.rows[0].number = 11;
  screen.rows[0].runs = {{.glyphs = glyphs("HI"), .column = 4},
                         {.glyphs = {}, .column = 8},
                         {.glyphs = glyphs("YOU"), .column = 7, .italic = true}};
  screen.rows[1].number = 12;
  screen.rows[2].number = 14;
  screen.rows[2].runs = {{.glyphs = {GlyphText("♪")},
                          .column = 0,
                          .foreground = CaptionColour::Cyan,
                          .background = CaptionColour::Blue,
                          .backgroundOpacity = CaptionOpacity::SemiTransparent,
                          .doubleSize = 1,
                          .underline = true,
                          .italic = true}};
  // Two new styles in the first row share its number; the empty run gets blanks and leaves the
  // column where it was; two rows below the empty row 12 are two breaks.
  EXPECT_EQ(TtmlWriter(true).convert(screen),
            R"(<?xml version="1.0" encoding="UTF-8" ?>
<head>
  <styling>
    <style xml:id="textAlignment" tts:textAlign="center" />
    <style xml:id="Style0" tts:fontFamily="proportionalSansSerif" tts:backgroundColor="#00000000" tts:color="#FFFFFF" tts:fontSize="100%" tts:lineHeight="normal" ebutts:linePadding="0.5c" />
    <style xml:id="Style0" tts:fontFamily="proportionalSansSerif" tts:backgroundColor="#00000000" tts:color="#FFFFFF" tts:fontSize="100%" tts:lineHeight="normal" ebutts:linePadding="0.5c" tts:fontStyle="italic" />
    <style xml:id="Style2" tts:fontFamily="proportionalSansSerif" tts:backgroundColor="#0000FF7F" tts:color="#00FFFF" tts:fontSize="200%" tts:lineHeight="normal" ebutts:linePadding="0.5c" tts:TextDecoration="underline" tts:fontStyle="italic" />
  </styling>
  <body>
    <div>
      <p region="Region" style="textAlignment">
        <span style="Style0">    HI</span>
      </p>
      <p region="Region" style="textAlignment">
        <span style="Style0">  </span>
      </p>
      <p region="Region" style="textAlignment">
        <span style="Style0"> YOU</span>
      </p>
      <p region="Region" style="textAlignment">
        <br />
        <br />
        <span style="Style2">♪</span>
      </p>
    </div>
  </body>
</head>
)");
}

TEST(ConverterToTtml, MapsEveryCodeToItsAttribute) {
  const auto teletext = [](TeletextColour colour, TeletextSize size, bool ebuTt) {
    TeletextText page;
    page.rows = {{.number = 1, .runs = {teletextRun("x", colour, size)}}};
    return TtmlWriter(ebuTt).convert(page);
  };
  const char* const teletextColours[] = {"#FFFFFF", "#FF0000", "#00FF00", "#FFFF00", "#0000FF",
                                         "#FF00FF", "#00FFFF", "#FFFFFF", "#FFFFFF"};
  for (std::uint32_t code = 0; code < std::size(teletextColours); ++code) {
    const auto colour = static_cast<TeletextColour>(code);
    EXPECT_EQ(attributeOf(teletext(colour, TeletextSize::Normal, false), "tts:color"),
              teletextColours[code]);
  }
  const char* const plainSizes[] = {"1c", "1c", "1c 2c", "2c 1c", "2c", "1c"};
  const char* const ebuSizes[] = {"100%", "100%", "100%", "100%", "200%", "100%"};
  for (std::uint32_t i = 0; i < std::size(plainSizes); ++i) {
    const auto size = static_cast<TeletextSize>(11 + i);
    const auto sizeIn = [&](bool ebuTt) {
      return attributeOf(teletext(TeletextColour::White, size, ebuTt), "tts:fontSize");
    };
    EXPECT_EQ(sizeIn(false), plainSizes[i]);
    EXPECT_EQ(sizeIn(true), ebuSizes[i]);
  }

  const auto caption = [](const CaptionText::TextRun& run) {
    CaptionText screen;
    screen.rows.push_back({.runs = {run}, .mode = CaptionMode::PopOn, .number = 1});
    return TtmlWriter().convert(screen);
  };
  const char* const captionColours[] = {"#FFFFFF", "#FFFFFF", "#00FF00", "#0000FF", "#00FFFF",
                                        "#FF0000", "#FFFF00", "#FF00FF", "#000000", "#FFFFFF"};
  for (std::uint32_t code = 0; code < std::size(captionColours); ++code) {
    CaptionText::TextRun run;
    run.foreground = run.background = static_cast<CaptionColour>(code);
    EXPECT_EQ(attributeOf(caption(run), "tts:color"), captionColours[code]);
    EXPECT_EQ(attributeOf(caption(run), "tts:backgroundColor"),
              std::string(captionColours[code]) + "00");
  }
  const char* const alphas[] = {"00", "00", "7F", "FF", "00"};
  for (std::uint32_t code = 0; code < std::size(alphas); ++code) {
    CaptionText::TextRun run;
    run.backgroundOpacity = static_cast<CaptionOpacity>(code);
    EXPECT_EQ(attributeOf(caption(run), "tts:backgroundColor"),
              std::string("#000000") + alphas[code]);
  }
  CaptionText::TextRun large;
  large.doubleSize = 1;
  EXPECT_EQ(attributeOf(caption(large), "tts:fontSize"), "2c");
}

// Carriage returns with nothing in between take a row out of the top of the picture, further and
// further; the runs of the next row each repeat the way down.
TEST(ConverterToTtml, BoundsTheLineBreaksOfRowsThatRolledFarAway) {
  CaptionText screen;
  screen.rows.resize(2);
  screen.rows[0].number = -100;
  screen.rows[0].runs = {{.glyphs = glyphs("A")}};
  screen.rows[1].number = 14;
  screen.rows[1].runs.assign(1000, {.glyphs = glyphs("B")});
  const auto document = TtmlWriter().convert(screen);
  const auto count = [&document](std::string_view text) {
    std::int32_t found = 0;
    for (auto at = document.find(text); at != std::string::npos; at = document.find(text, at + 1))
      ++found;
    return found;
  };
  EXPECT_EQ(count("<br />"), ConverterToTtml::kMostLineBreaks);
  EXPECT_EQ(count(">B</span>"), 1000);
}

TEST(ConverterToTtml, KeepsNoStyleFromOneDocumentToTheNext) {
  TeletextText page;
  page.rows = {{.number = 5, .runs = {teletextRun("")}}};
  TtmlWriter writer;
  const std::string first = writer.convert(page);
  EXPECT_NE(first.find("<style xml:id=\"Style0\""), std::string::npos);
  EXPECT_NE(first.find("<span style=\"Style0\"></span>"), std::string::npos);
  EXPECT_EQ(writer.convert(page), first);
}

TEST(ConverterToTtml, WritesAPageWithoutRows) {
  EXPECT_EQ(TtmlWriter().convert(TeletextText{}),
            R"(<?xml version="1.0" encoding="UTF-8" ?>
<head>
  <styling>
    <style xml:id="textAlignment" tts:textAlign="center" />
  </styling>
  <body>
    <div />
  </body>
</head>
)");
}

TEST(ConverterToTtml, DeclaresTheNamespacesOfTheKindInItsInitialDocument) {
  const std::string common =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
      "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:tt=\"http://www.w3.org/ns/ttml\""
      " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\""
      " xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\"";
  const std::string plain = " xmlns:ttm=\"http://www.w3.org/ns/ttml#metadata\"";
  const std::string ebu = " xmlns:ebutts=\"urn:ebu:tt:style\" xmlns:ebuttm=\"urn:ebu:tt:metadata\"";
  const std::string smpte = " xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2013/smpte-tt\"";
  const std::string end = " />\n";
  EXPECT_EQ(TtmlWriter().initialDocument(TeletextText{}), common + plain + end);
  EXPECT_EQ(TtmlWriter(true).initialDocument(CaptionText{}), common + ebu + end);
  EXPECT_EQ(TtmlWriter().initialDocument(SubtitleBitmap{}), common + plain + smpte + end);
  EXPECT_EQ(TtmlWriter(true).initialDocument(SubtitleBitmap{}), common + ebu + smpte + end);
}

TEST(ConverterToTtml, RefusesAnUnknownKind) {
  const auto unknown = static_cast<SubtitleKind>(3);
  const auto messageOf = [](auto&& write) -> std::string {
    try {
      write();
    } catch (const std::exception& error) {
      return error.what();
    }
    return "no exception";
  };
  EXPECT_EQ(messageOf([&] { TtmlWriter().convert(unknown); }), "internal assertion failure");
  EXPECT_EQ(messageOf([&] { TtmlWriter().initialDocument(unknown); }),
            "internal assertion failure");
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
