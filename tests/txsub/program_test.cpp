// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// Pop-on captions: "Hi" in row 15 from 1.3 s (nine pairs after 1 s), gone at 4.03 s.
constexpr const char* kCaptions =
    "Scenarist_SCC V1.0\n\n"
    "00:00:01:00\t9420 9420 94ae 94ae 9470 9470 c8e9 942f 942f\n\n"
    "00:00:04:00\t942c 942c\n\n"
    "00:00:06:00\t8080\n";

constexpr const char* kCaptionsAsWebVtt =
    "WEBVTT\n\n"
    "00:00:01.235 --> 00:00:04.004 line:84.67% position:10% align:start\n"
    "Hi\n\n";

class ProgramTest : public testing::Test {
 protected:
  std::string captions() const { return directory_.write("captions.scc", kCaptions); }

  std::string recordedSamples() {
    std::string path = directory_.file("captions.jsonl");
    outputOf({"extract", captions(), "-o", path, "--quiet"});
    return path;
  }

  TemporaryDirectory directory_;
};

TEST_F(ProgramTest, WritesWebVttToStandardOutputByDefault) {
  const auto result = run({"convert", captions()});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, kCaptionsAsWebVtt);
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(ProgramTest, ReadsFilesOfAnyNameAndStandardInput) {
  EXPECT_EQ(outputOf({"convert", directory_.write("captions.mp4", kCaptions)}), kCaptionsAsWebVtt);
  EXPECT_EQ(outputOf({"convert", "-"}, kCaptions), kCaptionsAsWebVtt);
}

TEST_F(ProgramTest, TakesTheFormatFromTheOutputsName) {
  outputOf({"convert", captions(), "-o", directory_.file("out.SRT")});
  EXPECT_EQ(directory_.read("out.SRT"), "1\n00:00:01,235 --> 00:00:04,004\nHi\n\n");
}

TEST_F(ProgramTest, ReplaysRecordedSamplesToWhatTheFilterDelivers) {
  const std::string output = outputOf(
      {"convert", recordedSamples(), "--page", "1", "--mode", "webvtt", "--as", "samples"});
  // Nothing before the first change, and nothing after the last: the filter does not flush.
  EXPECT_THAT(output, StartsWith(R"({"start":10010000,"stop":12345666,"sync":true,)"
                                 R"("discontinuity":true,"data":""})"
                                 "\n"));
  EXPECT_THAT(output, HasSubstr(R"("data":"bGluZToxMDAlCkhpCg==")"));  // line:100% Hi
  EXPECT_THAT(output, testing::EndsWith("{\"endOfStream\":true}\n"));
}

