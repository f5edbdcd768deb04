#include "readers/mpegts/ts_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "readers/mpegts/dvb_text.h"
#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/encoders/video_builder.h"
#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::join;
using encoders::Pes;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;
using encoding::subtitling::kSecond;
using test_support::MemorySource;
using test_support::RecordingListener;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pointwise;
using testing::SizeIs;

constexpr std::uint16_t kTeletextPid = 0x34;
constexpr std::uint16_t kDvbPid = 0x35;
constexpr std::uint16_t kVideoPid = 0x100;
constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;
constexpr std::uint64_t kTicks = 90'000;  // a second

const Bytes kTeletextDescriptor{0x56, 5, 's', 'w', 'e', 0x10, 0x88};
const Bytes kSubtitlingDescriptor{0x59, 8, 'f', 'r', 'a', 0x10, 0, 1, 0, 1};

TsProgram program() {
  return {.pcrPid = kVideoPid,
          .streams = {{.pid = kVideoPid, .type = TsStream::kH264},
                      {.pid = kTeletextPid, .descriptors = kTeletextDescriptor},
                      {.pid = kDvbPid, .descriptors = kSubtitlingDescriptor}}};
}

/// A teletext data field of `units` units, each byte of them `mark`.
Bytes teletextField(std::size_t units, std::uint8_t mark) {
  Bytes field{0x10};
  for (std::size_t i = 0; i < units; ++i) {
    field.insert(field.end(), {0x03, 0x2C});
    field.resize(field.size() + 44, mark);
  }
  return field;
}

/// Its PES packet, which fills whole transport packets (EN 300 472, 4.1).
Bytes teletextPes(std::optional<std::uint64_t> pts, std::uint8_t mark = 'a',
                  std::size_t packets = 2) {
  return pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts, .headerDataLength = 0x24},
                   teletextField(packets * 4 - 1, mark));
}

Bytes dvbField(std::size_t segmentBytes) {
  return encoders::DvbEncoder().segment(0x13, Bytes(segmentBytes, 'd')).bytes();
}

Bytes dvbPes(std::uint64_t pts, const Bytes& field) {
  return pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts}, field);
}

Bytes videoPes(std::uint64_t pts, std::string_view text) {
  return pesPacket(
      {.pts = pts, .unbounded = true},
      encoders::encode({.codec = VideoCodec::H264, .triplets = encoders::textTriplets(text)}));
}

/// The tables of `program`, and its clock at 0.
TsBuilder beginning() {
  return TsBuilder().tables(program()).pcr(kVideoPid, 0);
}

struct Reading : test_support::Reading<TsReader> {
  explicit Reading(const Bytes& recording, ReaderOptions options = {}, std::size_t most = SIZE_MAX)
      : test_support::Reading<TsReader>(std::make_unique<MemorySource>(recording, most), options) {}

  /// The samples of one PID.
  std::vector<InputSample> of(std::uint32_t pid) const {
    std::vector<InputSample> samples;
    for (const auto& [id, sample] : listener.samples) {
      if ((id & 0xFFFF) == pid) samples.push_back(sample);
    }
    return samples;
  }
  std::vector<double> secondsOf(std::uint32_t pid) const {
    std::vector<double> times;
    for (const auto& sample : of(pid)) times.push_back(double(sample.times->start) / kSecond);
    return times;
  }
};

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
      EXPECT_TRUE(looksLikeTransportStream(recording));
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

TEST(TsReader, TimeGoesOnOverTheWrapOfTheClock) {
  TsBuilder stream = TsBuilder().tables(program());
  for (std::uint64_t i = 0; i < 4; ++i) {
    const std::uint64_t now = kWrap - kTicks + i * kTicks;
    stream.pcr(kVideoPid, now % kWrap);
    stream.pes(kTeletextPid, teletextPes((now + kTicks / 2) % kWrap));
  }
  const Reading reading(stream.bytes());
  const double wrap = static_cast<double>(kWrap) / kTicks;
  EXPECT_THAT(reading.secondsOf(kTeletextPid),
              Pointwise(DoubleNear(1e-6), {wrap - 0.5, wrap + 0.5, wrap + 1.5, wrap + 2.5}));
}

