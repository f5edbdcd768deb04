// SPDX-License-Identifier: MIT

// Whole recordings with teletext, as users convert them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kSample = "samples/teletext.ts";

// The text of all entries, without numbers and times.
std::string srtLines(const std::vector<std::string>& arguments) {
  std::vector<std::string> all{"convert", "--mode", "srt", "--plain", "--quiet"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::string lines;
  std::istringstream stream(outputOf(all));
  for (std::string line; std::getline(stream, line);) {
    const bool isNumber = line.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber && line.find(" --> ") == std::string::npos) lines += line + '\n';
  }
  return lines;
}

TEST(TeletextRecording, ShowsTheFirstPageOfTheDescriptors) {
  const auto result = run({"convert", kSample, "--verbose"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output,
            "WEBVTT\n\nSTYLE\n::cue(.cyan) { color: cyan }\n::cue(.yellow) { color: yellow }\n\n"
            "00:00:01.000 --> 00:00:04.000 line:88% position:50% align:center\n"
            "Guten Abend aus dem Hafen.\n\n"
            "00:00:05.000 --> 00:00:09.400 line:80% position:50% align:center\n"
            "<c.yellow>Wie lange dauert die Überfahrt?</c>\n"
            "<c.cyan>Ungefähr zwölf Stunden.</c>\n\n"
            "00:00:11.000 --> 00:00:15.000 line:88% position:50% align:center\n"
            "Groß &amp; grau: Möwen fliegen tief.\n\n");
  EXPECT_THAT(result.errors,
              HasSubstr("Teletext descriptor(s) detected : [deu, 150] [deu-imp, 149] "
                        "[fra, 888] "));
}

TEST(TeletextRecording, HasTheLettersOfEveryLanguage) {
  EXPECT_EQ(srtLines({kSample, "--page", "888"}),
            "Bonsoir du port.\nCombien dure la traversée ?\nÇa dépend, où va-t-on ?\n"
            "La mer sera calme, bientôt.\n");
  EXPECT_EQ(srtLines({kSample, "--page", "299"}),
            "God aften fra havnen.\nHvornår går færgen?\nFørst på søndag.\n"
            "Røde æbler på øen, Ærø.\n");
  EXPECT_EQ(srtLines({kSample, "--page", "398"}),
            "Dobry wieczór z portu.\nJak długo trwa rejs?\nOkoło dwunastu godzin.\n"
            "Żółta łódź płynie ku brzegom.\n");
  EXPECT_EQ(srtLines({kSample, "--page", "488"}),
            "Добрый вечер из порта.\nСколько идёт паром?\nОколо двенадцати часов.\n"
            "Море сегодня спокойное.\n");
  EXPECT_EQ(srtLines({kSample, "--page", "588"}),
            "Καλησπέρα από το λιμάνι.\nΠόσο διαρκεί το ταξίδι;\nΠερίπου δώδεκα ώρες.\n"
            "Η θάλασσα είναι ήρεμη σήμερα.\n");
  EXPECT_EQ(srtLines({kSample, "--page", "398", "--page-option", "0"}).substr(0, 22),
            "Dobry wiecz#r z portu.")
      << "in another nation's letters";
}

TEST(TeletextRecording, FollowsALanguage) {
  const auto result =
      run({"convert", kSample, "--language", "deu", "--hearing-impaired", "--verbose"});
  EXPECT_THAT(result.output, HasSubstr("<c.cyan>* Möwen schreien *</c>"));
  EXPECT_THAT(result.errors, HasSubstr("=> Follow language deu-imp on page 149\n"));
  EXPECT_THAT(srtLines({kSample, "--language", "swe"}), HasSubstr("Ålen är färsk i dag."));
  errorsOf(3, {"convert", kSample, "--language", "nor"});
}

TEST(TeletextRecording, TellsThePageThatAReplayFollows) {
  const TemporaryDirectory directory;
  const std::string samples = directory.file("samples.jsonl");
  run({"extract", kSample, "-o", samples});
  const auto result = run({"convert", samples, "--language", "swe", "--verbose", "--stats"});
  EXPECT_THAT(result.output, HasSubstr("Ålen är färsk i dag."));
  EXPECT_THAT(result.errors, HasSubstr("converting page 199 of PID 0x0000\n"));
  EXPECT_THAT(result.errors, HasSubstr(", page 199 of PID 0x0000: 100 samples"));
}

TEST(TeletextRecording, ListsPagesThatNoDescriptorNamesWhenScanned) {
  const auto plain = run({"probe", kSample});
  EXPECT_THAT(plain.output, Not(HasSubstr("777")));
  EXPECT_THAT(plain.errors,
              HasSubstr("PID 0x0200: other teletext pages with text, for --page: 777\n"));
  const auto scanned = run({"probe", kSample, "--scan"}).output;
  EXPECT_THAT(scanned, HasSubstr("0x0200  teletext  page 149  deu (hearing impaired)  3     "
                                 "00:00:00.600  00:00:15.000\n"));
  EXPECT_THAT(scanned, HasSubstr("0x0200  teletext  page 777  -                       3     "
                                 "00:00:01.000  00:00:15.000\n"));
}

TEST(TeletextRecording, GivesEveryPageOfTheDescriptorsAFile) {
  const TemporaryDirectory directory;
  outputOf({"convert", kSample, "--all", "-o", directory.file("out")});
  EXPECT_THAT(directory.read("out/0x0200-page-149-deu.vtt"), HasSubstr("* Möwen schreien *"));
  EXPECT_THAT(directory.read("out/0x0200-page-688-heb.vtt"), HasSubstr("\nערב טוב מהנמל.\n"))
      << "as it is read";
}

// Two pages on one PID, without PAT, PMT or PCR.
TEST(TeletextRecording, NeedsNoTables) {
  const char* captures = std::getenv("TESSARY_CAPTURES");
  if (!captures) GTEST_SKIP() << "needs the real captures: set TESSARY_CAPTURES to their folder";
  const std::string path = std::string(captures) + "/sample_TS_with_teletext.ts";
  EXPECT_EQ(srtLines({path}),
            "Für diese Klassenstufe ist er nicht\ngeeignet. Stufen Sie ihn zurück!\n");
  EXPECT_EQ(srtLines({path, "--page", "799"}),
            "Han er ikke egnet\ntil dette klassetrin.\nSå sæt ham et år ned, så han kan\n"
            "indhente det forsømte.\n");
}

}  // namespace
}  // namespace korr::txsub
