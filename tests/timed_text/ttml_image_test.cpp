#include "timed_text/ttml_image.h"

#include <gtest/gtest.h>

#include "tests/timed_text/ttml_fixture.h"

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

TEST(TtmlImage, CarriesThePictureInTheMetadata) {
  EXPECT_EQ(TtmlWriter().convert(bitmap(720, 576, 7)),
            R"(<?xml version="1.0" encoding="UTF-8" ?>
<head>
  <metadata>
    <smpte:image xml:id="Subtitle_7" imagetype="PNG" encoding="Base64">cG5n</smpte:image>
  </metadata>
  <layout>
    <region tts:extent="720px 576px" tts:origin="0% 0%" xml:id="Region" />
  </layout>
  <body>
    <div smpte:backgroundImage="#Subtitle_7" region="Region" />
  </body>
</head>
)");
}

TEST(TtmlImage, NumbersPicturesWithoutSign) {
  const std::string document = TtmlWriter().convert(bitmap(1, 1, -2));
  EXPECT_NE(document.find("xml:id=\"Subtitle_4294967294\""), std::string::npos);
}

TEST(TtmlImage, ClearsTheScreenForABitmapThatIsNotVisible) {
  TtmlWriter writer;
  EXPECT_EQ(writer.convert(SubtitleBitmap{}),
            R"(<?xml version="1.0" encoding="UTF-8" ?>
<head>
  <metadata />
  <body>
    <div />
  </body>
</head>
)");
  EXPECT_EQ(writer.encoderCalls, 0);
}

TEST(TtmlImage, EncodesEveryPictureOnce) {
  TtmlWriter writer;
  const std::string first = writer.convert(bitmap(2, 2, 1));
  writer.convert(SubtitleBitmap{});  // clearing keeps what is cached
  EXPECT_EQ(writer.convert(bitmap(2, 2, 1)), first);
  EXPECT_EQ(writer.encoderCalls, 1);
  EXPECT_NE(writer.convert(bitmap(2, 2, 2)), first);
  EXPECT_EQ(writer.encoderCalls, 2);
}

TEST(TtmlImage, WritesTheDeclarationAloneWhenThePictureCannotBeEncoded) {
  TtmlWriter writer;
  const std::string first = writer.convert(bitmap(2, 2, 1));
  writer.png = std::nullopt;
  EXPECT_EQ(writer.convert(bitmap(2, 2, 2)), "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n");
  EXPECT_EQ(writer.convert(bitmap(2, 2, 1)), first) << "the cache was lost";
}

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
