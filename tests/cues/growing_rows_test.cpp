// SPDX-License-Identifier: MIT
#include "cues/growing_rows.h"

#include <gmock/gmock.h>

#include "closed_caption/caption_display_decoder.h"
#include "testkit/caption_display.h"
#include "testkit/cue_builder.h"
#include "testkit/encoders/caption_builder.h"

namespace korr::txsub {
namespace {

using encoders::CaptionBuilder;
using model::CaptionMode;
using model::kMillisecond;
using model::MediaTime;
using test_support::DisplayRecorder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

// Captions as an encoder sends them, decoded a pair every 40 ms, and what comes out behind.
class Captions {
 public:
  explicit Captions(GrowingRows::Output output) : rows_(recorder_, output) {}

  Captions& send(const CaptionBuilder& codes) {
    const auto& all = codes.triplets();
    for (std::size_t at = 0; at < all.size(); at += 3, time_ += 40 * kMillisecond) {
      rows_.advance(time_);
      decoder_.decode(std::span(all).subspan(at, 3), time_);
    }
    return *this;
  }
  Captions& wait(MediaTime milliseconds) {
    time_ += milliseconds * kMillisecond;
    return *this;
  }
  Captions& pass(MediaTime milliseconds) {
    wait(milliseconds);
    rows_.advance(time_);
    return *this;
  }
  Captions& settle(MediaTime milliseconds) {
    rows_.settle(milliseconds * kMillisecond);
    return *this;
  }
  const std::vector<DisplayRecorder::Display>& finish() {
    decoder_.finish(time_);
    rows_.finish();
    return recorder_.displays;
  }

 private:
  DisplayRecorder recorder_;
  GrowingRows rows_;
  model::closed_caption::CaptionDisplayDecoder decoder_{1, rows_, nullptr};
  MediaTime time_ = 0;
};

CaptionBuilder rollUp(const char* text) {
  return CaptionBuilder().rollUp(2).carriageReturn().preamble(15).text(text);
}

TEST(GrowingRows, ShowsRowsOfAFileWholeFromTheirFirstLetter) {
  Captions it(GrowingRows::Output::File);
  it.send(rollUp("THE FIRST.")).wait(1000).send(rollUp("A SECOND ONE.")).wait(1000);
  EXPECT_THAT(it.finish(),
              ElementsAre(Pair(120, ElementsAre("15@0:THE FIRST.")),
                          Pair(1440, ElementsAre("14@0:THE FIRST.", "15@0:A SECOND ONE.")),
                          Pair(2720, IsEmpty())));
}

TEST(GrowingRows, TellsPaintOnRowsOneAfterAnother) {
  Captions it(GrowingRows::Output::File);
  it.send(CaptionBuilder().resumeDirectCaptioning().preamble(14).text("WHO IS"));
  it.send(CaptionBuilder().control(0x11, 0x2E).text("there").preamble(15).text("Noe"));
  it.send(CaptionBuilder().control(0x12, 0x36).text("l")).wait(1000);
  EXPECT_THAT(it.finish(), ElementsAre(Pair(80, ElementsAre("14@0:WHO IS[i] there")),
                                       Pair(400, ElementsAre("14@0:WHO IS[i] there", "15@0:Noël")),
                                       Pair(1560, IsEmpty())));
}

TEST(GrowingRows, KeepsWhatWasTakenBackAndWhatCameMuchLater) {
  Captions it(GrowingRows::Output::File);
  it.send(rollUp("A CAT")).wait(1000);
  it.send(CaptionBuilder().backspace().pair(0, 0).control(0x17, 0x20).backspace());
  it.send(CaptionBuilder().text("OW")).wait(5000).send(CaptionBuilder().text("!")).wait(1000);
  EXPECT_THAT(
      it.finish(),
      ElementsAre(Pair(120, ElementsAre("15@0:A CAT")), Pair(1360, ElementsAre("15@0:A COW")),
                  Pair(6440, ElementsAre("15@0:A COW!")), Pair(7480, IsEmpty())))
      << "a row that rested is no longer being written";
}

// Displays as a decoder tells them, without its codes.
class Rows {
 public:
  explicit Rows(GrowingRows::Output output) : rows_(recorder_, output) {}

  Rows& at(MediaTime milliseconds, std::vector<std::string_view> texts,
           CaptionMode mode = CaptionMode::RollUp3) {
    std::vector<CaptionText::TextRow> rows;
    auto number = static_cast<std::int32_t>(16 - texts.size());
    for (const auto text : texts) {
      rows.push_back(captionRow(number++, 0, text));
      rows.back().mode = mode;
    }
    rows_.onDisplay(milliseconds * kMillisecond, captions(std::move(rows)));
    return *this;
  }
  const std::vector<DisplayRecorder::Display>& finish() {
    rows_.finish();
    return recorder_.displays;
  }

