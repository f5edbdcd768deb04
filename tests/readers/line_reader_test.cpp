// SPDX-License-Identifier: MIT
#include "readers/line_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using test_support::MemorySource;
using testing::ElementsAre;
using testing::HasSubstr;

/// All lines as "number:text", those too long with "..." after them.
std::vector<std::string> linesOf(std::string_view text, std::size_t longest = 100,
                                 std::size_t most = SIZE_MAX) {
  LineReader reader(std::make_unique<MemorySource>(text, most), longest, nullptr);
  std::vector<std::string> lines;
  for (bool isMore = true; isMore;) {
    isMore = reader.fill();
    while (const auto line = reader.take()) {
      lines.push_back(std::to_string(line->number) + ':' + std::string(line->text) +
                      (line->isTooLong ? "..." : ""));
    }
  }
  EXPECT_EQ(reader.progress().bytesRead, text.size());
  return lines;
}

TEST(LineReader, CutsLinesWhereverPiecesEnd) {
  for (std::size_t most = 1; most < 12; ++most) {
    EXPECT_THAT(linesOf("one\n\ntwo\nthree", 100, most),
                ElementsAre("1:one", "2:", "3:two", "4:three"));
    EXPECT_THAT(linesOf("last\n", 100, most), ElementsAre("1:last"));
    EXPECT_THAT(linesOf("1234\n12345\n123456789\n1\n", 4, most),
                ElementsAre("1:1234", "2:1234...", "3:1234...", "4:1"));
  }
}

TEST(LineReader, GivesALineBeforeTheNextComes) {
  LineReader reader(std::make_unique<MemorySource>("one\ntwo", 4), 100, nullptr);
  reader.fill();
  ASSERT_TRUE(reader.take());
  EXPECT_FALSE(reader.take());
}

TEST(LineReader, DoesNotReadALineIntoMemoryWhole) {
  const std::string endless(1000, 'x');
  LineReader reader(std::make_unique<MemorySource>(endless, 10), 100, nullptr);
  while (!reader.take()) ASSERT_TRUE(reader.fill());
  EXPECT_LE(reader.progress().bytesRead, 110U);
}

TEST(InputBuffer, WhatCameBeforeAnErrorOfReadingIsKept) {
  test_support::RecordingLogger logger;
  const std::string text = "good\nhalf";
  auto source = std::make_unique<MemorySource>(text);
  source->breakAtEnd();
  LineReader reader(std::move(source), 100, &logger);
  EXPECT_TRUE(reader.fill());
  EXPECT_FALSE(reader.fill());
  EXPECT_EQ(reader.take()->text, "good");
  EXPECT_EQ(reader.take()->text, "half");
  EXPECT_THAT(logger.lines, ElementsAre("byte 9: reading ends here: the disk is gone; what came "
                                        "before is kept"));

  auto nothing = std::make_unique<MemorySource>(std::string_view());
  nothing->breakAtEnd();
  InputBuffer buffer(std::move(nothing), &logger);
  EXPECT_THROW(buffer.fill(10), util::TessaryException);
}

}  // namespace
}  // namespace korr::txsub
