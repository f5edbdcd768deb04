// SPDX-License-Identifier: MIT
#include "teletext/teletext_display_decoder.h"

#include <gtest/gtest.h>

#include <functional>

#include "testkit/encoders/teletext_encoder.h"
#include "tests/teletext/page_text.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

using encoders::designationPacket;
using encoders::headerPacket;
using encoders::rowPacket;
using encoders::TeletextHeader;
using encoders::TeletextPacket;
using encoders::TeletextTriplet;
using Packets = std::vector<TeletextPacket>;

constexpr std::uint32_t kPage = 0x888;

// Codes of rows stand as \v for start box, \n for end box and, in octal, \1 to \7 for colours, \14
// to \17 for sizes, \21 to \27 for mosaic colours, \30 for conceal, \33 for ESC.
constexpr std::string_view kBox = "\v\vab\n\n";
constexpr std::string_view kBoxText = "20: 1/7/12 ' ab '\n";

/// The header that ends a page, of one that nobody can key in.
const TeletextPacket kEnd = headerPacket({.page = 0x8FF, .subtitle = false});

TeletextPacket row(std::uint32_t number, std::string_view codes) {
  return rowPacket(kPage, number, codes);
}

/// Keeps what is told as "5: " and the page, or "5: nothing".
class Screen final : public IDisplayListener {
 public:
  void onDisplay(MediaTime time, Subtitle subtitle) override {
    EXPECT_GE(time, last_);
    last_ = time;
    page_ = describe(subtitle);
    told_ += std::to_string(time) + ": " + (page_.empty() ? "nothing\n" : page_);
  }

  const std::string& page() const { return page_; }
  const std::string& told() const { return told_; }

 private:
  MediaTime last_ = 0;
  std::string page_;
  std::string told_;
};

class Lines final : public log::ILogger {
 public:
  void logV(log::Level, const char* format, std::va_list arguments) override {
    char line[200];
    std::vsnprintf(line, sizeof line, format, arguments);
    all += std::string(line) + '\n';
  }
  void nameBufferCounters(const char*) override {}

  std::string all;
};

/// One decoder, its screen and its log.
struct Receiver {
  explicit Receiver(std::uint32_t group = 0, bool isAskedFor = false)
      : decoder(kPage, group, isAskedFor, screen, &lines) {}

  /// The packets come at consecutive times, one unit each.
  Receiver& takeOneByOne(const Packets& packets) {
    for (const auto& packet : packets) take({packet}, time + 1);
    return *this;
  }

  Receiver& take(const Packets& packets, MediaTime at) {
    time = at;
    decoder.decode(encoders::teletextDataField(packets), at);
    return *this;
  }

  Screen screen;
  Lines lines;
  TeletextDisplayDecoder decoder;
  MediaTime time = 0;
};

/// What a page of these packets after a header shows.
std::string page(Packets packets, const TeletextHeader& header = {.page = kPage},
                 std::uint32_t group = 0, bool isAskedFor = false) {
  packets.insert(packets.begin(), headerPacket(header));
  packets.push_back(kEnd);
  Receiver receiver(group, isAskedFor);
  return receiver.take(packets, 1).screen.page();
}

/// What row 20 of a subtitle shows.
std::string line(std::string_view codes, const TeletextHeader& header = {.page = kPage}) {
  const std::string shown = page({row(20, codes)}, header);
  if (shown.empty()) return shown;
  EXPECT_EQ(shown.substr(0, 4), "20: ");
  return shown.substr(4, shown.find('\n') - 4);
}

// 9.3.1 and 7.2.1: a page ends at the next header, wherever PES packets are cut.
TEST(TeletextDisplay, APageIsWholeAtTheNextHeaderAndShownFromItsOwn) {
  const Packets packets = {headerPacket({.page = kPage}), row(20, kBox), row(22, "\v\vcd\n\n"),
                           kEnd};
  const std::string whole = "1: " + std::string(kBoxText) + "22: 1/7/12 ' cd '\n";
  for (std::size_t cut = 0; cut <= packets.size(); ++cut) {
    const auto middle = packets.begin() + static_cast<std::ptrdiff_t>(cut);
    Receiver receiver;
    receiver.take({packets.begin(), middle}, 1).take({middle, packets.end()}, cut == 0 ? 1 : 2);
    EXPECT_EQ(receiver.screen.told(), whole) << cut;
  }
  Receiver receiver;
  receiver.take({packets.begin(), packets.end() - 1}, 1);
  EXPECT_EQ(receiver.screen.told(), "") << "not whole yet";
  receiver.decoder.finish(9);
  EXPECT_EQ(receiver.screen.told(), whole) << "nothing comes any more";
}