 private:
  DisplayRecorder recorder_;
  GrowingRows rows_;
};

TEST(GrowingRows, LeavesNoWrittenCaptionShorterThanTwoFrames) {
  Rows it(GrowingRows::Output::File);
  it.at(0, {"ONE"}).at(500, {"ONE", ""}).at(533, {"ONE", "TWO"}).at(1000, {}).at(2000, {"GONE"});
  it.at(2033, {}).at(2040, {"NEXT"}).at(3000, {});
  EXPECT_THAT(it.finish(),
              ElementsAre(Pair(0, ElementsAre("15@0:ONE")),
                          Pair(533, ElementsAre("14@0:ONE", "15@0:TWO")), Pair(1000, IsEmpty()),
                          Pair(2000, ElementsAre("15@0:GONE")), Pair(2066, IsEmpty()),
                          Pair(2066, ElementsAre("15@0:NEXT")), Pair(3000, IsEmpty())))
      << "nothing on its way, and no letter, is lost";
}

TEST(GrowingRows, PassesPopOnCaptionsAsTheyAre) {
  for (const auto output : {GrowingRows::Output::File, GrowingRows::Output::Live}) {
    Rows it(output);
    it.at(0, {"A"}, CaptionMode::PopOn).at(33, {"AB"}, CaptionMode::PopOn).at(66, {});
    EXPECT_THAT(it.finish(), ElementsAre(Pair(0, ElementsAre("15@0:A")),
                                         Pair(33, ElementsAre("15@0:AB")), Pair(66, IsEmpty())));
  }
}

TEST(GrowingRows, ShowsRowsLiveAsTheyGrowTwiceASecond) {
  Captions it(GrowingRows::Output::Live);
  it.send(rollUp("THIS ROW TAKES MORE THAN A SECON"))
      .pass(200)
      .send(CaptionBuilder().text("D"))
      .pass(460);
  it.pass(100).send(CaptionBuilder().eraseDisplayedMemory()).wait(100);
  EXPECT_THAT(it.finish(),
              ElementsAre(Pair(120, ElementsAre("15@0:TH")),
                          Pair(620, ElementsAre("15@0:THIS ROW TAKES MORE THAN A")),
                          Pair(1120, ElementsAre("15@0:THIS ROW TAKES MORE THAN A SECOND")),
                          Pair(1560, IsEmpty())));
}

// What is cleared before its turn is told all the same.
TEST(GrowingRows, LosesNoLetterLive) {
  Captions it(GrowingRows::Output::Live);
  it.send(rollUp("SHORT")).send(CaptionBuilder().eraseDisplayedMemory());
  EXPECT_THAT(it.finish(), ElementsAre(Pair(120, ElementsAre("15@0:SH")),
                                       Pair(200, ElementsAre("15@0:SHORT")), Pair(240, IsEmpty())));
}

// What `settle` is called for is a boundary of segments.
TEST(GrowingRows, ShowsWhatHadComeAtABoundary) {
  Captions it(GrowingRows::Output::Live);
  it.send(rollUp("SHORT")).settle(170).settle(230).send(CaptionBuilder().text("ER ROW")).pass(600);
  EXPECT_THAT(it.finish(),
              ElementsAre(Pair(120, ElementsAre("15@0:SH")), Pair(200, ElementsAre("15@0:SHORT")),
                          Pair(700, ElementsAre("15@0:SHORTER ROW")), Pair(960, IsEmpty())));
}

// The letters of the windows that a listener is told, and when.
class WindowRecorder final : public encoding::subtitling::IDisplayListener {
 public:
  void onDisplay(MediaTime time, encoding::subtitling::Subtitle subtitle) override {
    told += std::to_string(time / kMillisecond) + ':';
    for (const auto& window : subtitle.windowText()->windows) {
      for (const auto& row : window.rows) {
        for (const auto& run : row.runs) {
          for (const auto& glyph : run.glyphs) told += glyph.view();
        }
      }
    }
    told += ' ';
  }
  std::string told;
};

TEST(GrowingRows, ThrottlesOnlyWindowsThatGrow) {
  using encoding::subtitling::GlyphText;
  using encoding::subtitling::WindowText;
  WindowRecorder recorder;
  GrowingRows rows(recorder, GrowingRows::Output::Live);
  const auto show = [&](MediaTime time, std::string_view letters, std::uint8_t id = 0) {
    WindowText::Run run;
    for (std::size_t i = 0; i < letters.size(); ++i) {
      run.glyphs.emplace_back(letters.substr(i, 1));
    }
    WindowText text;
    text.windows.push_back({.id = id, .rowCount = 1, .columnCount = 32, .rows = {{0, {run}}}});
    rows.advance(time * kMillisecond);
    rows.onDisplay(time * kMillisecond, encoding::subtitling::Subtitle(std::move(text)));
  };
  show(0, "A");
  show(100, "AB");
  show(200, "ABC");
  show(600, "ABCD");
  show(700, "XY", 1);  // another caption is there at once, and nothing of the last one is lost
  show(750, "XYZ", 1);
  rows.advance(1300 * kMillisecond);
  EXPECT_EQ(recorder.told, "0:A 500:ABC 600:ABCD 700:XY 1200:XYZ ");
}

}  // namespace
}  // namespace korr::txsub
