// SPDX-License-Identifier: MIT
#include "dtvcc/dtvcc_display_decoder.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

#include "testkit/encoders/dtvcc_encoder.h"
#include "testkit/reader_support.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

using encoders::DtvccChannel;
using encoders::DtvccCodes;
using test_support::RecordingLogger;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr MediaTime kPicture = kSecond / 30;

// "text/text" of the rows of all windows, from the lowermost window on.
std::string textOf(const WindowText& screen) {
  std::string text;
  for (const auto& window : screen.windows) {
    for (const auto& row : window.rows) {
      if (!text.empty()) text += '/';
      for (const auto& run : row.runs) {
        for (const auto& glyph : run.glyphs) text += glyph.view();
      }
    }
  }
  return text;
}

// One service over pictures, and what it shows: "picture:text".
class Receiver final : public IDisplayListener {
 public:
  explicit Receiver(const DtvccOptions& options = {}) : decoder_(options, *this, &logger) {}

  void onDisplay(MediaTime time, Subtitle subtitle) override {
    last = *subtitle.windowText();
    shown.push_back(std::to_string((time + kPicture / 2) / kPicture) + ':' + textOf(last));
  }

  Receiver& at(std::uint64_t picture, const DtvccCodes& codes, unsigned service = 1) {
    return raw(picture, channel.add(service, codes).take());
  }

  Receiver& raw(std::uint64_t picture, const std::vector<std::uint8_t>& triplets) {
    decoder_.decode(triplets, picture * kPicture);
    return *this;
  }

  Receiver& end(std::uint64_t picture) {
    decoder_.finish(picture * kPicture);
    return *this;
  }

  const WindowText::Window& window() { return last.windows.at(0); }

  RecordingLogger logger;
  DtvccChannel channel;
  std::vector<std::string> shown;
  WindowText last;

 private:
  DtvccDisplayDecoder decoder_;
};

DtvccCodes popOn(std::string_view text) {
  return DtvccCodes().define(0, {.visible = false, .rows = 2}).text(text).display(1);
}

TEST(DtvccTransport, JoinsPacketsOverPicturesAndPassesOverOtherTriplets) {
  Receiver receiver;
  const auto triplets = receiver.channel.add(1, popOn("Hello")).take();
  std::uint64_t picture = 0;
  for (std::size_t at = 0; at < triplets.size(); at += 3) {
    // Line 21, a triplet that is not valid, and fill stand beside the packet.
    receiver.raw(++picture, {0xFC, 0x94, 0x2C, 0xFB, 0x01, 0x02, triplets[at], triplets[at + 1],
                             triplets[at + 2], 0xFA, 0x00, 0x00});
  }
  receiver.end(100);
  EXPECT_EQ(textOf(receiver.last), "Hello");
  EXPECT_THAT(receiver.logger.lines, IsEmpty());
}

TEST(DtvccTransport, FindsTheServiceAmongOthersAndBeyondSix) {
  for (const unsigned service : {1u, 6u, 7u, 8u, 63u}) {
    Receiver receiver({.service = service});
    for (const unsigned other : {2u, 9u}) receiver.channel.add(other, popOn("other"));
    receiver.at(1, popOn("mine"), service).end(5);
    EXPECT_THAT(receiver.shown, ElementsAre("1:mine")) << service;
  }
  EXPECT_THROW(Receiver({.service = 0}), std::invalid_argument);
  EXPECT_THROW(Receiver({.service = 64}), std::invalid_argument);
}

TEST(DtvccTransport, KeepsWindowsWhenPacketsAreLostAndSaysSoOnceARun) {
  Receiver receiver;
  receiver.at(1, popOn("kept"));
  receiver.channel.skipSequenceNumbers(2);
  receiver.at(9, DtvccCodes().text(" and on"));
  auto cut = receiver.channel.add(1, DtvccCodes().text(" lost lost lost")).take();
  cut.resize(9);
  receiver.raw(20, cut).raw(21, cut).raw(22, cut).at(30, DtvccCodes().text("!")).end(200);
  EXPECT_EQ(textOf(receiver.last), "kept and on!");
  EXPECT_THAT(receiver.logger.lines,
              ElementsAre(HasSubstr("at 0.300 s: packets are missing"),
                          HasSubstr("at 0.700 s: a packet ends before its size")));
}