TEST(TsReader, TimeGoesOnOverASplice) {
  TsBuilder stream = TsBuilder().tables(program());
  const auto second = [&](std::uint64_t base, bool discontinuity) {
    for (std::uint64_t i = 0; i < 10; ++i) {
      stream.pcr(kVideoPid, base + i * kTicks / 10, discontinuity && i == 0);
    }
    stream.pes(kTeletextPid, teletextPes(base + kTicks));
  };
  second(100 * kTicks, false);
  second(5 * kTicks, true);        // backwards
  second(80'000 * kTicks, false);  // forwards, and not announced
  second(80'001 * kTicks, false);
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(101, 102, 103, 104));
}

TEST(TsReader, AWrongTeletextTimeIsReplacedByThePcr) {
  TsBuilder stream = TsBuilder().tables(program());
  stream.pcr(kVideoPid, 100 * kTicks).pes(kTeletextPid, teletextPes(109 * kTicks));
  stream.pcr(kVideoPid, 101 * kTicks).pes(kTeletextPid, teletextPes(112 * kTicks));
  stream.pcr(kVideoPid, 102 * kTicks).pes(kTeletextPid, teletextPes({}));
  stream.pcr(kVideoPid, 103 * kTicks).pes(kTeletextPid, teletextPes(40'000 * kTicks));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(109, 101, 102, 103));
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("PCR")));
}

TEST(TsReader, AClockThatStopsIsCarriedOnByThePictures) {
  TsBuilder stream = TsBuilder().tables(program());
  for (std::uint64_t i = 0; i < 60; ++i) {
    if (i < 5 || i >= 50) stream.pcr(kVideoPid, i * kTicks);
    stream.pes(kVideoPid, videoPes((i + 1) * kTicks, "ab"));
    if (i % 20 == 19) stream.pes(kTeletextPid, teletextPes((i + 1) * kTicks));
  }
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(20, 40, 60));
  EXPECT_EQ(reading.reader.endTime(1), 60 * kSecond);
}

TEST(TsReader, TimesAreEstimatedWhereThereAreNone) {
  TsBuilder stream;
  for (int i = 0; i < 3; ++i) stream.pes(kTeletextPid, teletextPes({}));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(0, 0.04, 0.08));
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("estimated")));
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
  stream.pes(kDvbPid, dvbPes(1 * kTicks, dvbField(1000)));
  Bytes torn = TsBuilder().pes(kDvbPid, dvbPes(2 * kTicks, dvbField(1000))).take();
  torn.erase(torn.end() - 2 * TsBuilder::kPacketBytes, torn.end());
  stream.raw(torn);
  stream.pes(kDvbPid, dvbPes(3 * kTicks, dvbField(1000)));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kDvbPid), ElementsAre(1, 3));
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

TEST(TsReader, EveryProgramHasItsOwnStartAndEnd) {
  TsBuilder stream;
  const TsProgram first{.pcrPid = 0x100, .streams = {{.pid = 0x100, .type = TsStream::kH264}}};
  TsProgram second = first;
  second.number = 2;
  second.pmtPid = 0x1001;
  second.pcrPid = second.streams[0].pid = 0x200;
  stream.pat(std::array{first, second}).pmt(first).pmt(second);
  stream.pcr(0x100, 9 * kTicks).pes(0x100, videoPes(10 * kTicks, "ab"));
  stream.pcr(0x200, 4999 * kTicks).pes(0x200, videoPes(5000 * kTicks, "cd"));
  const Reading reading(stream.bytes());
  EXPECT_EQ(reading.reader.startTime(1), 10 * kSecond);
  EXPECT_EQ(reading.reader.endTime(1), 10 * kSecond);
  EXPECT_EQ(reading.reader.startTime(2), 5000 * kSecond);
  EXPECT_EQ(reading.reader.startTime(3), std::nullopt);
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

TEST(DvbText, ReadsTheTablesThatNamesComeIn) {
  const auto read = [](std::string_view text) {
    return dvbTextToUtf8({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  };
  using namespace std::string_view_literals;
  EXPECT_EQ(read(""), "");
  EXPECT_EQ(read("\x86RTL\x87"), "RTL") << "emphasis is left out";
  EXPECT_EQ(read("F\xC8ur S\xCFt \xE1 \xA4"), "Für Sť Æ €");
  EXPECT_EQ(read("\x01\xBF\xD5\xE0\xD2\xEB\xD9"), "Первый");
  EXPECT_EQ(read("\x10\x00\x01\xC5rs"sv), "Års");
  EXPECT_EQ(read("\x11\x00T\x00V\x20\xAC"sv), "TV€");
  EXPECT_EQ(read("\x15Čt"), "Čt");
  EXPECT_EQ(read("\x05\xFF!"), "�!") << "a table that is not read";
}

}  // namespace
}  // namespace korr::txsub
