// SPDX-License-Identifier: MIT

// The decoder and the reference model, over streams of random commands.
#include "tests/dtvcc/reference_model.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "dtvcc/dtvcc_display_decoder.h"
#include "testkit/encoders/dtvcc_encoder.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

using encoders::DtvccChannel;
using encoders::DtvccCodes;
using test_support::ReferenceModel;

constexpr int kStreams = 10'000;
constexpr MediaTime kPicture = 333'667;

class Screen final : public IDisplayListener {
 public:
  void onDisplay(MediaTime time, Subtitle subtitle) override {
    EXPECT_GE(time, last_);
    last_ = time;
    text = test_support::describe(*subtitle.windowText());
  }

  std::string text;

 private:
  MediaTime last_ = 0;
};

class RandomCodes {
 public:
  explicit RandomCodes(unsigned seed) : random_(seed) {}

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

  // What one picture brings.
  DtvccCodes unit() {
    DtvccCodes codes;
    for (unsigned i = below(24); i > 0; --i) add(codes);
    return codes;
  }

 private:
  void add(DtvccCodes& codes) {
    switch (below(32)) {
      case 0:
        return define(codes);
      case 1:
        return attributes(codes);
      case 2:
        codes.bytes({0x90, below(256), below(256)});
        return;
      case 3:
        codes.bytes({0x91, below(256), below(256), below(256)});
        return;
      case 4:
      case 5:
        codes.locate(below(6), below(12));
        return;
      case 6:
      case 7:
        codes.carriageReturn();
        return;
      case 8:
        return chosen(codes, {0x08, 0x0C, 0x0E, 0x00, 0x03, 0x93});
      case 9:
        codes.bytes({0x88 + below(5), below(256)});
        return;
      case 10:
        codes.bytes({0x80 + below(8)});
        return;
      case 11:
        return timing(codes);
      case 12:
        codes.bytes({0x10, 0x80 + below(32), below(8)});
        return;
      case 13:
        codes.bytes({0x10, 0x20 + 5 * below(3)}).bytes({0x10, below(0x60)});
        return;
      case 14:
        codes.bytes({0x18, below(0xD8), below(0x100) | 0x20});
        return;
      case 15:
        codes.bytes({below(256)});
        return;
      case 16:
      case 17:
        codes.text(" ");
        return;
      default:
        codes.bytes({0x41 + below(26)});
        return;
    }
  }

  void define(DtvccCodes& codes) {
    // Mostly small windows, in which text wraps and scrolls.
    const bool isSmall = below(4) != 0;
    codes.define(below(4), {.visible = below(3) != 0,
                            .priority = below(8),
                            .relative = below(2) != 0,
                            .vertical = below(128),
                            .horizontal = below(256),
                            .anchor = below(10),
                            .rows = 1 + below(isSmall ? 4 : 16),
                            .columns = 1 + below(isSmall ? 10 : 64),
                            .windowStyle = below(8),
                            .penStyle = below(8)});
  }

  void attributes(DtvccCodes& codes) {
    codes.attributes({.fillOpacity = below(4),
                      .fill = below(64),
                      .border = below(8),
                      .borderColour = below(64),
                      .wordWrap = below(2) != 0,
                      .print = below(4),
                      .scroll = below(4),
                      .justify = below(4)});
  }

  void timing(DtvccCodes& codes) {
    if (below(3) != 0) return;
    const unsigned kind = below(8);
    if (kind < 6) {
      codes.delay(below(12));
    } else if (kind == 6) {
      codes.cancelDelay();
    } else {
      codes.reset();
    }
  }

  void chosen(DtvccCodes& codes, std::initializer_list<unsigned> values) {
    codes.bytes({values.begin()[below(static_cast<unsigned>(values.size()))]});
  }

  std::mt19937 random_;
};

void addInBlocks(DtvccChannel& channel, ReferenceModel& reference, const DtvccCodes& codes,
                 MediaTime time) {
  std::span<const std::uint8_t> rest = codes.codes();
  while (!rest.empty()) {
    const auto block = rest.first(std::min(rest.size(), DtvccChannel::kLargestBlock));
    rest = rest.subspan(block.size());
    channel.addBytes(1, block).endPacket();
    reference.block(block, time);
  }
}

TEST(DtvccReference, ShowsTheSameAfterEveryPictureOfRandomStreams) {
  for (unsigned seed = 0; seed < kStreams; ++seed) {
    RandomCodes random(seed);
    Screen screen;
    DtvccDisplayDecoder decoder({.charset = Charset::Utf16, .wholeRows = false}, screen, nullptr);
    ReferenceModel reference;
    DtvccChannel channel;
    MediaTime time = 0;
    for (int unit = 0; unit < 12; ++unit) {
      time += kPicture * (1 + random.below(6));
      reference.wait(time);
      addInBlocks(channel, reference, random.unit(), time);
      decoder.decode(channel.take(), time);
      ASSERT_EQ(screen.text, reference.screen()) << "stream " << seed << ", unit " << unit;
    }
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling::dtvcc
