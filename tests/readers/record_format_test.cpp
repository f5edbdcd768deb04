// SPDX-License-Identifier: MIT
#include "readers/record_format.h"

#include <gtest/gtest.h>

#include "util/exception.h"

namespace korr::txsub {
namespace {

std::string refusalOf(const char* line) {
  try {
    parseSample(line);
  } catch (const util::TessaryException& error) {
    return error.what();
  }
  return "";
}

TEST(RecordFormat, KeepsEverythingOfASampleOverWritingAndReading) {
  InputSample sample;
  sample.data = {0x00, 0xFF, 0x10, 0x80};
  sample.times = InputSample::Times{.start = 18'446'744'073'709'551'615U, .stop = 0};
  sample.sync = true;
  sample.discontinuity = true;
  sample.format = {{0x56, 0x00}};
  EXPECT_EQ(parseSample(formatSample(sample)), sample);

  const InputSample bare;  // no time, no bytes, no flags
  EXPECT_EQ(parseSample(formatSample(bare)), bare);

  const RecordHeader header{.type = SubtitleInputType::DvbSubtitle, .format = {{1, 2, 3}}};
  EXPECT_EQ(parseHeader(formatHeader(header)), header);
}

TEST(RecordFormat, WritesDeliveredBuffersAsDocumented) {
  const std::vector<std::uint8_t> text = {'H', 'i'};
  EXPECT_EQ(
      formatDelivered({.start = 5, .stop = 9, .sync = true, .discontinuity = false, .data = text}),
      R"({"start":5,"stop":9,"sync":true,"discontinuity":false,"data":"SGk="})"
      "\n");
  EXPECT_EQ(formatEndOfStream(), "{\"endOfStream\":true}\n");
}

TEST(RecordFormat, WhatALineLeavesOutIsEmpty) {
  EXPECT_EQ(parseSample("{}"), InputSample());
  InputSample sample;
  sample.times = InputSample::Times{.start = 1, .stop = 2};
  sample.sync = true;
  EXPECT_EQ(parseSample(R"({"start": 1, "stop": 2, "sync": true})"), sample);
}

TEST(RecordFormat, SaysWhatIsWrongWithALine) {
  EXPECT_EQ(refusalOf("{\"data\""), "not valid JSON");
  EXPECT_EQ(refusalOf("[]"), "not a JSON object");
  EXPECT_EQ(refusalOf(R"({"data": "A"})"), "\"data\" is not base64");
  EXPECT_EQ(refusalOf(R"({"data": "=AAA"})"), "\"data\" is not base64");
  EXPECT_EQ(refusalOf(R"({"data": 7})"), "\"data\" is not a string");
  EXPECT_EQ(refusalOf(R"({"data": "", "start": 1})"),
            "\"start\" and \"stop\" go together or are both absent");
  EXPECT_EQ(refusalOf(R"({"data": "", "start": -1, "stop": 2})"),
            "\"start\" is not a count of 100 ns");
  EXPECT_EQ(refusalOf(R"({"data": "", "sync": 1})"), "\"sync\" is neither true nor false");
  EXPECT_EQ(refusalOf(R"({"data": "", "Start": 1})"), "unknown key \"Start\"");
  EXPECT_THROW(parseHeader(R"({"stream": "subtitles"})"), util::TessaryException);
  EXPECT_THROW(parseHeader(R"({"data": ""})"), util::TessaryException);
}

}  // namespace
}  // namespace korr::txsub
