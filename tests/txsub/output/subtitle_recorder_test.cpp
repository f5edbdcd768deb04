#include "txsub/output/subtitle_recorder.h"

#include <gtest/gtest.h>

#include <deque>

#include "tests/txsub/output/cue_builder.h"

namespace korr::txsub {
namespace {

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

  void onCue(const Cue& cue) override { cues_.push_back(cue); }

  model::Subtitle currentSubtitle(MediaTime) override { return std::move(*next_); }

  model::Subtitle* next_ = nullptr;
  std::vector<Cue> cues_;
  SubtitleRecorder recorder_{*this};
  std::unique_ptr<model::ISubtitleConverter> writer_ = recorder_.makeWriter(*this);
};

model::Subtitle text(std::string_view words) {
  return captions({captionRow(15, {captionRun(0, words)})});
}

model::Subtitle bitmap(std::int32_t page, MediaTime start, MediaTime end,
                       std::uint8_t alpha = 255) {
  auto pixels = std::make_shared<model::PixelBuffer>(1, 1);
  pixels->addPaintedRows({.first = 0, .end = 1});
  pixels->data()[3] = alpha;
  model::SubtitleBitmap picture;
  picture.visible = 1;
  picture.width = picture.height = 1;
  picture.pixels = pixels;
  picture.pageState = page;
  picture.start = start;
  picture.end = end;
  return model::Subtitle(std::move(picture));
}

TEST_F(RecorderTest, JoinsEqualSubtitlesOverAdjoiningIntervals) {
  show(0, 20, text("A"));
  deliver(20, 40);  // the same document once more
  show(40, 50, text("A"));
  show(50, 60, text("B"));
  recorder_.finish();
  ASSERT_EQ(cues_.size(), 2U);
  EXPECT_EQ(cues_[0].start, 0U);
  EXPECT_EQ(cues_[0].stop, 50U);
  EXPECT_EQ(cues_[1].start, 50U);
  EXPECT_EQ(cues_[1].stop, 60U);
}

TEST_F(RecorderTest, MakesNoCueOfNothingAndTwoOfAnInterruptedOne) {
  show(0, 10, captions({captionRow(15, {captionRun(0, "")})}));
  EXPECT_FALSE(recorder_.hasShown());
  show(10, 20, text("A"));
  EXPECT_TRUE(recorder_.hasShown());
  show(20, 30, captions({}));
  show(30, 40, text("A"));
  show(70, 80, text("A"));  // a break in time
  recorder_.finish();
  ASSERT_EQ(cues_.size(), 3U);
  EXPECT_EQ(cues_[0].stop, 20U);
  EXPECT_EQ(cues_[1].start, 30U);
  EXPECT_EQ(cues_[2].start, 70U);
}

TEST_F(RecorderTest, EndsAPictureWhenItsPageTimesOut) {
  show(0, 1000, bitmap(7, 0, 300));
  deliver(1000, 2000);
  recorder_.finish();
  ASSERT_EQ(cues_.size(), 1U);
  EXPECT_EQ(cues_[0].stop, 300U);
}

TEST_F(RecorderTest, MakesNoCueOfAPageThatClearsTheScreen) {
  show(0, 1000, bitmap(7, 0, 9000));
  show(1000, 2000, bitmap(8, 1000, 9000, /*alpha=*/0));
  recorder_.finish();
  ASSERT_EQ(cues_.size(), 1U);
  EXPECT_EQ(cues_[0].stop, 1000U);
}

}  // namespace
}  // namespace korr::txsub
