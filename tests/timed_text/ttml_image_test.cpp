// SPDX-License-Identifier: MIT
#include "timed_text/ttml_image.h"

#include <gtest/gtest.h>

#include "tests/timed_text/writer_bench.h"
#include "timed_text/converter_to_ttml.h"

namespace korr::encoding::subtitling::ttml {
namespace {

SubtitleBitmap bitmap(std::uint32_t width, std::uint32_t height, std::int32_t pageState) {
  SubtitleBitmap result;
  result.visible = 1;
  result.width = width;
  result.height = height;
  result.pixels = std::make_shared<const PixelBuffer>(width, height);
  result.pageState = pageState;
  return result;
}

class TtmlImage : public testing::Test {
 protected:
  /// Answers every picture with the same bytes, or with none.
  struct FakePngEncoder final : IPngEncoder {
    explicit FakePngEncoder(TtmlImage& owner) : test(owner) {}
    std::optional<ByteBuffer> encode(const RgbaImage&) override {
      ++test.encoderCalls;
      return test.png;
    }
    TtmlImage& test;
  };

  std::optional<ByteBuffer> png = ByteBuffer{'p', 'n', 'g'};
  int encoderCalls = 0;
  WriterBench<ConverterToTtml> writer{false, std::make_unique<FakePngEncoder>(*this)};
};

TEST_F(TtmlImage, CarriesThePictureInTheMetadata) {
  EXPECT_EQ(writer.convert(bitmap(720, 576, 7)), withHead(R"(  <metadata>
    <smpte:image xml:id="Subtitle_7" imagetype="PNG" encoding="Base64">cG5n</smpte:image>
  </metadata>
  <layout>
    <region tts:extent="720px 576px" tts:origin="0% 0%" xml:id="Region" />
  </layout>
  <body>
    <div smpte:backgroundImage="#Subtitle_7" region="Region" />
  </body>
)"));
}

TEST_F(TtmlImage, NumbersPicturesWithoutSign) {
  EXPECT_NE(writer.convert(bitmap(1, 1, -2)).find("xml:id=\"Subtitle_4294967294\""),
            std::string::npos);
}

TEST_F(TtmlImage, ClearsTheScreenForABitmapThatIsNotVisible) {
  EXPECT_EQ(writer.convert(SubtitleBitmap{}), withHead(R"(  <metadata />
  <body>
    <div />
  </body>
)"));
  EXPECT_EQ(encoderCalls, 0);
}

TEST_F(TtmlImage, EncodesEveryPictureOnce) {
  const std::string first = writer.convert(bitmap(2, 2, 1));
  writer.convert(SubtitleBitmap{});  // clearing keeps what is cached
  EXPECT_EQ(writer.convert(bitmap(2, 2, 1)), first);
  EXPECT_EQ(encoderCalls, 1);
  EXPECT_NE(writer.convert(bitmap(2, 2, 2)), first);
  EXPECT_EQ(encoderCalls, 2);
}

TEST_F(TtmlImage, WritesTheDeclarationAloneWhenThePictureCannotBeEncoded) {
  const std::string first = writer.convert(bitmap(2, 2, 1));
  png = std::nullopt;
  EXPECT_EQ(writer.convert(bitmap(2, 2, 2)), "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n");
  EXPECT_EQ(writer.convert(bitmap(2, 2, 1)), first) << "the cache was lost";
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
