// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "recognition/letters.h"
#include "recognition/word_gaps.h"
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
