// SPDX-License-Identifier: MIT
#include "files/caption_file.h"

#include <gmock/gmock.h>

#include <numeric>
#include <string>
#include <vector>

#include "readers/mcc_packet.h"
#include "readers/mcc_reader.h"
#include "readers/scc_reader.h"
#include "testkit/encoders/dtvcc_encoder.h"
#include "testkit/reader_support.h"
#include "testkit/temporary_directory.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using encoding::subtitling::MediaTime;
using test_support::MemorySource;
using test_support::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;
using Pictures = std::vector<std::pair<MediaTime, Bytes>>;

std::string write(CaptionFormat format, const Pictures& pictures, bool dropFrame = true,
                  log::ILogger* logger = nullptr) {
  const TemporaryDirectory directory;
  const auto file = createCaptionFile({.format = format,
                                       .path = directory.file("captions"),
                                       .dropFrame = dropFrame,
                                       .logger = logger});
  for (const auto& [time, triplets] : pictures) file->write(triplets, time);
  file->finish();
  return directory.read("captions");
}

template <class Reader>
Pictures read(const std::string& text) {
  const test_support::Reading<Reader> reading(std::make_unique<MemorySource>(text));
  EXPECT_THAT(reading.logger.lines, testing::IsEmpty());
  Pictures pictures;
  for (const auto& [id, sample] : reading.listener.samples) {
    pictures.emplace_back(sample.times->start - *reading.reader.startTime(0), sample.data);
  }
  return pictures;
}

// Pictures of both fields, digital captions and fill, from `first` on, one frame apart.
Pictures captionsAt(const util::TimeCodeRate& rate, std::uint64_t first) {
  encoders::DtvccChannel channel;
  Pictures pictures;
  for (std::uint64_t frame = first; frame < first + 400; ++frame) {
    if (frame % 50 == 17) continue;  // a picture without captions
    const auto letter = static_cast<std::uint8_t>('A' + frame % 26);
    Bytes triplets = {0xFC, letter, 0x80, 0xFD, 0x80, 0x80, 0xFB, 0x80, 0x80};
    const auto digital = channel.add(1, encoders::DtvccCodes().bytes({letter})).take();
    triplets.insert(triplets.end(), digital.begin(), digital.end());
    for (std::uint64_t i = 0; i < frame % 20; ++i) triplets.insert(triplets.end(), {0xFA, 0, 0});
    pictures.emplace_back(frame * kSecond * rate.denominator / rate.numerator, triplets);
  }
  return pictures;
}

TEST(CaptionFiles, ComeBackEqualFromMccAtEveryRate) {
  struct {
    util::TimeCodeRate rate;
    bool dropFrame;
    const char* header;
  } const kCases[] = {
      {{24000, 1001, 24, false}, true, "Time Code Rate=24\r"},
      {{24, 1, 24, false}, true, "Time Code Rate=24\r"},
      {{25, 1, 25, false}, true, "Time Code Rate=25\r"},
      {{30000, 1001, 30, true}, true, "Time Code Rate=30DF\r"},
      {{30000, 1001, 30, false}, false, "Time Code Rate=30\r"},
      {{30, 1, 30, false}, true, "Time Code Rate=30\r"},
      {{50, 1, 50, false}, true, "Time Code Rate=50\r"},
      {{60000, 1001, 60, true}, true, "Time Code Rate=60DF\r"},
      {{60000, 1001, 60, false}, false, "Time Code Rate=60\r"},
      {{60, 1, 60, false}, true, "Time Code Rate=60\r"},
  };
  for (const auto& [rate, dropFrame, header] : kCases) {
    const auto pictures = captionsAt(rate, 59 * rate.base);  // over a minute's end
    const std::string text = write(CaptionFormat::Mcc, pictures, dropFrame);
    EXPECT_THAT(text, HasSubstr(header));
    EXPECT_EQ(read<MccReader>(text), pictures) << header;
  }
}

// What editors check: both sums, and that the numbers of packets follow one another.
TEST(CaptionFiles, WriteWholeAncillaryPackets) {
  const std::string text = write(CaptionFormat::Mcc, captionsAt({}, 0));
  int number = 0;
  for (auto at = text.find("\n00:"); at != text.npos; at = text.find("\n00:", at + 1), ++number) {
    const auto data = at + std::string_view("\n00:00:00;00\t").size();
    const auto packet = expandMcc(text.substr(data, text.find('\r', data) - data)).value();
    const auto sum = [&packet](std::size_t from) {
      return std::accumulate(packet.begin() + static_cast<std::ptrdiff_t>(from), packet.end() - 1,
                             0) %
             256;
    };
    ASSERT_EQ(sum(3), 0) << "packet_checksum";
    ASSERT_EQ(sum(0), packet.back());
    ASSERT_EQ(packet.at(8) << 8 | packet.at(9), number);
  }
  EXPECT_EQ(number, 392);
}

