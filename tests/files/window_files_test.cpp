// SPDX-License-Identifier: MIT

// Digital captions in playable files.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <optional>

#include "cues/text_layout.h"
#include "dtvcc/dtvcc_display_decoder.h"
#include "files/preview/preview_document.h"
#include "files/srt_file.h"
#include "files/ttml_text_document.h"
#include "files/webvtt_file.h"
#include "testkit/encoders/dtvcc_encoder.h"
#include "tests/files/ttml_rules.h"

namespace korr::txsub {
namespace {

using encoders::DtvccChannel;
using encoders::DtvccCodes;
using encoding::subtitling::IDisplayListener;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class LastShown final : public IDisplayListener {
 public:
  void onDisplay(MediaTime, Subtitle subtitle) override { shown = std::move(subtitle); }

  std::optional<Subtitle> shown;
};

Cue cueOf(const DtvccCodes& codes) {
  LastShown screen;
  encoding::subtitling::dtvcc::DtvccDisplayDecoder decoder({}, screen, nullptr);
  decoder.decode(DtvccChannel().add(1, codes).take(), 0);
  decoder.finish(0);
  return {.start = 0,
          .stop = encoding::subtitling::kSecond,
          .subtitle = std::make_shared<const Subtitle>(std::move(*screen.shown))};
}

std::string vttOf(const DtvccCodes& codes) {
  return webVttCues(cueOf(codes));
}

std::string ttmlOf(const DtvccCodes& codes, bool isEbuTtD = false) {
  TtmlTextDocument document("eng", isEbuTtD);
  document.add(cueOf(codes));
  return document.text();
}

const DtvccCodes kTwoWindows =
    DtvccCodes()
        .define(0, {.vertical = 65,
                    .horizontal = 105,
                    .anchor = 7,
                    .rows = 2,
                    .columns = 32,
                    .windowStyle = 3})
        .text("Lower one,")
        .carriageReturn()
        .text("centred")
        .define(1, {.priority = 3, .vertical = 5, .horizontal = 200, .anchor = 2, .columns = 20})
        .attributes({.justify = 1})
        .colour({.foreground = 0b111100})
        .text("Upper <right>")
        .define(2, {.visible = false})
        .text("hidden");

TEST(WindowFiles, PlaceWindowsInWebVtt) {
  EXPECT_EQ(vttOf(kTwoWindows),
            "00:00:00.000 --> 00:00:01.000 line:15.33% position:86.19% align:end\n"
            "<c.yellow>Upper &lt;right&gt;</c>\n\n"
            "00:00:00.000 --> 00:00:01.000 line:68.67% position:50% align:center\n"
            "Lower one,\ncentred\n\n");
}

TEST(WindowFiles, ReadFromTheTopInSrt) {
  EXPECT_EQ(srtText(*cueOf(kTwoWindows).subtitle, SrtMarkup::Plain),
            "Upper <right>\nLower one,\ncentred\n");
}

TEST(WindowFiles, GiveTtmlRegionsTheirFillAndSpansTheirColours) {
  const auto codes = DtvccCodes()
                         .define(0, {.vertical = 0, .horizontal = 0, .rows = 2, .columns = 21})
                         .attributes({.fillOpacity = 2, .fill = 0b010000})
                         .colour({.foreground = 0b101010, .backgroundOpacity = 3, .edge = 0b000011})
                         .pen({.italic = true, .edge = 3})
                         .text("text");
  const std::string document = ttmlOf(codes);
  EXPECT_THAT(document, HasSubstr("tts:origin=\"10% 10%\" tts:extent=\"40% 5.33%\""));
  EXPECT_THAT(document,
              HasSubstr("tts:backgroundColor=\"#55000080\" tts:showBackground=\"whenActive\""));
  EXPECT_THAT(document, HasSubstr("tts:color=\"#AAAAAA\" tts:backgroundColor=\"#55000000\" "
                                  "tts:textOutline=\"#0000FF 5%\" tts:fontStyle=\"italic\""));
  EXPECT_THAT(ttmlOf(codes, true), Not(HasSubstr("textOutline")));
  EXPECT_THAT(ttmlOf(codes, true), HasSubstr("<style xml:id=\"Style2\" tts:color=\"#AAAAAA\" "
                                             "tts:backgroundColor=\"#55000080\""));
  EXPECT_THAT(ebuTtDFaults(ttmlOf(kTwoWindows, true)), IsEmpty());
}

// The window's box, and in it letters of each size, edge and opacity.
TEST(WindowFiles, DrawWindowsOnPreviewPages) {
  const auto codes = DtvccCodes()
                         .define(0, {.vertical = 0, .horizontal = 0, .rows = 2, .columns = 21})
                         .attributes({.fillOpacity = 2,
                                      .fill = 0b010000,
                                      .border = 2,
                                      .borderColour = 0b111111,
                                      .justify = 1})
                         .colour({.foregroundOpacity = 2, .backgroundOpacity = 3, .edge = 0b11})
                         .pen({.offset = 2, .size = 0, .edge = 4})
                         .text("ab")
                         .colour({})
                         .pen({})
                         .text("c");
  std::vector<std::string> pictures;
  PictureSet pictureSet;
  PreviewTrack track(pictures, pictureSet);
  track.onCue(cueOf(codes));
  const auto cue = track.takeCues(0).at(0);
  EXPECT_EQ(cue.at("windows").dump(),
            "[{\"left\":10.0,\"top\":10.0,\"width\":40.0,\"height\":10.666666666666666,"
            "\"row\":5.333333333333333,\"fill\":\"color-mix(in srgb, #550000 50%, transparent)\","
            "\"border\":{\"colour\":\"white\",\"edge\":\"depressed\"}}]");
  EXPECT_EQ(cue.at("lines").at(0).at("spans").dump(),
            "[{\"text\":\"ab\",\"colour\":\"color-mix(in srgb, white 50%, transparent)\","
            "\"background\":\"transparent\","
            "\"outline\":{\"colour\":\"blue\",\"edge\":\"left\"},"
            "\"size\":0.48750000000000004,\"offset\":\"super\"},"
            "{\"text\":\"c\",\"colour\":\"white\",\"background\":\"black\"}]");
  EXPECT_DOUBLE_EQ(cue.at("lines").at(0).at("left"), 10 + 18 * 40.0 / 21) << "to the right";
}

TEST(WindowFiles, ReadTextInItsDirection) {
  const auto printed = [](unsigned print, unsigned scroll, const char* text, unsigned rows) {
    return srtText(*cueOf(DtvccCodes()
                              .define(0, {.rows = rows, .columns = 6})
                              .attributes({.print = print, .scroll = scroll})
                              .text(text)
                              .carriageReturn()
                              .text("end"))
                        .subtitle,
                   SrtMarkup::Plain);
  };
  EXPECT_EQ(printed(0, 3, "ab c", 2), "ab c\nend\n");
  EXPECT_EQ(printed(1, 3, "ab c", 2), "ab c\nend\n") << "right to left";
  EXPECT_EQ(printed(2, 1, "ab c", 5), "ab c\nend\n") << "downwards, columns to the right";
  EXPECT_EQ(printed(3, 1, "ab c", 5), "ab c\nend\n") << "upwards";
}

TEST(WindowFiles, LeaveOutWhatIsTransparentAndKeepGaps) {
  const auto codes = DtvccCodes()
                         .define(0, {})
                         .text("a")
                         .bytes({0x10, 0x20})
                         .text("b")
                         .colour({.foregroundOpacity = 3})
                         .text(" unseen ")
                         .colour({})
                         .text("c");
  EXPECT_EQ(srtText(*cueOf(codes).subtitle, SrtMarkup::Plain), "a b        c\n");
}

TEST(TextColours, KeepTheSixtyFourOfDigitalCaptions) {
  for (unsigned bits = 0; bits < 64; ++bits) {
    const auto level = [bits](unsigned shift) {
      return static_cast<std::uint8_t>((bits >> shift & 3) * 85);
    };
    char hex[8];
    std::snprintf(hex, sizeof hex, "#%02X%02X%02X", level(4), level(2), level(0));
    EXPECT_EQ(colourHex(textColourOf(level(4), level(2), level(0))), hex);
  }
  EXPECT_EQ(textColourOf(0, 255, 0), TextColour::Lime);
  EXPECT_STREQ(colourName(textColourOf(170, 170, 85)), "yellow");
  EXPECT_STREQ(colourName(textColourOf(85, 85, 85)), "black");
}

}  // namespace
}  // namespace korr::txsub
