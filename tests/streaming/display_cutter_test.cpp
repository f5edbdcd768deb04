// SPDX-License-Identifier: MIT
#include "streaming/display_cutter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/cue_builder.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using testing::ElementsAre;
using testing::IsEmpty;

Segment segment(std::uint64_t startSecond, std::uint64_t stopSecond) {
  return {.start = startSecond * kSecond, .stop = stopSecond * kSecond};
}

// "A 1-6 #1"
std::string text(const SegmentCue& cue) {
  const auto* captions = cue.cue.subtitle->captionText();
  const auto* bitmap = cue.cue.subtitle->bitmap();
  std::string name = bitmap ? "picture" : "";
  for (const auto& glyph :
       captions ? captions->rows.at(0).runs.at(0).glyphs : std::vector<model::GlyphText>()) {
    name += std::string(glyph.view());
  }
  return name + ' ' + std::to_string(cue.cue.start / kSecond) + '-' +
         std::to_string(cue.cue.stop / kSecond) + " #" + std::to_string(cue.id);
}

class DisplayCutterTest : public testing::Test {
 protected:
  void show(std::uint64_t second, std::string_view words) {
    std::vector<CaptionText::TextRow> rows;
    if (!words.empty()) rows.push_back(captionRow(15, 0, words));
    cutter_.onDisplay(second * kSecond, captions(std::move(rows)));
  }

  std::vector<std::string> cut(const Segment& segment) {
    std::vector<std::string> cues;
    for (const auto& cue : cutter_.cut(segment)) cues.push_back(text(cue));
    return cues;
  }

  DisplayCutter cutter_;
};

TEST_F(DisplayCutterTest, CutsWhatIsStillShownAndGoesOnWithIt) {
  show(1, "A");
  show(2, "A");
  show(3, "");
  show(4, "B");
  EXPECT_THAT(cut(segment(0, 6)), ElementsAre("A 1-3 #1", "B 4-6 #3"));
  EXPECT_THAT(cut(segment(6, 12)), ElementsAre("B 6-12 #3"));
  show(13, "C");
  EXPECT_THAT(cut(segment(12, 18)), ElementsAre("B 12-13 #3", "C 13-18 #4"));
  show(18, "");
  EXPECT_THAT(cut(segment(18, 24)), IsEmpty());
}

// RFC 8216, 3.5: a cue tells its whole time in each segment, where that is known.
TEST_F(DisplayCutterTest, TellsTheWholeTimeInBothSegmentsWhereItIsKnown) {
  show(4, "A");
  show(8, "B");
  EXPECT_THAT(cut(segment(0, 6)), ElementsAre("A 4-8 #1"));
  EXPECT_THAT(cut(segment(6, 12)), ElementsAre("A 4-8 #1", "B 8-12 #2"));
}

TEST_F(DisplayCutterTest, LetsNothingReachOverAJump) {
  show(4, "A");
  show(8, "");
  auto last = segment(0, 6);
  last.endsInJump = true;
  EXPECT_THAT(cut(last), ElementsAre("A 4-6 #1"));
  EXPECT_THAT(cut(segment(6, 12)), ElementsAre("A 6-8 #1"));
}

TEST_F(DisplayCutterTest, ShowsFromTheBoundaryOnWhatIsToldTooLate) {
  show(1, "A");
  cut(segment(0, 6));
  show(5, "B");
  EXPECT_THAT(cut(segment(6, 12)), ElementsAre("B 6-12 #2"));
}

TEST_F(DisplayCutterTest, EndsAPictureThatTimesOutInSilence) {
  auto picture = display(2, 2, {.x = 0, .y = 0, .width = 1, .height = 1, .grey = 9});
  picture.start = 2 * kSecond;
  picture.end = 9 * kSecond;
  cutter_.onDisplay(2 * kSecond, model::Subtitle(std::move(picture)));
  EXPECT_THAT(cut(segment(0, 6)), ElementsAre("picture 2-6 #1"));
  EXPECT_THAT(cut(segment(6, 12)), ElementsAre("picture 6-9 #1"));
  EXPECT_THAT(cut(segment(12, 18)), IsEmpty());
}

TEST_F(DisplayCutterTest, ShowsNoPictureForLessThanATick) {
  auto picture = display(2, 2, {.x = 0, .y = 0, .width = 1, .height = 1, .grey = 9});
  picture.start = picture.end = 2 * kSecond;
  cutter_.onDisplay(2 * kSecond, model::Subtitle(picture));
  EXPECT_FALSE(cutter_.hasShown());
  picture.end = 9 * kSecond;
  cutter_.onDisplay(2 * kSecond, model::Subtitle(picture));
  cutter_.onDisplay(2 * kSecond + 1, captions({captionRow(15, 0, "A")}));
  EXPECT_THAT(cut(segment(0, 6)), ElementsAre("A 2-6 #2"));
}

}  // namespace
}  // namespace korr::txsub