TEST(DtvccTransport, DropsACodeThatALossHasCut) {
  Receiver receiver;
  receiver.at(1, popOn("A"));
  // The first half of a definition; the rest of it never comes.
  receiver.at(2, DtvccCodes().bytes({0x98, 0x20, 0x00})).channel.skipSequenceNumbers(1);
  receiver.at(3, DtvccCodes().text("BCDE")).end(100);
  EXPECT_EQ(textOf(receiver.last), "ABCDE");
}

TEST(DtvccTransport, TakesBlocksThatLieAboutTheirSizeAsFarAsTheyGo) {
  Receiver receiver;
  receiver.at(1, popOn("A"));
  receiver.raw(2, receiver.channel.packet(std::vector<std::uint8_t>{0x3F, 'B', 'C'}).take());
  receiver.raw(3, receiver.channel.packet(std::vector<std::uint8_t>{0x3F, 'D', 'E'}).take());
  receiver.raw(4, receiver.channel.packet(std::vector<std::uint8_t>{0, 0x22, 'X', 'Y'}).take())
      .end(9);
  EXPECT_EQ(textOf(receiver.last), "ABCDE");
  EXPECT_THAT(receiver.logger.lines, ElementsAre(HasSubstr("longer than its packet")));
}

TEST(DtvccWindows, ShowAndHideAsTold) {
  Receiver receiver({.wholeRows = false});
  receiver.at(1, DtvccCodes().define(0, {.visible = false}).text("zero"));
  receiver.at(2, DtvccCodes().define(3, {.priority = 2}).text("three"));
  receiver.at(3, DtvccCodes().display(0b1001));
  receiver.at(4, DtvccCodes().toggle(0b1001).toggle(0b0001));
  receiver.at(5, DtvccCodes().hide(0xFF).display(0b1000));
  receiver.at(6, DtvccCodes().clear(0b1000));
  receiver.at(7, DtvccCodes().select(3).text("new").destroy(0b1000));
  receiver.at(8, DtvccCodes().text("nowhere").display(0xFF)).end(9);
  EXPECT_THAT(receiver.shown,
              ElementsAre("2:three", "3:three/zero", "4:zero", "5:three", "6:", "7:", "8:zero"));
  EXPECT_THAT(receiver.logger.lines, ElementsAre(HasSubstr("window that is not defined")));
}

TEST(DtvccWindows, LieWhereTheirAnchorsSay) {
  const auto areaOf = [](const encoders::DtvccWindow& window, bool isWide = true) {
    Receiver receiver({.isWide = isWide});
    receiver.at(1, DtvccCodes().define(0, window).text("x")).end(2);
    return subtitling::areaOf(receiver.last, receiver.window());
  };
  const auto corner = areaOf({.vertical = 0, .horizontal = 0, .rows = 3, .columns = 21});
  EXPECT_DOUBLE_EQ(corner.left, 10);
  EXPECT_DOUBLE_EQ(corner.top, 10);
  EXPECT_DOUBLE_EQ(corner.width, 40);
  EXPECT_DOUBLE_EQ(corner.height, 16);
  const auto centred = areaOf(
      {.relative = true, .vertical = 50, .horizontal = 50, .anchor = 4, .rows = 3, .columns = 21});
  EXPECT_DOUBLE_EQ(centred.left, 30);
  EXPECT_DOUBLE_EQ(centred.top, 42);
  const auto bottom =
      areaOf({.vertical = 74, .horizontal = 80, .anchor = 7, .rows = 2, .columns = 32}, false);
  EXPECT_DOUBLE_EQ(bottom.left, 10);
  EXPECT_NEAR(bottom.top + bottom.height, 10 + 74 * 80 / 75.0, 1e-9);
  const auto outside = areaOf({.vertical = 127, .horizontal = 255, .rows = 15, .columns = 42});
  EXPECT_DOUBLE_EQ(outside.left + outside.width, 100);
  EXPECT_DOUBLE_EQ(outside.top + outside.height, 100);
}

