#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "samples/encoders/dvb_encoder.h"
#include "samples/encoders/ts_builder.h"
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
                          "00:00:16.000-00:00:20.000"));
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

TEST(DvbRecordings, FillADirectoryWithTtmlAskedForToo) {
  const TemporaryDirectory directory;
  const std::string folder = directory.file("new");
  for (const std::string& output : {folder + '/', folder}) {
    const auto result = convert({"samples/dvb.ts", "--mode", "ttml", "-o", output});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(timesIn(folder).size(), 5U);
  }
}

// Pages that are one small region each, as they come in.
class DvbRecording {
 public:
  explicit DvbRecording(const std::vector<std::uint16_t>& pids,
                        const encoders::Bytes& descriptors = {0x59, 8, 'e', 'n', 'g', 0x10, 0, 1, 0,
                                                              1}) {
    for (const std::uint16_t pid : pids) {
      program_.streams.push_back({.pid = pid, .descriptors = descriptors});
    }
    program_.streams.push_back({.pid = kSound, .type = 0x03});
    program_.pcrPid = pids.front();
  }

  DvbRecording& page(std::uint16_t pid, std::uint64_t second, std::uint8_t timeOut) {
    const auto field = encoders::DvbEncoder()
                           .page(encoders::DvbEncoder::kAcquisitionPoint, timeOut, {{1, 10, 10}})
                           .region({.id = 1,
                                    .fill = true,
                                    .width = 9,
                                    .height = 9,
                                    .fillCode = static_cast<std::uint8_t>(timeOut + 1)})
                           .bytes();
    return send(pid, second, field);
  }

  DvbRecording& send(std::uint16_t pid, std::uint64_t second, const encoders::Bytes& field) {
    const std::uint64_t pts = ticks(second);
    const auto packet = encoders::pesPacket({.streamId = 0xBD, .pts = pts}, field);
    stream_.tables(program_).pes(pid, packet, pts);
    return *this;
  }

  DvbRecording& sound(std::uint64_t second) {
    stream_.pes(kSound, encoders::pesPacket({.streamId = 0xC0, .pts = ticks(second)}, {{0xFF}}));
    return *this;
  }

  DvbRecording& clock(std::uint64_t second) {
    stream_.pcr(program_.pcrPid, ticks(second));
    return *this;
  }

  std::string write(const TemporaryDirectory& directory) const {
    const auto& bytes = stream_.bytes();
    return directory.write("pages.ts", std::string(bytes.begin(), bytes.end()));
  }

 private:
  static constexpr std::uint16_t kSound = 0x300;

  static std::uint64_t ticks(std::uint64_t second) { return (10 + second) * 90'000; }

  encoders::TsProgram program_;
  encoders::TsBuilder stream_;
};

TEST(DvbRecordings, EndAPageThatTimesOut) {
  const TemporaryDirectory directory;
  DvbRecording recording({0x200});
  recording.page(0x200, 0, 3).page(0x200, 10, 2);
  for (std::uint64_t second = 11; second < 30; ++second) recording.clock(second);
  ASSERT_EQ(
      convert({recording.write(directory), "--as", "pictures", "-o", directory.file("pictures")})
          .exitCode,
      0);
  EXPECT_THAT(timesIn(directory.file("pictures")),
              ElementsAre("00:00:00.000-00:00:03.000", "00:00:10.000-00:00:12.000"));
}

TEST(DvbRecordings, GiveTheSamplesOfAllPagesOfAPidOnce) {
  const TemporaryDirectory directory;
  DvbRecording recording({0x200}, {0x59, 16, 'e', 'n', 'g', 0x10, 0, 1, 0, 1,  //
                                   'f', 'r', 'a', 0x10, 0, 2, 0, 2});
  const std::string input = recording.page(0x200, 0, 3).page(0x200, 10, 2).write(directory);
  const std::string folder = directory.file("");
  ASSERT_EQ(convert({input, "--all", "--as", "samples", "-o", folder}).exitCode, 0);
  EXPECT_THAT(directory.names(), ElementsAre("0x0200-dvb-subtitles-page-1-eng.jsonl", "pages.ts"));
}

TEST(DvbRecordings, SayThatNoPageIsShownForAnyTime) {
  const TemporaryDirectory directory;
  const std::string folder = directory.file("pictures/");
  const auto result = convert(
      {DvbRecording({0x200}).page(0x200, 0, 0).page(0x200, 10, 0).write(directory), "-o", folder});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, testing::EndsWith("pages.ts': the pages of DVB subtitles of PID "
                                               "0x0200 have a time-out of 0 seconds\n"));
  EXPECT_THAT(directory.names(), ElementsAre("pages.ts"));
  const auto mixed = DvbRecording({0x200}).page(0x200, 0, 0).page(0x200, 10, 4).write(directory);
  ASSERT_EQ(convert({mixed, "-o", folder}).exitCode, 0);
  EXPECT_THAT(timesIn(folder), ElementsAre("00:00:10.000-00:00:14.000"));
}

