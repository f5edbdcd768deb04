// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/readers/mpegts/ts_reading.h"

namespace korr::txsub {
namespace {

using namespace ts_test;
using test_support::RecordingListener;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(TsReader, HandsOverWholePayloadsWithTheirTimes) {
  TsBuilder stream;
  const Bytes field = dvbField(1000);
  stream.tables(program()).pcr(kVideoPid, 10 * kTicks);
  stream.pes(kTeletextPid, teletextPes(10 * kTicks, 'x'));
  stream.pes(kDvbPid, dvbPes(11 * kTicks, join({field, Bytes{0xFF, 0xFF, 0xFF}})));
  stream.pes(kVideoPid, videoPes(12 * kTicks, "ab"));
  const Reading reading(stream.bytes());
  const InputSample teletext{.data = teletextField(7, 'x'),
                             .times = InputSample::Times{10 * kSecond, 10 * kSecond},
                             .sync = true,
                             .format = {}};
  EXPECT_TRUE(reading.of(kTeletextPid) == std::vector{teletext});
  // The stuffing after the end marker is left out.
  EXPECT_THAT(reading.of(kDvbPid), ElementsAre(Field(&InputSample::data, field)));
  EXPECT_THAT(reading.secondsOf(kVideoPid), ElementsAre(12));
  EXPECT_EQ(reading.reader.startTime(1), 12 * kSecond);  // of what players show
  EXPECT_EQ(reading.reader.endTime(1), 12 * kSecond);
  EXPECT_THAT(reading.logger.lines, IsEmpty());
}

TEST(TsReader, ReadsEveryPacketSizeInPiecesOfAnySize) {
  TsBuilder stream = TsBuilder().tables(program());
  for (std::uint64_t i = 0; i < 20; ++i) {
    stream.pcr(kVideoPid, i * kTicks);
    stream.pes(kTeletextPid, teletextPes(i * kTicks, static_cast<std::uint8_t>('a' + i)));
  }
  const Reading plain(stream.bytes());
  ASSERT_THAT(plain.listener.samples, SizeIs(20));

  const auto padded = [&](std::size_t before, std::size_t after) {
    Bytes bytes;
    for (std::size_t at = 0; at < stream.size(); at += TsBuilder::kPacketBytes) {
      bytes.resize(bytes.size() + before, 0x47);  // the worst that can be there
      const auto packet = std::span(stream.bytes()).subspan(at, TsBuilder::kPacketBytes);
      bytes.insert(bytes.end(), packet.begin(), packet.end());
      bytes.resize(bytes.size() + after, 0x47);
    }
    return bytes;
  };
  for (const Bytes& recording : {stream.bytes(), padded(4, 0), padded(0, 16)}) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{187}, std::size_t{1000}}) {
      const Reading reading(recording, {}, piece);
      EXPECT_TRUE(reading.listener.samples == plain.listener.samples);
      EXPECT_THAT(reading.logger.lines, IsEmpty());
      EXPECT_TRUE(looksLikeTransportStream(recording, false));
    }
  }
}

TEST(TsReader, SamplesBeforeTheFirstTablesAreNotLost) {
  TsBuilder stream;
  stream.pes(kTeletextPid, teletextPes(kTicks, 'a'));
  stream.tables(program()).pcr(kVideoPid, 0);
  stream.pes(kTeletextPid, teletextPes(2 * kTicks, 'b'));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(1, 2));
  ASSERT_THAT(reading.listener.streams, SizeIs(3));
  EXPECT_TRUE(reading.listener.streams[0].isVideo);
  EXPECT_EQ(reading.listener.streams[1].descriptors, kTeletextDescriptor);
}

