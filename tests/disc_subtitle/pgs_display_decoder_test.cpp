// SPDX-License-Identifier: MIT
#include "disc_subtitle/pgs_display_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/encoders/disc_encoder.h"
#include "tests/disc_subtitle/display_record.h"

namespace korr::encoding::subtitling::disc {
namespace {

using encoders::IndexedPicture;
using encoders::PgsEncoder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto kEpochStart = PgsEncoder::kEpochStart;
constexpr auto kNormal = PgsEncoder::kNormal;

// White, yellow of BT.709, half a black.
const std::vector<PgsEncoder::Colour> kColours = {
    {1, 235}, {2, 219, 138, 16}, {3, 16, 128, 128, 128}};
const IndexedPicture kPicture{4, 2, {1, 2, 3, 0, 0, 0, 1, 1}};

class PgsDecoding : public testing::Test {
 protected:
  void decode(const PgsEncoder& set, double seconds) {
    decoder_.decode(set.bytes(), static_cast<MediaTime>(seconds * kSecond));
  }

  DisplayRecord record_;
  LogLines log_;
  PgsDisplayDecoder decoder_{record_, &log_};
};

TEST_F(PgsDecoding, ShowsObjectsInTheirColoursUntilTheyAreCleared) {
  decode(PgsEncoder()
             .composition(1920, 1080, kEpochStart, {{7, 100, 900}})
             .palette(0, kColours)
             .object(7, kPicture, 3)
             .end(),
         1.5);
  decode(PgsEncoder().composition(1920, 1080, kNormal, {}).end(), 4);
  ASSERT_EQ(record_.shown.size(), 2U);
  const auto& picture = record_.shown[0];
  EXPECT_EQ(picture.seconds, 1.5);
  EXPECT_EQ(picture.bitmap.width, 1920U);
  EXPECT_EQ(picture.row(900, 99, 6), "- #ffffffff #feff00ff #00000080 - -");
  EXPECT_EQ(picture.row(901, 100, 4), "- - #ffffffff #ffffffff");
  EXPECT_EQ(record_.shown[1].seconds, 4);
  EXPECT_EQ(record_.shown[1].bitmap.visible, 0);
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(PgsDecoding, KeepsObjectsAndColoursDuringAnEpochOnly) {
  const auto whole = PgsEncoder()
                         .composition(720, 480, kEpochStart, {{1, 10, 20}})
                         .palette(0, kColours)
                         .object(1, kPicture)
                         .end();
  decode(whole, 1);
  decode(whole, 2);  // shows the same
  decode(PgsEncoder().composition(720, 480, kNormal, {{1, 10, 30}}).palette(0, {{1, 16}}).end(), 3);
  decode(PgsEncoder().composition(720, 480, kEpochStart, {{1, 10, 20}}).end(), 4);
  decoder_.finish(9 * kSecond);
  ASSERT_EQ(record_.shown.size(), 4U);
  EXPECT_EQ(record_.shown[1].seconds, 3);
  EXPECT_EQ(record_.shown[1].at(10, 30), "#000000ff");
  EXPECT_EQ(record_.shown[1].at(10, 20), "-");
  EXPECT_NE(record_.shown[1].bitmap.pageState, record_.shown[0].bitmap.pageState);
  EXPECT_EQ(record_.shown[2].at(10, 20), "-");
  EXPECT_EQ(record_.shown[3].seconds, 9);
  EXPECT_THAT(log_.lines, ElementsAre("PGS: object 1 is missing; shown without it"));
}

TEST_F(PgsDecoding, CutsObjectsToTheirCropAndToTheDisplay) {
  decode(PgsEncoder()
             .composition(720, 576, kEpochStart,
                          {{1, 50, 60, {{1, 0, 2, 1}}}, {1, 718, 575}, {1, 9000, 9000}})
             .palette(0, {{1, 235}, {2, 16}, {3, 126}})
             .object(1, kPicture)
             .end(),
         1);
  ASSERT_EQ(record_.shown.size(), 1U);
  EXPECT_EQ(record_.shown[0].row(60, 49, 4), "- #000000ff #808080ff -");
  EXPECT_EQ(record_.shown[0].row(61, 49, 4), "- - - -");
  EXPECT_EQ(record_.shown[0].row(575, 717, 3), "- #ffffffff #000000ff");
}

TEST_F(PgsDecoding, SaysWhatIsDamagedAndGoesOn) {
  auto set = PgsEncoder()
                 .composition(720, 576, kEpochStart, {{1, 0, 0}})
                 .palette(0, kColours)
                 .segment(0x16, {1, 2, 3})
                 .object(1, kPicture)
                 .end();
  decode(set, 1);
  EXPECT_THAT(log_.lines, testing::Contains(HasSubstr("a composition is cut short; the picture")));

  // Cut anywhere and with any byte turned around it only loses pictures.
  const auto good = PgsEncoder()
                        .composition(64, 64, kEpochStart, {{1, 0, 0, {{0, 0, 4, 2}}}})
                        .palette(0, kColours)
                        .object(1, kPicture, 2)
                        .end()
                        .bytes();
  MediaTime time = 2 * kSecond;
  for (std::size_t i = 0; i < good.size(); ++i) {
    decoder_.decode(std::span(good).first(i), ++time);
    auto turned = good;
    turned[i] ^= 0xFF;
    decoder_.decode(turned, ++time);
  }
  decoder_.decode(good, ++time);
  EXPECT_EQ(record_.shown.back().row(0, 0, 4), "#ffffffff #fcff0aff #00000080 -");
}

}  // namespace
}  // namespace korr::encoding::subtitling::disc