TEST(DvbRecordings, SayWhereTheyAreDamaged) {
  const TemporaryDirectory directory;
  const auto unknown = encoders::DvbEncoder().segment(0x15, {}).bytes();
  DvbRecording recording({0x200, 0x201});
  recording.page(0x200, 0, 9).page(0x201, 0, 9);
  for (std::uint64_t second = 1; second < 7; second += 2) {
    recording.send(0x200, second, unknown).send(0x201, second + 1, unknown);
  }
  recording.send(0x200, 7, {0x21, 0x00, 0xFF}).send(0x200, 8, unknown).sound(9);
  const std::string warning = "txsub: warning: ";
  const std::string text = "Unsupported DVB subtitle segment (segment type = 21)\n";
  const auto result = convert({recording.write(directory), "--all", "-o", directory.file("all")});
  EXPECT_EQ(result.errors, warning + "PID 0x0200, 11.000 s: " + text +                //
                               warning + "PID 0x0201, 12.000 s: " + text +            //
                               "txsub: PID 0x0200: the same 2 more times: " + text +  //
                               "PID 0x0200, 17.000 s: Error: expected 0x20 in PES_Data_Field\n" +
                               warning + "PID 0x0200, 18.000 s: " + text +
                               "txsub: PID 0x0201: the same 2 more times: " + text);
}

// Whatever the segments are, and wherever other streams end.
TEST(DvbRecordings, KeepTheLastPageUntilItTimesOut) {
  const TemporaryDirectory directory;
  const std::string path = DvbRecording({0x200, 0x201})
                               .sound(0)
                               .page(0x200, 0, 8)
                               .page(0x201, 1, 9)
                               .page(0x201, 5, 20)
                               .sound(6)
                               .write(directory);
  for (const std::string duration : {"0", "500", "2000", "60000"}) {
    const std::string all = directory.file(duration);
    ASSERT_EQ(
        convert({path, "--all", "--as", "pictures", "--duration", duration, "-o", all}).exitCode,
        0);
    EXPECT_THAT(timesIn(all + "/0x0200-dvb-subtitles-eng"),
                ElementsAre("00:00:00.000-00:00:08.000"))
        << duration;
    EXPECT_THAT(timesIn(all + "/0x0201-dvb-subtitles-eng"),
                ElementsAre("00:00:01.000-00:00:05.000", "00:00:05.000-00:00:25.000"))
        << duration;
  }
  const auto ttml = convert({path, "--mode", "ttml", "--duration", "0"});
  EXPECT_THAT(ttml.output, HasSubstr("end=\"00:00:08.000\""));
}

TEST(DvbRecordings, AreDrawnToTheirEndOnly) {
  const TemporaryDirectory directory;
  ProgramCall call;
  call.arguments = {
      "render",   DvbRecording({0x200}).sound(0).page(0x200, 0, 8).sound(3).write(directory),
      "--frames", "1",
      "--size",   "36x20"};
  EXPECT_EQ(runProgram(call).output.size(), 3U * 36 * 20 * 4);
}

// Two services of one PID, whose objects are on a page that they share.
TEST(DvbRecordings, ShowTheLanguageThatIsAskedForWherePagesShareAPid) {
  using encoders::DvbEncoder;
  const TemporaryDirectory directory;
  encoders::TsBuilder stream;
  const encoders::TsProgram program{
      .pcrPid = 0x200,
      .streams = {{.pid = 0x200,
                   .descriptors = {0x59, 16, 'e', 'n', 'g', 0x10, 0, 1, 0, 3,  //
                                   'f', 'r', 'a', 0x10, 0, 2, 0, 3}}}};
  const encoders::Bytes row = encoders::codeString(4, encoders::Bytes(9, 5).data(), 9);
  const auto send = [&](std::uint64_t second, std::uint16_t page, std::uint16_t width) {
    const std::uint64_t pts = (10 + second) * 90'000;
    const auto field = DvbEncoder(page)
                           .page(DvbEncoder::kAcquisitionPoint, 2, {{1, 10, 10}})
                           .region({.id = 1,
                                    .fill = true,
                                    .width = width,
                                    .height = 9,
                                    .fillCode = 3,
                                    .objects = {{7, 0, 0}}})
                           .ofPage(3)
                           .object(7, row, row)
                           .ofPage(page)
                           .end()
                           .bytes();
    stream.tables(program).pes(0x200, encoders::pesPacket({.streamId = 0xBD, .pts = pts}, field),
                               pts);
  };
  for (const std::uint64_t second : {0U, 10U, 20U}) {
    send(second, 1, 20);
    send(second + 5, 2, 40);
  }
  const auto& bytes = stream.bytes();
  const std::string path = directory.write("two.ts", std::string(bytes.begin(), bytes.end()));
  const auto timesOf = [&](const std::string& language) {
    const auto folder = directory.file(language);
    EXPECT_EQ(convert({path, "--language", language, "--as", "pictures", "-o", folder}).exitCode,
              0);
    return timesIn(folder);
  };
  EXPECT_THAT(timesOf("eng"), ElementsAre("00:00:00.000-00:00:02.000", "00:00:10.000-00:00:12.000",
                                          "00:00:20.000-00:00:22.000"));
  EXPECT_THAT(timesOf("fra"), ElementsAre("00:00:05.000-00:00:07.000", "00:00:15.000-00:00:17.000",
                                          "00:00:25.000-00:00:27.000"));
}

TEST(DvbRecordings, AreRefusedAsTextUnlessForSamples) {
  for (const char* mode : {"webvtt", "srt"}) {
    const auto result = convert({"samples/dvb.ts", "--mode", mode});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("are pictures and cannot become text; use --mode ttml, "
                                         "or -o DIR/ for PNG files"));
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
  const auto times = timesIn(directory.file("ten"));
  ASSERT_EQ(times.size(), 10U);
  EXPECT_EQ(times.back(), "00:00:31.650-00:01:01.650");
  const std::string bars = std::string(captures) + "/sample_TS_dvbsub_at_video_start.ts";
  EXPECT_EQ(convert({bars, "--as", "pictures", "-o", directory.file("bars")}).exitCode, 0);
}

}  // namespace
}  // namespace korr::txsub
