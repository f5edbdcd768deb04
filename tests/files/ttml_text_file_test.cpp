// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cues/language_tag.h"
#include "testkit/cue_builder.h"
#include "tests/files/playable_text.h"
#include "tests/files/ttml_rules.h"

namespace korr::txsub {
namespace {

using model::SubtitleInputType;
using testing::HasSubstr;

constexpr auto kTeletext = SubtitleInputType::Teletext;

TeletextText::Run run(std::uint32_t column, std::string_view text,
                      TeletextColour colour = TeletextColour::White) {
  return teletextRun(column, text, colour, TeletextSize::DoubleHeight);
}

model::Subtitle teletextPage() {
  return teletext(
      {{.number = 20,
        .runs = {run(9, "  Is <that>", TeletextColour::Yellow), run(21, " \"R&D\"?  ")}},
       {.number = 22, .runs = {run(15, "  No, it's ")}}});
}

std::string ttml(SubtitleInputType type, const std::vector<Cue>& cues, bool ebuTt = false) {
  return playableText(
      {.format = PlayableFormat::Ttml, .type = type, .language = "ger", .ebuTt = ebuTt}, cues);
}

TEST(TtmlTextFile, WritesOneParagraphPerInterval) {
  EXPECT_EQ(
      ttml(kTeletext, {cue(1000, 2500, teletextPage()), cue(3'600'000, 3'601'001, teletextPage())}),
      R"(<?xml version="1.0" encoding="UTF-8"?>
<tt xmlns="http://www.w3.org/ns/ttml" xmlns:tts="http://www.w3.org/ns/ttml#styling" xmlns:ttp="http://www.w3.org/ns/ttml#parameter" xmlns:ebutts="urn:ebu:tt:style" xmlns:itts="http://www.w3.org/ns/ttml/profile/imsc1#styling" ttp:profile="http://www.w3.org/ns/ttml/profile/imsc1/text" ttp:timeBase="media" xml:space="preserve" xml:lang="de">
  <head>
    <styling>
      <style xml:id="Style1" tts:fontFamily="proportionalSansSerif" tts:fontSize="96%" tts:lineHeight="125%" tts:textAlign="center" ebutts:linePadding="0.5c" itts:fillLineGap="true" />
      <style xml:id="Style2" tts:color="#FFFF00" tts:backgroundColor="#00000099" />
      <style xml:id="Style3" tts:color="#FFFFFF" tts:backgroundColor="#00000099" />
    </styling>
    <layout>
      <region xml:id="Region1" tts:origin="10% 80%" tts:extent="80% 16%" tts:displayAlign="after" tts:overflow="visible" />
    </layout>
  </head>
  <body>
    <div>
      <p xml:id="Subtitle1" region="Region1" style="Style1" begin="00:00:01.000" end="00:00:02.500"><span style="Style2">Is &lt;that&gt;</span><span style="Style3"> &quot;R&amp;D&quot;?</span><br /><span style="Style3">No, it&apos;s</span></p>
      <p xml:id="Subtitle2" region="Region1" style="Style1" begin="01:00:00.000" end="01:00:01.001"><span style="Style2">Is &lt;that&gt;</span><span style="Style3"> &quot;R&amp;D&quot;?</span><br /><span style="Style3">No, it&apos;s</span></p>
    </div>
  </body>
</tt>
)");
}

TEST(TtmlTextFile, KeepsPlaceAndStyleOfCaptions) {
  auto italic = captionRun(4, "(DOOR SLAMS)");
  italic.italic = true;
  italic.underline = true;
  italic.backgroundOpacity = model::CaptionOpacity::SemiTransparent;
  const std::string document =
      ttml(SubtitleInputType::ClosedCaption,
           {cue(0, 1000,
                captions({captionRow(1, 0, "TOP LEFT"), captionRow(3, 0, "TWO BELOW"),
                          captionRow(15, {italic})}))});
  for (const char* part :
       {" tts:origin=\"10% 10%\" tts:extent=\"80% 16%\" tts:displayAlign=\"before\"",
        "TOP LEFT</span><br /><br /><span style=\"Style2\">TWO BELOW</span></p>",
        " tts:origin=\"20% 84.67%\" tts:extent=\"70% 5.33%\" tts:displayAlign=\"after\"",
        " tts:backgroundColor=\"#0000007F\" tts:fontStyle=\"italic\""
        " tts:textDecoration=\"underline\""}) {
    EXPECT_THAT(document, HasSubstr(part));
  }
}

TEST(TtmlTextFile, NamesTheDirectionOfParagraphs) {
  const auto rowOf = [](std::int32_t number, std::vector<const char*> letters) {
    auto cells = run(9, "  ");
    for (const char* letter : letters) cells.glyphs.emplace_back(std::string_view(letter));
    return TeletextText::TextRow{.number = number, .runs = {cells}};
  };
  const auto document = ttml(
      kTeletext, {cue(0, 1, teletext({rowOf(18, {".", "ב", "א"}), rowOf(20, {"o", "k", "."})}))});
  EXPECT_THAT(document, HasSubstr(">אב.</span></p>")) << "and has one each";
  EXPECT_THAT(document, HasSubstr(" tts:textAlign=\"left\" "));
  EXPECT_THAT(document, HasSubstr(" tts:direction=\"rtl\""));
  EXPECT_THAT(document, HasSubstr(" tts:textAlign=\"start\" "));
  EXPECT_THAT(ttml(kTeletext, {cue(0, 1, teletext({rowOf(20, {"Ж", "♪"})}))}),
              Not(HasSubstr("tts:direction")));
}

TEST(TtmlTextFile, ConformsToEbuTtD) {
  auto styled = captionRun(3, "x");
  styled.italic = styled.underline = true;
  const std::vector<std::vector<Cue>> contents = {
      {},
      {cue(0, 1, captions({captionRow(3, 0, "   ")}))},
      {cue(0, 1500, captions({captionRow(1, {styled}), captionRow(9, 30, "<&>")}))},
      {cue(1000, 2000, teletextPage()),
       cue(2000, 400'000'000,
           teletext({{.number = 1, .runs = {run(0, "  up", TeletextColour::Red)}},
                     {.number = 3, .runs = {teletextRun(9, "  small")}}}))}};
  for (const auto& cues : contents) {
    const std::string document = ttml(kTeletext, cues, true);
    EXPECT_EQ(ebuTtDFaults(document), "") << document;
  }
}

// The rules find what they are there for.
TEST(EbuTtDRules, RefuseWhatIsNotInTheStandard) {
  const std::string good = ttml(kTeletext, {cue(1000, 2000, teletextPage())}, true);
  for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
           {"tts:fontSize=\"96%\"", "tts:fontSize=\"1c 2c\""},
           {"tts:color=\"#FFFF00\"", "tts:color=\"yellow\""},
           {"region=\"Region1\"", "region=\"Region9\""},
           {"begin=\"00:00:01.000\"", "begin=\"1s\""},
           {"xml:id=\"Style2\"", "xml:id=\"Style1\""},
           {" xml:id=\"Subtitle1\"", ""},
           {"ttp:timeBase", "tts:timeBase"}}) {
    std::string document = good;
    document.replace(document.find(from), from.size(), to);
    EXPECT_NE(ebuTtDFaults(document), "") << to;
  }
}

TEST(LanguageTag, TakesWhatDescriptorsCarry) {
  EXPECT_EQ(languageTag("ger"), "de");
  EXPECT_EQ(languageTag("deu"), "de");
  EXPECT_EQ(languageTag("SWE"), "sv");
  EXPECT_EQ(languageTag("zul"), "zu");
  EXPECT_EQ(languageTag("qaa"), "qaa");
  EXPECT_EQ(languageTag(""), "und");
  EXPECT_EQ(languageTag("\"<&"), "und");
}

}  // namespace
}  // namespace korr::txsub
