// SPDX-License-Identifier: MIT

// Pictures that become text, as users see it. The letters are made; the engine is the real one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "samples/text_picture.h"
#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::DvbEncoder;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A line of text on a display of 720 by 576.
struct DrawnLine {
  std::string_view text;
  std::uint16_t top = 0;
  std::uint8_t clut = 0;  ///< 0 white, 1 yellow
  bool isItalic = false;
};

// Rows move to the right the more the higher they are.
encoders::IndexedPicture leaning(const encoders::IndexedPicture& upright) {
  encoders::IndexedPicture picture{upright.width + upright.height / 4, upright.height, {}};
  picture.codes.assign(std::size_t{picture.width} * picture.height, samples::kNothing);
  for (std::uint32_t y = 0; y < upright.height; ++y) {
    for (std::uint32_t x = 0; x < upright.width; ++x) {
      picture.codes[std::size_t{y} * picture.width + x + (upright.height - 1 - y) / 4] =
          upright.at(x, y);
    }
  }
  return picture;
}

/// A recording of DVB subtitles, a page every five seconds that is shown for two.
class PictureRecording {
 public:
  explicit PictureRecording(std::string_view language = "eng") {
    Bytes descriptor{0x59, 8};
    descriptor.insert(descriptor.end(), language.begin(), language.end());
    descriptor.insert(descriptor.end(), {0x10, 0, 1, 0, 1});
    program_ = {.pcrPid = kPid, .streams = {{.pid = kPid, .descriptors = descriptor}}};
  }

  PictureRecording& page(const std::vector<DrawnLine>& lines) {
    DvbEncoder field;
    std::vector<DvbEncoder::Place> places;
    std::vector<encoders::IndexedPicture> pictures;
    for (const auto& line : lines) {
      const auto upright = samples::textPicture(line.text, 40);
      pictures.push_back(line.isItalic ? leaning(upright) : upright);
      const auto x = static_cast<std::uint16_t>((720 - pictures.back().width) / 2);
      places.push_back({static_cast<std::uint16_t>(places.size()), x, line.top});
    }
    field.page(DvbEncoder::kAcquisitionPoint, 2, places);
    for (std::uint8_t id = 0; id < lines.size(); ++id) {
      field.region({.id = id,
                    .width = static_cast<std::uint16_t>(pictures[id].width),
                    .height = 40,
                    .clut = lines[id].clut,
                    .objects = {{id, 0, 0}}});
    }
    field.clut(0, samples::textClut(235, 128, 128)).clut(1, samples::textClut(210, 146, 16));
    for (std::uint8_t id = 0; id < lines.size(); ++id) field.pictureObject(id, 4, pictures[id]);
    const std::uint64_t pts = 90'000 * (10 + 5 * pages_++);
    const auto packet = encoders::pesPacket({.streamId = 0xBD, .pts = pts}, field.end().bytes());
    stream_.tables(program_).pes(kPid, packet, pts);
    return *this;
  }

  std::string write(const TemporaryDirectory& directory, const std::string& name) const {
    const auto& bytes = stream_.bytes();
    return directory.write(name, std::string(bytes.begin(), bytes.end()));
  }

 private:
  static constexpr std::uint16_t kPid = 0x200;

  encoders::TsProgram program_;
  encoders::TsBuilder stream_;
  std::uint64_t pages_ = 0;
};

// A run of the program in which the engine has no data at all.
ProgramResult runWithoutData(const std::vector<std::string>& arguments) {
  ::setenv("TESSDATA_PREFIX", "/nowhere", 1);
  const auto result = run(arguments);
  ::unsetenv("TESSDATA_PREFIX");
  return result;
}

class PictureText : public testing::Test {
 protected:
  std::string ferry() const {
    return PictureRecording()
        .page({{"- IT'S 9.15, THE FERRY", 460}, {"- WON'T LEAVE TODAY!", 504, 1}})
        .page({{"QUIET NOW", 460, 0, true}, {"HE SAID: WAIT", 504}})
        .page({{"UP ON THE HILL", 60}})
        .write(directory_, "ferry.ts");
  }

  std::string path(const char* name) const { return directory_.file(name); }