TEST_F(ProgramTest, SkipsALineThatIsNoSampleAndSaysWhich) {
  std::string content = run({"extract", captions(), "-o", "-", "--quiet"}).output;
  content.insert(content.find('\n') + 1, "{\"data\": \"?\"}\n");
  const auto result =
      run({"convert", directory_.write("damaged.jsonl", content), "--page", "1", "--absolute"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, kCaptionsAsWebVtt);
  EXPECT_THAT(result.errors,
              HasSubstr("line 2 is no sample and is skipped: \"data\" is not base64"));
}

TEST_F(ProgramTest, ListsServicesForTheEyeAndForPrograms) {
  EXPECT_EQ(outputOf({"probe", captions()}),
            "PID     kind      service  language  cues  first         last\n"
            "0x0001  captions  CC1      -         1     00:00:01.235  00:00:04.004\n");
  EXPECT_THAT(outputOf({"probe", captions(), "--json"}),
              AllOf(HasSubstr("\"kind\": \"captions\""), HasSubstr("\"cues\": 1")));
}

TEST_F(ProgramTest, WritesTtmlForPlayersOrAsTheFilterDoes) {
  const std::string file = outputOf({"convert", captions(), "--mode", "ttml", "--ebu-tt"});
  EXPECT_THAT(file, HasSubstr(R"(begin="00:00:01.235" end="00:00:04.004"><span style="Style2">)"
                              "Hi</span></p>"));
  EXPECT_THAT(file, HasSubstr("urn:ebu:tt:distribution"));
  EXPECT_THAT(outputOf({"convert", recordedSamples(), "--page", "1", "--as", "samples"}),
              HasSubstr(R"("data":"PD94bWwgdmVyc2lvb)"));  // "<?xml version" in base64
}

TEST_F(ProgramTest, MakesNoPicturesOfText) {
  const std::string folder = directory_.file("pictures/");
  EXPECT_THAT(errorsOf(1, {"convert", captions(), "-o", folder}),
              HasSubstr("cannot become pictures; name a file, as in -o FILE.vtt\n"));
  EXPECT_THAT(errorsOf(1, {"convert", captions(), "-o", folder, "--mode", "ttml"}),
              HasSubstr("cannot become pictures; name a file, as in -o FILE.ttml\n"));
  EXPECT_THAT(directory_.names(), ElementsAre("captions.scc"));
}

TEST_F(ProgramTest, LeavesNoHalfFileWhenWritingFails) {
  const auto full = runProgram({.arguments = {"convert", captions()}, .outputPath = "/dev/full"});
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_THAT(full.errors, HasSubstr("cannot write standard output: No space left on device"));
  EXPECT_THAT(errorsOf(1, {"convert", captions(), "--mode", "srt", "-o", "/dev/full"}),
              HasSubstr("cannot write '/dev/full': No space left on device"));
  EXPECT_THAT(errorsOf(1, {"convert", captions(), "-o", directory_.file("none/out.vtt")}),
              HasSubstr("there is no directory"));
}

TEST_F(ProgramTest, DeliversTheSameFromARecordingAndFromItsSamples) {
  for (const char* mode : {"webvtt", "srt", "ttml"}) {
    for (const auto& [recording, page] :
         {std::pair{"samples/captions.ts", "2"}, {"samples/teletext.ts", "888"}}) {
      const std::string samples = directory_.file("samples.jsonl");
      outputOf({"extract", recording, "-o", samples});
      const auto convert = [&, number = page](const std::string& input) {
        return outputOf({"convert", input, "--page", number, "--mode", mode, "--as", "samples"});
      };
      const std::string direct = convert(recording);
      EXPECT_THAT(direct, HasSubstr("endOfStream"));
      EXPECT_EQ(convert(samples), direct) << recording << ' ' << mode;
    }
  }
}

TEST_F(ProgramTest, GuessesNothingWhenItReplays) {
  EXPECT_THAT(errorsOf(1, {"convert", recordedSamples()}),
              HasSubstr("name the page or caption service, as in --page 1"));
}

TEST_F(ProgramTest, SaysWhyAnInputCannotBeRead) {
  const auto errorOf = [&](const std::string& path) {
    return errorsOf(1, {"convert", path, "-o", directory_.file("out.vtt")});
  };
  EXPECT_THAT(errorOf(directory_.file("none.ts")), HasSubstr("No such file or directory"));
  EXPECT_THAT(errorOf(directory_.file("")), HasSubstr("Is a directory"));
  EXPECT_THAT(errorOf(directory_.write("empty.ts", "")), HasSubstr("it is empty"));
  EXPECT_THAT(errorOf(directory_.write("text.ts", "no subtitles here")),
              HasSubstr("it is in no format that can be read here"));
  EXPECT_THAT(errorOf(directory_.write("odd.jsonl", "{\"stream\": \"radio\"}\n")),
              HasSubstr("line 1 is no header of recorded samples"));
  // What failed leaves nothing behind.
  EXPECT_THAT(directory_.names(), ElementsAre("empty.ts", "odd.jsonl", "text.ts"));
}

TEST_F(ProgramTest, ExplainsWhenNothingIsFound) {
  const std::string silent =
      directory_.write("silent.scc", "Scenarist_SCC V1.0\n\n00:00:01:00\t8080 8080\n");
  EXPECT_THAT(errorsOf(3, {"convert", silent}), HasSubstr("no subtitles are shown in"));
  EXPECT_THAT(errorsOf(3, {"convert", captions(), "--page", "CC3"}),
              HasSubstr("'txsub probe' lists what there is"));
}

TEST_F(ProgramTest, LeavesACompleteFileWhenInterrupted) {
  const auto result = runAndInterrupt(
      {.arguments = {"convert", "-", "-o", directory_.file("live.vtt")}, .input = kCaptions});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(directory_.read("live.vtt"), kCaptionsAsWebVtt);
  EXPECT_THAT(directory_.names(), ElementsAre("live.vtt"));
}

TEST_F(ProgramTest, TellsOfAnInterruptionInEveryCommand) {
  const std::string output = directory_.file("out");
  const std::vector<std::vector<std::string>> commands{
      {"probe", "-"},
      {"convert", "-", "-o", output + ".vtt"},
      {"convert", "-", "-o", output + ".scc"},
      {"extract", "-", "-o", output},
      {"preview", "-", "-o", output},
      {"render", "-", "--at", "1", "-o", output + ".png"}};
  for (const auto& command : commands) {
    const auto result = runAndInterrupt({.arguments = command, .input = kCaptions}, SIGHUP);
    EXPECT_EQ(result.exitCode, 0) << command[0] << result.errors;
    EXPECT_THAT(result.errors, EndsWith("txsub: interrupted; the output is complete up to here\n"))
        << command[0];
  }
  EXPECT_THAT(directory_.names(), ElementsAre("out", "out.png", "out.scc", "out.vtt"));
}

TEST_F(ProgramTest, NamesAPidThatIsNotThere) {
  const std::string stream = "samples/captions.ts";
  const std::string output = directory_.file("out.vtt");
  const std::vector<std::vector<std::string>> commands{
      {"convert"}, {"probe"}, {"extract", "-o", output}, {"preview", "-o", output}};
  for (auto command : commands) {
    command.insert(command.end(), {stream, "--pid", "0x999"});
    EXPECT_THAT(errorsOf(1, command), HasSubstr("there is no PID 0x0999 in '" + stream + "'"))
        << command[0];
  }
}

TEST_F(ProgramTest, CountsAnErrorThatEverySampleBrings) {
  const auto result = run({"convert", "samples/teletext.ts", "--as", "samples", "--mode", "srt",
                           "-o", directory_.file("out.jsonl")});
  EXPECT_EQ(result.errors,
            "txsub: PID 0x0200, 10.000 s: Error: Unexpected input subtitle type\n"
            "txsub: PID 0x0200: the same 28 more times: Error: Unexpected input subtitle type\n");
}

TEST_F(ProgramTest, SaysThatNobodyReadsItsOutput) {
  const auto result = runIntoClosedPipe({.arguments = {"convert", captions()}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("cannot write standard output: Broken pipe"));
}

TEST_F(ProgramTest, KeepsASubtitleThatComesLast) {
  const std::string content =
      "{\"stream\": \"captions\"}\n"
      "{\"data\": \"/JQg/JRw/Mjp\", \"start\": 10000000, \"stop\": 10000000}\n"
      "{\"data\": \"/JQv\", \"start\": 20000000, \"stop\": 20000000}\n";
  const auto result =
      run({"convert", directory_.write("last.jsonl", content), "--page", "1", "--absolute"});
  EXPECT_THAT(result.output, HasSubstr("00:00:02.000 --> 00:00:04.000 ")) << result.errors;
}

TEST_F(ProgramTest, RefusesWrongValuesInItsOwnWords) {
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } rows[] = {
      {{"--duration", "-1"}, "--duration: '-1' is no whole number from 0 to 86400000"},
      {{"--mode", "vtt"}, "--mode: 'vtt' is not webvtt, srt or ttml"},
      {{"--page-option", "5"}, "--page-option: '5' is not 0, 1, 2, 3, 4, 6, 8 or 10"},
      {{"--stats=xml"}, "--stats: 'xml' is not text or json"},
      {{"--hearing-impaired"}, "--hearing-impaired: goes with --language, as in --language swe"},
      {{"-o", ""}, "--output: name a file, or '-' for standard output"},
      {{"--plain"}, "--plain: goes with SRT; name the output FILE.srt, or give --mode srt"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> all{"convert", captions()};
    all.insert(all.end(), row.arguments.begin(), row.arguments.end());
    EXPECT_THAT(errorsOf(2, all), StartsWith("txsub: " + row.message + "\n"));
  }
  EXPECT_THAT(errorsOf(2, {"render", captions(), "--frames", "0", "-o", "-"}),
              HasSubstr("--frames: '0' is no rate from 0.1 to 240 frames a second"));
}

TEST_F(ProgramTest, WritesUnderTheLongestNameThatThereIs) {
  const std::string name = std::string(249, 'n') + "\xC3\xB6.vtt";
  outputOf({"convert", captions(), "-o", directory_.file(name)});
  EXPECT_THAT(directory_.names(), testing::Contains(name));
}

TEST_F(ProgramTest, SaysThatAMomentLiesBehindTheEnd) {
  const auto result = run({"render", "samples/captions.ts", "--at", "2:00", "-o", "-"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors,
              HasSubstr("the recording ends at 00:00:23.991, before the moment asked "
                        "for, 00:02:00.000"));
}

TEST_F(ProgramTest, RefusesWhatDoesNotFitTogether) {
  EXPECT_THAT(errorsOf(2, {}), HasSubstr("txsub --help"));
  EXPECT_THAT(errorsOf(2, {"convert"}), HasSubstr("INPUT is required"));
  const std::string input = captions();
  const std::string folder = directory_.file("new/");
  const std::vector<std::pair<std::vector<std::string>, const char*>> refusals = {
      {{"--mode", "pdf"}, "--mode"},
      {{"--page", "0"}, "--page"},
      {{"--page", "9"}, "--page"},
      {{"--page", "CC5"}, "'CC5'"},
      {{"--pid", "x"}, "--pid"},
      {{"-o", "out.txt"}, "give --mode"},
      {{"-o", "out.vtt", "--mode", "srt"}, "stands for another format"},
      {{"-o", folder, "--mode", "srt"}, "is a directory, which takes pictures only"},
      {{"-o", folder, "--as", "samples"}, "is a directory, which takes pictures only"},
      {{"--all"}, "-o DIR"},
      {{"--as", "pictures"}, "-o DIR"},
      {{"--mode", "ttml", "--images", "files"}, "-o FILE"},
      {{"--quiet", "--verbose"}, "--verbose"},
      {{"--stats=xml"}, "--stats"},
      {{"--name", "x"}, "--name"},
      {{"--log", "nowhere"}, "log"},
      {{"--log", "stdout"}, "log"},
      {{"--log", "file:/dev/null/log"}, "log"},
      {{"--mode", "srt", "-o", input}, "would overwrite the input"}};
  for (auto [arguments, message] : refusals) {
    arguments.insert(arguments.begin(), {"convert", input});
    EXPECT_THAT(errorsOf(2, arguments), HasSubstr(message));
  }
}

// The output of `txsub ... --help` names every option and the exit codes; so must the manual.
TEST_F(ProgramTest, DocumentsEveryOptionInTheManual) {
  std::ifstream file("docs/txsub.1", std::ios::binary);
  std::string manual(std::istreambuf_iterator<char>(file), {});
  std::erase(manual, '\\');  // "\-\-page" reads as "--page"
  ASSERT_FALSE(manual.empty());
  for (const char* command : {"convert", "probe", "extract", "render", "batch", "stream"}) {
    const std::string help = outputOf({command, "--help"});
    EXPECT_THAT(help, HasSubstr("Examples:"));
    EXPECT_THAT(help, HasSubstr("Exit codes:"));
    for (auto at = help.find("--"); at != help.npos; at = help.find("--", at + 2)) {
      const auto end = help.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at);
      EXPECT_THAT(manual, HasSubstr(help.substr(at, end - at)));
    }
  }
}

TEST_F(ProgramTest, CountsWhatPassedThroughTheChain) {
  const auto replay = run({"convert", recordedSamples(), "--page", "1", "--mode", "webvtt", "--as",
                           "samples", "--stats", "-o", directory_.file("out.jsonl")});
  EXPECT_THAT(replay.errors, HasSubstr("subtitle_converter_WebVTT, CC1 of PID 0x0000: 12 samples, "
                                       "12 units (36 bytes), 5 documents in 5 buffers (26 bytes)"));

  const auto json = run({"convert", captions(), "--stats=json", "-o", directory_.file("out.srt")});
  EXPECT_THAT(json.errors, StartsWith("{\"name\":\"subtitle_converter_Youtube Srt\","));
}

TEST_F(ProgramTest, SendsMessagesToLogsToo) {
  const auto quiet = run({"convert", captions(), "--quiet", "--log",
                          "file:" + directory_.file("log"), "-o", directory_.file("out.vtt")});
  EXPECT_THAT(quiet.errors, IsEmpty());
  EXPECT_THAT(directory_.read("log"), HasSubstr("[info] converting CC1"));

  EXPECT_THAT(errorsOf(1, {"convert", directory_.file("none.ts"), "--log-level", "error", "--log",
                           "console", "--log", "file:" + directory_.file("errors")}),
              StartsWith("error: "));
  EXPECT_THAT(directory_.read("errors"), HasSubstr("none.ts"));
}

TEST_F(ProgramTest, NamesFilesByATemplate) {
  const std::string output = directory_.file("${customName}/${serviceName}-${feedIndex}.srt");
  outputOf({"convert", captions(), "--all", "--name", "../a", "-o", output});
  EXPECT_EQ(directory_.read("-.-a/CC1-1.srt"), "1\n00:00:01,235 --> 00:00:04,004\nHi\n\n");
}

TEST_F(ProgramTest, ShowsTheMistakeInATemplate) {
  EXPECT_THAT(errorsOf(2, {"convert", captions(), "--all", "-o", "ü${feed}"}),
              HasSubstr("unknown variable ${feed} (available: customName, feedIndex, "
                        "serviceName)\n  ü${feed}\n         ^\n"));
  EXPECT_THAT(errorsOf(2, {"convert", captions(), "--all", "-o", "${serviceName}.vtt"}),
              HasSubstr("${feedIndex} must appear at least once."));
}

TEST_F(ProgramTest, ReadsTheCaptionsOfABroadcast) {
  const char* const captures = std::getenv("TESSARY_CAPTURES");
  if (!captures) GTEST_SKIP() << "TESSARY_CAPTURES names no folder with recordings";
  EXPECT_THAT(outputOf({"convert", std::string(captures) + "/sintel-captions.ts"}),
              HasSubstr("Japanese"));
}

// The pictures of the sample recordings, which players show behind the captions.
TEST(SampleVideo, IsGreyToAnotherDecoder) {
  if (std::system("command -v ffmpeg >/dev/null") != 0) GTEST_SKIP() << "no ffmpeg here";
  for (const std::string recording : {"samples/captions.ts", "samples/captions-mpeg2.ts"}) {
    const auto decoded = runShell("ffmpeg -v error -xerror -err_detect explode -i " + recording +
                                  " -f rawvideo -pix_fmt yuv420p -");
    EXPECT_EQ(decoded.errors, "") << recording;
    EXPECT_GT(decoded.output.size(), 100 * 64 * 48 * 3 / 2) << recording;
    EXPECT_EQ(decoded.output.find_first_not_of('\x80'), std::string::npos) << recording;
  }
}

}  // namespace
}  // namespace korr::txsub