TEST(TsReader, FindsStreamsByTheirContentWithoutTables) {
  TsBuilder stream;
  for (std::uint64_t i = 1; i <= 2; ++i) {
    stream.pes(kTeletextPid, teletextPes(i * kTicks));
    stream.pes(kDvbPid, dvbPes(i * kTicks, dvbField(300)));
    stream.pes(kVideoPid, videoPes(i * kTicks, "ab"));
    stream.pes(0x200, pesPacket({.streamId = 0xC0, .pts = i * kTicks}, Bytes(500, 0x55)));
  }
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.listener.streams, SizeIs(3));
  for (const auto pid : {kTeletextPid, kDvbPid, kVideoPid}) {
    EXPECT_THAT(reading.secondsOf(pid), ElementsAre(1, 2)) << pid;
  }
  EXPECT_THAT(reading.logger.lines, IsEmpty());
}

TEST(TsReader, DoesNotHoldASlowPipeBackForTablesThatDoNotCome) {
  TsBuilder stream;
  for (std::uint64_t i = 1; i <= 20; ++i) stream.pes(kTeletextPid, teletextPes(i * kTicks));
  RecordingListener listener;
  TsReader reader(std::make_unique<MemorySource>(stream.bytes(), TsBuilder::kPacketBytes),
                  {.pid = {}, .tablesDue = std::chrono::milliseconds(0)});
  while (listener.samples.empty() && reader.read(listener)) {
  }
  EXPECT_LT(reader.progress().bytesRead, stream.size() / 2);
}

TEST(TsReader, ReadsOnlyThePidThatIsAskedFor) {
  TsBuilder stream;
  TsProgram others = program();
  others.streams.pop_back();
  stream.tables(others).pcr(kVideoPid, 0);
  stream.pes(kTeletextPid, teletextPes(kTicks));
  stream.pes(kDvbPid, dvbPes(kTicks, dvbField(300)));
  const Reading listed(stream.bytes(), {.pid = kTeletextPid});
  EXPECT_THAT(listed.listener.samples, SizeIs(1));
  EXPECT_THAT(listed.of(kTeletextPid), SizeIs(1));
  const Reading unlisted(stream.bytes(), {.pid = kDvbPid});
  EXPECT_THAT(unlisted.listener.samples, SizeIs(1));
  EXPECT_THAT(unlisted.of(kDvbPid), SizeIs(1));
}

TEST(TsReader, ALostPacketCostsTheRowsInIt) {
  TsBuilder stream = beginning();
  Bytes packets = TsBuilder().pes(kTeletextPid, teletextPes(kTicks, 'a', 5)).take();
  const auto third = packets.begin() + 2 * TsBuilder::kPacketBytes;
  packets.erase(third, third + TsBuilder::kPacketBytes);
  stream.raw(packets);
  const Reading reading(stream.bytes());

  Bytes expected = teletextField(19, 'a');
  // The first packet holds the header and 3 units; 4 are in each of the others.
  std::fill_n(expected.begin() + 1 + 46 * 7, 46 * 4, std::uint8_t{0xFF});
  ASSERT_THAT(reading.of(kTeletextPid), SizeIs(1));
  EXPECT_EQ(reading.of(kTeletextPid)[0].data, expected);
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("PID 0x0034")));
}

TEST(TsReader, DuplicatesCountOnceAndOtherPacketsOfTheSameNumberDoToo) {
  const Bytes field = dvbField(300);
  Bytes packets = TsBuilder().pes(kDvbPid, dvbPes(kTicks, field)).take();
  const auto at = [&](std::size_t index) {
    return packets.begin() + static_cast<std::ptrdiff_t>(index * TsBuilder::kPacketBytes);
  };
  Bytes doubled;
  for (std::size_t i = 0; at(i) != packets.end(); ++i) {
    for (int twice = 0; twice < 2; ++twice) doubled.insert(doubled.end(), at(i), at(i + 1));
  }
  Bytes uncounted = packets;
  for (std::size_t i = 3; i < uncounted.size(); i += TsBuilder::kPacketBytes) uncounted[i] &= 0xF0;

  for (const Bytes& pes : {doubled, uncounted}) {
    const Reading reading(beginning().raw(pes).bytes());
    EXPECT_THAT(reading.of(kDvbPid), ElementsAre(Field(&InputSample::data, field)));
    EXPECT_THAT(reading.logger.lines, IsEmpty());
  }
}

