// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/ts_builder.h"
#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::DvbEncoder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class DvbRecordings : public testing::Test {
 protected:
  using Times = std::vector<std::pair<double, double>>;

  // From which to which second each picture in a folder is shown.
  Times timesIn(const std::string& folder) const {
    const auto seconds = [](const std::string& time) {  // "HH:MM:SS.mmm", in the first hour
      return 60 * std::stod(time.substr(3)) + std::stod(time.substr(6));
    };
    Times times;
    const auto index = nlohmann::json::parse(directory_.read(folder + "/index.json"));
    for (const auto& picture : index.at("pictures")) {
      times.emplace_back(seconds(picture.at("start")), seconds(picture.at("stop")));
    }
    return times;
  }

  // The same of a recording.
  Times timesOf(std::vector<std::string> arguments) {
    const std::string folder = "pictures" + std::to_string(++folders_);
    arguments.insert(arguments.begin(),
                     {"convert", "--as", "pictures", "-o", directory_.file(folder)});
    outputOf(arguments);
    return timesIn(folder);
  }

  TemporaryDirectory directory_;
  int folders_ = 0;
};

TEST_F(DvbRecordings, BecomePicturesWithTheirTimes) {
  EXPECT_THAT(timesOf({"samples/dvb.ts"}),
              ElementsAre(Pair(0, 3), Pair(4, 7), Pair(8, 10), Pair(12, 16), Pair(16, 20)));
  EXPECT_EQ(timesOf({"samples/dvb.ts", "--pid", "0x201"}).size(), 2U);
}

TEST_F(DvbRecordings, BecomePicturesWithThePageOfThePreview) {
  outputOf({"convert", "samples/dvb.ts", "-o", directory_.file("eng/")});
  EXPECT_EQ(directory_.read("eng/index.html"),
            outputOf({"preview", "samples/dvb.ts", "--pid", "0x200", "-o", "-"}));
}

TEST_F(DvbRecordings, FillADirectoryWithTtmlAskedForToo) {
  for (const char* folder : {"new/", "new"}) {
    outputOf({"convert", "samples/dvb.ts", "--mode", "ttml", "-o", directory_.file(folder)});
    EXPECT_EQ(timesIn(folder).size(), 5U);
  }
}

// Pages that are one small region each, as they come in.
class DvbRecording {
 public:
  static constexpr std::uint16_t kPid = 0x200;
  static constexpr std::uint16_t kOtherPid = 0x201;

  explicit DvbRecording(const Bytes& descriptors = {0x59, 8, 'e', 'n', 'g', 0x10, 0, 1, 0, 1})
      : program_{.pcrPid = kPid,
                 .streams = {{.pid = kPid, .descriptors = descriptors},
                             {.pid = kOtherPid, .descriptors = descriptors},
                             {.pid = kSound, .type = 0x03}}} {}

  DvbRecording& page(std::uint16_t pid, std::uint64_t second, std::uint8_t timeOut) {
    const auto fillCode = static_cast<std::uint8_t>(timeOut + 1);
    return send(pid, second,
                DvbEncoder()
                    .page(DvbEncoder::kAcquisitionPoint, timeOut, {{1, 10, 10}})
                    .region({.id = 1, .fill = true, .width = 9, .height = 9, .fillCode = fillCode})
                    .bytes());
  }