  TemporaryDirectory directory_;
};

constexpr const char* kFerry =
    "1\n00:00:00,000 --> 00:00:02,000\n"
    "- IT’S 9.15, THE FERRY\n<font color=\"#ffff00\">- WON’T LEAVE TODAY!</font>\n\n"
    "2\n00:00:05,000 --> 00:00:07,000\n<i>QUIET NOW</i>\nHE SAID: WAIT\n\n"
    "3\n00:00:10,000 --> 00:00:12,000\n{\\an8}UP ON THE HILL\n\n";

TEST_F(PictureText, KeepsLinesMarksColoursItalicsAndPlaces) {
  const std::string recording = ferry();
  EXPECT_EQ(outputOf({"convert", recording, "--mode", "srt"}), kFerry);

  const auto webVtt = outputOf({"convert", recording});
  EXPECT_THAT(webVtt, HasSubstr("align:center\n- IT’S 9.15, THE FERRY\n"
                                "<c.yellow>- WON’T LEAVE TODAY!</c>\n"));
  EXPECT_THAT(webVtt, HasSubstr("00:00:10.000 --> 00:00:12.000 line:9"));

  const auto document = outputOf({"convert", recording, "--mode", "ttml", "--ocr", "auto"});
  EXPECT_THAT(document, AllOf(HasSubstr(">UP ON THE HILL</span>"),
                              HasSubstr("tts:fontStyle=\"italic\""), Not(HasSubstr("image"))));
  EXPECT_THAT(outputOf({"convert", recording, "--mode", "ttml"}), HasSubstr("smpte:image"));
}

TEST_F(PictureText, NeedsNoEngineForShapesOfAFile) {
  const std::string recording = ferry(), shapes = path("shapes.txt");
  EXPECT_EQ(outputOf({"convert", recording, "--mode", "srt", "--ocr-shapes", shapes}), kFerry);

  const auto again =
      runWithoutData({"convert", recording, "--mode", "srt", "--ocr-shapes", shapes});
  EXPECT_EQ(again.output, kFerry);
  EXPECT_THAT(again.errors, HasSubstr("install tesseract-ocr-eng; only the letters of"));
}

TEST_F(PictureText, HeedsCorrectionsForEverAndKeepsWhatIsDamaged) {
  const std::string recording = ferry(), shapes = path("shapes.txt");
  outputOf({"convert", recording, "--ocr-shapes", shapes});
  auto text = directory_.read("shapes.txt");
  const std::string learnt = "letter \"Q\" learnt";
  const auto at = text.find(learnt);
  ASSERT_NE(at, text.npos);
  text.replace(at, learnt.size(), "letter \"QU\" corrected");
  directory_.write("shapes.txt", text + "\nletter X\nrise 1\n#\n");

  for (int i = 0; i < 2; ++i) {
    const auto result = run({"convert", recording, "--mode", "srt", "--ocr-shapes", shapes});
    EXPECT_THAT(result.output, HasSubstr("<i>QUUIET NOW</i>"));
    EXPECT_THAT(result.errors, HasSubstr(":8: no text between quotation marks; this letter is left "
                                         "out, and kept"));
  }
  EXPECT_THAT(directory_.read("shapes.txt"), HasSubstr("\nletter X\n"));
}

TEST_F(PictureText, NamesThePackageThatIsMissing) {
  const std::string recording =
      PictureRecording("ger").page({{"NOCH", 460}}).write(directory_, "ger.ts");
  const auto result = runWithoutData({"convert", recording, "-o", path("out.srt")});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors,
              HasSubstr("are pictures: no data to read letters of 'deu': install "
                        "tesseract-ocr-deu; or keep pictures with --mode ttml, or -o DIR/"));
  EXPECT_THAT(directory_.names(), Not(testing::Contains("out.srt")));
  // What was asked for overrides what the recording says.
  EXPECT_THAT(outputOf({"convert", recording, "--ocr", "eng"}), HasSubstr("\nNOCH\n"));
}

