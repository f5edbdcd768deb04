// SPDX-License-Identifier: MIT
#include "cues/cue_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/cue_builder.h"

namespace korr::txsub {
namespace {

using testing::ElementsAre;
using testing::Pair;

class CueRecorderTest : public testing::Test, protected ICueListener {
 protected:
  void show(MediaTime time, model::Subtitle subtitle) {
    recorder_.onDisplay(time, std::move(subtitle));
  }
  void clear(MediaTime time) { show(time, captions({})); }

  void onCue(const Cue& cue) override { cues_.emplace_back(cue.start, cue.stop); }

  std::vector<std::pair<MediaTime, MediaTime>> cues_;
  CueRecorder recorder_{*this, 20};
};

model::Subtitle text(std::string_view words) {
  return captions({captionRow(15, 0, words)});
}

model::Subtitle page(std::int32_t number, MediaTime start, MediaTime end, const Box& box) {
  model::SubtitleBitmap picture = display(1, 1, box);
  picture.pageState = number;
  picture.start = start;
  picture.end = end;
  return model::Subtitle(std::move(picture));
}

constexpr Box kFull{.x = 0, .y = 0, .width = 1, .height = 1, .grey = 255};
constexpr Box kEmpty{};

TEST_F(CueRecorderTest, JoinsEqualSubtitlesThatFollowAtOnce) {
  show(0, text("A"));
  show(20, text("A"));
  show(50, text("B"));
  show(50, text("B"));
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 50)));
  clear(60);
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 50), Pair(50, 60))) << "given out as it goes";
  show(60, text("B"));
  recorder_.finish(70);
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 50), Pair(50, 60), Pair(60, 70)));
}

TEST_F(CueRecorderTest, MakesNoCueOfNothing) {
  show(0, text(""));
  EXPECT_FALSE(recorder_.hasShown());
  show(10, text("A"));
  EXPECT_TRUE(recorder_.hasShown());
  show(10, text("B"));  // A is never seen
  clear(20);
  recorder_.finish(90);
  EXPECT_THAT(cues_, ElementsAre(Pair(10, 20)));
}

TEST_F(CueRecorderTest, ShowsWhatNothingEndsForASegment) {
  show(10, text("A"));
  show(11 + model::kDay, text("B"));  // a break in time
  recorder_.finish(11 + model::kDay);
  EXPECT_THAT(cues_, ElementsAre(Pair(10, 30), Pair(11 + model::kDay, 31 + model::kDay)));
}

TEST_F(CueRecorderTest, EndsAPictureWhenItsPageTimesOut) {
  show(0, page(7, 0, 300, kFull));
  show(1000, page(8, 1000, 1400, kFull));
  show(1300, page(8, 1000, 1600, kFull));  // repeated, and stays longer
  recorder_.finish(1500);
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 300), Pair(1000, 1600)));

  EXPECT_FALSE(recorder_.hasTimedOutAtOnce());
  show(2000, page(9, 2000, 2000, kFull));
  EXPECT_TRUE(recorder_.hasTimedOutAtOnce());
}

TEST_F(CueRecorderTest, MakesNoCueOfAPageThatClearsTheScreen) {
  show(0, page(7, 0, 9000, kFull));
  show(1000, page(8, 1000, 9000, kEmpty));
  recorder_.finish(2000);
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 1000)));
}

}  // namespace
}  // namespace korr::txsub
