#include "cues/subtitle_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cues/cue_builder.h"

namespace korr::txsub {
namespace {

using testing::ElementsAre;
using testing::Pair;

// Plays the chain: each step shows a subtitle from one time to the next.
class RecorderTest : public testing::Test, protected ICueListener, model::ISubtitleContainer {
 protected:
  void show(MediaTime from, MediaTime to, model::Subtitle subtitle) {
    next_ = &subtitle;
    model::ByteBuffer document;
    writer_->convert(document, from);
    deliver(from, to);
  }

  void deliver(MediaTime from, MediaTime to) {
    auto buffer = recorder_.getBuffer();
    buffer->setTime(from, to);
    recorder_.deliver(std::move(buffer));
  }

  void onCue(const Cue& cue) override { cues_.emplace_back(cue.start, cue.stop); }

  model::Subtitle currentSubtitle(MediaTime) override { return std::move(*next_); }

  model::Subtitle* next_ = nullptr;
  std::vector<std::pair<MediaTime, MediaTime>> cues_;
  SubtitleRecorder recorder_{*this};
  std::unique_ptr<model::ISubtitleConverter> writer_ = recorder_.makeWriter(*this);
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

TEST_F(RecorderTest, JoinsEqualSubtitlesOverAdjoiningIntervals) {
  show(0, 20, text("A"));
  deliver(20, 40);  // the same document once more
  show(40, 50, text("A"));
  show(50, 60, text("B"));
  recorder_.finish();
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 50), Pair(50, 60)));
}

TEST_F(RecorderTest, MakesNoCueOfNothingAndTwoOfAnInterruptedOne) {
  show(0, 10, text(""));
  EXPECT_FALSE(recorder_.hasShown());
  show(10, 20, text("A"));
  EXPECT_TRUE(recorder_.hasShown());
  show(20, 30, captions({}));
  show(30, 40, text("A"));
  show(70, 80, text("A"));  // a break in time
  recorder_.finish();
  EXPECT_THAT(cues_, ElementsAre(Pair(10, 20), Pair(30, 40), Pair(70, 80)));
}

TEST_F(RecorderTest, EndsAPictureWhenItsPageTimesOut) {
  show(0, 1000, page(7, 0, 300, kFull));
  deliver(1000, 2000);
  recorder_.finish();
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 300)));
}

TEST_F(RecorderTest, MakesNoCueOfAPageThatClearsTheScreen) {
  show(0, 1000, page(7, 0, 9000, kFull));
  show(1000, 2000, page(8, 1000, 9000, kEmpty));
  recorder_.finish();
  EXPECT_THAT(cues_, ElementsAre(Pair(0, 1000)));
}

}  // namespace
}  // namespace korr::txsub
