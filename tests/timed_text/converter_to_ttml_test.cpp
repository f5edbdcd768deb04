// SPDX-License-Identifier: MIT
#include "timed_text/converter_to_ttml.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "tests/timed_text/writer_bench.h"

namespace korr::encoding::subtitling::ttml {
namespace {

using TtmlWriter = WriterBench<ConverterToTtml>;

template <class Payload>
std::string convert(const Payload& payload, bool ebuTt = false) {
  return TtmlWriter(ebuTt, nullptr).convert(payload);
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
  EXPECT_EQ(convert(page), withHead(R"(  <styling>
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
)"));
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
  EXPECT_EQ(convert(screen, true), withHead(R"(  <styling>
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
)"));
}

TEST(ConverterToTtml, MapsEveryCodeToItsAttribute) {
  const auto teletext = [](std::uint32_t colour, std::uint32_t size, const char* name, bool ebuTt) {
    TeletextText page;
    page.rows = {{.number = 1,
                  .runs = {teletextRun("x", static_cast<TeletextColour>(colour),
                                       static_cast<TeletextSize>(size))}}};
    return attributeOf(convert(page, ebuTt), name) + ' ';
  };
  std::string colours;
  for (std::uint32_t code = 0; code <= 8; ++code) colours += teletext(code, 12, "tts:color", false);
  EXPECT_EQ(colours, "#FFFFFF #FF0000 #00FF00 #FFFF00 #0000FF #FF00FF #00FFFF #FFFFFF #FFFFFF ");
  std::string plainSizes;
  std::string ebuSizes;
  for (std::uint32_t code = 11; code <= 16; ++code) {
    plainSizes += teletext(7, code, "tts:fontSize", false) + "| ";
    ebuSizes += teletext(7, code, "tts:fontSize", true);
  }
  EXPECT_EQ(plainSizes, "1c | 1c | 1c 2c | 2c 1c | 2c | 1c | ");
  EXPECT_EQ(ebuSizes, "100% 100% 100% 100% 200% 100% ");

  const auto caption = [](const CaptionText::TextRun& run, const char* name) {
    CaptionText screen;
    screen.rows.push_back({.runs = {run}, .mode = CaptionMode::PopOn, .number = 1});
    return attributeOf(convert(screen), name);
  };
  CaptionText::TextRun run;
  colours.clear();
  for (std::uint32_t code = 0; code <= 9; ++code) {
    run.foreground = run.background = static_cast<CaptionColour>(code);
    const std::string colour = caption(run, "tts:color");
    EXPECT_EQ(caption(run, "tts:backgroundColor"), colour + "00");
    colours += colour + ' ';
  }
  EXPECT_EQ(colours,
            "#FFFFFF #FFFFFF #00FF00 #0000FF #00FFFF #FF0000 #FFFF00 #FF00FF #000000 #FFFFFF ");
  run.background = CaptionColour::Black;
  std::string alphas;
  for (std::uint32_t code = 0; code <= 4; ++code) {
    run.backgroundOpacity = static_cast<CaptionOpacity>(code);
    alphas += caption(run, "tts:backgroundColor") + ' ';
  }
  EXPECT_EQ(alphas, "#00000000 #00000000 #0000007F #000000FF #00000000 ");
  run.doubleSize = 1;
  EXPECT_EQ(caption(run, "tts:fontSize"), "2c");
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
  const auto document = convert(screen);
  const auto count = [&document](std::string_view text) {
    std::int32_t found = 0;
    for (auto at = document.find(text); at != document.npos; at = document.find(text, at + 1))
      ++found;
    return found;
  };
  EXPECT_EQ(count("<br />"), ConverterToTtml::kMostLineBreaks);
  EXPECT_EQ(count(">B</span>"), 1000);
}

TEST(ConverterToTtml, KeepsNoStyleFromOneDocumentToTheNext) {
  TeletextText page;
  page.rows = {{.number = 5, .runs = {teletextRun("")}}};
  TtmlWriter writer(false, nullptr);
  const std::string first = writer.convert(page);
  EXPECT_NE(first.find("<style xml:id=\"Style0\""), std::string::npos);
  EXPECT_NE(first.find("<span style=\"Style0\"></span>"), std::string::npos);
  EXPECT_EQ(writer.convert(page), first);
}

TEST(ConverterToTtml, WritesAPageWithoutRows) {
  EXPECT_EQ(convert(TeletextText{}), withHead(R"(  <styling>
    <style xml:id="textAlignment" tts:textAlign="center" />
  </styling>
  <body>
    <div />
  </body>
)"));
}

TEST(ConverterToTtml, DeclaresTheNamespacesOfTheKindAndRefusesAnUnknownOne) {
  const std::string common =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
      "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:tt=\"http://www.w3.org/ns/ttml\""
      " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\""
      " xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\"";
  const std::string plain = " xmlns:ttm=\"http://www.w3.org/ns/ttml#metadata\"";
  const std::string ebu = " xmlns:ebutts=\"urn:ebu:tt:style\" xmlns:ebuttm=\"urn:ebu:tt:metadata\"";
  const std::string smpte = " xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2013/smpte-tt\"";
  const std::string end = " />\n";
  const auto initial = [](const auto& payload, bool ebuTt) {
    return TtmlWriter(ebuTt, nullptr).initialDocument(payload);
  };
  EXPECT_EQ(initial(TeletextText{}, false), common + plain + end);
  EXPECT_EQ(initial(CaptionText{}, true), common + ebu + end);
  EXPECT_EQ(initial(SubtitleBitmap{}, false), common + plain + smpte + end);
  EXPECT_EQ(initial(SubtitleBitmap{}, true), common + ebu + smpte + end);

  constexpr auto kUnknown = static_cast<SubtitleKind>(3);
  EXPECT_EQ(initial(kUnknown, false), "internal assertion failure");
  EXPECT_EQ(convert(kUnknown), "internal assertion failure");
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
