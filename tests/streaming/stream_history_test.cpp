// SPDX-License-Identifier: MIT
#include "streaming/stream_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/streaming/published.h"
#include "util/exception.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::uint64_t> numbersOf(std::span<const PublishedSegment> segments) {
  std::vector<std::uint64_t> numbers;
  for (const auto& segment : segments) numbers.push_back(segment.number);
  return numbers;
}

TEST(StreamHistory, KeepsTheWindowAndRemovesAWindowLater) {
  StreamHistory history(30 * kSecond, 6 * kSecond);
  Publisher publisher(history);
  publisher.publish(5);
  EXPECT_THAT(numbersOf(history.listed()), ElementsAre(1, 2, 3, 4, 5));
  publisher.publish(4);
  EXPECT_THAT(numbersOf(history.listed()), ElementsAre(5, 6, 7, 8, 9));
  EXPECT_THAT(history.takeRemovable(), IsEmpty());
  publisher.publish(2);
  EXPECT_THAT(history.takeRemovable(), ElementsAre(1));
  EXPECT_THAT(numbersOf(history.kept()), ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11));
}

// RFC 8216, 6.2.2.
TEST(StreamHistory, NeverListsLessThanThreeTargetDurations) {
  StreamHistory history(6 * kSecond, 6 * kSecond);
  Publisher(history).publish(20);
  EXPECT_EQ(history.listed().size(), 5U);  // of 9 s three times
}

TEST(StreamHistory, CountsTheJumpsThatLeaveTheList) {
  StreamHistory history(30 * kSecond, 6 * kSecond);
  Publisher publisher(history);
  publisher.publish(1);
  publisher.jump(1'000'000'000);
  publisher.publish(5);
  EXPECT_EQ(history.listed().front().number, 2U);
  EXPECT_EQ(history.discontinuitySequence(), 0U);
  publisher.publish(1);
  EXPECT_EQ(history.discontinuitySequence(), 1U);
  EXPECT_EQ(history.listed().front().periodOffset, 540'000U);
  EXPECT_EQ(history.listed().front().offset, 2 * 540'000U);
}

TEST(StreamHistory, GoesOnWhereItWasStopped) {
  StreamHistory history(30 * kSecond, 6 * kSecond);
  Publisher publisher(history);
  publisher.publish(3);
  publisher.jump(77);
  publisher.publish(9);
  StreamHistory other(30 * kSecond, 6 * kSecond);
  other.restore(history.toJson());
  EXPECT_EQ(other.nextNumber(), 13U);
  EXPECT_EQ(other.toJson(), history.toJson());
  EXPECT_EQ(other.takeRemovable(), history.takeRemovable());

  EXPECT_THROW(other.restore(history.toJson().substr(0, 200)), util::TessaryException);
  EXPECT_THROW(other.restore("{\"version\": 1}"), util::TessaryException);
  EXPECT_EQ(other.nextNumber(), 13U);
}

}  // namespace
}  // namespace korr::txsub