TEST(TsReader, ATornPictureIsLeftOut) {
  TsBuilder stream = beginning();
  for (std::uint64_t i = 1; i <= 2; ++i) stream.pes(kDvbPid, dvbPes(i * kTicks, dvbField(1000)));
  const auto end = static_cast<std::ptrdiff_t>(stream.size());
  for (std::uint64_t i = 3; i <= 4; ++i) stream.pes(kDvbPid, dvbPes(i * kTicks, dvbField(1000)));
  Bytes torn = stream.take();
  torn.erase(torn.begin() + end - 2 * TsBuilder::kPacketBytes, torn.begin() + end);
  const Reading reading(torn);
  EXPECT_THAT(reading.secondsOf(kDvbPid), ElementsAre(1, 3, 4));
  const auto hasLoss = [](bool is) { return Field(&InputSample::discontinuity, is); };
  EXPECT_THAT(reading.of(kDvbPid), ElementsAre(hasLoss(false), hasLoss(true), hasLoss(false)));
  EXPECT_THAT(reading.logger.lines, Not(IsEmpty()));
}

TEST(TsReader, FindsThePacketsAgainAfterGarbage) {
  TsBuilder stream = beginning();
  stream.pes(kTeletextPid, teletextPes(1 * kTicks));
  const std::size_t at = stream.size();
  stream.raw(Bytes(777, 0x00)).raw(Bytes(1234, 0x47));
  for (std::uint64_t i = 2; i < 5; ++i) stream.pes(kTeletextPid, teletextPes(i * kTicks));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("byte " + std::to_string(at))));
}

TEST(TsReader, APidThatBecomesAnotherStreamGetsAnotherName) {
  TsBuilder stream;
  TsProgram now = program();
  const auto become = [&](std::uint8_t type, const Bytes& descriptors, unsigned version) {
    now.streams[1].type = type;
    now.streams[1].descriptors = descriptors;
    stream.pmt(now, version);
  };
  stream.tables(now).pcr(kVideoPid, 0).pes(kTeletextPid, teletextPes(1 * kTicks));
  become(0x03, {}, 1);  // sound
  stream.pes(kTeletextPid, teletextPes(2 * kTicks));
  become(0x06, kSubtitlingDescriptor, 2);
  stream.pes(kTeletextPid, dvbPes(3 * kTicks, dvbField(100)));
  become(0x06, kTeletextDescriptor, 3);
  stream.pes(kTeletextPid, teletextPes(4 * kTicks));
  const Reading reading(stream.bytes());
  ASSERT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(1, 3, 4));
  const auto& samples = reading.listener.samples;
  EXPECT_EQ(samples[0].first, samples[2].first);
  EXPECT_NE(samples[0].first, samples[1].first);
}

TEST(TsReader, SurvivesNoise) {
  TsBuilder stream;
  for (std::uint64_t i = 0; i < 30; ++i) {
    stream.tables(program(), static_cast<unsigned>(i)).pcr(kVideoPid, i * kTicks);
    stream.pes(kTeletextPid, teletextPes(i * kTicks));
    stream.pes(kDvbPid, dvbPes(i * kTicks, dvbField(400)));
    stream.pes(kVideoPid, videoPes(i * kTicks, "text"));
  }
  std::mt19937 random{11};
  for (int round = 0; round < 30; ++round) {
    Bytes bytes = stream.bytes();
    for (int i = 0; i < round * 20; ++i) {
      bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    }
    const Reading reading(bytes, {}, 1 + random() % 5000);
    EXPECT_THAT(reading.listener.samples, Not(IsEmpty()));
  }
}

