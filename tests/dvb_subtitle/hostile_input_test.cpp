// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "dvb_subtitle/errors.h"
#include "tests/dvb_subtitle/decoder_bench.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

using testing::Contains;

DvbEncoder displaySet() {
  return DvbEncoder()
      .display(8, 4, DvbEncoder::Window{1, 7, 1, 3})
      .page(kAcquisitionPoint, 5, {{1, 0, 0}, {2, 3, 1}})
      .clut(1, {{.id = 1, .y = 100}, {.id = 2, .y = 50, .fullRange = false}})
      .region({.id = 1, .fill = true, .width = 4, .height = 4, .clut = 1, .fillCode = 1})
      .region({.id = 2, .width = 4, .height = 2, .depth = 3, .objects = {{7, 0, 0}, {8, 1, 1}}})
      .pictureObject(7, 8, picture("1200/0034"))
      .characters(8, u"ab")
      .end();
}

void feedQuietly(DecoderBench& bench, const Bytes& bytes, std::uint64_t time) {
  try {
    bench.feed(bytes, time);
  } catch (const DataFieldError&) {
  }
}

TEST(HostileInput, EveryTruncationIsHarmless) {
  const Bytes whole = displaySet().bytes();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    DecoderBench bench;
    feedQuietly(bench, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), 10);
    feedQuietly(bench, whole, 11);
    EXPECT_EQ(bench.at(11).width, 8U) << size;
  }
}

TEST(HostileInput, DamagedBytesAreHarmless) {
  const Bytes whole = displaySet().bytes();
  std::mt19937 random(1);
  DecoderBench bench;
  for (std::uint64_t round = 1; round < 20'000; ++round) {
    Bytes damaged = whole;
    for (int i = 0; i < 3; ++i)
      damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
    feedQuietly(bench, damaged, round);
    bench.log().clear();
  }
  bench.feed(displaySet(), 30'000);
  EXPECT_EQ(bench.at(30'000).width, 8U);
}

TEST(HostileInput, ADisplayTooLargeToHoldIsRefused) {
  DecoderBench bench;
  bench.feed(DvbEncoder().display(65536, 65536).page(kAcquisitionPoint, 5, {}), 10);
  EXPECT_EQ(bench.at(10).visible, 0);
  EXPECT_THAT(bench.log(), Contains("Display of 65536 by 65536 pixels refused: more than 16777216 "
                                    "pixels"));
  bench.feed(DvbEncoder().display(4096, 4096).end(), 11);
  EXPECT_EQ(bench.at(11).width, 4096U) << "the page stays pending";
}

TEST(HostileInput, PixelsOfTheHistoryAreBounded) {
  DecoderBench bench;
  for (std::uint64_t i = 0; i < 6; ++i) {
    const auto field = DvbEncoder().display(4096, 4096).page(kAcquisitionPoint, 255, {}).bytes();
    bench.parser().parse(field.data(), static_cast<std::int64_t>(field.size()), kSecond + i, true);
  }
  EXPECT_EQ(bench.atTicks(kSecond + 1).visible, 0) << "the oldest two are gone";
  EXPECT_EQ(bench.atTicks(kSecond + 2).visible, 1);
}

TEST(HostileInput, NothingIsPaintedOutsideTheDisplay) {
  auto field = DvbEncoder()
                   .display(4, 4, DvbEncoder::Window{65535, 65535, 65535, 65535})
                   .page(kAcquisitionPoint, 5, {{1, 65535, 65535}, {2, 2, 2}})
                   .region({.id = 1,
                            .fill = true,
                            .width = 65535,
                            .height = 65535,
                            .fillCode = 1,
                            .objects = {{7, 4095, 4095}}})
                   .region({.id = 2, .fill = true, .width = 65535, .height = 65535, .fillCode = 2})
                   .pictureObject(7, 4, picture("1111"));
  EXPECT_EQ(shown(field), "..../..../..GG/..GG");
}

// Announced bytes that never come count as zeros, without taking their room.
TEST(HostileInput, AnObjectLongerThanItsSegmentEndsInZeros) {
  const auto logOf = [](const Bytes& objectData) {
    DecoderBench bench;
    bench.feed(smallPage(4, 1, {.objects = {{7, 0, 0}}}).segment(0x13, objectData), 10);
    return bench.log();
  };
  const auto refused = testing::ElementsAre("Unsupported data_type = 0");
  EXPECT_THAT(logOf({0, 7, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0x11, 0x11}), refused);
  EXPECT_THAT(logOf({0, 7, 0, 0, 1, 0, 2, 0xF0}), refused) << "only the bottom field is missing";
  EXPECT_THAT(logOf({0, 7, 0, 0, 3, 0, 0, 0x11, 0x11}), testing::IsEmpty())
      << "zeros that end the string and the field";
}

// Every object fills the display many times over; every region shows every object.
TEST(HostileInput, ThousandsOfObjectsCostBoundedWork) {
  constexpr std::uint16_t kObjects = 2000;
  Bytes heavy;
  while (heavy.size() < 60'000) {
    heavy.push_back(0x11);
    for (int i = 0; i < 10; ++i) heavy.insert(heavy.end(), {0x0F, 0xFF, 0x10, 0xFF, 0xF1});
    heavy.insert(heavy.end(), {0x00, 0xF0});
  }
  std::vector<DvbEncoder::Place> regions;
  std::vector<DvbEncoder::Place> objects;
  for (std::uint16_t id = 0; id < 100; ++id) regions.push_back({id, 0, 0});
  for (std::uint16_t id = 0; id < kObjects; ++id) objects.push_back({id, 0, 0});

  DecoderBench bench;
  DvbEncoder field;
  field.display(4096, 4096).page(kAcquisitionPoint, 5, regions);
  for (std::uint16_t id = 0; id < kObjects; ++id)
    field.object(id, id % 100 == 0 ? heavy : Bytes{0xF0}, {});
  DvbEncoder::Region whole{
      .fill = true, .width = 65535, .height = 65535, .fillCode = 1, .objects = objects};
  for (; whole.id < regions.size(); ++whole.id) field.region(whole);
  bench.feed(field, 10);
  EXPECT_THAT(bench.log(), Contains(testing::HasSubstr("More to paint in one payload")));
  bench.feed(displaySet(), 11);
  EXPECT_EQ(bench.at(11).width, 8U);
}

TEST(HostileInput, ObjectsAndListsOfObjectsAreBounded) {
  DecoderBench bench;
  DvbEncoder objects;
  for (std::uint16_t id = 0; id < 1050; ++id) objects.object(id, Bytes(65'000, 0xF0), {});
  bench.feed(objects, 10);
  EXPECT_EQ(bench.log().front(), "Object 1032 refused: all objects together exceed 67108864 bytes");

  bench.log().clear();
  DvbEncoder lists;
  for (unsigned part = 0; part < 4; ++part) {
    DvbEncoder::Region region{.id = 3};
    for (unsigned i = 0; i < 5000; ++i)
      region.objects.push_back({static_cast<std::uint16_t>(part * 5000 + i), 0, 0});
    lists.region(region);
  }
  bench.feed(lists, 10);
  EXPECT_THAT(bench.log(), testing::ElementsAre("Region 3 emptied: more than 16384 objects"));
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
