// SPDX-License-Identifier: MIT

// `txsub stream` as its users run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "testkit/encoders/teletext_encoder.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/encoders/video_builder.h"
#include "tests/streaming/checked_store.h"
#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

struct ShownCue {
  double start = 0;
  double stop = 0;
  std::string text;
};

double secondsOf(const std::string& time) {
  return std::stod(time.substr(0, 2)) * 3600 + std::stod(time.substr(3, 2)) * 60 +
         std::stod(time.substr(6));
}

std::vector<ShownCue> cuesOf(const std::string& webVtt) {
  static const std::regex kTimes(R"((\d\d:\d\d:\d\d\.\d{3}) --> (\d\d:\d\d:\d\d\.\d{3}).*)");
  std::vector<ShownCue> cues;
  std::istringstream lines(webVtt);
  bool inCue = false;
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_match(line, match, kTimes)) {
      cues.push_back({secondsOf(match[1]), secondsOf(match[2]), {}});
      inCue = true;
    } else if (line.empty()) {
      inCue = false;
    } else if (inCue) {
      cues.back().text += line + '\n';
    }
  }
  return cues;
}

std::set<std::string> shownAt(double time, const std::vector<ShownCue>& cues) {
  std::set<std::string> texts;
  for (const auto& cue : cues) {
    if (cue.start <= time && time < cue.stop) texts.insert(cue.text);
  }
  return texts;
}

class StreamTest : public testing::Test {
 protected:
  static std::string sample(const std::string& name) { return "samples/" + name; }

  std::string out() const { return scratch_.file("out"); }

  ProgramResult stream(const std::string& input, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"stream", input, "-o", out()});
    return run(options);
  }

  /// Everything in the output, held to the rules.
  CheckedStore published() const {
    CheckedStore store;
    for (const auto& entry : fs::recursive_directory_iterator(out())) {
      if (!entry.is_regular_file()) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      store.files[fs::relative(entry.path(), out()).string()] =
          std::string(std::istreambuf_iterator<char>(file), {});
    }
    store.checkAll();
    EXPECT_THAT(store.faults, IsEmpty());
    return store;
  }

  static ReadPlaylist playlist(const CheckedStore& store, const std::string& folder) {
    return readPlaylist(store.files.at(folder + "/webvtt.m3u8"));
  }

  static std::vector<ShownCue> cuesOfService(const CheckedStore& store, const std::string& folder) {
    std::vector<ShownCue> all;
    for (const auto& entry : playlist(store, folder).entries) {
      const auto cues = cuesOf(store.files.at(folder + '/' + entry.uri));
      all.insert(all.end(), cues.begin(), cues.end());
    }
    return all;
  }

  TemporaryDirectory scratch_;
};

constexpr std::uint64_t kTicks = 90'000;
constexpr std::uint16_t kVideoPid = 0x100;
constexpr std::uint16_t kTeletextPid = 0x101;

encoders::TsProgram programme(std::uint16_t number = 1) {
  const auto pid = [&](std::uint16_t first) {
    return static_cast<std::uint16_t>(first + 16 * (number - 1));
  };
  return {
      .number = number,
      .pmtPid = pid(0x1000),
      .pcrPid = pid(kVideoPid),
      .streams = {{.pid = pid(kVideoPid), .type = encoders::TsStream::kH264},
                  {.pid = pid(kTeletextPid), .descriptors = {0x56, 5, 's', 'w', 'e', 0x10, 0x88}}}};
}

/// Four pictures a second, one of which decoding can begin with, and no subtitle.
std::string silence(unsigned seconds, bool hasClock = true) {
  encoders::TsBuilder stream;
  stream.tables(programme());
  for (std::uint64_t i = 0; i < seconds * std::uint64_t{4} && hasClock; ++i) {
    const std::uint64_t now = 10 * kTicks + i * kTicks / 4;
    stream.pes(kVideoPid,
               encoders::pesPacket({.pts = now + kTicks / 4, .unbounded = true},
                                   encoders::encode({.beginsGroup = i % 4 == 0})),
               now);
  }
  for (int i = 0; i < 20; ++i) stream.nullPacket();
  return {stream.bytes().begin(), stream.bytes().end()};
}