TEST(TsReader, NamesTheProgramOnceTheSdtHasCome) {
  TsBuilder stream;
  stream.tables(program()).pes(kTeletextPid, teletextPes(kTicks));
  for (int i = 0; i < 1000; ++i) stream.nullPacket();  // far behind the other tables
  stream.sdt(1, "Kanal \xCA\x41").pes(kTeletextPid, teletextPes(2 * kTicks));
  const Reading reading(stream.bytes());
  ASSERT_FALSE(reading.listener.streams.empty());
  EXPECT_EQ(reading.listener.streams.front().serviceName, "");
  EXPECT_EQ(reading.listener.streams.back().serviceName, "Kanal Å");
  EXPECT_EQ(reading.listener.samples.size(), 2u);
}

TEST(TsReader, ScrambledPacketsAreLeftOut) {
  TsBuilder stream = beginning();
  stream.pes(kTeletextPid, teletextPes(1 * kTicks));
  Bytes scrambled = TsBuilder().pes(kTeletextPid, teletextPes(2 * kTicks)).take();
  for (std::size_t i = 3; i < scrambled.size(); i += TsBuilder::kPacketBytes) {
    scrambled[i] = static_cast<std::uint8_t>(0x80 | scrambled[i] | (i / 188 + 2));  // counts on
  }
  stream.raw(scrambled);
  stream.raw(TsBuilder().pes(kTeletextPid, teletextPes(3 * kTicks)).take());
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(1, 3));
  EXPECT_THAT(reading.logger.lines, testing::Contains("PID 0x0034: scrambled; left out"));

  // Where no table names it, content that cannot be read tells nothing.
  EXPECT_THAT(Reading(scrambled).listener.streams, IsEmpty());
}

TEST(TsReader, APesPacketEndsWhereItsLengthSays) {
  TsBuilder stream = beginning();
  const Bytes odd = pesPacket({.streamId = Pes::kPrivateStream1, .pts = kTicks},
                              teletextField(7, 'a'));  // ends within a transport packet
  stream.pes(kTeletextPid, join({odd, Bytes(300, '!')}));
  stream.pes(kTeletextPid, teletextPes(2 * kTicks, 'b'));
  const Reading reading(stream.bytes());
  ASSERT_THAT(reading.of(kTeletextPid), SizeIs(2));
  EXPECT_EQ(reading.of(kTeletextPid)[0].data, teletextField(7, 'a'));
}

TEST(TsReader, APesPacketWithoutLengthIsCut) {
  TsBuilder stream = beginning();
  stream.pes(kTeletextPid,
             pesPacket({.streamId = Pes::kPrivateStream1, .pts = kTicks, .unbounded = true},
                       Bytes(200'000, 0x10)));
  const Reading reading(stream.bytes());
  ASSERT_THAT(reading.of(kTeletextPid), SizeIs(1));
  EXPECT_LE(reading.of(kTeletextPid)[0].data.size(), 0xFFFFU);
}

TEST(TsReader, DamageMakesNoMoreStreamsThanAMultiplexHas) {
  TsBuilder stream;
  for (std::uint16_t pid = 0x100; pid < 0x100 + 600; ++pid) stream.pes(pid, teletextPes(kTicks));
  EXPECT_THAT(Reading(stream.bytes()).listener.streams, SizeIs(512));
}

TEST(TsReader, SamplesOfAStreamThatIsNotWantedAreNotMade) {
  struct Choosy : RecordingListener {
    bool onStream(const StreamInfo& stream) override {
      RecordingListener::onStream(stream);
      return stream.pid == kTeletextPid;
    }
  } listener;
  TsBuilder stream = beginning();
  for (std::uint64_t i = 1; i <= 3; ++i) {
    stream.pes(kTeletextPid, teletextPes(i * kTicks)).pes(kDvbPid, dvbPes(i, dvbField(100)));
  }
  TsReader reader(std::make_unique<MemorySource>(stream.bytes()), {});
  while (reader.read(listener)) {
  }
  EXPECT_THAT(listener.streams, SizeIs(3));
  EXPECT_THAT(listener.samples, SizeIs(3));
}

TEST(TsReader, APictureThatEndsEarlyIsLeftOut) {
  TsBuilder stream = beginning();
  const Bytes whole = dvbPes(1 * kTicks, dvbField(1000));
  stream.pes(kDvbPid, std::span(whole).first(600));  // nothing is missing by the counters
  stream.pes(kDvbPid, dvbPes(2 * kTicks, dvbField(1000)));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kDvbPid), ElementsAre(2));
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("bytes early; left out")));
}

