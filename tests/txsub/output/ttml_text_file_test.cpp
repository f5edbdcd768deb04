#include <gtest/gtest.h>

#include "tests/txsub/output/cue_builder.h"
#include "tests/txsub/output/text_of_file.h"
#include "tests/txsub/output/ttml_rules.h"

namespace korr::txsub {
namespace {

using model::SubtitleInputType;
using model::TeletextColour;
using model::TeletextSize;
using model::TeletextText;

constexpr auto kTeletext = SubtitleInputType::Teletext;
constexpr auto kCaptions = SubtitleInputType::ClosedCaption;

TeletextText::Run run(std::uint32_t column, std::string_view text, TeletextColour colour) {
  return {.column = column,
          .colour = colour,
          .size = TeletextSize::DoubleHeight,
          .glyphs = glyphs(text)};
}

model::Subtitle teletextPage() {
  TeletextText page;
  page.rows = {{.number = 20,
                .runs = {run(9, "  Is <that>", TeletextColour::Yellow),
                         run(21, " \"R&D\"?  ", TeletextColour::White)}},
               {.number = 22, .runs = {run(15, "  No, it's ", TeletextColour::White)}}};
  return model::Subtitle(page);
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
  const std::string document = ttml(
      kCaptions,
      {cue(0, 1000,
           captions({captionRow(1, {captionRun(0, "TOP LEFT")}),
                     captionRow(3, {captionRun(0, "TWO BELOW")}), captionRow(15, {italic})}))});
  EXPECT_NE(
      document.find(" tts:origin=\"10% 10%\" tts:extent=\"80% 16%\" tts:displayAlign=\"before\""),
      std::string::npos)
      << document;
  EXPECT_NE(document.find("TOP LEFT</span><br /><br /><span style=\"Style2\">TWO BELOW</span></p>"),
            std::string::npos)
      << document;
  EXPECT_NE(document.find(
                " tts:origin=\"20% 84.67%\" tts:extent=\"70% 5.33%\" tts:displayAlign=\"after\""),
            std::string::npos)
      << document;
  EXPECT_NE(document.find(" tts:backgroundColor=\"#0000007F\" tts:fontStyle=\"italic\""
                          " tts:textDecoration=\"underline\""),
            std::string::npos)
      << document;
}

TEST(TtmlTextFile, KeepsRightToLeftLettersWhereTheyStoodOnScreen) {
  const auto row = [](std::int32_t number, std::string_view letter) {
    auto letters = run(9, "  ", TeletextColour::White);
    letters.glyphs.emplace_back(letter);
    return TeletextText::TextRow{.number = number, .runs = {letters}};
  };
  for (const char* letter : {"א", "ي", "ﺏ"}) {
    TeletextText page;
    page.rows = {row(20, letter)};
    EXPECT_NE(ttml(kTeletext, {cue(0, 1, model::Subtitle(page))})
                  .find(" tts:direction=\"ltr\" tts:unicodeBidi=\"bidiOverride\""),
              std::string::npos)
        << letter;
  }
  TeletextText page;
  page.rows = {row(20, "Ж"), row(22, "♪")};
  EXPECT_EQ(ttml(kTeletext, {cue(0, 1, model::Subtitle(page))}).find("bidi"), std::string::npos);
}

TEST(TtmlTextFile, ConformsToEbuTtD) {
  TeletextText mixed;
  mixed.rows = {{.number = 1, .runs = {run(0, "  up", TeletextColour::Red)}},
                {.number = 3, .runs = {{.column = 9, .glyphs = glyphs("  small")}}}};
  auto styled = captionRun(3, "x");
  styled.italic = styled.underline = true;
  const std::vector<std::vector<Cue>> contents = {
      {},
      {cue(0, 1, captions({captionRow(3, {captionRun(0, "   ")})}))},
      {cue(0, 1500, captions({captionRow(1, {styled}), captionRow(9, {captionRun(30, "<&>")})}))},
      {cue(1000, 2000, teletextPage()), cue(2000, 400'000'000, model::Subtitle(mixed))}};
  for (const auto& cues : contents) {
    const std::string document = ttml(kTeletext, cues, true);
    EXPECT_EQ(ebuTtDFaults(document), "") << document;
  }
}

// The rules find what they are there for.
TEST(EbuTtDRules, RefuseWhatIsNotInTheStandard) {
  const std::string good = ttml(kTeletext, {cue(1000, 2000, teletextPage())}, true);
  const auto faultsWith = [&](const std::string& from, const std::string& to) {
    std::string document = good;
    document.replace(document.find(from), from.size(), to);
    return ebuTtDFaults(document);
  };
  EXPECT_NE(faultsWith("tts:fontSize=\"96%\"", "tts:fontSize=\"1c 2c\""), "");
  EXPECT_NE(faultsWith("tts:color=\"#FFFF00\"", "tts:color=\"yellow\""), "");
  EXPECT_NE(faultsWith("region=\"Region1\"", "region=\"Region9\""), "");
  EXPECT_NE(faultsWith("begin=\"00:00:01.000\"", "begin=\"1s\""), "");
  EXPECT_NE(faultsWith("xml:id=\"Style2\"", "xml:id=\"Style1\""), "");
  EXPECT_NE(faultsWith(" xml:id=\"Subtitle1\"", ""), "");
  EXPECT_NE(faultsWith("ttp:timeBase", "tts:timeBase"), "");
}

TEST(LanguageTag, TakesWhatDescriptorsCarry) {
  const auto tagIn = [](const std::string& language) {
    const std::string document =
        playableText({.format = PlayableFormat::Ttml, .type = kTeletext, .language = language}, {});
    const auto at = document.find("xml:lang=\"") + 10;
    return document.substr(at, document.find('"', at) - at);
  };
  EXPECT_EQ(tagIn("ger"), "de");
  EXPECT_EQ(tagIn("deu"), "de");
  EXPECT_EQ(tagIn("SWE"), "sv");
  EXPECT_EQ(tagIn("zul"), "zu");
  EXPECT_EQ(tagIn("qaa"), "qaa");
  EXPECT_EQ(tagIn(""), "und");
  EXPECT_EQ(tagIn("\"<&"), "und");
}

}  // namespace
}  // namespace korr::txsub
