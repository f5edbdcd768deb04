#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "framing/nal_builder_dvb_subtitle.h"
#include "framing/nal_builder_raw.h"
#include "framing/nal_builder_teletext.h"
#include "tests/support/memory_item.h"

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
}

TEST_F(QueuedBuilder, BeginsInTheMiddleOfAPayload) {
  builder.push(continuingItem("rest"));
  builder.push(startItem("next"));
  EXPECT_THAT(listener.payloads, ElementsAre("rest"));
  EXPECT_FALSE(listener.units[0].startFlag);
}

TEST_F(QueuedBuilder, TakesTimeAndFlagsFromTheFirstSampleOnly) {
  const auto first = startItem("a");
  first->discontinuity = true;
  const auto second = continuingItem("b");
  second->time = {7, 8};
  builder.push(first);
  builder.push(second);
  builder.push(startItem("c", 9));
  builder.endOfStream();

  ASSERT_EQ(listener.units.size(), 2u);
  EXPECT_EQ(listener.units[0].type, 6);
  EXPECT_FALSE(listener.units[0].hasTime);
  EXPECT_TRUE(listener.units[0].startFlag);
  EXPECT_TRUE(listener.units[0].secondFlag);
  EXPECT_TRUE(listener.units[1].hasTime);
  EXPECT_EQ(listener.units[1].startTime, 9u);
  EXPECT_FALSE(listener.units[1].secondFlag);
}

TEST_F(QueuedBuilder, KeepsTheNewSampleWhenTheListenerThrows) {
  builder.push(startItem("lost"));
  listener.throwsOnce = true;
  EXPECT_THROW(builder.push(startItem("kept")), std::runtime_error);
  builder.push(continuingItem("!"));
  builder.endOfStream();
  EXPECT_THAT(listener.payloads, ElementsAre("kept!"));
}

TEST_F(QueuedBuilder, DropsAUnitWithoutPayloadAndTheUnitBegunOnly) {
  const auto broken = continuingItem("b");
  broken->refusesPayload = true;
  builder.push(startItem("a"));
  builder.push(broken);
  builder.push(startItem("c"));
  builder.push(startItem("d"));
  EXPECT_THAT(listener.payloads, ElementsAre("c"));
}

TEST_F(QueuedBuilder, TakesNoBytesOfASampleOfNegativeLength) {
  const auto negative = continuingItem("b");
  negative->statedLength = -5;
  builder.push(startItem("a"));
  builder.push(negative);
  builder.endOfStream();
  EXPECT_THAT(listener.payloads, ElementsAre("a"));
}

TEST_F(QueuedBuilder, ForwardsTheEndOfAnEmptyStream) {
  builder.endOfStream();
  EXPECT_THAT(listener.payloads, ElementsAre());
  EXPECT_EQ(listener.endsOfStream, 1);
}

TEST_F(QueuedBuilder, LetsGoOfSamplesWithTheirUnit) {
  const auto item = startItem("a");
  builder.push(item);
  EXPECT_EQ(item.use_count(), 2);
  builder.push(startItem("b"));
  EXPECT_EQ(item.use_count(), 1);
}

TEST(DvbBuilder, MakesUnitsOfItsType) {
  UnitRecorder listener;
  NALBuilderDVBSubtitle builder;
  builder.setListener(&listener);
  builder.push(startItem("a"));
  builder.endOfStream();
  ASSERT_EQ(listener.units.size(), 1u);
  EXPECT_EQ(listener.units[0].type, 11);
}

TEST(RawBuilder, MakesAUnitOfEverySampleWithBytesAtOnce) {
  UnitRecorder listener;
  NALBuilderRaw builder(NALBuilderRaw::kCaptionType);
  builder.setListener(&listener);
  EXPECT_EQ(builder.push(startItem("a", 5)), kOk);
  EXPECT_EQ(builder.push(continuingItem("b")), kOk);
  EXPECT_EQ(builder.push(startItem("")), kOk);
  EXPECT_THAT(listener.payloads, ElementsAre("a", "b"));
  EXPECT_EQ(listener.units[0].type, 16);
  EXPECT_TRUE(listener.units[0].hasTime);
  EXPECT_EQ(listener.units[0].startTime, 5u);
  EXPECT_TRUE(listener.units[0].startFlag);
  EXPECT_FALSE(listener.units[1].hasTime);

  const auto broken = startItem("c");
  broken->refusesPayload = true;
  EXPECT_TRUE(failed(builder.push(broken)));
  builder.endOfStream();
  EXPECT_EQ(listener.units.size(), 2u);
  EXPECT_EQ(listener.endsOfStream, 1);
}

}  // namespace
}  // namespace korr::encoding::packaging::lib_parse_es
