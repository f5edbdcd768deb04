#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/txsub/output/cue_builder.h"
#include "tests/txsub/output/text_of_file.h"
#include "timed_text/png_encoder.h"
#include "util/base64.h"

namespace korr::txsub {
namespace {

using model::PixelBuffer;
using model::SubtitleBitmap;
using model::SubtitleInputType;

struct Box {
  std::uint32_t x;
  std::uint32_t y;
  std::uint32_t width;
  std::uint32_t height;
  std::uint8_t grey;
};

// A display with an opaque box on it.
SubtitleBitmap display(std::uint32_t width, std::uint32_t height, const Box& box) {
  auto pixels = std::make_shared<PixelBuffer>(width, height);
  pixels->addPaintedRows({0, height});
  for (std::uint32_t y = box.y; y < box.y + box.height; ++y) {
    std::uint8_t* row = pixels->data() + (std::size_t{y} * width + box.x) * 4;
    for (std::uint32_t x = 0; x < box.width; ++x, row += 4) {
      row[0] = row[1] = row[2] = box.grey;
      row[3] = 255;
    }
  }
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = width;
  bitmap.height = height;
  bitmap.pixels = std::move(pixels);
  return bitmap;
}

Cue shown(MediaTime startMs, MediaTime stopMs, SubtitleBitmap bitmap) {
  return cue(startMs, stopMs, model::Subtitle(std::move(bitmap)));
}

// Two pictures, the first of them twice and at different places, and a display that shows nothing.
std::vector<Cue> recording() {
  return {shown(1000, 2000, display(720, 576, {100, 500, 3, 2, 80})),
          shown(2000, 3000, display(720, 576, {0, 0, 0, 0, 0})),
          shown(3000, 4500, display(720, 576, {10, 20, 3, 2, 80})),
          shown(4500, 5000, display(720, 576, {719, 575, 1, 1, 255}))};
}

std::string pngBase64(const SubtitleBitmap& bitmap) {
  const auto png = encoding::subtitling::ttml::createPngEncoder()->encode(
      encoding::subtitling::ttml::imageOf(bitmap));
  return util::encodeBase64(*png);
}

constexpr auto kDvb = SubtitleInputType::DvbSubtitle;

TEST(TtmlImageFile, EmbedsEachPictureOnce) {
  const std::string first = pngBase64(display(3, 2, {0, 0, 3, 2, 80}));
  const std::string second = pngBase64(display(1, 1, {0, 0, 1, 1, 255}));
  EXPECT_EQ(
      playableText({.format = PlayableFormat::Ttml, .type = kDvb, .language = "fra"}, recording()),
      R"(<?xml version="1.0" encoding="UTF-8"?>
<tt xmlns="http://www.w3.org/ns/ttml" xmlns:tts="http://www.w3.org/ns/ttml#styling" xmlns:ttp="http://www.w3.org/ns/ttml#parameter" xmlns:smpte="http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt" tts:extent="720px 576px" ttp:timeBase="media" xml:lang="fr">
  <head>
    <metadata>
      <smpte:image xml:id="Picture1" imagetype="PNG" encoding="Base64">)" +
          first + R"(</smpte:image>
      <smpte:image xml:id="Picture2" imagetype="PNG" encoding="Base64">)" +
          second + R"(</smpte:image>
    </metadata>
    <layout>
      <region xml:id="Region1" tts:origin="100px 500px" tts:extent="3px 2px" />
      <region xml:id="Region2" tts:origin="10px 20px" tts:extent="3px 2px" />
      <region xml:id="Region3" tts:origin="719px 575px" tts:extent="1px 1px" />
    </layout>
  </head>
  <body>
    <div region="Region1" begin="00:00:01.000" end="00:00:02.000" smpte:backgroundImage="#Picture1" />
    <div region="Region2" begin="00:00:03.000" end="00:00:04.500" smpte:backgroundImage="#Picture1" />
    <div region="Region3" begin="00:00:04.500" end="00:00:05.000" smpte:backgroundImage="#Picture2" />
  </body>
</tt>
)");
}

