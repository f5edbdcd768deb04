// SPDX-License-Identifier: MIT

// Subtitles of discs, as users see them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "samples/text_picture.h"
#include "testkit/encoders/disc_encoder.h"
#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::PgsEncoder;
using encoders::SubPictureUnit;
using testing::HasSubstr;

std::string asText(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// A line of text at 1920 by 1080, white with a black edge; or nothing.
PgsEncoder displaySet(std::string_view text) {
  PgsEncoder set;
  if (text.empty()) return set.composition(1920, 1080, PgsEncoder::kNormal, {}).end();
  const auto picture = samples::textPicture(text, 72);
  std::vector<PgsEncoder::Colour> colours;
  for (std::uint8_t i = samples::kEdge; i <= samples::kFullColour; ++i) {
    colours.push_back({i, static_cast<std::uint8_t>(16 + (i - samples::kEdge) * 219 / 14)});
  }
  const auto x = static_cast<std::uint16_t>((1920 - picture.width) / 2);
  return set.composition(1920, 1080, PgsEncoder::kEpochStart, {{0, x, 940}})
      .palette(0, colours)
      .object(0, picture, 2)
      .end();
}

// The same at 720 by 576 in four codes, for two seconds.
Bytes subPicture(std::string_view text) {
  auto picture = samples::textPicture(text, 40);
  for (auto& code : picture.codes) {
    code = code == samples::kNothing ? 0 : code < 5 ? 1 : code < 10 ? 2 : 3;
  }
  return SubPictureUnit{.x = 60,
                        .y = 500,
                        .picture = picture,
                        .steps = {{0, {0x03, 0x32, 0x10, 0x04, 0xFF, 0xF0, 0x01}}, {176, {0x02}}}}
      .bytes();
}

constexpr const char* kPalette =
    "000000, 101010, 808080, f0f0f0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0";

constexpr const char* kSaid =
    "1\n00:00:00,000 --> 00:00:02,000\nTHE HARBOUR CLOSED\n\n"
    "2\n00:00:05,000 --> 00:00:07,000\nMORE NEWS LATER\n\n";

class DiscSubtitles : public testing::Test {
 protected:
  std::string sup() const {
    std::string file;
    for (const auto& [second, text] : kLines) file += asText(displaySet(text).sup(second * 90'000));
    return directory_.write("film.sup", file);
  }

  static constexpr std::pair<std::uint32_t, std::string_view> kLines[] = {
      {10, "THE HARBOUR CLOSED"}, {12, ""}, {15, "MORE NEWS LATER"}, {17, ""}};

  TemporaryDirectory directory_;
};

TEST_F(DiscSubtitles, OfBluRayBecomeTextPicturesAndFrames) {
  const std::string film = sup();
  EXPECT_THAT(outputOf({"probe", film}), HasSubstr("pgs   -        -         2     00:00:00.000"));
  EXPECT_EQ(outputOf({"convert", film, "--mode", "srt", "--ocr", "eng"}), kSaid);
  EXPECT_THAT(outputOf({"convert", film, "--mode", "ttml"}), HasSubstr("smpte:image"));
  outputOf({"convert", film, "-o", directory_.file("pictures/")});
  EXPECT_THAT(directory_.read("pictures/index.json"),
              HasSubstr("\"start\":\"00:00:05.000\",\"stop\":\"00:00:07.000\""));
  EXPECT_THAT(outputOf({"preview", film, "--ocr", "eng", "-o", "-"}), HasSubstr("MORE NEWS LATER"));
  EXPECT_THAT(outputOf({"render", film, "--at", "1", "--size", "1920x1080", "-o", "-"}),
              testing::StartsWith("\x89PNG"));
}

TEST_F(DiscSubtitles, OfBluRayInATransportStreamHaveTheirLanguage) {
  const encoders::TsProgram program{
      .pcrPid = 0x1200,
      .streams = {{.pid = 0x1200, .type = 0x90, .descriptors = {0x0A, 4, 'e', 'n', 'g', 0}}}};
  encoders::TsBuilder stream;
  for (const auto& [second, text] : kLines) {
    const std::uint64_t pts = second * 90'000;
    stream.tables(program).pcr(0x1200, pts);
    const auto set = displaySet(text);
    for (const auto& segment : set.segments()) {
      stream.pes(0x1200, encoders::pesPacket({.streamId = 0xBD, .pts = pts}, segment));
    }
  }
  const std::string film = directory_.write("film.m2ts", asText(stream.bytes()));
  EXPECT_THAT(outputOf({"probe", film}), HasSubstr("0x1200  pgs   -        eng"));
  EXPECT_EQ(outputOf({"convert", film, "--mode", "srt"}), kSaid);
  EXPECT_THAT(errorsOf(1, {"extract", film, "-o", directory_.file("out.jsonl")}),
              HasSubstr("PGS and DVD subtitles"));
}

TEST_F(DiscSubtitles, OfDvdComeFromAVobSubIndex) {
  encoders::VobSubFile file;
  file.unit(10'000, subPicture("THE HARBOUR CLOSED")).unit(15'000, subPicture("MORE NEWS LATER"));
  directory_.write("film.sub", asText(file.sub()));
  const std::string index = directory_.write("film.idx", file.index("en", kPalette));
  EXPECT_THAT(outputOf({"probe", index}), HasSubstr("dvd   -        "));
  const auto text = outputOf({"convert", index, "--mode", "srt", "--ocr", "eng"});
  EXPECT_THAT(text, HasSubstr("\nTHE HARBOUR CLOSED\n"));
  EXPECT_THAT(text, HasSubstr("00:00:05,000 --> 00:00:07,002\nMORE NEWS LATER\n"));
}

// Another encoder's sub-pictures in Matroska, and another reader of ours.
TEST_F(DiscSubtitles, ComeFromMatroska) {
  const std::string pgs = directory_.file("pgs.mkv"), dvd = directory_.file("dvd.mkv");
  const auto made = runShell("ffmpeg -v error -i " + sup() + " -map 0 -c copy " + pgs +
                             " && ffmpeg -v quiet -canvas_size 720x576 -i samples/dvb.ts -map 0:0 "
                             "-c:s dvdsub -s 720x576 " +
                             dvd);
  if (made.exitCode == 127) GTEST_SKIP() << "ffmpeg is not installed";
  ASSERT_EQ(made.exitCode, 0) << made.errors;
  EXPECT_EQ(outputOf({"convert", pgs, "--mode", "srt", "--ocr", "eng"}), kSaid);
  const auto text = outputOf({"convert", dvd, "--mode", "srt"});
  EXPECT_THAT(text, HasSubstr("00:00:00,000 --> 00:00:02,992\nTHE FERRY IS LATE\nBY AN HOUR.\n"));
  EXPECT_THAT(text, HasSubstr("<font color=\"#ffff00\">- ANY NEWS FROM PORT?</font>"));
}

}  // namespace
}  // namespace korr::txsub