// Rows that are written on the screen come letter by letter in a stream; before they move up, which
// takes less than a tenth of a second here, both show the same.
TEST_F(StreamTest, ShowsWhatConvertShows) {
  for (const char* name : {"teletext.ts", "captions.ts", "captions-mpeg2.ts", "captions-708.ts"}) {
    fs::remove_all(out());
    ASSERT_EQ(stream(sample(name), {"--segment", "3"}).exitCode, 0);
    const auto store = published();
    const std::string files = scratch_.file(name);
    outputOf({"convert", sample(name), "--all", "--absolute", "-o", files});
    std::size_t compared = 0;
    for (const auto& entry : fs::directory_iterator(files)) {
      std::ifstream file(entry.path(), std::ios::binary);
      const auto expected = cuesOf(std::string(std::istreambuf_iterator<char>(file), {}));
      const auto cues = cuesOfService(store, entry.path().stem().string());
      for (const auto& cue : expected) {
        SCOPED_TRACE(entry.path().string() + ' ' + std::to_string(cue.start));
        EXPECT_EQ(shownAt(cue.stop - 0.1, cues), shownAt(cue.stop - 0.1, expected));
        EXPECT_THAT(shownAt(cue.start + 0.02, cues), Not(IsEmpty()));
        if (shownAt(cue.stop + 0.02, expected).empty()) {
          EXPECT_THAT(shownAt(cue.stop + 0.02, cues), IsEmpty());
        }
        ++compared;
      }
    }
    EXPECT_GE(compared, 8U) << name;
  }
}

TEST_F(StreamTest, StreamsPicturesAsImagesThatTheManifestNames) {
  ASSERT_EQ(stream(sample("dvb.ts"), {"--segment", "4"}).exitCode, 0);
  const auto store = published();
  const std::string& manifest = store.files.at("subtitles.mpd");
  EXPECT_THAT(manifest, AllOf(HasSubstr("stpp.ttml.im1i"), HasSubstr("lang=\"fr\""),
                              HasSubstr("type=\"static\"")));
  EXPECT_FALSE(store.files.contains("0x0200-dvb-subtitles-eng/webvtt.m3u8"));
  std::string all;
  for (const auto& [name, content] : store.files) {
    if (name.starts_with("0x0200") && name.ends_with(".m4s")) all += content;
  }
  EXPECT_THAT(all, AllOf(HasSubstr("urn:mpeg:14496-30:subs:1"), HasSubstr("\x89PNG")));
}