TEST(TeletextDisplay, ALivePageIsShownAsFarAsItHasCome) {
  Receiver receiver;
  receiver.take({headerPacket({.page = kPage}), row(20, kBox)}, 5);
  receiver.decoder.settle(5);
  EXPECT_EQ(receiver.screen.told(), "") << "it has not begun before that";
  receiver.decoder.settle(6);
  EXPECT_EQ(receiver.screen.told(), "5: " + std::string(kBoxText));
  receiver.take({row(22, "\v\vcd\n\n"), kEnd}, 7);
  EXPECT_EQ(receiver.screen.told(),
            "5: " + std::string(kBoxText) + "5: " + std::string(kBoxText) + "22: 1/7/12 ' cd '\n")
      << "and goes on";
}

// 9.3.1.3, C11.
TEST(TeletextDisplay, HeadersOfOtherMagazinesEndAPageOnlyInSerialMode) {
  for (const bool isSerial : {false, true}) {
    Receiver receiver;
    receiver.takeOneByOne({headerPacket({.page = kPage, .magazineSerial = isSerial}), row(20, kBox),
                           rowPacket(0x120, 21, kBox),
                           headerPacket({.page = 0x100, .magazineSerial = isSerial}), row(22, kBox),
                           kEnd});
    EXPECT_EQ(receiver.screen.told(), isSerial
                                          ? "1: " + std::string(kBoxText)
                                          : "1: " + std::string(kBoxText) + "22: 1/7/12 ' ab '\n")
        << isSerial;
  }
}

// 9.3.1.3, C4.
TEST(TeletextDisplay, OnlyC4Erases) {
  const auto update = headerPacket({.page = kPage, .erasePage = false});
  Receiver receiver;
  receiver.takeOneByOne({headerPacket({.page = kPage}), row(20, kBox), update,
                         row(22, "\v\vcd\n\n"), update, row(20, "\v\vef\n\n"), kEnd,
                         headerPacket({.page = kPage}), kEnd});
  EXPECT_EQ(receiver.screen.told(),
            "1: 20: 1/7/12 ' ab '\n"
            "3: 20: 1/7/12 ' ab '\n22: 1/7/12 ' cd '\n"
            "5: 20: 1/7/12 ' ef '\n22: 1/7/12 ' cd '\n"
            "8: nothing\n");

  EXPECT_EQ(Receiver()
                .takeOneByOne({headerPacket({.page = kPage, .subcode = 1}), row(20, kBox),
                               headerPacket({.page = kPage, .erasePage = false, .subcode = 0x3F7F}),
                               row(22, kBox), kEnd})
                .screen.page(),
            "22: 1/7/12 ' ab '\n")
      << "another subpage (9.3.1.2)";
}

TEST(TeletextDisplay, ARepeatIsNotToldAgain) {
  Receiver receiver;
  for (MediaTime time = 1; time < 9; time += 2) {
    receiver.take({headerPacket({.page = kPage}), row(20, kBox)}, time).take({kEnd}, time + 1);
  }
  receiver.take({headerPacket({.page = kPage}), row(20, "\v\vac\n\n"), kEnd}, 9);
  EXPECT_EQ(receiver.screen.told(), "1: " + std::string(kBoxText) + "9: 20: 1/7/12 ' ac '\n");
}

// 9.3.1.3: C5 newsflash, C6 subtitle, C10 inhibit display.
TEST(TeletextDisplay, TheFlagsSayWhetherAPageShowsAndWhatOfIt) {
  const Packets boxed = {row(5, "x\v\vab\n\n")};
  const Packets plain = {row(5, "x ab"), row(24, "\1red")};
  const std::string box = "5: 2/7/12 ' ab '\n";
  const std::string all =
      "5: 0/7/12 'x ab                                    '\n"
      "24: 0/1/12 ' red                                    '\n";
  const TeletextHeader noFlags{.page = kPage, .subtitle = false};
  const TeletextHeader newsflash{.page = kPage, .subtitle = false, .newsflash = true};
  EXPECT_EQ(page(boxed, newsflash), box);
  EXPECT_EQ(page(boxed, noFlags), "") << "a page that nobody asked for";
  EXPECT_EQ(page(boxed, noFlags, 0, true), box);
  EXPECT_EQ(page(plain, noFlags, 0, true), all);
  EXPECT_EQ(page(plain, {.page = kPage}, 0, true), "") << "subtitles are what is in boxes";
  for (const bool isSubtitle : {false, true}) {
    EXPECT_EQ(page(boxed, {.page = kPage, .subtitle = isSubtitle, .inhibitDisplay = true}, 0, true),
              "");
  }
  const TeletextHeader clock{
      .page = kPage, .subtitle = false, .suppressHeader = false, .text = "12:00"};
  EXPECT_EQ(page(plain, clock, 0, true), all) << "without the row of the clock";
}

