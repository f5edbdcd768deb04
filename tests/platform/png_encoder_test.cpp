// SPDX-License-Identifier: MIT
#include "timed_text/png_encoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <vector>

#include "platform/png_decoder.h"

namespace korr::encoding::subtitling::ttml {
namespace {

// Offsets of the IHDR fields in a file (ISO/IEC 15948, 5.2 and 11.2.2).
constexpr std::size_t kBitDepthOffset = 24;
constexpr std::size_t kColourTypeOffset = 25;
constexpr std::uint8_t kPalette = 3;
constexpr std::uint8_t kRgba = 6;

// Pixel number i has colour number i % `colours`; no colour is grey, and colour 0 hides its red,
// green and blue behind an alpha of 0.
std::vector<std::uint8_t> picture(std::size_t pixels, std::size_t colours) {
  std::vector<std::uint8_t> rgba;
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::size_t colour = i % colours;
    rgba.insert(rgba.end(), {static_cast<std::uint8_t>(255 - colour % 256),
                             static_cast<std::uint8_t>(colour / 256 + 10), 30,
                             static_cast<std::uint8_t>(colour == 0 ? 0 : 128 + colour % 128)});
  }
  return rgba;
}

RgbaImage imageOf(std::span<const std::uint8_t> rgba, std::uint32_t width) {
  const auto height = static_cast<std::uint32_t>(rgba.size() / 4 / width);
  return {.pixels = rgba.data(),
          .width = width,
          .height = height,
          .stride = std::size_t{width} * 4,
          .paintedRows = {0, height}};
}

class PngEncoder : public testing::Test {
 protected:
  platform::DecodedPng encodeAndDecode(const RgbaImage& image) {
    png_ = encoder_->encode(image).value();
    return platform::decodePng(png_).value();
  }

  std::unique_ptr<IPngEncoder> encoder_ = createPngEncoder();
  ByteBuffer png_;
};

TEST_F(PngEncoder, KeepsColourAndAlphaAtEveryDepth) {
  constexpr std::uint32_t kOddWidth = 33;
  for (const std::size_t colours : {1u, 2u, 15u, 16u, 17u, 255u, 256u, 257u, 1000u}) {
    SCOPED_TRACE(colours);
    const auto rgba = picture(kOddWidth * 40, colours);
    const auto decoded = encodeAndDecode(imageOf(rgba, kOddWidth));
    EXPECT_EQ(decoded.width, kOddWidth);
    EXPECT_EQ(decoded.height, 40u);
    EXPECT_EQ(decoded.rgba, rgba);
#ifndef _WIN32
    EXPECT_EQ(png_[kColourTypeOffset], colours <= 256 ? kPalette : kRgba);
    EXPECT_EQ(png_[kBitDepthOffset], colours <= 16 ? 4 : 8);
#endif
  }
}

TEST_F(PngEncoder, PutsBlankRowsAroundThoseThatWerePainted) {
  constexpr std::uint32_t kWidth = 321;
  constexpr std::uint32_t kHeight = 300;
  for (const std::size_t colours : {5u, 200u, 40'000u}) {
    for (const PixelBuffer::RowRange painted :
         {PixelBuffer::RowRange{}, {0, 90}, {100, 190}, {210, kHeight}, {0, kHeight}}) {
      SCOPED_TRACE(testing::Message()
                   << colours << " colours, rows " << painted.first << " to " << painted.end);
      PixelBuffer pixels(kWidth, kHeight);
      pixels.addPaintedRows(painted);
      std::ranges::copy(picture((painted.end - painted.first) * kWidth, colours),
                        pixels.data() + painted.first * std::size_t{kWidth} * 4);
      RgbaImage image = imageOf(pixels.bytes(), kWidth);
      image.paintedRows = pixels.paintedRows();
      EXPECT_TRUE(std::ranges::equal(encodeAndDecode(image).rgba, pixels.bytes()));
    }
  }
}

TEST_F(PngEncoder, TakesARectangleOutOfALargerPicture) {
  const auto rgba = picture(10 * 4, 7);
  RgbaImage image = imageOf(rgba, 10);
  image.pixels += 10 * 4 + 3 * 4;
  image.width = 2;
  image.height = 2;
  image.paintedRows = {0, 2};
  std::vector<std::uint8_t> expected;
  for (const std::size_t row : {1u, 2u})
    expected.insert(expected.end(), &rgba[(row * 10 + 3) * 4], &rgba[(row * 10 + 5) * 4]);
  EXPECT_EQ(encodeAndDecode(image).rgba, expected);
}

TEST_F(PngEncoder, FailsForAPictureWithoutPixels) {
  EXPECT_FALSE(encoder_->encode({}));
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