TEST_F(StreamTest, SilenceMakesCompleteEmptySegments) {
  const auto result = stream(scratch_.write("silent.ts", silence(40)), {"--segment", "4"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  const auto store = published();
  const auto list = playlist(store, "0x0101-page-888-swe");
  ASSERT_THAT(list.entries, SizeIs(10));
  EXPECT_TRUE(list.isEnded);
  std::uint64_t stamp = 10 * kTicks + kTicks / 4;
  for (const auto& entry : list.entries) {
    const auto text = store.files.at("0x0101-page-888-swe/" + entry.uri);
    EXPECT_THAT(text, HasSubstr("MPEGTS:" + std::to_string(stamp / 90 * 90) + ","));
    EXPECT_THAT(cuesOf(text), IsEmpty());
    stamp += 4 * kTicks;
  }
}

TEST_F(StreamTest, KeepsAWindowAndRemovesWhatLeftIt) {
  const auto input = scratch_.write("silent.ts", silence(90));
  ASSERT_EQ(stream(input, {"--segment", "2", "--window", "12"}).exitCode, 0);
  const auto store = published();
  const auto list = playlist(store, "0x0101-page-888-swe");
  EXPECT_GT(list.mediaSequence, 30U);
  EXPECT_THAT(list.entries, SizeIs(7));  // the last one is short
  EXPECT_FALSE(store.files.contains("0x0101-page-888-swe/webvtt-20.vtt"));
  EXPECT_THAT(store.files, testing::Contains(testing::Key("0x0101-page-888-swe/webvtt-37.vtt")));
}

TEST_F(StreamTest, GoesOnAfterAKillWithItsNumbers) {
  const std::string input = scratch_.write("silent.ts", silence(60));
  const auto killed = runShell(
      "cd '" + scratch_.file("") +
      "' && mkfifo pipe && { '" TXSUB_PROGRAM
      "' stream pipe -o out --segment 3 & } && exec 3>pipe && head -c 50000 silent.ts >&3 && "
      "i=0; until test -e out/0x0101-page-888-swe/webvtt-4.vtt -a -e out/subtitles.mpd || "
      "test $i = 200; do sleep 0.05; i=$((i+1)); done; kill -9 $!");
  const auto before = playlist(published(), "0x0101-page-888-swe");
  ASSERT_GE(before.entries.size(), 3U) << killed.errors;
  EXPECT_FALSE(before.isEnded);

  ASSERT_EQ(stream(input, {"--segment", "3"}).exitCode, 0);
  const auto after = playlist(published(), "0x0101-page-888-swe");
  ASSERT_GT(after.entries.size(), before.entries.size() + 15);
  std::size_t jumps = 0;
  for (const auto& entry : after.entries) jumps += entry.isDiscontinuous ? 1 : 0;
  EXPECT_EQ(jumps, 1U);
  EXPECT_TRUE(after.entries[before.entries.size()].isDiscontinuous ||
              after.entries[before.entries.size() + 1].isDiscontinuous);
}

TEST_F(StreamTest, EndsCleanlyWhenItIsAskedTo) {
  const auto result = runAndInterrupt(
      {.arguments = {"stream", "-", "-o", out(), "--segment", "3"}, .input = silence(20)}, SIGTERM);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors, HasSubstr("interrupted; the output is complete up to here"));
  const auto list = playlist(published(), "0x0101-page-888-swe");
  EXPECT_TRUE(list.isEnded);
  EXPECT_GE(list.entries.size(), 5U);
}

TEST_F(StreamTest, FollowsAFileThatGrows) {
  scratch_.write("silent.ts", silence(40));
  const auto result =
      runShell("cd '" + scratch_.file("") +
               "' && head -c 40000 silent.ts >growing.ts && { sleep 0.4; "
               "tail -c +40001 silent.ts >>growing.ts; } & cd '" +
               scratch_.file("") +
               "'; sleep 0.1; '" TXSUB_PROGRAM "' stream growing.ts -o out --segment 4 --follow 1");
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_THAT(playlist(published(), "0x0101-page-888-swe").entries, SizeIs(10));
}

TEST_F(StreamTest, NamesTheVideoInAMasterPlaylist) {
  fs::create_directory(scratch_.file("my video"));
  scratch_.write("my video/master.m3u8",
                 "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"avc1.4d401f\"\nhd/v.m3u8\n");
  ASSERT_EQ(stream(sample("teletext.ts"),
                   {"--page", "888", "--master", scratch_.file("my video/master.m3u8")})
                .exitCode,
            0);
  EXPECT_EQ(scratch_.read("out/master.m3u8"),
            "#EXTM3U\n"
            "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"subtitles\",NAME=\"fra\",LANGUAGE=\"fr\","
            "DEFAULT=NO,AUTOSELECT=YES,FORCED=NO,URI=\"0x0200-page-888-fra/webvtt.m3u8\"\n"
            "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"wvtt,avc1.4d401f\",SUBTITLES=\"subtitles\"\n"
            "../my%20video/hd/v.m3u8\n");
}

TEST_F(StreamTest, AsksForTheProgrammeWhereThereAreSeveral) {
  const std::vector programmes{programme(1), programme(2)};
  encoders::TsBuilder stream;
  stream.pat(programmes).pmt(programmes[0]).pmt(programmes[1]).sdt(2, "Two");
  for (std::uint64_t i = 0; i < 12; ++i) {
    for (const auto& one : programmes) {
      const auto base = i * kTicks + one.number * 1000 * kTicks;
      stream.pes(one.pcrPid,
                 encoders::pesPacket({.pts = base, .unbounded = true},
                                     encoders::encode({.beginsGroup = true})),
                 base);
    }
  }
  const std::string input =
      scratch_.write("mux.ts", {stream.bytes().begin(), stream.bytes().end()});
  const auto asked = this->stream(input);
  EXPECT_EQ(asked.exitCode, 2);
  EXPECT_THAT(asked.errors, HasSubstr("choose it with --program: 1, 2 (Two)"));
  const auto missing = this->stream(input, {"--program", "7"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_THAT(missing.errors, HasSubstr("there is no programme 7"));
  ASSERT_EQ(this->stream(input, {"--program", "2", "--segment", "4"}).exitCode, 0);
  const auto store = published();
  EXPECT_THAT(store.files.at("0x0111-page-888-swe/webvtt-1.vtt"), HasSubstr("MPEGTS:180000000,"));
  EXPECT_FALSE(store.files.contains("0x0101-page-888-swe/webvtt-1.vtt"));
}

TEST_F(StreamTest, SaysWhyNothingComesOut) {
  const auto noClock = stream(scratch_.write("clockless.ts", silence(0, false)));
  EXPECT_EQ(noClock.exitCode, 1);
  EXPECT_THAT(noClock.errors, HasSubstr("neither PCR nor video with PTS"));
  const auto noStream = stream(sample("captions.scc"));
  EXPECT_EQ(noStream.exitCode, 2);
  EXPECT_THAT(noStream.errors, HasSubstr("is no transport stream"));
}

// A file that cannot be written to its end, as on a full disk, and a directory that somebody
// empties while nothing is written.
TEST_F(StreamTest, LeavesTruePlaylistsWhereItCannotWrite) {
  scratch_.write("silent.ts", silence(400));
  const std::string begin = "cd '" + scratch_.file("") + "' && ";
  const auto full = runShell(begin + "trap '' XFSZ && ulimit -f 8 && '" TXSUB_PROGRAM
                                     "' stream silent.ts -o out --segment 2");
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_THAT(full.errors, HasSubstr("cannot write 'out/"));
  EXPECT_GE(playlist(published(), "0x0101-page-888-swe").entries.size(), 5U);

  const auto emptied = runShell(
      begin + "rm -r out; mkfifo pipe; '" TXSUB_PROGRAM
              "' stream pipe -o out --segment 2 & exec 3>pipe; head -c 50000 silent.ts >&3; i=0; "
              "until test -e out/0x0101-page-888-swe/webvtt-4.vtt || test $i = 200; do sleep "
              "0.05; i=$((i+1)); done; while find out -newermt '1 second ago' | grep -q .; do "
              "sleep 0.1; done; rm -r out/*; tail -c +50001 silent.ts >&3; exec 3>&-; "
              "wait $!");
  EXPECT_EQ(emptied.exitCode, 1);
  EXPECT_THAT(emptied.errors, HasSubstr("lost its 'stream.json'"));
  published();
}

TEST_F(StreamTest, OneRunAtATimeWritesIntoADirectory) {
  const auto second = runShell("cd '" + scratch_.file("") + "' && mkdir out && flock out '" +
                               std::string(TXSUB_PROGRAM) + "' stream " +
                               fs::absolute(sample("teletext.ts")).string() + " -o out");
  EXPECT_EQ(second.exitCode, 1);
  EXPECT_THAT(second.errors, HasSubstr("another run writes into the directory 'out'"));
}

}  // namespace
}  // namespace korr::txsub
