// SPDX-License-Identifier: MIT

// What whoever follows the clock of a program is told.
#include "readers/mpegts/ts_program_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "tests/readers/mpegts/ts_reading.h"

namespace korr::txsub {
namespace {

using namespace ts_test;
using encoding::subtitling::fromTicks90k;
using testing::ElementsAre;

constexpr std::uint16_t kSecondVideoPid = 0x101;

/// Keeps what is told of program 1.
class ClockRecorder final : public IClockListener {
 public:
  void onPicture(std::uint32_t program, const ClockStamp& stamp, bool isRandomAccess) override {
    if (program != 1) return;
    pictures.push_back(stamp);
    randomAccess.push_back(isRandomAccess);
  }
  void onClock(std::uint32_t program, const ClockStamp& stamp) override {
    if (program == 1) clocks.push_back(stamp);
  }
  void onTimeOfDay(std::int64_t utc) override { timesOfDay.push_back(utc); }

  std::vector<ClockStamp> pictures;
  std::vector<bool> randomAccess;
  std::vector<ClockStamp> clocks;
  std::vector<std::int64_t> timesOfDay;
};

Bytes picture(std::uint64_t pts, VideoCodec codec, bool beginsGroup) {
  return pesPacket(
      {.pts = pts % kWrap, .unbounded = true},
      encoders::encode(
          {.codec = codec, .triplets = encoders::textTriplets("ab"), .beginsGroup = beginsGroup}));
}

// Listens to no stream, so that the pictures are passed over, or to all.
ClockRecorder follow(const Bytes& recording, bool isVideoWanted) {
  struct Listener final : IReaderListener {
    explicit Listener(bool wanted) : isWanted(wanted) {}
    bool onStream(const StreamInfo&) override { return isWanted; }
    void onSample(const StreamInfo&, const InputSample&) override {}
    bool isWanted;
  } listener(isVideoWanted);
  ClockRecorder recorder;
  TsReader reader(std::make_unique<MemorySource>(recording), {.pid = {}, .clock = &recorder});
  while (reader.read(listener)) {
  }
  return recorder;
}

class TsClockTelling : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Video, TsClockTelling, testing::Bool(), [](const auto& video) {
  return std::string(video.param ? "Wanted" : "PassedOver");
});

TEST_P(TsClockTelling, TellsPicturesAndPcrWithTheirStampsOverTheWrap) {
  TsBuilder stream = TsBuilder().tables(program());
  const std::uint64_t start = kWrap - kTicks;
  for (std::uint64_t i = 0; i < 4; ++i) {
    const std::uint64_t now = start + i * kTicks;
    stream.pes(kVideoPid, picture(now + kTicks / 2, VideoCodec::H264, i % 2 == 0), now % kWrap);
  }
  const auto told = follow(stream.bytes(), GetParam());
  ASSERT_EQ(told.pictures.size(), 4U);
  ASSERT_EQ(told.clocks.size(), 4U);
  EXPECT_EQ(told.clocks[1].ticks, 0U);
  EXPECT_EQ(told.clocks[1].time, fromTicks90k(kWrap));
  EXPECT_EQ(told.pictures[3].ticks, 2 * kTicks + kTicks / 2);
  EXPECT_EQ(told.pictures[3].time, fromTicks90k(kWrap + 2 * kTicks + kTicks / 2));
  EXPECT_THAT(told.randomAccess, ElementsAre(true, false, true, false));
}

TEST_P(TsClockTelling, GoesByMarksWhereThereAreAnyAndElseByTheContent) {
  for (const bool isMarked : {false, true}) {
    TsBuilder stream = TsBuilder().tables(program());
    for (std::uint64_t i = 0; i < 4; ++i) {
      stream.pes(kVideoPid, picture(i * kTicks, VideoCodec::H264, i != 1), i * kTicks);
    }
    Bytes bytes = stream.take();
    // The adaptation field's flags, behind header and length, of the PCR packets.
    unsigned pictures = 0;
    for (std::size_t at = 0; at < bytes.size(); at += TsBuilder::kPacketBytes) {
      const bool hasPcr = (bytes[at + 3] & 0x20) != 0 && (bytes[at + 5] & 0x10) != 0;
      if (isMarked && hasPcr && pictures++ % 3 == 0) bytes[at + 5] |= 0x40;
    }
    const auto told = follow(bytes, GetParam());
    if (isMarked) {
      EXPECT_THAT(told.randomAccess, ElementsAre(true, false, false, true));
    } else {
      EXPECT_THAT(told.randomAccess, ElementsAre(true, false, true, true));
    }
  }
}

TEST_P(TsClockTelling, FollowsTheFirstVideoOfAProgramOnly) {
  TsProgram two = program();
  two.streams.insert(two.streams.begin() + 1,
                     {.pid = kSecondVideoPid, .type = TsStream::kMpeg2Video});
  TsBuilder stream = TsBuilder().tables(two);
  for (std::uint64_t i = 0; i < 3; ++i) {
    stream.pes(kSecondVideoPid, picture(i * kTicks + 1, VideoCodec::Mpeg2, true));
    stream.pes(kVideoPid, picture(i * kTicks, VideoCodec::H264, false), i * kTicks);
  }
  const auto told = follow(stream.bytes(), GetParam());
  EXPECT_EQ(told.pictures.size(), 3U);
  EXPECT_THAT(told.randomAccess, ElementsAre(false, false, false));
}

TEST_P(TsClockTelling, LeavesOutAPictureOfAClockThatHasNotCome) {
  TsBuilder stream = TsBuilder().tables(program());
  const std::uint64_t next = 1000 * kTicks;
  stream.pes(kVideoPid, picture(kTicks, VideoCodec::H264, true), 0);
  stream.pes(kVideoPid, picture(next + kTicks, VideoCodec::H264, true));
  stream.pcr(kVideoPid, next);
  stream.pes(kVideoPid, picture(next + kTicks, VideoCodec::H264, true));
  const auto told = follow(stream.bytes(), GetParam());
  ASSERT_EQ(told.pictures.size(), 2U);
  EXPECT_LT(told.pictures[1].time, 3 * kSecond);
  EXPECT_EQ(told.pictures[1].ticks, next + kTicks);
}

TEST(TsLiveClock, GivesCaptionsOutWhenTheyAreDue) {
  TsBuilder stream = beginning();
  for (std::uint64_t i = 1; i <= 3; ++i) stream.pes(kVideoPid, videoPes(i * 3600, "ab"));
  stream.pcr(kVideoPid, 2 * 3600);
  const Bytes due = stream.bytes();

  ClockRecorder recorder;
  test_support::RecordingListener listener;
  // A pipe that stays open: nothing is flushed.
  TsReader reader(std::make_unique<MemorySource>(due), {.pid = {}, .clock = &recorder});
  static_cast<void>(reader.read(listener));
  std::vector<MediaTime> times;
  for (const auto& [id, sample] : listener.samples) times.push_back(sample.times->start);
  EXPECT_THAT(times, ElementsAre(fromTicks90k(3600), fromTicks90k(7200)));
}

TEST(TsLiveClock, ReadsTheTimeOfDay) {
  // EN 300 468, annex C: 93/10/13 12:45:00 is 0xC079124500.
  const Bytes section{0x70, 0x70, 0x05, 0xC0, 0x79, 0x12, 0x45, 0x00};
  EXPECT_EQ(readTimeOfDay(section), 750'516'300'000);

  Bytes packet{0x47, 0x40, kTimeOfDayPid, 0x10, 0x00};
  packet.insert(packet.end(), section.begin(), section.end());
  packet.resize(TsBuilder::kPacketBytes, 0xFF);
  const Bytes recording = beginning().raw(packet).pcr(kVideoPid, kTicks).take();
  EXPECT_THAT(follow(recording, false).timesOfDay, ElementsAre(750'516'300'000));

  for (const std::size_t at : {0U, 5U, 6U, 7U}) {
    Bytes damaged = section;
    damaged[at] = 0x6A;
    EXPECT_EQ(readTimeOfDay(damaged), std::nullopt) << at;
  }
  EXPECT_EQ(readTimeOfDay(Bytes(section.begin(), section.end() - 1)), std::nullopt);
}

}  // namespace
}  // namespace korr::txsub
