// SPDX-License-Identifier: MIT

// Frames as users get them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>

#include "platform/png_decoder.h"
#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using platform::DecodedPng;
using testing::HasSubstr;

constexpr const char* kCaptions = "samples/captions.scc";

std::optional<DecodedPng> decode(const std::string& png) {
  return platform::decodePng({reinterpret_cast<const std::uint8_t*>(png.data()), png.size()});
}

// The mean difference of two pictures' channels, 0 to 255.
double difference(const DecodedPng& left, const DecodedPng& right) {
  EXPECT_EQ(left.rgba.size(), right.rgba.size());
  if (left.rgba.size() != right.rgba.size() || left.rgba.empty()) return 255;
  double sum = 0;
  for (std::size_t i = 0; i < left.rgba.size(); ++i) sum += std::abs(left.rgba[i] - right.rgba[i]);
  return sum / static_cast<double>(left.rgba.size());
}

class RenderTest : public testing::Test {
 protected:
  // Rewritten instead of compared when TESSARY_UPDATE_GOLDEN is set: look at them in git diff.
  void compareWithGolden(const std::string& png, const std::string& name) {
    const std::string path = "tests/txsub/golden/" + name;
    if (std::getenv("TESSARY_UPDATE_GOLDEN")) {
      std::ofstream(path, std::ios::binary) << png;
      GTEST_SKIP() << "rewrote " << path;
    }
    std::ifstream file(path, std::ios::binary);
    const std::string golden((std::istreambuf_iterator<char>(file)), {});
    const auto expected = decode(golden);
    const auto drawn = decode(png);
    ASSERT_TRUE(expected && drawn);
    EXPECT_LT(difference(*drawn, *expected), 1.0) << "other versions of the font differ a little";
  }

  TemporaryDirectory directory_;
};

TEST_F(RenderTest, DrawsAsAReceiverWould) {
  const std::map<std::string, std::vector<std::string>> pictures = {
      {"captions.png", {"render", kCaptions, "--at", "0:08.5", "--size", "640x360"}},
      {"teletext.png",
       {"render", "samples/teletext.ts", "--language", "swe", "--at", "7", "--size", "360x288"}},
      // Stretched over the frame.
      {"dvb.png",
       {"render", "samples/dvb.ts", "--pid", "0x200", "--at", "5", "--size", "360x202"}}};
  for (const auto& [name, arguments] : pictures) {
    SCOPED_TRACE(name);
    compareWithGolden(outputOf(arguments), name);
  }
}

TEST_F(RenderTest, DrawsOverAPictureInItsSize) {
  const auto blank = outputOf({"render", kCaptions, "--at", "0", "--size", "64x33"});
  const auto path = directory_.write("paper.png", blank);
  const auto png = outputOf({"render", kCaptions, "--at", "8.5", "--over", path});
  const auto drawn = decode(png);
  ASSERT_TRUE(drawn);
  EXPECT_EQ(drawn->width, 64u);
  EXPECT_EQ(drawn->height, 33u);
  EXPECT_NE(png, blank);
  EXPECT_THAT(errorsOf(1, {"render", kCaptions, "--at", "8.5", "--over",
                           directory_.write("no.png", "\x89PNG\r\n")}),
              HasSubstr("no.png' is not a PNG picture"));
}

TEST_F(RenderTest, WritesRawFramesOfTheWholeRecording) {
  const auto path = directory_.file("frames.rgba");
  outputOf({"render", kCaptions, "--frames", "2", "--size", "34x15", path, "-q"});
  const auto frames = directory_.read("frames.rgba");
  constexpr std::size_t kFrame = 34 * 15 * 4;
  ASSERT_EQ(frames.size() % kFrame, 0u);
  EXPECT_GT(frames.size() / kFrame, 40u) << "over twenty seconds, gaps included";
  const auto isBlank = [&](std::size_t number) {
    return frames.substr(number * kFrame, kFrame).find_first_not_of('\0') == std::string::npos;
  };
  EXPECT_TRUE(isBlank(0));
  EXPECT_FALSE(isBlank(17)) << "8.5 s";
  EXPECT_TRUE(isBlank(26)) << "13 s: between two captions";
}

TEST_F(RenderTest, WritesNoFramesForABreakInTime) {
  const auto sample = [&](const char* data, const char* start) {
    return std::string(R"({"data": ")") + data + R"(", "start": )" + start + R"(, "stop": )" +
           start + "}\n";
  };
  // RCL, PAC, "Hi", EOC at 1 s; EDM 100 days later; its next time a second after that.
  const auto path = directory_.write(
      "break.jsonl", std::string(R"({"stream": "captions"})") + "\n" +
                         sample("/JQg/JRw/Mjp/JQv", "10000000") +
                         sample("/JQs", "864010000000000") + sample("/ICA", "864020000000000"));
  const auto frames = outputOf({"render", path, "--page", "1", "--frames", "1", "--size", "34x15"});
  EXPECT_GT(frames.size(), 34u * 15 * 4);
  EXPECT_LT(frames.size(), 100u * 34 * 15 * 4);
}

TEST_F(RenderTest, FeedsVideoTools) {
  if (std::system("command -v ffmpeg >/dev/null") != 0) GTEST_SKIP() << "no ffmpeg here";
  const auto drawn = decode(runShell(std::string(TXSUB_PROGRAM) +
                                     " render samples/captions.scc --frames 25 --size 320x180 - |"
                                     " ffmpeg -v error -f lavfi -i color=gray:s=320x180:r=25"
                                     " -f rawvideo -pix_fmt rgba -s 320x180 -r 25 -i -"
                                     " -filter_complex overlay=shortest=1 -ss 8.5 -frames:v 1"
                                     " -f image2pipe -c:v png -")
                                .output);
  ASSERT_TRUE(drawn);
  // In the boxes of the two rows, and beside them.
  const auto redAt = [&](std::size_t x, std::size_t y) { return drawn->rgba[(y * 320 + x) * 4]; };
  EXPECT_LT(redAt(33, 158), 60) << "the black box";
  EXPECT_NEAR(redAt(10, 90), 128, 8) << "the video";
}

TEST_F(RenderTest, RefusesWhatCannotBeDrawn) {
  errorsOf(2, {"render", kCaptions});
  errorsOf(2, {"render", kCaptions, "--at", "1:2:3:4"});
  errorsOf(2, {"render", kCaptions, "--at", "1", "--size", "0x100"});
  errorsOf(2, {"render", kCaptions, "--at", "1", "--size", "100000x100000"});
  errorsOf(2, {"render", kCaptions, "--frames", "0"});
  EXPECT_THAT(errorsOf(1, {"render", kCaptions, "--at", "1", "--page", "4"}),
              HasSubstr("no subtitles to draw"));
}

}  // namespace
}  // namespace korr::txsub
