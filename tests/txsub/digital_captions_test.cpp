// SPDX-License-Identifier: MIT

// Digital captions through the program.
#include <gmock/gmock.h>

#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kSample = "samples/captions-708.ts";

TEST(DigitalCaptions, AreListedBesideLine21) {
  EXPECT_THAT(outputOf({"probe", kSample}),
              AllOf(HasSubstr("captions  708 service 1  eng"),
                    HasSubstr("captions  708 service 2  kor"), Not(HasSubstr("CC1"))));
}

TEST(DigitalCaptions, AreConvertedAsAskedForOrWhereLine21IsEmpty) {
  const std::string english = outputOf({"convert", kSample, "--page", "S1", "--mode", "srt"});
  EXPECT_THAT(english, HasSubstr("Good evening from the\nharbour of Ålesund.\n"));
  EXPECT_THAT(english, AllOf(HasSubstr("♪ Sœur Š., « cœur » à 7⅜ … ♪\n"),
                             HasSubstr("ŒUVRES: a cœur ouvert™")));
  EXPECT_THAT(english, HasSubstr("in the night, and by\nmorning the sea is calm.\n"));
  EXPECT_EQ(outputOf({"convert", kSample, "--mode", "srt"}), english);
  EXPECT_THAT(
      outputOf({"convert", kSample, "--page", "s2"}),
      AllOf(HasSubstr("안녕하세요, 항구입니다."), HasSubstr("<c.yellow>배가 늦습니다.</c>")));
  EXPECT_THAT(outputOf({"convert", kSample, "--page", "S2", "--charset", "utf-16"}),
              Not(HasSubstr("안녕하세요")));
}

TEST(DigitalCaptions, AreAllWrittenInOnePass) {
  const TemporaryDirectory directory;
  outputOf({"convert", kSample, "--all", "-o", directory.file("all")});
  EXPECT_THAT(directory.read("all/0x0100-708-service-1-eng.vtt"), HasSubstr("harbour"));
  EXPECT_THAT(directory.read("all/0x0100-708-service-2-kor.vtt"), HasSubstr("항구"));
}

TEST(DigitalCaptions, GoThroughCaptionFilesUnchanged) {
  const TemporaryDirectory directory;
  const std::string mcc = directory.file("copy.mcc");
  outputOf({"convert", kSample, "-o", mcc});
  for (const char* page : {"S1", "S2"}) {
    EXPECT_EQ(outputOf({"convert", mcc, "--page", page}),
              outputOf({"convert", kSample, "--page", page}));
  }
  // Nothing declares services there: they are found in packets that have begun long before.
  EXPECT_EQ(outputOf({"convert", mcc}), outputOf({"convert", kSample, "--page", "S1"}));
  const std::string again = directory.file("again.mcc");
  outputOf({"convert", mcc, "-o", again});
  EXPECT_EQ(directory.read("again.mcc"), directory.read("copy.mcc"));

  const std::string scc = directory.file("copy.scc");
  outputOf({"convert", "samples/captions.scc", "-o", scc});
  EXPECT_EQ(outputOf({"convert", scc}), outputOf({"convert", "samples/captions.scc"}));
}

TEST(DigitalCaptions, AreNoneOfTheFilters) {
  const auto result = run({"convert", kSample, "--page", "S1", "--as", "samples"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(run({"convert", kSample, "--page", "S64"}).exitCode, 2);
  EXPECT_EQ(run({"convert", kSample, "--page", "S1", "-o", "x.mcc"}).exitCode, 2);
}

}  // namespace
}  // namespace korr::txsub