TEST(DtvccWindows, HaveTheirAttributesAndPens) {
  Receiver receiver;
  receiver
      .at(1,
          DtvccCodes()
              .define(2, {.priority = 3, .rows = 2, .columns = 20, .windowStyle = 3, .penStyle = 6})
              .text("a")
              .attributes({.fillOpacity = 2,
                           .fill = 0b110001,
                           .border = 5,
                           .borderColour = 0b000011,
                           .justify = 1})
              .pen(
                  {.offset = 2, .size = 2, .italic = true, .underline = true, .edge = 4, .font = 7})
              .colour({.foreground = 0b111000,
                       .foregroundOpacity = 1,
                       .background = 0b000010,
                       .backgroundOpacity = 2,
                       .edge = 0b010101})
              .text("b"))
      .end(2);
  const auto& window = receiver.window();
  EXPECT_EQ(window.justify, WindowText::Justify::Right);
  EXPECT_EQ(window.fill, (WindowText::Colour{255, 0, 85}));
  EXPECT_EQ(window.fillOpacity, WindowText::Opacity::Translucent);
  EXPECT_EQ(window.border, WindowText::Edge::RightDropShadow);
  EXPECT_EQ(window.borderColour, (WindowText::Colour{0, 0, 255}));
  ASSERT_THAT(window.rows, SizeIs(1));
  ASSERT_THAT(window.rows[0].runs, SizeIs(2));
  const auto& predefined = window.rows[0].runs[0].pen;
  EXPECT_EQ(predefined, (WindowText::Pen{.font = WindowText::Font::MonospacedSansSerif,
                                         .edge = WindowText::Edge::Uniform,
                                         .backgroundOpacity = WindowText::Opacity::Transparent}));
  EXPECT_EQ(window.rows[0].runs[1].pen,
            (WindowText::Pen{.size = WindowText::PenSize::Large,
                             .font = WindowText::Font::SmallCapitals,
                             .offset = WindowText::Offset::Superscript,
                             .italic = true,
                             .underline = true,
                             .edge = WindowText::Edge::LeftDropShadow,
                             .foregroundOpacity = WindowText::Opacity::Flash,
                             .backgroundOpacity = WindowText::Opacity::Translucent,
                             .foreground = {255, 170, 0},
                             .background = {0, 0, 170},
                             .edgeColour = {85, 85, 85}}));
}

TEST(DtvccText, WrapsWordsAndRollsUp) {
  Receiver receiver;
  receiver
      .at(1, DtvccCodes()
                 .define(0, {.rows = 2, .columns = 10, .windowStyle = 4})
                 .text("The harbour is shut"))
      .end(2);
  EXPECT_EQ(textOf(receiver.last), "harbour is/shut");
}

TEST(DtvccText, KeepsWhatANarrowWindowHides) {
  Receiver receiver;
  receiver.at(1, DtvccCodes().define(0, {.columns = 4}).text("Harbour")).end(2);
  EXPECT_EQ(textOf(receiver.last), "Harbour");
  EXPECT_EQ(receiver.window().columnCount, 4u);
}

TEST(DtvccText, IsKoreanByWhatTheBytesAreOrAsTold) {
  const auto shown = [](const DtvccCodes& codes, Charset charset) {
    Receiver receiver({.charset = charset});
    DtvccCodes all = DtvccCodes().define(0, {});
    receiver.channel.add(1, all);
    receiver.at(1, codes).end(2);
    return textOf(receiver.last);
  };
  const auto eucKr = DtvccCodes().eucKr("\xBE\xC8\xB3\xE7\xC7\xCF\xBC\xBC\xBF\xE4 (OK)");
  const auto utf16 = DtvccCodes().text("낡은 배 → 안녕하세요 🚢");
  EXPECT_EQ(shown(eucKr, Charset::Automatic), "안녕하세요 (OK)");
  EXPECT_EQ(shown(eucKr, Charset::EucKr), "안녕하세요 (OK)");
  EXPECT_EQ(shown(utf16, Charset::Automatic), "낡은 배 → 안녕하세요 🚢");
  EXPECT_EQ(shown(utf16, Charset::Utf16), "낡은 배 → 안녕하세요 🚢");
}