  DvbRecording& send(std::uint16_t pid, std::uint64_t second, const Bytes& field) {
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

constexpr std::uint16_t kPid = DvbRecording::kPid;
constexpr std::uint16_t kOtherPid = DvbRecording::kOtherPid;

TEST_F(DvbRecordings, EndAPageThatTimesOut) {
  DvbRecording recording;
  recording.page(kPid, 0, 3).page(kPid, 10, 2);
  for (std::uint64_t second = 11; second < 30; ++second) recording.clock(second);
  EXPECT_THAT(timesOf({recording.write(directory_)}), ElementsAre(Pair(0, 3), Pair(10, 12)));
}

TEST_F(DvbRecordings, AreAServiceForEachPageButOneForSamples) {
  DvbRecording recording({0x59, 16, 'e', 'n', 'g', 0x10, 0, 1, 0, 1,  //
                          'f', 'r', 'a', 0x10, 0, 1, 0, 2});
  const std::string input = recording.page(kPid, 0, 3).page(kPid, 10, 2).write(directory_);
  outputOf({"convert", input, "--all", "-o", directory_.file("${feedIndex}.ttml")});
  outputOf({"convert", input, "--all", "--as", "samples", "-o", directory_.file("")});
  EXPECT_THAT(directory_.names(),
              ElementsAre("0x0200-dvb-subtitles-page-1-eng.jsonl", "1.ttml", "2.ttml", "pages.ts"));
}

TEST_F(DvbRecordings, SayThatNoPageIsShownForAnyTime) {
  const auto silent = DvbRecording().page(kPid, 0, 0).page(kPid, 10, 0).write(directory_);
  EXPECT_THAT(errorsOf(3, {"convert", silent, "-o", directory_.file("pictures/")}),
              testing::EndsWith("pages.ts': the pages of DVB subtitles of PID 0x0200 have a "
                                "time-out of 0 seconds\n"));
  EXPECT_THAT(directory_.names(), ElementsAre("pages.ts"));
  const auto mixed = DvbRecording().page(kPid, 0, 0).page(kPid, 10, 4).write(directory_);
  EXPECT_THAT(timesOf({mixed}), ElementsAre(Pair(10, 14)));
}

TEST_F(DvbRecordings, SayWhereTheyAreDamaged) {
  const Bytes unknown = DvbEncoder().segment(0x15, {}).bytes();
  DvbRecording recording;
  recording.page(kPid, 0, 9).page(kOtherPid, 0, 9);
  for (std::uint64_t second = 1; second < 7; second += 2) {
    recording.send(kPid, second, unknown).send(kOtherPid, second + 1, unknown);
  }
  recording.send(kPid, 7, {0x21, 0x00, 0xFF}).send(kPid, 8, unknown).sound(9);
  const std::string warning = "txsub: warning: ";
  const std::string text = "Unsupported DVB subtitle segment (segment type = 21)\n";
  const std::string path = recording.write(directory_);
  const auto result = run({"convert", "--quiet", path, "--all", "-o", directory_.file("all")});
  EXPECT_EQ(result.errors, warning +
                               "PID 0x0200, 17.000 s: data field of DVB subtitles passed over: "
                               "it does not begin with 0x20 0x00\n")
      << "receivers ignore what they do not know";

  const auto filtered = run(
      {"convert", "--quiet", path, "--rules", "filter", "--all", "-o", directory_.file("filter")});
  EXPECT_EQ(filtered.errors,
            warning + "PID 0x0200, 11.000 s: " + text +                //
                warning + "PID 0x0201, 12.000 s: " + text +            //
                "txsub: PID 0x0200: the same 2 more times: " + text +  //
                "txsub: PID 0x0200, 17.000 s: Error: expected 0x20 in PES_Data_Field\n" + warning +
                "PID 0x0200, 18.000 s: " + text +
                "txsub: PID 0x0201: the same 2 more times: " + text);
}

// Whatever the segments are, and wherever other streams end.
TEST_F(DvbRecordings, KeepTheLastPageUntilItTimesOut) {
  const std::string path = DvbRecording()
                               .sound(0)
                               .page(kPid, 0, 8)
                               .page(kOtherPid, 1, 9)
                               .page(kOtherPid, 5, 20)
                               .sound(6)
                               .write(directory_);
  for (const std::string duration : {"0", "500", "2000", "60000"}) {
    SCOPED_TRACE(duration);
    outputOf({"convert", path, "--all", "--as", "pictures", "--duration", duration, "-o",
              directory_.file(duration)});
    EXPECT_THAT(timesIn(duration + "/0x0200-dvb-subtitles-eng"), ElementsAre(Pair(0, 8)));
    EXPECT_THAT(timesIn(duration + "/0x0201-dvb-subtitles-eng"),
                ElementsAre(Pair(1, 5), Pair(5, 25)));
  }
  EXPECT_THAT(outputOf({"convert", path, "--mode", "ttml", "--duration", "0"}),
              HasSubstr("end=\"00:00:08.000\""));
}

TEST_F(DvbRecordings, AreDrawnToTheirEndOnly) {
  const auto path = DvbRecording().sound(0).page(kPid, 0, 8).sound(3).write(directory_);
  EXPECT_EQ(outputOf({"render", path, "--frames", "1", "--size", "36x20"}).size(),
            3U * 36 * 20 * 4);
}

// Two services of one PID, whose objects are on a page that they share.
TEST_F(DvbRecordings, ShowTheLanguageThatIsAskedForWherePagesShareAPid) {
  DvbRecording recording({0x59, 16, 'e', 'n', 'g', 0x10, 0, 1, 0, 3,  //
                          'f', 'r', 'a', 0x10, 0, 2, 0, 3});
  const Bytes row = encoders::codeString(4, Bytes(9, 5).data(), 9);
  const auto send = [&](std::uint64_t second, std::uint16_t page, std::uint16_t width) {
    recording.send(kPid, second,
                   DvbEncoder(page)
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
                       .bytes());
  };
  for (const std::uint64_t second : {0U, 10U, 20U}) {
    send(second, 1, 20);
    send(second + 5, 2, 40);
  }
  const std::string path = recording.write(directory_);
  EXPECT_THAT(timesOf({path, "--language", "eng"}),
              ElementsAre(Pair(0, 2), Pair(10, 12), Pair(20, 22)));
  EXPECT_THAT(timesOf({path, "--language", "fra"}),
              ElementsAre(Pair(5, 7), Pair(15, 17), Pair(25, 27)));
}

TEST_F(DvbRecordings, GiveTheSamplesOfTheFilter) {
  for (const char* mode : {"webvtt", "ttml"}) {
    EXPECT_THAT(outputOf({"convert", "samples/dvb.ts", "--mode", mode, "--as", "samples"}),
                HasSubstr("\"sync\""));
  }
}

TEST_F(DvbRecordings, FromBroadcastGiveTheirPages) {
  const char* captures = std::getenv("TESSARY_CAPTURES");
  if (!captures) GTEST_SKIP() << "TESSARY_CAPTURES names no folder with recordings";
  const std::string folder = captures;
  const auto times = timesOf({folder + "/sample_TS_with_graphics.ts", "--pid", "0x29"});
  ASSERT_EQ(times.size(), 10U);
  EXPECT_THAT(times.back(), Pair(31.65, testing::DoubleEq(61.65)));
  timesOf({folder + "/sample_TS_dvbsub_at_video_start.ts"});
}

}  // namespace
}  // namespace korr::txsub
