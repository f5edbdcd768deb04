// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "framing/nal_builder_raw.h"
#include "framing/nal_builder_teletext.h"
#include "testkit/memory_item.h"

namespace korr::encoding::packaging::lib_parse_es {
namespace {

using test_support::continuingItem;
using test_support::MemoryItem;
using test_support::startItem;
using testing::ElementsAre;

/// Keeps the units and can refuse the next.
class UnitRecorder final : public NALListener {
 public:
  void onNal(UniqueNAL unit) override {
    if (throwsOnce) {
      throwsOnce = false;
      throw std::runtime_error("refused");
    }
    payloads.emplace_back(unit->payload.begin(), unit->payload.end());
    units.push_back(std::move(*unit));
  }
  void onEndOfStream() override { ++endsOfStream; }

  std::vector<NAL> units;
  std::vector<std::string> payloads;
  int endsOfStream = 0;
  bool throwsOnce = false;
};

class QueuedBuilder : public testing::Test {
 protected:
  QueuedBuilder() { builder.setListener(&listener); }

  UnitRecorder listener;
  NALBuilderTeletext builder;
};

TEST_F(QueuedBuilder, JoinsTheSamplesOfOnePayloadAndWaitsForTheNextStart) {
  builder.push(startItem("a"));
  builder.push(continuingItem("bc"));
  EXPECT_THAT(listener.payloads, ElementsAre());
  builder.push(startItem("d"));
  EXPECT_THAT(listener.payloads, ElementsAre("abc"));
  builder.push(startItem("e"));
  builder.endOfStream();
  EXPECT_THAT(listener.payloads, ElementsAre("abc", "d", "e"));
  EXPECT_EQ(listener.endsOfStream, 1);
  builder.endOfStream();
  EXPECT_EQ(listener.endsOfStream, 2) << "of an empty stream too";
}

TEST_F(QueuedBuilder, TakesTimeAndFlagsFromTheFirstSampleOnly) {
  const auto first = startItem("a");
  first->discontinuity = true;
  const auto second = continuingItem("b");
  second->time = {7, 8};
  for (const auto& item : {continuingItem("rest"), first, second, startItem("c", 9)}) {
    builder.push(item);
  }
  builder.endOfStream();

  ASSERT_THAT(listener.payloads, ElementsAre("rest", "ab", "c"));
  EXPECT_FALSE(listener.units[0].startFlag) << "begun in the middle of a payload";
  EXPECT_EQ(listener.units[1].type, 6);
  EXPECT_FALSE(listener.units[1].hasTime);
  EXPECT_TRUE(listener.units[1].startFlag);
  EXPECT_TRUE(listener.units[1].secondFlag);
  EXPECT_TRUE(listener.units[2].hasTime);
  EXPECT_EQ(listener.units[2].startTime, 9u);
  EXPECT_FALSE(listener.units[2].secondFlag);
}

TEST_F(QueuedBuilder, KeepsTheNewSampleWhenTheListenerThrows) {
  builder.push(startItem("lost"));
  listener.throwsOnce = true;
  EXPECT_THROW(builder.push(startItem("kept")), std::runtime_error);
  builder.push(continuingItem("!"));
  builder.endOfStream();
  EXPECT_THAT(listener.payloads, ElementsAre("kept!"));
}

TEST_F(QueuedBuilder, DropsAUnitWithoutPayloadAndTakesNoBytesOfANegativeLength) {
  const auto broken = continuingItem("b");
  broken->refusesPayload = true;
  const auto negative = continuingItem("d");
  negative->statedLength = -5;
  for (const auto& item : {startItem("a"), broken, startItem("c"), negative, startItem("e")}) {
    builder.push(item);
  }
  EXPECT_THAT(listener.payloads, ElementsAre("c"));
}

TEST_F(QueuedBuilder, DropsAUnitThatNeverEndsAndSaysSoOnce) {
  using Builder = NALBuilderQueued;
  const auto fill = [this](const std::shared_ptr<MemoryItem>& item, std::size_t count) {
    int complaints = 0;
    for (std::size_t i = 0; i < count; ++i) {
      try {
        builder.push(item);
      } catch (const std::length_error&) {
        ++complaints;
      }
    }
    return complaints;
  };
  const std::string megabyte(1 << 20, 'x');
  const auto large = continuingItem(megabyte);
  const auto empty = continuingItem("");
  builder.push(startItem("lost"));
  EXPECT_EQ(fill(large, 20), 1);
  EXPECT_EQ(large.use_count(), 1);
  builder.push(startItem("kept"));
  EXPECT_EQ(fill(empty, Builder::kMostSamples - 1), 0);
  builder.push(startItem("lost"));
  EXPECT_EQ(fill(empty, Builder::kMostSamples + 10), 1);
  EXPECT_EQ(empty.use_count(), 1);
  builder.push(startItem("largest"));
  EXPECT_EQ(fill(large, Builder::kMostBytes / megabyte.size() - 1), 0);
  builder.endOfStream();
  ASSERT_EQ(listener.payloads.size(), 2U);
  EXPECT_EQ(listener.payloads[0], "kept");
  EXPECT_EQ(listener.payloads[1].size(), 7 + 3 * megabyte.size());
}

TEST_F(QueuedBuilder, LetsGoOfSamplesWithTheirUnit) {
  const auto item = startItem("a");
  builder.push(item);
  EXPECT_EQ(item.use_count(), 2);
  builder.push(startItem("b"));
  EXPECT_EQ(item.use_count(), 1);
}

TEST(RawBuilder, MakesAUnitOfEverySampleWithBytesAtOnce) {
  UnitRecorder listener;
  NALBuilderRaw builder(NALBuilderRaw::kCaptionType);
  builder.setListener(&listener);
  EXPECT_EQ(builder.push(startItem("a", 5)), kOk);
  EXPECT_EQ(builder.push(continuingItem("b")), kOk);
  EXPECT_EQ(builder.push(startItem("")), kOk);
  const auto broken = startItem("c");
  broken->refusesPayload = true;
  EXPECT_TRUE(failed(builder.push(broken)));
  ASSERT_THAT(listener.payloads, ElementsAre("a", "b"));
  EXPECT_EQ(listener.units[0].type, 16);
  EXPECT_TRUE(listener.units[0].hasTime);
  EXPECT_EQ(listener.units[0].startTime, 5u);
  EXPECT_TRUE(listener.units[0].startFlag);
  EXPECT_FALSE(listener.units[1].hasTime);
  builder.endOfStream();
  EXPECT_EQ(listener.units.size(), 2u);
  EXPECT_EQ(listener.endsOfStream, 1);
}

}  // namespace
}  // namespace korr::encoding::packaging::lib_parse_es
