// SPDX-License-Identifier: MIT
#include "streaming/segmenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace korr::txsub {
namespace {

using encoding::subtitling::fromTicks90k;
using encoding::subtitling::kMillisecond;
using encoding::subtitling::kSecond;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Sends a programme of 25 pictures a second whose clock can be told to jump.
class SegmenterTest : public testing::Test, public ISegmentListener {
 protected:
  static constexpr std::uint64_t kFrame = 3600;
  static constexpr std::uint64_t kLead = 45'000;  // pictures are sent half a second ahead

  void onSegment(const Segment& segment) override { segments_.push_back(segment); }

  // Times as TsReader places them: on one line, whatever the stamps say.
  ClockPoint point(std::uint64_t ticks) const {
    return {.time = fromTicks90k(ticks), .stamp = (ticks + base_) % kStampWrap};
  }

  void sendFrames(std::uint64_t count, std::uint64_t framesPerGroup) {
    for (std::uint64_t i = 0; i < count; ++i, ++frame_) {
      if (hasClock_) segmenter().onClock(point(frame_ * kFrame));
      if (framesPerGroup == 0) continue;
      const bool isFirst = frame_ % framesPerGroup == 0;
      segmenter().onPicture(point(frame_ * kFrame + kLead), isFirst);
      // Sent after it and shown before it.
      if (isFirst && frame_ != 0) segmenter().onPicture(point(frame_ * kFrame + kLead - 1), false);
    }
  }

  Segmenter& segmenter() {
    if (!segmenter_) {
      segmenter_.emplace(settings_, *this, [this](const std::string& line) { log_ += line; });
    }
    return *segmenter_;
  }

  std::vector<std::uint64_t> startsInMs() const {
    std::vector<std::uint64_t> starts;
    for (const auto& segment : segments_) starts.push_back(segment.start / kMillisecond);
    return starts;
  }

  void expectWhole() const {
    for (std::size_t i = 1; i < segments_.size(); ++i) {
      ASSERT_EQ(segments_[i].start, segments_[i - 1].stop);
      ASSERT_EQ(segments_[i].number, segments_[i - 1].number + 1);
      ASSERT_EQ(segments_[i].isDiscontinuous, segments_[i - 1].endsInJump);
      ASSERT_LE(segments_[i].stop - segments_[i].start, segmenter_->longest());
      if (!segments_[i].isDiscontinuous) {
        ASSERT_EQ(segments_[i].startTicks, segments_[i - 1].stopTicks);
      }
    }
  }

  SegmenterSettings settings_;
  std::optional<Segmenter> segmenter_;
  std::vector<Segment> segments_;
  std::string log_;
  std::uint64_t base_ = 0;
  std::uint64_t frame_ = 0;
  bool hasClock_ = true;
};

TEST_F(SegmenterTest, CutsAtTheFirstRandomAccessPointAfterEachMultipleOfTheTarget) {
  sendFrames(800, 40);  // every 1.6 s
  EXPECT_THAT(startsInMs(), ElementsAre(500, 6900, 13300, 19700, 24500));
  expectWhole();
  EXPECT_EQ(segments_[1].startTicks, 6900U * 90);
}

TEST_F(SegmenterTest, WaitsForTheClockBeforeItClosesASegment) {
  sendFrames(160, 25);  // the picture at 6.5 s has come, its time has not
  ASSERT_THAT(segments_, IsEmpty());
  const std::uint64_t boundary = 6 * 90'000 + kLead;
  while (segments_.empty()) sendFrames(1, 25);
  const std::uint64_t now = (frame_ - 1) * kFrame;
  EXPECT_GE(now, boundary);
  EXPECT_LE(now, boundary + 9000);  // 100 ms
}

TEST_F(SegmenterTest, TakesTheWrapForNothing) {
  base_ = kStampWrap - 10 * 90'000;
  sendFrames(500, 25);
  ASSERT_GE(segments_.size(), 3U);
  expectWhole();
  for (const auto& segment : segments_) EXPECT_FALSE(segment.isDiscontinuous);
  EXPECT_GT(segments_[2].startTicks, kStampWrap);
}

TEST_F(SegmenterTest, BeginsASegmentWhereTheClockJumps) {
  sendFrames(200, 25);
  base_ += 1'000'000'000;
  sendFrames(320, 25);
  EXPECT_THAT(startsInMs(), ElementsAre(500, 6500, 8500, 14500));
  EXPECT_TRUE(segments_[1].endsInJump);
  EXPECT_TRUE(segments_[2].isDiscontinuous);
  EXPECT_FALSE(segments_[3].isDiscontinuous);
  EXPECT_EQ(segments_[2].startTicks, 8500U * 90 + 1'000'000'000);
  expectWhole();
}

TEST_F(SegmenterTest, CutsTheClockWhileThereIsNoVideo) {
  sendFrames(100, 25);
  sendFrames(30000, 0);  // 20 minutes
  const auto silent = segments_.size();
  EXPECT_GE(silent, 199U);
  sendFrames(1000, 25);
  EXPECT_GE(segments_.size(), silent + 6);
  expectWhole();
}

TEST_F(SegmenterTest, CutsWholeMultiplesOnAGrid) {
  settings_.align = SegmentAlign::Grid;
  sendFrames(600, 40);
  EXPECT_THAT(startsInMs(), ElementsAre(0, 6000, 12000));
}

TEST_F(SegmenterTest, StartsOnTheClockWhereNoVideoComes) {
  sendFrames(400, 0);
  EXPECT_THAT(startsInMs(), ElementsAre(0, 6000));
}

TEST_F(SegmenterTest, GoesByThePicturesWhereThereIsNoClock) {
  hasClock_ = false;
  sendFrames(400, 25);
  EXPECT_THAT(startsInMs(), ElementsAre(500, 6500));
}

TEST_F(SegmenterTest, NeverBreaksTheTargetDurationAndSaysWhy) {
  sendFrames(1000, 500);
  expectWhole();
  EXPECT_THAT(log_, HasSubstr("no random access point for 9 s"));
}

TEST_F(SegmenterTest, EndsWithTheStream) {
  sendFrames(400, 25);
  segmenter().finish(fromTicks90k(400 * kFrame));
  ASSERT_THAT(startsInMs(), ElementsAre(500, 6500, 12500));
  EXPECT_EQ(segments_.back().stop, 16 * kSecond);
}

TEST_F(SegmenterTest, TellsTheTimeOfDayAndFollowsItOnlyWhenItIsOff) {
  segmenter().onWallTime(0, 1'000'000);
  segmenter().onWallTime(3 * kSecond, 1'003'900);
  sendFrames(200, 25);
  segmenter().onWallTime(8 * kSecond, 9'000'000);
  sendFrames(200, 25);
  ASSERT_EQ(segments_.size(), 2U);
  EXPECT_EQ(segments_[0].wallTime, 1'000'500);
  EXPECT_EQ(segments_[1].wallTime, 9'000'000 - 1'500);
}

TEST_F(SegmenterTest, HoldsForDaysWithJumpsSilencesAndWraps) {
  for (int hour = 0; hour < 80; ++hour) {
    sendFrames(60 * 60 * 25, hour % 7 == 3 ? 0 : 24 + static_cast<std::uint64_t>(hour % 5));
    if (hour % 9 == 5) base_ += 777'777'777;
  }
  segmenter().finish(fromTicks90k(frame_ * kFrame));
  expectWhole();
  EXPECT_EQ(segments_.back().stop, fromTicks90k(frame_ * kFrame));
  EXPECT_GT(segments_.size(), 80U * 550);
}

}  // namespace
}  // namespace korr::txsub
