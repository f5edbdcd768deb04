// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "recognition/letter_sizes.h"
#include "recognition/letters.h"
#include "recognition/line_runs.h"
#include "recognition/word_gaps.h"
#include "recognition/word_variants.h"
#include "recognition/writing_order.h"

namespace korr::recognition {
namespace {

TEST(WritingOrder, TurnsWhatRunsToTheLeftAndKeepsNumbers) {
  EXPECT_EQ(logicalOrder({"a", "b", " ", "1"}), "ab 1");
  EXPECT_EQ(logicalOrder({"?", "ג", "ב", "א"}), "אבג?");
  EXPECT_EQ(logicalOrder({"ב", " ", "1", ".", "5", " ", "א"}), "א 1.5 ב");
  EXPECT_EQ(logicalOrder({"(", "א", ")"}), "(א)");
  EXPECT_EQ(logicalOrder({"ב", " ", "T", "V", " ", "o", "n", " ", "א"}), "א TV on ב");
}

TEST(Letters, AreOfOneAlphabetInAWord) {
  EXPECT_EQ(inOneAlphabet("Mосква"), "Москва");
  EXPECT_EQ(inOneAlphabet("µία"), "μία");
  EXPECT_EQ(inOneAlphabet("MAT"), "MAT");
  EXPECT_EQ(inOneAlphabet("דוא\"ל"), "דוא״ל");
}

std::string read(const std::vector<std::string>& texts) {
  std::string out;
  const std::vector<TextRun> styles(texts.size());
  for (const auto& run : runsInOrder(texts, styles)) out += run.text;
  return out;
}

TEST(LineRuns, MendWhatTheWholeLineTells) {
  EXPECT_EQ(read({"(", "a", "}"}), "(a)");
  EXPECT_EQ(read({"{", "a", "}"}), "{a}");
  EXPECT_EQ(read({"(", "א", ")"}), "(א)") << "as it stands on the screen";
  EXPECT_EQ(read({")", "א", "("}), "(א)") << "as an engine turned it";
  EXPECT_EQ(read({")", "א"}), "א(") << "goes on in the next line";
  EXPECT_EQ(read({"ب", ",", "ا"}), "ا،ب");
  EXPECT_EQ(read({"5", ",", "1", "ا"}), "ا5,1");
}

TEST(LineRuns, ChangeWithTheStyleOfLettersNotOfBlanks) {
  const TextRun white{.text = {}, .colour = {255, 255, 255, 255}},
      red{.text = {}, .colour = {255, 0, 0, 255}};
  const auto runs = runsInOrder({"a", " ", "b", " ", "c"}, {white, red, white, red, red});
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs[0].text, "a b ");
  EXPECT_EQ(runs[1].text, "c");
}

class OneWord final : public IWordList {
 public:
  bool contains(const std::string& word) override { return word == "Ill"; }
};

TEST(WordVariants, PreferWordsThenUsualCapitals) {
  using Word = std::vector<std::string>;
  OneWord words;
  EXPECT_EQ(likeliestWord({{"l", "I"}, {"I", "l"}, {"l"}}, &words), (Word{"I", "l", "l"}));
  EXPECT_EQ(likeliestWord({{"a"}, {"O", "o"}}, nullptr), (Word{"a", "o"}));
  EXPECT_EQ(likeliestWord({{"a"}, {"e", "c"}}, nullptr), (Word{"a", "e"}));
}

TEST(LetterSizes, AreTheMeansOfWhatWasSeenOftenEnough) {
  LetterSizes sizes;
  sizes.learn("a", {.width = 0.5, .top = 0.7, .pixelTop = 20}, 1);
  EXPECT_FALSE(sizes.of("a"));
  sizes.learn("a", {.width = 0.7, .top = 0.7, .pixelTop = 24}, 1);
  ASSERT_TRUE(sizes.of("a"));
  EXPECT_NEAR(sizes.of("a")->width, 0.6, 1e-9);
  EXPECT_NEAR(sizes.of("a")->pixelTop, 22, 1e-9);
}

TEST(WordGaps, PartWordsAsTheEngineSaidOrElseWhereGapsAreFew) {
  WordGaps learnt;
  for (int i = 0; i < 10; ++i) {
    learnt.learn(0.10, false);
    learnt.learn(0.40, true);
  }
  EXPECT_GT(learnt.threshold(), 0.10);
  EXPECT_LT(learnt.threshold(), 0.40);
  EXPECT_FALSE(learnt.isUnsure(0.40));
  WordGaps guessed;
  for (int i = 0; i < 50; ++i) guessed.count(0.05 + 0.002 * i);
  for (int i = 0; i < 10; ++i) guessed.count(0.38);
  EXPECT_GT(guessed.threshold(), 0.15);
  EXPECT_LT(guessed.threshold(), 0.38);
}

}  // namespace
}  // namespace korr::recognition
