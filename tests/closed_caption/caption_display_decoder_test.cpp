// SPDX-License-Identifier: MIT
#include "closed_caption/caption_display_decoder.h"

#include <gmock/gmock.h>

#include <string>

#include "testkit/caption_display.h"
#include "testkit/encoders/caption_builder.h"

namespace korr::encoding::subtitling::closed_caption {
namespace {

using encoders::CaptionBuilder;
using test_support::DisplayRecorder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr MediaTime kFrame = kSecond / 30;

class CountingLogger final : public log::ILogger {
 public:
  void logV(log::Level, const char*, std::va_list) override { ++lines; }
  void nameBufferCounters(const char*) override {}
  int lines = 0;
};

// A receiver of one service; units come a frame apart.
class Receiver {
 public:
  explicit Receiver(std::uint32_t service = 1) : decoder_(service, recorder_, &logger_) {}

  // All in one unit, of which only the end shows.
  Receiver& at(MediaTime time, const std::vector<std::uint8_t>& unit) {
    decoder_.decode(unit, time_ = time);
    return *this;
  }
  Receiver& feed(const CaptionBuilder& codes) { return at(time_ + kFrame, codes.triplets()); }

  // A pair each frame, as line 21 sends them.
  Receiver& send(const CaptionBuilder& codes) {
    const auto& all = codes.triplets();
    for (std::size_t at = 0; at < all.size(); at += 3) {
      feedTriplet({all[at], all[at + 1], all[at + 2]});
    }
    return *this;
  }
  Receiver& feedTriplet(const std::vector<std::uint8_t>& triplet) {
    return at(time_ + kFrame, triplet);
  }
  Receiver& finish(MediaTime end) {
    decoder_.finish(end);
    return *this;
  }

  std::vector<std::string> rows() const {
    return displays().empty() ? std::vector<std::string>{} : displays().back().second;
  }
  const std::vector<DisplayRecorder::Display>& displays() const { return recorder_.displays; }
  int lines() const { return logger_.lines; }

