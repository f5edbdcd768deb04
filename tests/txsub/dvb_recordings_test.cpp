#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/dvb_encoder.h"
#include "tests/support/ts_builder.h"
#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

ProgramResult convert(std::vector<std::string> arguments) {
  ProgramCall call;
  call.arguments = std::move(arguments);
  call.arguments.insert(call.arguments.begin(), {"convert", "--quiet"});
  return runProgram(call);
}

// "start-stop" of each picture in a folder.
std::vector<std::string> timesIn(const std::string& folder) {
  std::ifstream file(folder + "/index.json");
  const auto index = nlohmann::json::parse(file);
  std::vector<std::string> times;
  for (const auto& picture : index.at("pictures")) {
    times.push_back(picture.at("start").get<std::string>() + "-" +
                    picture.at("stop").get<std::string>());
  }
  return times;
}

TEST(DvbRecordings, BecomePicturesWithTheirTimes) {
  const TemporaryDirectory directory;
  EXPECT_EQ(convert({"samples/dvb.ts", "--as", "pictures", "-o", directory.file("eng")}).exitCode,
            0);
  EXPECT_THAT(timesIn(directory.file("eng")),
              ElementsAre("00:00:00.000-00:00:03.000", "00:00:04.000-00:00:07.000",
                          "00:00:08.000-00:00:10.000", "00:00:12.000-00:00:16.000",
                          "00:00:16.000-00:00:18.000"));
  EXPECT_EQ(
      convert({"samples/dvb.ts", "--pid", "0x201", "--as", "pictures", "-o", directory.file("fra")})
          .exitCode,
      0);
  EXPECT_EQ(timesIn(directory.file("fra")).size(), 2U);
}

std::string fileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(DvbRecordings, BecomePicturesWithThePageOfThePreview) {
  const TemporaryDirectory directory;
  ASSERT_EQ(convert({"samples/dvb.ts", "-o", directory.file("eng/")}).exitCode, 0);
  ProgramCall preview;
  preview.arguments = {"preview", "samples/dvb.ts", "--pid", "0x200", "-o", "-"};
  EXPECT_EQ(fileText(directory.file("eng/index.html")), runProgram(preview).output);
}

// The last page ends by its time-out although nothing follows that would end it.
TEST(DvbRecordings, EndAPageThatTimesOut) {
  const TemporaryDirectory directory;
  test_support::TsBuilder stream;
  const test_support::TsProgram program{.pcrPid = 0x200, .streams = {{.pid = 0x200}}};
  const auto page = [](std::uint8_t timeOut) {
    return test_support::DvbEncoder()
        .page(test_support::DvbEncoder::kAcquisitionPoint, timeOut, {{1, 10, 10}})
        .region({.id = 1, .fill = true, .width = 9, .height = 9, .fillCode = timeOut})
        .bytes();
  };
  const auto send = [&](std::uint64_t second, const test_support::Bytes& field) {
    const std::uint64_t pts = (10 + second) * 90'000;
    stream.tables(program).pes(0x200,
                               test_support::pesPacket({.streamId = 0xBD, .pts = pts}, field), pts);
  };
  send(0, page(3));
  send(10, page(2));
  for (std::uint64_t second = 11; second < 30; ++second) stream.pcr(0x200, (10 + second) * 90'000);
  const auto& bytes = stream.bytes();
  const std::string path = directory.write("short.ts", std::string(bytes.begin(), bytes.end()));
  ASSERT_EQ(convert({path, "--as", "pictures", "-o", directory.file("pictures")}).exitCode, 0);
  EXPECT_THAT(timesIn(directory.file("pictures")),
              ElementsAre("00:00:00.000-00:00:03.000", "00:00:10.000-00:00:12.000"));
}

TEST(DvbRecordings, AreRefusedAsTextUnlessForSamples) {
  for (const char* mode : {"webvtt", "srt"}) {
    const auto result = convert({"samples/dvb.ts", "--mode", mode});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("are pictures and cannot become text; use --mode ttml"));
    EXPECT_EQ(result.output, "");
  }
  const auto samples = convert({"samples/dvb.ts", "--mode", "ttml", "--as", "samples"});
  EXPECT_EQ(samples.exitCode, 0);
  EXPECT_THAT(samples.output, HasSubstr("\"sync\""));
  EXPECT_EQ(convert({"samples/dvb.ts", "--mode", "webvtt", "--as", "samples"}).exitCode, 0);
}

TEST(DvbRecordings, FromBroadcastGiveTheirPages) {
  const char* captures = std::getenv("TESSARY_CAPTURES");
  if (!captures) GTEST_SKIP() << "TESSARY_CAPTURES names no folder with recordings";
  const TemporaryDirectory directory;
  const std::string graphics = std::string(captures) + "/sample_TS_with_graphics.ts";
  ASSERT_EQ(convert({graphics, "--pid", "0x29", "--as", "pictures", "-o", directory.file("ten")})
                .exitCode,
            0);
  EXPECT_EQ(timesIn(directory.file("ten")).size(), 10U);
  const std::string bars = std::string(captures) + "/sample_TS_dvbsub_at_video_start.ts";
  EXPECT_EQ(convert({bars, "--as", "pictures", "-o", directory.file("bars")}).exitCode, 0);
}

}  // namespace
}  // namespace korr::txsub