TEST(DtvccTiming, DelaysWhatFollowsAndNothingBefore) {
  Receiver receiver;
  receiver.at(3, popOn("now").delay(10).hide(1).define(1, {}).text("late"));
  receiver.at(20, DtvccCodes().text(" too"));
  receiver.at(60, DtvccCodes()).end(90);
  EXPECT_THAT(receiver.shown, ElementsAre("3:now", "33:late too"));
}

TEST(DtvccTiming, EndsDelaysEarly) {
  const auto cancelled = DtvccCodes().cancelDelay();
  Receiver receiver;
  receiver.at(3, popOn("now").delay(100).clear(1).text("cancelled"));
  receiver.at(30, cancelled).end(300);
  EXPECT_THAT(receiver.shown, ElementsAre("3:now", "30:cancelled"));

  Receiver reset;
  reset.at(3, popOn("now").delay(100).text("taken back"));
  reset.at(30, DtvccCodes().reset().define(1, {}).text("anew")).end(300);
  EXPECT_THAT(reset.shown, ElementsAre("3:now", "30:anew"));

  // 128 bytes are all that can wait.
  Receiver full;
  full.at(3, popOn("now").delay(255).formFeed());
  for (std::uint64_t i = 0; i < 8; ++i) full.at(30 + i, DtvccCodes().text("0123456789abcdef"));
  full.end(300);
  EXPECT_THAT(full.shown.at(1), HasSubstr("37:0123456789"));
}

TEST(DtvccTiming, LeavesOutWhatADelayPutsBehindTheEnd) {
  Receiver receiver;
  receiver.at(3, popOn("now").delay(255).clear(1)).end(60);
  EXPECT_THAT(receiver.shown, ElementsAre("3:now"));
}

TEST(DtvccTiming, ShowsAGrowingRowWholeFromItsFirstLetter) {
  const auto live = [](bool wholeRows) {
    Receiver receiver({.wholeRows = wholeRows});
    receiver.at(10, DtvccCodes().define(0, {.rows = 2, .windowStyle = 2}).text("on"));
    receiver.at(11, DtvccCodes().text("e"));
    receiver.at(30, DtvccCodes().carriageReturn());
    receiver.at(31, DtvccCodes().text("tw"));
    receiver.at(32, DtvccCodes().text("o"));
    receiver.at(50, DtvccCodes().carriageReturn());
    receiver.at(51, DtvccCodes().text("thr"));
    receiver.at(52, DtvccCodes().text("ee"));
    receiver.at(200, DtvccCodes().text("!")).end(300);
    return receiver.shown;
  };
  EXPECT_THAT(live(true), ElementsAre("10:one", "31:one/two", "50:two/three", "200:two/three!"));
  EXPECT_THAT(live(false), ElementsAre("10:on", "11:one", "31:one/tw", "32:one/two", "50:two",
                                       "51:two/thr", "52:two/three", "200:two/three!"));
}

TEST(DtvccInput, PassesOverUndefinedCodesWithOneLine) {
  Receiver receiver;
  receiver.at(1, popOn("A")
                     .bytes({0x93, 0x94, 0x11, 0x41, 0x1F, 0x42, 0x42, 0x10, 0x08, 0x43})
                     .bytes({0x10, 0x80, 1, 2, 3, 4, 0x10, 0x90, 2, 0x44, 0x44})
                     .text("B"));
  receiver.end(2);
  EXPECT_EQ(textOf(receiver.last), "AB");
  EXPECT_THAT(receiver.logger.lines, ElementsAre(HasSubstr("undefined code 0x93")));
}

TEST(DtvccInput, SaysNothingOfTextBeforeTheFirstWindow) {
  Receiver receiver;
  receiver.at(1, DtvccCodes().text("amid a caption").select(4)).end(2);
  EXPECT_THAT(receiver.shown, IsEmpty());
  EXPECT_THAT(receiver.logger.lines, IsEmpty());
}

}  // namespace
}  // namespace korr::encoding::subtitling::dtvcc