TEST(TeletextDisplay, AHeaderShowsItsBoxesUnlessSuppressed) {
  EXPECT_EQ(page({}, {.page = kPage, .suppressHeader = false, .text = kBox}), "0: 9/7/12 ' ab '\n");
  EXPECT_EQ(page({}, {.page = kPage, .text = kBox}), "");
}

// 12.2, table 26.
TEST(TeletextDisplay, BoxesOpenAndCloseAtPairsOfCodes) {
  EXPECT_EQ(line("ab\v\vcd\n\nef"), "3/7/12 ' cd '");
  EXPECT_EQ(line("ab\vcd"), "");
  EXPECT_EQ(line("\v\vab\vcd\n\n"), "1/7/12 ' ab cd '") << "a single code closes nothing";
  EXPECT_EQ(line("\v\vab\n\bcd"), "1/7/12 ' ab  cd" + std::string(32, ' ') + "'");
  EXPECT_EQ(line("\v\vab\n\n  \v\vcd\n\n"), "1/7/12 ' ab  cd '") << "two boxes";
  EXPECT_EQ(line("\v\v  \n\n"), "") << "a box without letters";
}

TEST(TeletextDisplay, MosaicsAndConcealedLettersAreBlank) {
  EXPECT_EQ(line("\v\v\21ab4@A\1cd\n\n"), "1/7/12 ' ' 2/1/12 '    @A cd '")
      << "@ to _ stay letters among mosaics (15.7.1)";
  EXPECT_EQ(line("\v\va\30bc\1d\n\n"), "1/7/12 ' a   ' 6/1/12 ' d '");
}

TEST(TeletextDisplay, WideLettersCoverTheNextCell) {
  EXPECT_EQ(line("\v\vx\16a-b-\14c\n\n"), "1/7/12 ' x' 3/7/14 ' a<b<' 8/7/12 ' c '");
  EXPECT_EQ(line(std::string(35, ' ') + "\v\v\17ab"), "36/7/12 ' ' 37/7/15 ' a<'");
  EXPECT_EQ(line(std::string(36, ' ') + "\v\v\16a"), "37/7/12 ' ' 38/7/14 ' a'")
      << "there is no next cell";
}

TEST(TeletextDisplay, TheRowBelowDoubleHeightIsHidden) {
  EXPECT_EQ(page({row(20, "\15\v\vab\n\n"), row(21, kBox), row(22, kBox)}),
            "20: 2/7/13 ' ab '\n22: 1/7/12 ' ab '\n");
  EXPECT_EQ(page({row(22, "\17\v\vab\n\n"), row(23, kBox)}), "22: 2/7/15 '<a< '\n");
  EXPECT_EQ(page({row(23, "\15\v\vab\n\n"), row(24, "\17\v\vab\n\n")}),
            "23: 2/7/12 ' ab '\n24: 2/7/14 '<a< '\n")
      << "no room for double height";
}

// 8.1.
TEST(TeletextDisplay, ALetterWithWrongParityNeverReplacesARightOne) {
  const auto damaged = [](std::string_view codes, std::size_t column) {
    auto packet = row(20, codes);
    packet[2 + column] ^= 0x10;
    return packet;
  };
  const auto fresh = headerPacket({.page = kPage});
  const auto update = headerPacket({.page = kPage, .erasePage = false});
  for (const auto& header : {fresh, update}) {
    Receiver receiver;
    receiver.takeOneByOne({fresh, row(20, kBox), header, damaged(kBox, 2), kEnd});
    EXPECT_EQ(receiver.screen.told(), "1: " + std::string(kBoxText));
    EXPECT_EQ(receiver.lines.all, "");
  }
  Receiver receiver;
  receiver.takeOneByOne(
      {fresh, row(20, kBox), fresh, damaged("\v\vcd\n\n", 3), fresh, row(20, "\v\vcd\n\n"), kEnd});
  EXPECT_EQ(receiver.screen.told(),
            "1: 20: 1/7/12 ' ab '\n3: 20: 1/7/12 ' c '\n5: 20: 1/7/12 ' cd '\n")
      << "another text has nothing to do with the one before";
  EXPECT_EQ(receiver.lines.all,
            "teletext page 888, 0.000 s: letters with wrong parity are left blank\n");
  EXPECT_EQ(page({damaged(kBox, 0)}), kBoxText) << "one code of a pair opens a box";
  EXPECT_EQ(page({damaged(kBox, 5)}), kBoxText);
}