 private:
  DisplayRecorder recorder_;
  CountingLogger logger_;
  CaptionDisplayDecoder decoder_;
  MediaTime time_ = 0;
};

CaptionBuilder popOn(int row = 15, std::uint8_t attribute = 0x10) {
  return CaptionBuilder().resumeCaptionLoading().preamble(row, attribute);
}

CaptionBuilder rollUp(int depth, int row = 15) {
  return CaptionBuilder().rollUp(depth).carriageReturn().preamble(row);
}

CaptionBuilder paintOn(int row, std::uint8_t attribute = 0x10) {
  return CaptionBuilder().resumeDirectCaptioning().preamble(row, attribute);
}

// The one row of a pop-on caption.
std::string rowOf(CaptionBuilder codes) {
  const auto rows = Receiver().feed(codes.endOfCaption()).rows();
  return rows.size() == 1 ? rows.front() : std::to_string(rows.size()) + " rows";
}

CaptionBuilder returns(int count, int field = 1) {
  CaptionBuilder codes(field);
  for (int i = 0; i < count; ++i) codes.carriageReturn();
  return codes;
}

// CEA-608, 8.3: "encoding three CRs is necessary to result in two", in both fields.
TEST(FieldIntake, DropsTheRepetitionThatFollowsAtOnceInEitherField) {
  for (const int field : {1, 2}) {
    const auto rowAfter = [field](const CaptionBuilder& codes) {
      Receiver it(field == 1 ? 1 : 3);
      it.feed(CaptionBuilder(field).rollUp(4).preamble(15).text("A")).send(codes);
      return it.rows();
    };
    EXPECT_THAT(rowAfter(returns(2, field)), ElementsAre("14@0:A")) << field;
    EXPECT_THAT(rowAfter(returns(3, field)), ElementsAre("13@0:A")) << field;
    EXPECT_THAT(rowAfter(returns(1, field).pair(0, 0).pair(0, 0).carriageReturn()),
                ElementsAre("14@0:A"))
        << "null pairs part nothing; field " << field;
    EXPECT_THAT(rowAfter(returns(1, field).control(0x17, 0x21).carriageReturn()),
                ElementsAre("13@0:A"))
        << "another code parts them; field " << field;
  }
  EXPECT_EQ(rowOf(popOn().control(0x11, 0x37).twice().text("MUSIC").control(0x11, 0x37).twice()),
            "15@0:♪MUSIC♪")
      << "text between parts them";

  EXPECT_EQ(rowOf(popOn().control(0x11, 0x37).text("MUSIC").control(0x11, 0x37)), "15@0:♪MUSIC♪");

  // A code that comes singly and once more much later is no repetition.
  Receiver apart;
  apart.feed(CaptionBuilder().rollUp(4).preamble(15).text("A")).feed(returns(1));
  apart.at(2 * kSecond, returns(1).triplets());
  EXPECT_THAT(apart.rows(), ElementsAre("13@0:A"));
}

// 47 CFR 79.101, control codes: a damaged copy costs nothing.
TEST(FieldIntake, ActsOnTheUndamagedCopyOfACode) {
  const auto sound = returns(1).take();
  auto first = sound;
  first[1] ^= 0x01;
  auto second = sound;
  second[2] ^= 0x01;
  auto letter = sound;  // known as the repetition by its second byte
  letter[1] ^= 0x20;
  for (const auto& [one, two] :
       {std::pair(first, sound), std::pair(second, sound), std::pair(sound, first),
        std::pair(sound, second), std::pair(sound, letter)}) {
    Receiver it;
    it.feed(CaptionBuilder().rollUp(4).preamble(15).text("A")).feedTriplet(one).feedTriplet(two);
    EXPECT_THAT(it.rows(), ElementsAre("14@0:A"));
    EXPECT_EQ(it.lines(), 1);
  }
}

// CEA-608, 8.4: field 2 moves 0x14 to 0x15 for the miscellaneous codes and for nothing else.
TEST(FieldIntake, MovesOnlyTheMiscellaneousCodesOfField2) {
  Receiver cc3(3);
  for (int row = 1; row <= 15; ++row) {
    cc3.feed(CaptionBuilder(2).control(0x14, 0x29).preamble(row).text("x"));
  }
  ASSERT_EQ(cc3.rows().size(), 15u) << "0x14 and 0x15 address rows 14, 15, 5 and 6";
  EXPECT_THAT(Receiver(3)
                  .feed(CaptionBuilder(2).pair(0x14, 0x20).preamble(15).text("A").pair(0x14, 0x2F))
                  .rows(),
              ElementsAre("15@0:A"))
      << "0x14 is taken too";
  EXPECT_THAT(Receiver(4)
                  .feed(CaptionBuilder(2, 2).resumeDirectCaptioning().preamble(14).text("A"))
                  .feed(CaptionBuilder(2, 1).resumeDirectCaptioning().text("no"))
                  .feed(CaptionBuilder(2, 2).control(0x11, 0x37))
                  .rows(),
              ElementsAre("14@0:A♪"))
      << "text belongs to the channel of the code before it";
  EXPECT_THAT(Receiver(1).feed(CaptionBuilder(1).pair(0x15, 0x29).text("no")).rows(), IsEmpty());
}

// CEA-608, 8.6: a packet hides what it holds until its end or a control code of captions.
TEST(FieldIntake, HidesExtendedDataOfField2) {
  const auto begun = CaptionBuilder(2).resumeDirectCaptioning().preamble(15).text("AB");
  const CaptionBuilder packet = CaptionBuilder(2).pair(0x01, 0x03).text("Star");
  EXPECT_THAT(Receiver(3).feed(begun).feed(packet).feed(CaptionBuilder(2).text("no")).rows(),
              ElementsAre("15@0:AB"));
  EXPECT_THAT(Receiver(3)
                  .feed(begun)
                  .feed(packet)
                  .feed(CaptionBuilder(2).resumeDirectCaptioning().text("CD"))
                  .rows(),
              ElementsAre("15@0:ABCD"));
  EXPECT_THAT(Receiver(3)
                  .feed(begun)
                  .feed(packet)
                  .feed(CaptionBuilder(2).pair(0x02, 0x03).text("Trek").pair(0x0F, 0x1D).text("CD"))
                  .rows(),
              ElementsAre("15@0:ABCD"));
  EXPECT_THAT(Receiver(1).feed(paintOn(15).text("AB").pair(0x01, 0x03).text("CD")).rows(),
              ElementsAre("15@0:ABCD"))
      << "field 1 has none";
}

// CEA-608, 5.3 and table 50.
TEST(FieldIntake, ShowsASolidBlockForWrongParityUnlessItWasStripped) {
  auto unit = paintOn(15).text("WIND").take();
  unit[unit.size() - 1] ^= 0x80;
  Receiver damaged;
  EXPECT_THAT(damaged.at(0, unit).rows(), ElementsAre("15@0:WIN█"));
  unit[unit.size() - 2] ^= 0x04;
  EXPECT_THAT(damaged.at(kFrame, unit).rows(), ElementsAre("15@0:WI██"));
  EXPECT_EQ(damaged.lines(), 1) << "one line for both";

  auto stripped = CaptionBuilder()
                      .eraseDisplayedMemory()
                      .resumeDirectCaptioning()
                      .preamble(15)
                      .text("THE WHOLE FILE HAS LOST IT.")
                      .take();
  for (std::size_t i = 0; i < stripped.size(); ++i) {
    if (i % 3 != 0) stripped[i] &= 0x7F;
  }
  Receiver without;
  EXPECT_THAT(without.at(0, stripped).rows(), ElementsAre("15@0:THE WHOLE FILE HAS LOST IT."));
  EXPECT_EQ(without.lines(), 0);

  // Parity that begins, or ends, in the middle is known after a window of bytes.
  auto sound = paintOn(14).text("PARITY IS BACK, AND CHECKED.").take();
  sound[sound.size() - 1] ^= 0x80;
  without.at(kFrame, sound);
  EXPECT_THAT(without.rows(),
              ElementsAre("14@0:PARITY IS BACK, AND CHECKED█", "15@0:THE WHOLE FILE HAS LOST IT."));
  for (MediaTime i = 2; i < 6; ++i) damaged.at(i * kFrame, stripped);
  EXPECT_THAT(damaged.rows(), ElementsAre("15@0:THE WHOLE FILE HAS LOST IT."));
}

// CEA-608, B.8.3 and C.10.
TEST(CaptionReceiver, ShowsPopOnCaptionsAtTheirEnd) {
  const auto end = CaptionBuilder().resumeCaptionLoading().endOfCaption();
  Receiver it;
  it.send(popOn().text("ONE")).feed(end).feed(popOn(14).text("TWO")).feed(end);
  it.feed(CaptionBuilder().eraseNonDisplayedMemory()).feed(end).feed(end);
  EXPECT_THAT(it.displays(),
              ElementsAre(Pair(167, ElementsAre("15@0:ONE")), Pair(233, ElementsAre("14@0:TWO")),
                          Pair(300, IsEmpty()), Pair(333, ElementsAre("14@0:TWO"))))
      << "each memory shows what was written to it";
  it.feed(CaptionBuilder().eraseDisplayedMemory()).feed(end).feed(end);
  EXPECT_THAT(it.rows(), IsEmpty()) << "what is erased never comes back";
}

// CEA-608, B.7: text and erasures act on what is seen.
TEST(CaptionReceiver, WritesPaintOnTextToTheScreen) {
  Receiver it;
  it.feed(popOn(1).text("POP").endOfCaption()).feed(popOn(3).text("LATER"));
  it.send(paintOn(2).text("ABC"));
  EXPECT_THAT(it.displays(), ElementsAre(Pair(33, ElementsAre("1@0:POP")),
                                         Pair(167, ElementsAre("1@0:POP", "2@0:AB")),
                                         Pair(200, ElementsAre("1@0:POP", "2@0:ABC"))));
  it.feed(CaptionBuilder().preamble(1).control(0x14, 0x24).preamble(2, 0x12).text("!"));
  EXPECT_THAT(it.rows(), ElementsAre("2@0:ABC_!")) << "DER takes a row, an indent nothing";
  it.feed(CaptionBuilder().eraseDisplayedMemory());
  it.feed(CaptionBuilder().resumeCaptionLoading().endOfCaption());
  EXPECT_THAT(it.rows(), ElementsAre("3@0:LATER"));
}

// 47 CFR 79.101, roll-up; CEA-608, B.8.1.
TEST(CaptionReceiver, RollsUpWithinItsWindow) {
  Receiver it;
  for (const char* line : {"ONE", "TWO", "THREE"}) {
    it.feed(rollUp(2, 14).text(line));
  }
  EXPECT_THAT(it.rows(), ElementsAre("13@0:TWO", "14@0:THREE"));
  it.feed(rollUp(3, 14).text("FOUR"));
  EXPECT_THAT(it.rows(), ElementsAre("12@0:TWO", "13@0:THREE", "14@0:FOUR"))
      << "a deeper window keeps its rows";
  it.feed(CaptionBuilder().preamble(5, 0x14).text("5"));
  EXPECT_THAT(it.rows(), ElementsAre("3@0:TWO", "4@0:THREE", "5@0:FOUR____5"))
      << "another base row moves all of them (C.7)";
  it.feed(CaptionBuilder().preamble(1, 0x16));
  EXPECT_THAT(it.rows(), ElementsAre("1@0:TWO", "2@0:THREE", "3@0:FOUR____5"))
      << "the depth wins over the base row (C.4)";
  it.feed(CaptionBuilder().rollUp(2));
  EXPECT_THAT(it.rows(), ElementsAre("2@0:THREE", "3@0:FOUR____5")) << "a row turned off is gone";
  it.feed(CaptionBuilder().rollUp(4));
  EXPECT_THAT(it.rows(), ElementsAre("3@0:THREE", "4@0:FOUR____5"));
  it.feed(CaptionBuilder(1, 2).rollUp(2).text("other")).feed(CaptionBuilder().rollUp(4).text("6"));
  EXPECT_THAT(it.rows(), ElementsAre("3@0:THREE", "4@0:FOUR____5___6"))
      << "after an interruption the pen stays where it was (C.15)";
  it.feed(CaptionBuilder().eraseDisplayedMemory().rollUp(2).text("LOW"));
  EXPECT_THAT(it.rows(), ElementsAre("15@0:LOW")) << "a new window without a preamble";
}

// CEA-608, C.10 and C.11.
TEST(CaptionReceiver, SwitchesStyles) {
  Receiver it;
  it.feed(popOn(3).text("SHOWN").endOfCaption()).feed(popOn(4).text("HIDDEN"));
  it.feed(CaptionBuilder().rollUp(2).text("ROLL"));
  EXPECT_THAT(it.rows(), ElementsAre("15@0:ROLL")) << "roll-up clears the screen";
  it.feed(CaptionBuilder().endOfCaption().text("!"));
  EXPECT_THAT(it.rows(), IsEmpty()) << "and the other memory, which is now written to";
  it.feed(CaptionBuilder().resumeCaptionLoading().endOfCaption());
  EXPECT_THAT(it.rows(), ElementsAre("15@0:ROLL!"));
  it.feed(paintOn(13).text("PAINT").carriageReturn());
  EXPECT_THAT(it.rows(), ElementsAre("13@0:PAINT", "15@0:ROLL!")) << "the others clear nothing";
}

// CEA-608, 7.7 and C.16; text services are not shown.
TEST(CaptionReceiver, LeavesTextServicesOut) {
  Receiver it;
  it.feed(CaptionBuilder().text("no").preamble(1).text("no"));
  it.feed(paintOn(15).text("CC"));
  it.feed(
      CaptionBuilder().control(0x14, 0x2A).preamble(3).text("no").backspace().control(0x14, 0x24));
  it.feed(CaptionBuilder().control(0x14, 0x2B).carriageReturn().control(0x11, 0x30));
  EXPECT_THAT(it.rows(), ElementsAre("15@0:CC"));
  it.feed(CaptionBuilder().eraseDisplayedMemory().text("no"));
  EXPECT_THAT(it.rows(), IsEmpty()) << "acts, and ends no text";
  it.feed(CaptionBuilder().resumeDirectCaptioning().text("!"));
  EXPECT_THAT(it.rows(), ElementsAre("15@2:!"));
}

// 47 CFR 79.101 (h): spacing attributes.
TEST(CaptionReceiver, FollowsMidRowCodes) {
  EXPECT_EQ(
      rowOf(popOn(15, 0x08).text("A").control(0x11, 0x2E).text("B").control(0x11, 0x21).text("C")),
      "15@0:[red]A[red i] B[u] C")
      << "italics keep the colour, a colour ends italics, each code takes a cell";
  EXPECT_EQ(rowOf(popOn(15, 0x0F).text("A").control(0x11, 0x24).text("B")), "15@0:[i u]A[blue] B");
  EXPECT_EQ(rowOf(popOn().text("A").control(0x14, 0x28).text("B")), "15@0:A B") << "flash on";
  EXPECT_EQ(rowOf(popOn().control(0x11, 0x20)), "0 rows") << "nothing to read";
  EXPECT_EQ(rowOf(popOn()
                      .control(0x11, 0x2E)
                      .text("A")
                      .preamble(15)
                      .text("B")
                      .preamble(15, 0x12)
                      .text("C")),
            "15@0:BA__C")
      << "whoever overwrites the code takes it from the letters (CEA-608, C.7)";
}

// CEA-608, table 53 and C.7.
TEST(CaptionReceiver, PlacesPreamblesAndTabs) {
  for (int row = 1; row <= 15; ++row) {
    EXPECT_EQ(rowOf(popOn(row, 0x00).text("x")), std::to_string(row) + "@0:x");
  }
  EXPECT_EQ(rowOf(popOn(15, 0x16).control(0x17, 0x22).text("x")), "15@14:x");
  EXPECT_EQ(rowOf(popOn(15, 0x1E).control(0x17, 0x23).control(0x17, 0x22).text("x")), "15@31:x")
      << "never beyond column 32 (C.13)";
  EXPECT_EQ(rowOf(popOn(15, 0x13).control(0x17, 0x21).text("x")), "15@5:[u]x");
  EXPECT_EQ(rowOf(popOn(15, 0x06).text("ABCD").preamble(15, 0x13).text("E")), "15@0:[cyan]ABCDE")
      << "a character takes on the attributes of the one before it";
  EXPECT_EQ(rowOf(popOn(15, 0x06).text("ABC").preamble(15, 0x12).text("E")), "15@0:[cyan]ABC_[]E");
  EXPECT_EQ(rowOf(popOn().text("A").control(0x11, 0x39).text("B").control(0x17, 0x21).text("C")),
            "15@0:A_B_C")
      << "transparent space";
}

// CEA-608, 6.2: they replace the space before them and last to the end of the row.
TEST(CaptionReceiver, FollowsBackgroundAndForegroundAttributes) {
  EXPECT_EQ(rowOf(popOn().text("A ").control(0x10, 0x25).text("B").control(0x11, 0x22).text("C")),
            "15@0:A[on blue half] B[green on blue half] C");
  EXPECT_EQ(rowOf(popOn(15, 0x0E).text("A ").control(0x17, 0x2F).text("B")),
            "15@0:[i]A[black u] B");
  EXPECT_EQ(rowOf(popOn().text("A ").control(0x17, 0x2D).text("B")), "15@0:A[clear] B");
  EXPECT_EQ(rowOf(popOn().control(0x10, 0x28).text("A").preamble(15, 0x14).text("B")),
            "15@0:[on red] A______B");
  EXPECT_THAT(Receiver()
                  .feed(paintOn(14).text(" ").control(0x10, 0x28).text("A").preamble(15).text("B"))
                  .rows(),
              ElementsAre("14@0:[on red] A", "15@0:B"));
}

// CEA-608, 6.4.2, B.12 and C.14.
TEST(CaptionReceiver, TakesBackCharacters) {
  EXPECT_EQ(rowOf(popOn().text("Noe").control(0x12, 0x36).text("l")), "15@0:Noël");
  EXPECT_EQ(rowOf(popOn().control(0x12, 0x20).text("x")), "15@0:Áx") << "first on its row";
  EXPECT_EQ(rowOf(popOn().text("AB").backspace().twice().text("C")), "15@0:AC");
  EXPECT_EQ(rowOf(popOn().backspace().text("A")), "15@0:A") << "ignored in column 1";
  EXPECT_EQ(rowOf(popOn().text("A").control(0x11, 0x28).backspace().text("B")), "15@0:AB")
      << "a mid-row code goes like a character";
  EXPECT_EQ(rowOf(popOn().text("ABCDEFGH").preamble(15, 0x12).control(0x14, 0x24)), "15@0:ABCD");

  std::string braces;
  for (int code = 0x28; code < 0x40; ++code) {
    braces += rowOf(popOn().text("x").control(0x13, static_cast<std::uint8_t>(code))).substr(5);
  }
  EXPECT_EQ(braces, "õ{}\\^_|~ÄäÖöß¥¤|ÅåØø┌┐└┘");
}

// A receiver writes all of it to column 32 (CEA-608, C.13); files lose no letter.
TEST(CaptionReceiver, KeepsTextThatIsAuthoredPastColumn32) {
  const std::string text = "THIS ROW HAS FORTY LETTERS, NOT THIRTY-2";
  ASSERT_EQ(text.size(), 40u);
  EXPECT_EQ(rowOf(popOn().text(text)), "15@0:" + text);
  EXPECT_EQ(rowOf(popOn().text(text).backspace().text("!")), "15@0:" + text.substr(0, 39) + "!");
  EXPECT_EQ(rowOf(popOn().text(std::string(300, 'a')).text("b")).size(),
            5 + CaptionScreen::kColumns)
      << "but no row without end";
}

// CEA-608, C.9.
TEST(CaptionDisplayDecoder, ErasesACaptionWithoutDataFor16Seconds) {
  Receiver it;
  it.at(kSecond, popOn().text("A").endOfCaption().take());
  it.at(16 * kSecond, CaptionBuilder().pair(0, 0).take())
      .at(16 * kSecond, popOn(14).text("B").take());
  it.at(31 * kSecond, CaptionBuilder(1, 2).rollUp(2).text("other").take());
  it.at(40 * kSecond, CaptionBuilder().endOfCaption().take());
  it.finish(58 * kSecond);
  EXPECT_THAT(it.displays(),
              ElementsAre(Pair(1000, ElementsAre("15@0:A")), Pair(32000, IsEmpty()),
                          Pair(40000, ElementsAre("14@0:B")), Pair(56000, IsEmpty())))
      << "pairs of the service count, and the other memory is kept";

  for (const MediaTime end : {MediaTime{1}, MediaTime{2}}) {
    Receiver ends;
    ends.at(kSecond, popOn().text("A").endOfCaption().take()).finish(end * kSecond);
    EXPECT_EQ(ends.displays().size(), end)
        << "what ends with the last unit is left to the listener";
  }
}

TEST(CaptionDisplayDecoder, TellsNothingWhereNothingChanges) {
  Receiver it;
  it.feed(paintOn(15).text("A")).feed(popOn().text("A").endOfCaption()).feed(popOn());
  it.feed(
      CaptionBuilder().eraseNonDisplayedMemory().resumeDirectCaptioning().preamble(1).text(" "));
  EXPECT_THAT(it.displays(), ElementsAre(Pair(33, ElementsAre("15@0:A"))));
}

TEST(CaptionDisplayDecoder, SurvivesWhatIsNoCaption) {
  auto unit = popOn().text("Hi").endOfCaption().take();
  for (const int header : {0xF8, 0xFE, 0xFF}) {  // not valid; DTVCC
    auto other = unit;
    for (std::size_t i = 0; i < other.size(); i += 3) other[i] = static_cast<std::uint8_t>(header);
    EXPECT_THAT(Receiver().at(0, other).displays(), IsEmpty());
  }
  unit.pop_back();
  EXPECT_THAT(Receiver().at(0, unit).at(0, {}).displays(), IsEmpty()) << "its end was cut";
  for (const std::uint32_t service : {0u, 5u}) {
    EXPECT_THAT(Receiver(service).feed(popOn().text("Hi").endOfCaption()).displays(), IsEmpty());
  }
  Receiver back;
  back.at(kSecond, paintOn(15).text("A").take()).at(0, CaptionBuilder().text("B").take());
  EXPECT_THAT(back.displays(),
              ElementsAre(Pair(1000, ElementsAre("15@0:A")), Pair(1000, ElementsAre("15@0:AB"))));
}

}  // namespace
}  // namespace korr::encoding::subtitling::closed_caption
