// SPDX-License-Identifier: MIT
#include "disc_subtitle/dvd_display_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/encoders/disc_encoder.h"
#include "tests/disc_subtitle/display_record.h"

namespace korr::encoding::subtitling::disc {
namespace {

using encoders::Bytes;
using encoders::SubPictureUnit;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kIndex =
    "# VobSub index file, v7 (do not modify this line!)\r\nsize: 720x480\r\n"
    "palette: 000000, 0000ff, 00ff00, ff0000, ffff00, ff00ff, 00ffff, ffffff, 808000, 8080ff, "
    "800080, 80ff80, 008080, ff8080, 555555, aaaaaa\r\n";

// Code 1 yellow, code 2 black, code 3 white at half; then start.
const Bytes kStart{0x03, 0x70, 0x40, 0x04, 0x8F, 0xF0, 0x01};

SubPictureUnit unit(std::vector<SubPictureUnit::Step> steps) {
  encoders::IndexedPicture picture{258, 3, Bytes(774, 0)};  // the first row ends within a byte
  for (const std::size_t at : {0U, 1U, 2U}) picture.codes[at] = static_cast<std::uint8_t>(at + 1);
  for (std::size_t x = 1; x < 258; ++x) picture.codes[258 + x] = 1;  // longer than a run
  picture.codes[773] = 3;
  return {.x = 100, .y = 400, .picture = picture, .steps = std::move(steps)};
}

class DvdDecoding : public testing::Test {
 protected:
  void decode(const SubPictureUnit& unit, double seconds) {
    decoder_.decode(unit.bytes(), static_cast<MediaTime>(seconds * kSecond));
  }

  DisplayRecord record_;
  LogLines log_;
  DvdDisplayDecoder decoder_{parseDvdSetup(kIndex), record_, &log_};
};

TEST_F(DvdDecoding, ShowsCodesInTheColoursOfTheTitleForAsLongAsTheySay) {
  decode(unit({{.delay = 0, .commands = kStart}, {.delay = 175, .commands = {0x02}}}), 1);
  decoder_.finish(60 * kSecond);
  ASSERT_EQ(record_.shown.size(), 2U);
  const auto& picture = record_.shown[0];
  EXPECT_EQ(picture.seconds, 1);
  EXPECT_EQ(picture.bitmap.height, 480U);
  EXPECT_EQ(picture.row(400, 99, 5), "- #ffff00ff #000000ff #ffffff88 -");
  EXPECT_EQ(picture.row(401, 100, 2), "- #ffff00ff");
  EXPECT_EQ(picture.at(357, 401), "#ffff00ff");
  EXPECT_EQ(picture.at(357, 402), "#ffffff88");
  EXPECT_EQ(picture.at(356, 402), "-");
  EXPECT_NEAR(record_.shown[1].seconds, 1 + 175 * 1024 / 90000.0, 1e-6);
  EXPECT_EQ(record_.shown[1].bitmap.visible, 0);
}

TEST_F(DvdDecoding, EndsAUnitWithTheNextAndFollowsItsChanges) {
  decode(unit({{.delay = 0, .commands = kStart},
               {.delay = 88, .commands = {0x04, 0x00, 0x80}},
               {.delay = 440, .commands = {0x02}}}),
         1);
  decode(unit({{.delay = 0, .commands = kStart}}), 3);
  decoder_.finish(7 * kSecond);
  ASSERT_EQ(record_.shown.size(), 4U);
  EXPECT_EQ(record_.shown[1].row(400, 100, 3), "#ffff0088 - -");
  EXPECT_NEAR(record_.shown[1].seconds, 2, 0.01);
  EXPECT_EQ(record_.shown[2].seconds, 3);
  EXPECT_EQ(record_.shown[3].seconds, 7) << "nothing ends it but the recording";
}

TEST_F(DvdDecoding, JoinsPiecesAndSurvivesDamage) {
  const Bytes whole = unit({{.delay = 0, .commands = kStart}}).bytes();
  const auto half = static_cast<std::ptrdiff_t>(whole.size() / 2);
  decoder_.decode(std::span(whole).first(whole.size() / 2), kSecond);
  decoder_.decode(Bytes(whole.begin() + half, whole.end()), kSecond);
  decoder_.decode(std::span(whole).first(20), 2 * kSecond);
  MediaTime time = 3 * kSecond;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    auto turned = whole;
    turned[i] ^= 0xFF;
    decoder_.decode(turned, ++time);
  }
  decoder_.decode(whole, 4 * kSecond);
  decoder_.finish(5 * kSecond);
  EXPECT_EQ(record_.shown.front().seconds, 1);
  EXPECT_EQ(record_.shown[record_.shown.size() - 2].row(400, 100, 2), "#ffff00ff #000000ff");
  EXPECT_EQ(log_.lines.front(), "DVD subtitles: a sub-picture is cut short; left out");
}

TEST(DvdSetup, StaysUsualWhereTheIndexIsDamaged) {
  for (const char* text : {"", "size: 0x0\npalette: 12", "size: 99999x2", "palette: x", "size"}) {
    EXPECT_EQ(parseDvdSetup(text).width, 720U) << text;
    EXPECT_FALSE(parseDvdSetup(text).palette) << text;
  }
  EXPECT_EQ((*parseDvdSetup(kIndex).palette)[13], (std::array<std::uint8_t, 3>{0xFF, 0x80, 0x80}));
}

// White letters, a dark edge: what the codes mean then is a guess that can be read.
TEST(DvdSetup, IsGuessedWithoutAPalette) {
  DisplayRecord record;
  DvdDisplayDecoder decoder({}, record, nullptr);
  decoder.decode(
      unit({{.delay = 0, .commands = {0x03, 0x56, 0x70, 0x04, 0x0F, 0xF0, 0x01}}}).bytes(), 0);
  decoder.finish(kSecond);
  ASSERT_FALSE(record.shown.empty());
  EXPECT_EQ(record.shown[0].row(400, 100, 3), "#000000ff #ffffffff -");
}

}  // namespace
}  // namespace korr::encoding::subtitling::disc
