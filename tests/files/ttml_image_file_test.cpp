// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/cue_builder.h"
#include "tests/files/playable_text.h"
#include "timed_text/png_encoder.h"
#include "util/base64.h"

namespace korr::txsub {
namespace {

using model::SubtitleBitmap;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

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

std::string pngOf(const SubtitleBitmap& bitmap) {
  const auto png = encoding::subtitling::ttml::createPngEncoder()->encode(
      encoding::subtitling::ttml::imageOf(bitmap));
  return {png->begin(), png->end()};
}

std::string base64Of(const std::string& bytes) {
  return util::encodeBase64(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

constexpr auto kDvb = model::SubtitleInputType::DvbSubtitle;

TEST(TtmlImageFile, EmbedsEachPictureOnce) {
  const std::string first = base64Of(pngOf(display(3, 2, {0, 0, 3, 2, 80})));
  const std::string second = base64Of(pngOf(display(1, 1, {0, 0, 1, 1, 255})));
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
  writePlayable({.format = PlayableFormat::Ttml,
                 .type = kDvb,
                 .path = directory.file("Ünter & über.ttml"),
                 .pictures = PictureStorage::Files},
                recording());
  const std::string document = directory.read("Ünter & über.ttml");
  EXPECT_THAT(document, HasSubstr("ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\""));
  EXPECT_THAT(document, Not(HasSubstr("smpte:image")));
  EXPECT_THAT(document,
              HasSubstr("smpte:backgroundImage=\"%C3%9Cnter%20%26%20%C3%BCber-0002.png\""));
  EXPECT_EQ(directory.read("Ünter & über-0001.png"), pngOf(display(3, 2, {0, 0, 3, 2, 80})));
}

TEST(TtmlImageFile, ScalesADisplayOfAnotherSizeToTheFirst) {
  EXPECT_THAT(playableText({.format = PlayableFormat::Ttml, .type = kDvb},
                           {shown(0, 1, display(720, 576, {0, 0, 1, 1, 9})),
                            shown(1, 2, display(1440, 1152, {100, 200, 50, 1, 9}))}),
              HasSubstr("tts:origin=\"50px 100px\" tts:extent=\"25px 1px\""));
}

TEST(TtmlImageFile, IsADocumentWithoutPicturesToo) {
  const std::string document = playableText({.format = PlayableFormat::Ttml, .type = kDvb}, {});
  EXPECT_THAT(document, HasSubstr(" ttp:timeBase=\"media\" xml:lang=\"und\">\n"));
  EXPECT_THAT(document, Not(HasSubstr("tts:extent=")));
  EXPECT_THAT(document, EndsWith("  <head>\n    <metadata>\n    </metadata>\n  </head>\n</tt>\n"));
}

TEST(PictureFolder, HoldsWholeDisplaysAndTheirTimes) {
  const TemporaryDirectory directory;
  auto cues = recording();
  cues.push_back(shown(6000, 7000, display(720, 576, {100, 500, 3, 2, 80})));
  writePlayable(
      {.format = PlayableFormat::Pictures, .type = kDvb, .path = directory.file("pictures")}, cues);
  EXPECT_EQ(directory.read("pictures/index.json"), R"({"pictures": [
  {"file":"0001.png","start":"00:00:01.000","stop":"00:00:02.000"},
  {"file":"0002.png","start":"00:00:03.000","stop":"00:00:04.500"},
  {"file":"0003.png","start":"00:00:04.500","stop":"00:00:05.000"},
  {"file":"0001.png","start":"00:00:06.000","stop":"00:00:07.000"}
]}
)");
  EXPECT_EQ(directory.read("pictures/0002.png"), pngOf(*cues[2].subtitle->bitmap()));
  EXPECT_EQ(directory.read("pictures/0004.png"), "");
}

TEST(PictureFolder, HasAPageThatTellsTheSameTimes) {
  const TemporaryDirectory directory;
  const auto file = createPlayableFile({.format = PlayableFormat::Pictures,
                                        .type = kDvb,
                                        .path = directory.file("pictures"),
                                        .title = "</script>.ts",
                                        .duration = [] { return MediaTime{80'000'000}; }});
  auto cues = recording();
  cues.back().start += 6000;  // 0.6 ms
  for (const Cue& cue : cues) file->write(cue);
  EXPECT_EQ(directory.read("pictures/index.html"), "") << "not before it is complete";
  file->finish();
  const std::string page = directory.read("pictures/index.html");
  EXPECT_THAT(page, HasSubstr(R"({"input":"\u003c/script>.ts","duration":8.0,)"));
  // Cropped, the first two pictures are one, so that this is the second.
  EXPECT_THAT(page, HasSubstr(R"({"start":4.501,"stop":5.0,"picture":1,)"));
  EXPECT_THAT(directory.read("pictures/index.json"), HasSubstr(R"("start":"00:00:04.501")"));
}

}  // namespace
}  // namespace korr::txsub