TEST(TtmlImageFile, PutsPicturesIntoFilesBesideTheDocument) {
  const TemporaryDirectory directory;
  const auto file = createPlayableFile({.format = PlayableFormat::Ttml,
                                        .type = kDvb,
                                        .path = directory.file("Ünter & über.ttml"),
                                        .pictures = PictureStorage::Files});
  for (const Cue& cue : recording()) file->write(cue);
  file->finish();
  const std::string document = directory.read("Ünter & über.ttml");
  EXPECT_NE(document.find("ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\""),
            std::string::npos);
  EXPECT_EQ(document.find("smpte:image"), std::string::npos);
  EXPECT_NE(document.find("smpte:backgroundImage=\"%C3%9Cnter%20%26%20%C3%BCber-0002.png\""),
            std::string::npos)
      << document;
  const std::string png = directory.read("Ünter & über-0001.png");
  const encoding::subtitling::ByteBuffer bytes(png.begin(), png.end());
  EXPECT_EQ(util::encodeBase64(bytes), pngBase64(display(3, 2, {0, 0, 3, 2, 80})));
}

TEST(TtmlImageFile, ScalesADisplayOfAnotherSizeToTheFirst) {
  const std::string document =
      playableText({.format = PlayableFormat::Ttml, .type = kDvb},
                   {shown(0, 1, display(720, 576, {0, 0, 1, 1, 9})),
                    shown(1, 2, display(1440, 1152, {100, 200, 50, 1, 9}))});
  EXPECT_NE(document.find("tts:origin=\"50px 100px\" tts:extent=\"25px 1px\""), std::string::npos)
      << document;
}

TEST(TtmlImageFile, IsADocumentWithoutPicturesToo) {
  EXPECT_EQ(playableText({.format = PlayableFormat::Ttml, .type = kDvb}, {}),
            R"(<?xml version="1.0" encoding="UTF-8"?>
<tt xmlns="http://www.w3.org/ns/ttml" xmlns:tts="http://www.w3.org/ns/ttml#styling" xmlns:ttp="http://www.w3.org/ns/ttml#parameter" xmlns:smpte="http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt" ttp:timeBase="media" xml:lang="und">
  <head>
    <metadata>
    </metadata>
  </head>
</tt>
)");
}

TEST(PictureFolder, HoldsWholeDisplaysAndTheirTimes) {
  const TemporaryDirectory directory;
  const auto file = createPlayableFile(
      {.format = PlayableFormat::Pictures, .type = kDvb, .path = directory.file("pictures")});
  const auto cues = recording();
  for (const Cue& cue : cues) file->write(cue);
  file->write(shown(6000, 7000, display(720, 576, {100, 500, 3, 2, 80})));
  file->finish();
  EXPECT_EQ(directory.read("pictures/index.json"), R"({"pictures": [
  {"file":"0001.png","start":"00:00:01.000","stop":"00:00:02.000"},
  {"file":"0002.png","start":"00:00:03.000","stop":"00:00:04.500"},
  {"file":"0003.png","start":"00:00:04.500","stop":"00:00:05.000"},
  {"file":"0001.png","start":"00:00:06.000","stop":"00:00:07.000"}
]}
)");
  const std::string png = directory.read("pictures/0002.png");
  const encoding::subtitling::ByteBuffer bytes(png.begin(), png.end());
  EXPECT_EQ(util::encodeBase64(bytes), pngBase64(*cues[2].subtitle->bitmap()));
  EXPECT_EQ(directory.read("pictures/0004.png"), "");
}

TEST(PictureFolder, HasAPageThatTellsTheSameTimes) {
  const TemporaryDirectory directory;
  const auto file = createPlayableFile({.format = PlayableFormat::Pictures,
                                        .type = kDvb,
                                        .path = directory.file("pictures"),
                                        .title = "</script>.ts",
                                        .duration = [] { return MediaTime{80'000'000}; }});
  Cue last = shown(5000, 6000, display(720, 576, {100, 500, 3, 2, 80}));
  last.start += 6000;  // 0.6 ms
  for (const Cue& cue : recording()) file->write(cue);
  file->write(last);
  EXPECT_EQ(directory.read("pictures/index.html"), "") << "not before it is complete";
  file->finish();
  const std::string page = directory.read("pictures/index.html");
  constexpr std::string_view kData = "id=\"data\">";
  const auto begin = page.find(kData) + kData.size();
  const auto data =
      nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
  EXPECT_EQ(data.at("input"), "</script>.ts");
  EXPECT_EQ(data.at("duration"), 8.0);
  std::vector<double> starts;
  for (const auto& cue : data.at("services").at(0).at("cues")) starts.push_back(cue.at("start"));
  EXPECT_EQ(starts, (std::vector<double>{1, 3, 4.5, 5.001}));
  const auto index = nlohmann::json::parse(directory.read("pictures/index.json"));
  EXPECT_EQ(index.at("pictures").back().at("start"), "00:00:05.001");
  EXPECT_EQ(data.at("pictures").size(), 2U) << "cropped, the first two are one";
}

}  // namespace
}  // namespace korr::txsub
