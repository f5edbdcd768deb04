// SPDX-License-Identifier: MIT
#include "recognition/shapes_file.h"

#include <gmock/gmock.h>

namespace korr::recognition {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kTwoLetters =
    "tessary-shapes 1\n"
    "gap 0.31\n"
    "\n"
    "letter \"l\" learnt seen 12 sure 9.50\n"
    "rise 4\n"
    ".##.\n"
    ".##.\n"
    ".##.\n"
    "-##-\n"
    "\n"
    "letter \"\\\"\" corrected seen 3 italic\n"
    "rise 5\n"
    "#.#\n"
    "+.+\n";

std::string textOf(const ShapeBook& book, KindId kind) {
  return book.kind(kind).isCorrected ? book.kind(kind).corrected : book.kind(kind).votes.at(0).text;
}

TEST(ShapesFile, KeepsEverythingOverReadingAndWriting) {
  ShapeBook book;
  const auto report = readShapes(kTwoLetters, book);
  EXPECT_THAT(report.problems, IsEmpty());
  EXPECT_EQ(report.letters, 2U);
  EXPECT_EQ(report.gap, 0.31);
  ASSERT_EQ(book.kindCount(), 2U);
  EXPECT_EQ(textOf(book, 0), "l");
  EXPECT_EQ(textOf(book, 1), "\"");
  EXPECT_EQ(book.kind(0).seen, 12U);
  EXPECT_GT(book.kind(1).leaning(), 0);
  EXPECT_EQ(book.shape(0).rise, 4);
  EXPECT_EQ(book.shape(0).at(0, 3), 1);

  ShapeBook again;
  const auto written = writeShapes(book, report.gap, report.damaged);
  EXPECT_THAT(readShapes(written, again).problems, IsEmpty());
  EXPECT_EQ(writeShapes(again, 0.31, ""), written);
}

TEST(ShapesFile, SaysWhereItIsDamagedAndKeepsTheRest) {
  struct Case {
    const char* from;
    const char* to;
    std::size_t line;
    std::size_t column;
  };
  for (const Case& c :
       {Case{"sure 9.50", "sure much", 4, 32}, Case{"rise 4", "rise four", 5, 6},
        Case{".##.\n-##-", ".##.\n-#x-", 9, 3}, Case{".##.\n-##-", ".##.\n-##", 9, 4},
        Case{"learnt", "guessed", 4, 12}, Case{"\"l\"", "l", 4, 8}}) {
    std::string text = kTwoLetters;
    text.replace(text.find(c.from), std::string(c.from).size(), c.to);
    ShapeBook book;
    const auto report = readShapes(text, book);
    ASSERT_EQ(report.problems.size(), 1U) << c.to;
    EXPECT_EQ(report.problems[0].line, c.line) << c.to;
    EXPECT_EQ(report.problems[0].column, c.column) << c.to;
    EXPECT_EQ(book.kindCount(), 1U) << c.to;
    EXPECT_THAT(report.damaged, HasSubstr(c.to));
    EXPECT_THAT(writeShapes(book, 0, report.damaged), HasSubstr(c.to));
  }
}

TEST(ShapesFile, AWrongGapMendsNoLetterAroundIt) {
  ShapeBook book;
  const auto report = readShapes("letter e\nrise 1\ngap 7\n#\ngap 0.001\n", book);
  EXPECT_EQ(report.letters, 0U);
  EXPECT_EQ(report.problems.size(), 3U);
  EXPECT_EQ(report.gap, 0);
  EXPECT_EQ(book.shapeCount(), 0U);
}

TEST(ShapesFile, KeepsACorrectedShapeApartFromOneThatLooksAlike) {
  const std::string bar =
      "rise 12\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n.##.\n";
  std::string other = bar;
  other[other.find('#')] = '+';
  ShapeBook book;
  readShapes("letter \"l\" learnt seen 1 sure 5\n" + bar + "letter \"I\" corrected\n" + other,
             book);
  ASSERT_EQ(book.kindCount(), 2U);
  EXPECT_EQ(textOf(book, 1), "I");
}

}  // namespace
}  // namespace korr::recognition