TEST(TsReader, AStreamCanBeDroppedOnTheWay) {
  struct Dropping : RecordingListener {
    TsReader* reader = nullptr;

    void onSample(const StreamInfo& stream, const InputSample& sample) override {
      RecordingListener::onSample(stream, sample);
      reader->unselect(stream.id);
    }
  } listener;
  TsBuilder stream = beginning();
  for (std::uint64_t i = 1; i <= 3; ++i) {
    stream.pes(kTeletextPid, teletextPes(i * kTicks)).pes(kDvbPid, dvbPes(i, dvbField(100)));
  }
  TsReader reader(std::make_unique<MemorySource>(stream.bytes()), {});
  listener.reader = &reader;
  while (reader.read(listener)) {
  }
  EXPECT_THAT(listener.samples, SizeIs(2)) << "the first of each";
}

TEST(TsReader, DamageIsReportedAFewTimesOnly) {
  TsBuilder stream = beginning();
  for (int i = 0; i < 200; ++i) {
    Bytes torn = TsBuilder().pes(kDvbPid, dvbPes(kTicks, dvbField(1000))).take();
    torn.erase(torn.begin() + TsBuilder::kPacketBytes, torn.begin() + 2 * TsBuilder::kPacketBytes);
    stream.raw(torn);
  }
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.logger.lines, SizeIs(51));
  EXPECT_EQ(reading.logger.lines.back(), "further damage is not reported");
}

TEST(TsReader, NamesSubtitlesThatAreNotItsOwn) {
  TsProgram disc = program();
  const Bytes french{0x0A, 4, 'f', 'r', 'a', 0};
  disc.streams = {{.pid = 0x1200, .type = 0x90, .descriptors = french},
                  {.pid = 0x1100, .type = 0x0F, .descriptors = french},  // sound
                  {.pid = 0x1300, .descriptors = {0xFD, 3, 0x00, 0x08, 0x3D}},
                  {.pid = 0x1400, .descriptors = {0x7F, 1, 0x20}},
                  {.pid = 0x1500, .descriptors = {0x7F, 1, 0x06}},  // more sound
                  {.pid = kDvbPid, .descriptors = kSubtitlingDescriptor}};
  const Reading reading(TsBuilder().tables(disc).bytes());
  EXPECT_THAT(reading.reader.findings().otherSubtitles,
              ElementsAre("PID 0x1300 (ARIB captions)", "PID 0x1400 (TTML)"));
}

TEST(TsReader, APacketThatIsKnownToBeDamagedIsALostOne) {
  TsBuilder stream = beginning();
  Bytes packets = TsBuilder().pes(kTeletextPid, teletextPes(kTicks, 'a', 3)).take();
  packets[TsBuilder::kPacketBytes + 1] |= 0x80;  // transport_error_indicator
  stream.raw(packets).raw(TsBuilder().pes(kTeletextPid, teletextPes(2 * kTicks)).bytes());
  const Reading reading(stream.bytes());
  ASSERT_THAT(reading.of(kTeletextPid), SizeIs(2));
  EXPECT_EQ(reading.of(kTeletextPid)[0].data[1 + 46 * 3], 0xFF) << "a row of the damaged packet";
  EXPECT_THAT(reading.logger.lines, testing::Contains(HasSubstr("1 packet is missing")));
}

}  // namespace
}  // namespace korr::txsub
