// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/txsub/browser.h"

namespace korr::txsub {
namespace {

using testing::HasSubstr;
using testing::Not;

std::size_t count(const std::string& text, std::string_view part) {
  std::size_t found = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
    ++found;
  return found;
}

class PreviewTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!isBrowserInstalled()) GTEST_SKIP() << kBrowser << " is not installed";
  }

  // What a browser shows of a sample's preview at an address within it.
  std::string shown(const std::string& sample, const std::string& address,
                    const std::vector<std::string>& options = {}) {
    const std::string page = directory_.file("preview.html");
    std::vector<std::string> arguments{"preview", "--quiet", "samples/" + sample, "-o", page};
    arguments.insert(arguments.end(), options.begin(), options.end());
    outputOf(arguments);
    std::string document = documentOf("file://" + page + "#" + address, directory_);
    // The data and the script would answer every question; only what they have made counts.
    const auto data = document.find("<script");
    EXPECT_NE(data, std::string::npos) << document;
    return document.substr(0, data);
  }

  // The part of a document that an element with this id begins, up to the next such element.
  static std::string part(const std::string& document, const std::string& id) {
    const auto begin = document.find("id=\"" + id + "\"");
    const auto end = document.find(" id=\"", begin + 1);
    return begin == std::string::npos ? "" : document.substr(begin, end - begin);
  }

  TemporaryDirectory directory_;
};

TEST_F(PreviewTest, DrawsCaptionsWithTheirColoursAndPlaces) {
  const std::string document = shown("captions.ts", "t=9");
  const std::string stage = part(document, "stage");
  EXPECT_THAT(stage, HasSubstr("color: yellow"));
  EXPECT_THAT(stage, HasSubstr(">ANNA: Is the ferry late?<"));
  EXPECT_THAT(stage, HasSubstr("top: 74%")) << "row 13";
  EXPECT_THAT(document, HasSubstr(">CC1<"));
  EXPECT_THAT(document, HasSubstr(">CC3<"));
  EXPECT_THAT(part(document, "count"), HasSubstr("9 subtitles"));
  EXPECT_EQ(count(document, "class=\"card"), 10U) << "nine and their parent";
  EXPECT_EQ(count(document, "card shown"), 1U);
}

TEST_F(PreviewTest, FindsText) {
  const std::string document = shown("captions.ts", "q=WIND+night");
  EXPECT_THAT(part(document, "count"), HasSubstr("2 of 9 subtitles"));
  EXPECT_THAT(document, HasSubstr("morning the sea is calm."));
  EXPECT_THAT(document, Not(HasSubstr("ship's horn")));
}

TEST_F(PreviewTest, ShowsTheServiceAndTheMomentThatTheAddressNames) {
  const std::string document = shown("captions.ts", "service=1&t=5");
  EXPECT_THAT(part(document, "stage"), HasSubstr("Las noticias del puerto."));
  EXPECT_THAT(part(document, "clock"), HasSubstr("0:00:05.000"));
  EXPECT_THAT(part(shown("captions.ts", "t=0.2"), "current"), HasSubstr("nothing shown"));
}

TEST_F(PreviewTest, DrawsTeletext) {
  const std::string stage = part(shown("teletext.ts", "t=7"), "stage");
  EXPECT_THAT(stage, HasSubstr(">Wie lange dauert die Überfahrt?<"));
  EXPECT_THAT(stage, HasSubstr("color: yellow"));
}

TEST_F(PreviewTest, ShowsPicturesWhereTheyLie) {
  const std::string document = shown("dvb.ts", "t=13");
  const std::string stage = part(document, "stage");
  EXPECT_THAT(stage, HasSubstr("src=\"data:image/png;base64,iVBOR"));
  EXPECT_THAT(stage, HasSubstr("left: 61.1111%")) << "column 440 of 720";
  EXPECT_EQ(count(document, "<img"), 6U) << "one on the stage and each on its card";
  EXPECT_THAT(document, HasSubstr(">0:00:12.000 – 0:00:16.000<"));
  EXPECT_THAT(document, HasSubstr(">dvb.ts</h1>"));
  EXPECT_THAT(shown("dvb.ts", "q=ferry"), HasSubstr("there is no text to search"));
}

TEST_F(PreviewTest, ShowsPicturesBesideWhatTheyAreReadAs) {
  const std::string document = shown("dvb.ts", "t=5&q=port", {"--pid", "0x200", "--ocr", "eng"});
  EXPECT_THAT(part(document, "stage"), HasSubstr("<img"));
  const std::string reading = part(document, "reading");
  EXPECT_THAT(reading, HasSubstr("color: yellow"));
  EXPECT_THAT(reading, HasSubstr(">- ANY NEWS FROM PORT?<"));
  EXPECT_THAT(part(document, "count"), HasSubstr("1 of 5 subtitles"));
  EXPECT_THAT(document, testing::ContainsRegex("[0-9]+ % sure<"));
}

TEST(Preview, SaysThatThereIsNothingToShow) {
  const auto result = run({"preview", "-", "-o", "-"}, "Scenarist_SCC V1.0\n");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("no subtitles are shown"));
}

}  // namespace
}  // namespace korr::txsub
