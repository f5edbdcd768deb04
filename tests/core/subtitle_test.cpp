#include "core/subtitle.h"

#include <gtest/gtest.h>

namespace korr::encoding::subtitling {
namespace {

TEST(Subtitle, HoldsExactlyThePayloadOfItsKind) {
  const Subtitle captions{CaptionText{}};
  EXPECT_EQ(captions.kind(), SubtitleKind::CaptionText);
  EXPECT_NE(captions.captionText(), nullptr);
  EXPECT_EQ(captions.teletextText(), nullptr);
  EXPECT_EQ(captions.bitmap(), nullptr);

  const Subtitle unknown{static_cast<SubtitleKind>(3)};
  EXPECT_EQ(unknown.captionText(), nullptr);
  EXPECT_EQ(unknown.teletextText(), nullptr);
  EXPECT_EQ(unknown.bitmap(), nullptr);
}

}  // namespace
}  // namespace korr::encoding::subtitling