TEST(CaptionFiles, KeepMoreTripletsThanAPacketHolds) {
  Bytes many;
  for (std::uint8_t i = 0; i < 70; ++i) many.insert(many.end(), {0xFE, i, i});
  Bytes back;
  for (const auto& [time, triplets] : read<MccReader>(write(CaptionFormat::Mcc, {{0, many}}))) {
    EXPECT_EQ(time, 0u);
    back.insert(back.end(), triplets.begin(), triplets.end());
  }
  EXPECT_EQ(back, many);
}

TEST(CaptionFiles, WriteSccAsEditorsDo) {
  const auto at = [](std::uint64_t frame) { return frame * kSecond * 1001 / 30000; };
  const Bytes empty = {0xFC, 0x80, 0x80};
  const Pictures pictures = {{at(0), empty},
                             {at(1799), {0xFC, 0x94, 0x20, 0xFD, 0x80, 0x80}},
                             {at(1800), {0xFC, 0x94, 0x20}},
                             {at(1801), empty},
                             {at(1802), {0xFC, 0xC8, 0xE9, 0xFC, 0x21, 0x80}},
                             {at(1808), {0xFC, 0x94, 0x2C}},
                             {at(1814), {0xFC, 0x94, 0x2C}},
                             {at(1900), {0xF8, 0x94, 0x2F, 0xFC, 0x94, 0x2F}}};
  EXPECT_EQ(write(CaptionFormat::Scc, pictures),
            "Scenarist_SCC V1.0\n\n00:00:00;00\t8080\n\n00:00:59;29\t9420 9420 8080 c8e9 2180 8080 "
            "8080 8080 "
            "8080 942c\n\n00:01:00;16\t942c\n\n"
            "00:01:03;12\t942f\n\n");
  EXPECT_THAT(write(CaptionFormat::Scc, pictures, false), HasSubstr("\n00:00:59:29\t9420 9420"));
  EXPECT_EQ(write(CaptionFormat::Scc, {}), "Scenarist_SCC V1.0\n\n");
  test_support::RecordingLogger logger;
  const Bytes both = {0xFD, 0x15, 0x20, 0xFC, 0x94, 0x20};
  EXPECT_THAT(write(CaptionFormat::Scc, {{0, both}}, true, &logger),
              HasSubstr("00:00:00;00\t9420\n"));
  EXPECT_THAT(logger.lines, ElementsAre(HasSubstr("field 1 only: CC3, CC4 and digital")));
}

TEST(CaptionFiles, ComeBackEqualFromScc) {
  const auto pictures = captionsAt({}, 100 * 30);
  test_support::RecordingLogger logger;
  Pictures pairs;
  for (const auto& [time, triplets] : pictures) {
    pairs.emplace_back(time, Bytes(triplets.begin(), triplets.begin() + 3));
  }
  Pictures back;
  for (auto& picture : read<SccReader>(write(CaptionFormat::Scc, pictures, true, &logger))) {
    if (picture.second[1] != 0x80) back.push_back(std::move(picture));
  }
  EXPECT_EQ(back, pairs);
  EXPECT_THAT(logger.lines, ElementsAre(StartsWith("SCC files hold field 1 only")));
}

TEST(CaptionFiles, ComeBackEqualFromSccOfField2) {
  Pictures pictures;
  for (std::uint64_t frame = 40; frame < 90; ++frame) {
    const auto letter = static_cast<std::uint8_t>('A' + frame % 26);
    const bool isCode = frame % 10 < 2;  // resume caption loading of CC3, twice
    pictures.emplace_back(frame * kSecond * 1001 / 30000,
                          isCode ? Bytes{0xFD, 0x15, 0x20} : Bytes{0xFD, letter, 0x80});
  }
  test_support::RecordingLogger logger;
  auto back = read<SccReader>(write(CaptionFormat::Scc, pictures, true, &logger));
  std::erase_if(back, [](const auto& picture) { return picture.second[1] == 0x80; });
  EXPECT_EQ(back, pictures);
  EXPECT_THAT(logger.lines, testing::IsEmpty());
}

TEST(CaptionFiles, TellTheRateOfRoundedTimesWithPauses) {
  std::vector<MediaTime> times;
  for (std::uint64_t i = 0; i < 100; ++i) {
    if (i % 10 != 3) times.push_back((i * 1001 + 15) / 30 * 10'000);  // milliseconds
  }
  EXPECT_EQ(frameRateOf(times, true), (util::TimeCodeRate{30000, 1001, 30, true}));
  EXPECT_EQ(frameRateOf({}, false), (util::TimeCodeRate{30000, 1001, 30, false}));
}

}  // namespace
}  // namespace korr::txsub
