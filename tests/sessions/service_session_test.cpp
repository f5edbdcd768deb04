// SPDX-License-Identifier: MIT
#include "sessions/service_session.h"

#include <gtest/gtest.h>

#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/teletext_encoder.h"
#include "tests/sessions/silent_monitor.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::DvbEncoder;
using encoding::subtitling::kMillisecond;
using encoding::subtitling::kSecond;

// "start-stop" of each cue, in milliseconds.
using CueTimes = std::vector<std::string>;

class CueTimesOutput final : public ICueOutput {
 public:
  explicit CueTimesOutput(CueTimes& times) : times_(times) {}

  void onCue(const Cue& cue) override {
    times_.push_back(std::to_string(cue.start / kMillisecond) + '-' +
                     std::to_string(cue.stop / kMillisecond));
  }
  void open() override {}
  void flush() override {}
  void commit() override {}

 private:
  CueTimes& times_;
};

using Unit = std::pair<MediaTime, Bytes>;

CueTimes cuesOf(SubtitleInputType type, std::uint32_t page, const std::vector<Unit>& units) {
  CueTimes times;
  SilentMonitor monitor;
  Service service;
  service.type = type;
  ChainConfiguration configuration;
  configuration.page = page;
  CueSession session(service, {.configuration = configuration},
                     std::make_unique<CueTimesOutput>(times), monitor);
  for (const auto& [time, data] : units) {
    InputSample sample;
    sample.data = data;
    sample.times = InputSample::Times{.start = time, .stop = time};
    sample.sync = true;
    session.push(sample, share(sample));
  }
  session.endInput(units.back().first);
  return times;
}

CueTimes picturesOf(const std::vector<Unit>& units) {
  return cuesOf(SubtitleInputType::DvbSubtitle, 0, units);
}

const DvbEncoder::Region kRegion{.id = 1, .fill = true, .width = 9, .height = 9, .fillCode = 1};
const DvbEncoder::Region kOther{.id = 1, .fill = true, .width = 9, .height = 9, .fillCode = 2};

DvbEncoder page(std::uint8_t timeOut) {
  return DvbEncoder().page(DvbEncoder::kAcquisitionPoint, timeOut, {{1, 10, 10}});
}

Bytes wholePage(std::uint8_t timeOut, const DvbEncoder::Region& region = kRegion) {
  return page(timeOut).region(region).bytes();
}

TEST(CueSession, ShowsWhatComesAtTimeZero) {
  const Bytes popOn{0xFC, 0x94, 0x20, 0xFC, 0x94, 0x70, 0xFC, 0xC8, 0xE9, 0xFC, 0x94, 0x2F};
  const Bytes erase{0xFC, 0x94, 0x2C};
  EXPECT_EQ(cuesOf(SubtitleInputType::ClosedCaption, 1, {{0, popOn}, {3 * kSecond, erase}}),
            CueTimes{"0-3000"});

  const auto first = encoders::headerPacket({.page = 0x888});
  const auto next = encoders::headerPacket({.page = 0x8FE});
  const auto row = encoders::rowPacket(0x888, 20, "\x0B\x0BHi\x0A\x0A");
  const std::vector<encoders::TeletextPacket> shown{first, row, next};
  const std::vector<encoders::TeletextPacket> cleared{first, next};
  EXPECT_EQ(cuesOf(SubtitleInputType::Teletext, 0x888,
                   {{0, encoders::teletextDataField(shown)},
                    {3 * kSecond, encoders::teletextDataField(cleared)}}),
            CueTimes{"0-3000"});

  EXPECT_EQ(picturesOf({{0, wholePage(9)}, {3 * kSecond, wholePage(2, kOther)}}),
            (CueTimes{"0-3000", "3000-5000"}));
}

TEST(CueSession, ShowsDisplaySetsThatComeInPartsOfOneTime) {
  const Bytes composition = page(9).bytes();
  const Bytes region = DvbEncoder().region(kOther).bytes();
  EXPECT_EQ(picturesOf({{kSecond, wholePage(9)},
                        {3 * kSecond, composition},
                        {3 * kSecond, region},
                        {3 * kSecond, DvbEncoder().end().bytes()},
                        {5 * kSecond, wholePage(9)}}),
            (CueTimes{"1000-3000", "3000-5000", "5000-14000"}));
  EXPECT_EQ(picturesOf({{0, composition}, {0, region}}), CueTimes{"0-9000"});
  // The second display set of one time takes the place of the first.
  EXPECT_EQ(picturesOf({{kSecond, wholePage(2)}, {kSecond, wholePage(9, kOther)}}),
            CueTimes{"1000-10000"});
}

}  // namespace
}  // namespace korr::txsub