// 8.2: what cannot be corrected is not guessed.
TEST(TeletextDisplay, DamagedAddressesAndHeadersAreNotReadAsOthers) {
  auto lost = row(20, kBox);
  lost[1] ^= 0x03;
  EXPECT_EQ(page({lost, row(22, kBox)}), "22: 1/7/12 ' ab '\n");

  auto otherPage = headerPacket({.page = 0x877});
  otherPage[2] ^= 0x03;  // its units
  EXPECT_EQ(page({row(20, kBox), otherPage, row(22, kBox)}), kBoxText)
      << "rows after it may be another page's";

  auto flags = headerPacket({.page = kPage, .nationalOption = 1});
  flags[2 + 5] ^= 0x03;  // C5 and C6
  Receiver receiver;
  receiver.takeOneByOne({flags, row(20, kBox), kEnd});
  EXPECT_EQ(receiver.screen.told(), "1: " + std::string(kBoxText));
  EXPECT_EQ(receiver.lines.all,
            "teletext page 888, 0.000 s: the header is damaged; it is read as the one before\n");
}

// 12.3: enhancements are the page's, in the order of their designation, whenever they come.
TEST(TeletextDisplay, EnhancementsReplaceLettersOfTheWholePage) {
  const auto first = encoders::enhancementPacket(
      kPage, 0, std::vector<TeletextTriplet>(13, TeletextTriplet::row(20)));
  const auto second =
      encoders::enhancementPacket(kPage, 1, std::vector{TeletextTriplet{2, 0x0F, 'q'}});
  const std::string enhanced = "20: 1/7/12 ' æb '\n";
  EXPECT_EQ(page({first, second, row(20, kBox)}), enhanced);
  EXPECT_EQ(page({row(20, kBox), second, first}), enhanced);
  EXPECT_EQ(page({second, row(20, kBox)}), kBoxText) << "its row is not known";
  EXPECT_EQ(Receiver()
                .takeOneByOne({headerPacket({.page = kPage}), first, second, row(20, kBox),
                               headerPacket({.page = kPage}), row(20, kBox), kEnd})
                .screen.told(),
            "1: " + enhanced + "5: " + std::string(kBoxText))
      << "C4 erases them too";
}

// 9.4.2, 9.5.1 and table 32.
TEST(TeletextDisplay, PacketsDesignateTheCharacterSets) {
  constexpr std::uint32_t kRussian = 4 << 3 | 4, kGerman = 1, kGreek = 6 << 3 | 7;
  constexpr std::string_view kLetters = "\v\vB[\n\n";
  const auto shown = [&](const Packets& packets, std::uint32_t option) {
    Packets all = packets;
    all.push_back(row(20, kLetters));
    const auto text = page(all, {.page = kPage, .nationalOption = option}, 1);
    return text.substr(0, text.rfind(" '")).substr(text.find('\'') + 2);
  };
  EXPECT_EQ(shown({}, 0), "BŻ") << "the group that the descriptor's language means";
  EXPECT_EQ(shown({designationPacket(kPage, 28, kRussian)}, 0), "БШ");
  EXPECT_EQ(shown({designationPacket(kPage, 29, kRussian)}, 0), "БШ");
  EXPECT_EQ(
      shown({designationPacket(kPage, 29, kRussian), designationPacket(kPage, 28, kGreek)}, 0),
      "ΒΫ")
      << "a page goes before its magazine";
  EXPECT_EQ(shown({designationPacket(kPage, 28, 0)}, kGerman), "BÄ")
      << "no option designated: the header's";
  EXPECT_EQ(shown({designationPacket(kPage, 28, 0x7F)}, 0), "BŻ") << "designates nothing";
  EXPECT_EQ(shown({designationPacket(0x188, 29, kRussian)}, 0), "BŻ") << "another magazine";
  auto damaged = designationPacket(kPage, 28, kRussian);
  damaged[3] ^= 0xC0;
  EXPECT_EQ(shown({damaged}, 0), "BŻ");
  EXPECT_EQ(shown({}, 5), "B[") << "an option that the group lacks: the basic set";
}

// 12.2, table 26: ESC.
TEST(TeletextDisplay, EscSwitchesBetweenTheSets) {
  constexpr std::uint32_t kHebrew = 10 << 3 | 5;
  const auto text = row(20, "\v\va\33a\33a\n\n");
  const auto next = row(21, "\v\va\n\n");
  EXPECT_EQ(page({designationPacket(kPage, 28, 0, kHebrew), text, next}),
            "20: 1/7/12 ' a ב a '\n21: 1/7/12 ' a '\n");
  EXPECT_EQ(page({designationPacket(kPage, 29, 0, kHebrew), text, next}),
            "20: 1/7/12 ' a ב a '\n21: 1/7/12 ' a '\n");
  EXPECT_EQ(page({text, row(21, "\v\va\33\n\n"), row(22, "\v\va\n\n")}),
            "20: 1/7/12 ' a a a '\n21: 1/7/12 ' a  '\n22: 1/7/12 ' a '\n");
}

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
