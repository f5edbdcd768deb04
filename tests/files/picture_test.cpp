// SPDX-License-Identifier: MIT
#include "files/picture.h"

#include <gtest/gtest.h>

#include "testkit/cue_builder.h"

namespace korr::txsub {
namespace {

PictureArea whole(const model::SubtitleBitmap& bitmap) {
  return {.x = 0, .y = 0, .width = bitmap.width, .height = bitmap.height};
}

TEST(PictureSet, EncodesEqualPicturesOnceWhateverCameBetween) {
  PictureSet pictures;
  const auto first = display(40, 30, {4, 5, 6, 7, 80});
  const auto other = display(40, 30, {4, 5, 6, 7, 81});
  for (const std::size_t number : {1U, 2U}) {
    const auto picture = pictures.add(number == 1 ? first : other, whole(first));
    EXPECT_EQ(picture.number, number);
    EXPECT_TRUE(picture.isNew);
    EXPECT_FALSE(picture.png.empty());
  }
  const auto again = pictures.add(display(40, 30, {4, 5, 6, 7, 80}), whole(first));
  EXPECT_EQ(again.number, 1U);
  EXPECT_FALSE(again.isNew);
  EXPECT_TRUE(again.png.empty());
}

// What an area shows counts, not where it lies; and its shape, for rows may hold the same pixels.
TEST(PictureSet, TellsPicturesByWhatTheyShow) {
  PictureSet pictures;
  const auto left = display(40, 30, {4, 5, 6, 8, 80});
  const auto right = display(40, 30, {20, 9, 6, 8, 80});
  EXPECT_EQ(pictures.add(left, {4, 5, 6, 8}).number, 1U);
  EXPECT_EQ(pictures.add(right, {20, 9, 6, 8}).number, 1U);
  EXPECT_EQ(pictures.add(left, {4, 5, 3, 8}).number, 2U);
  EXPECT_EQ(pictures.add(left, {4, 5, 6, 4}).number, 3U);
  EXPECT_EQ(pictures.add(left, whole(left)).number, 4U);
  EXPECT_EQ(pictures.add(right, whole(right)).number, 5U);
}

}  // namespace
}  // namespace korr::txsub