TEST_F(PictureText, IsFoundByTrialWhereNothingNamesItsLanguage) {
  const std::string recording = PictureRecording("und")
                                    .page({{"WHAT DO YOU WANT TO KNOW", 460}})
                                    .page({{"HE WENT AWAY THIS MORNING", 460}})
                                    .page({{"AND WHERE SHOULD THAT BE", 460}})
                                    .page({{"THERE IS NOTHING LEFT", 460}})
                                    .page({{"THANK YOU", 460}})
                                    .write(directory_, "und.ts");
  const auto result = run({"convert", recording, "--mode", "srt"});
  EXPECT_THAT(result.errors,
              HasSubstr("nothing says which language DVB subtitles of PID 0x0200 are "
                        "in; by trial they are in 'eng' (name it with --ocr"));
  for (const char* text : {"\nWHAT DO YOU WANT TO KNOW\n", "\nTHANK YOU\n"}) {
    EXPECT_THAT(result.output, HasSubstr(text));
  }
}

TEST_F(PictureText, TellsWhatIsDoubtful) {
  const std::string recording =
      PictureRecording().page({{"TODAY", 460}}).page({{"ODD", 460}}).write(directory_, "odd.ts");
  const auto shapes = path("shapes.txt");
  outputOf({"convert", recording, "--ocr-shapes", shapes});
  auto text = directory_.read("shapes.txt");
  // Whoever takes the T and the Y out has a file that lacks them.
  for (const char* letter : {"\"T\"", "\"Y\""}) {
    const auto from = text.find(std::string("letter ") + letter);
    ASSERT_NE(from, text.npos) << letter;
    text.erase(from, text.find("\n\n", from) - from);
  }
  directory_.write("shapes.txt", text);

  const auto result = runWithoutData({"convert", recording, "--mode", "srt", "--stats=json",
                                      "--ocr-shapes", shapes, "--ocr-report", path("report.html")});
  EXPECT_THAT(result.output, HasSubstr("\n\uFFFDODA\uFFFD\n"));
  EXPECT_THAT(result.errors, HasSubstr("1 of 2 cues are doubtful; see '"));
  const auto stats = nlohmann::json::parse(result.errors.substr(
      result.errors.find('{'), result.errors.rfind('}') + 1 - result.errors.find('{')));
  const auto& cues = stats.at("ocr").at("cues");
  ASSERT_EQ(cues.size(), 2U);
  EXPECT_EQ(cues[1].at("start"), 5.0);
  EXPECT_LT(cues[0].at("confidence"), 0.8);
  EXPECT_GT(cues[1].at("confidence"), 0.8);

  const auto page = directory_.read("report.html");
  EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(page, AllOf(HasSubstr("00:00:00.000 to 00:00:02.000"),
                          HasSubstr("src=\"data:image/png;base64,iVBOR"),
                          HasSubstr("\uFFFDODA\uFFFD</span>"),
                          HasSubstr("a shape that nobody has read"), Not(HasSubstr("ODD<"))));
}

TEST_F(PictureText, ComesForEveryServiceInOnePass) {
  outputOf({"convert", "samples/dvb.ts", "--all", "--ocr", "eng", "--mode", "srt", "--ocr-shapes",
            path("shapes.txt"), "-o", path("all")});
  EXPECT_THAT(directory_.read("all/0x0200-dvb-subtitles-eng.srt"),
              HasSubstr("\nTHE FERRY IS LATE\nBY AN HOUR.\n"));
  EXPECT_THAT(directory_.read("all/0x0201-dvb-subtitles-fra.srt"), HasSubstr("\nLE BATEAU"));
  EXPECT_THAT(directory_.names(), testing::Contains("shapes-eng.txt"));
}

TEST_F(PictureText, IsNoSampleAndNoPicture) {
  for (const char* output : {"out.jsonl", "pictures/"}) {
    EXPECT_THAT(errorsOf(2, {"convert", "samples/dvb.ts", "--ocr", "eng", "-o", path(output)}),
                HasSubstr("--ocr: goes with text; name a .srt, .vtt or .ttml file"));
  }
  EXPECT_THAT(errorsOf(2, {"convert", "samples/dvb.ts", "--ocr", "english"}),
              HasSubstr("languages of three letters such as deu or deu+eng"));
}

}  // namespace
}  // namespace korr::txsub
