// SPDX-License-Identifier: MIT

// Any bytes as digital captions: as cc_data triplets as they are, and, so that more of them get
// past the packets, as the codes of a service. What is shown comes in the order of time and stays
// within the size of its windows.
#include <algorithm>
#include <cstdlib>
#include <span>

#include "dtvcc/dtvcc_display_decoder.h"
#include "testkit/encoders/dtvcc_encoder.h"

namespace {

using namespace korr::encoding::subtitling;
using korr::encoders::DtvccChannel;

class Screen final : public IDisplayListener {
 public:
  void onDisplay(MediaTime time, Subtitle subtitle) override {
    if (time < last_ || !subtitle.windowText()) std::abort();
    last_ = time;
    for (const auto& window : subtitle.windowText()->windows) check(*subtitle.windowText(), window);
  }

 private:
  static void check(const WindowText& text, const WindowText::Window& window) {
    const auto area = areaOf(text, window);
    if (area.left < 0 || area.top < 0) std::abort();
    std::uint32_t nextRow = 0;
    for (const auto& row : window.rows) {
      if (row.number < nextRow || row.number >= window.rowCount || row.runs.empty()) std::abort();
      nextRow = row.number + 1;
      std::size_t nextColumn = 0;
      for (const auto& run : row.runs) {
        if (run.column < nextColumn || run.glyphs.empty()) std::abort();
        nextColumn = run.column + run.glyphs.size();
      }
      if (nextColumn > 64) std::abort();
    }
  }

  MediaTime last_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span bytes(data, size);
  if (bytes.empty()) return 0;
  const bool areCodes = (bytes[0] & 1) != 0;
  const dtvcc::DtvccOptions options{.service = 1,
                                    .charset = static_cast<dtvcc::Charset>(bytes[0] >> 1 & 3),
                                    .isWide = (bytes[0] & 8) != 0,
                                    .wholeRows = (bytes[0] & 16) != 0};
  bytes = bytes.subspan(1);

  Screen screen;
  dtvcc::DtvccDisplayDecoder decoder(options, screen, nullptr);
  DtvccChannel channel;
  MediaTime time = 0;
  while (!bytes.empty()) {
    const auto unit = bytes.subspan(1, std::min<std::size_t>(bytes[0] & 0x7F, bytes.size() - 1));
    time += (bytes[0] >> 7) * kSecond + 33 * kMillisecond;
    if (areCodes) {
      decoder.decode(channel.addBytes(1, unit).take(), time);
    } else {
      decoder.decode(unit, time);
    }
    bytes = bytes.subspan(1 + unit.size());
  }
  decoder.finish(time);
  return 0;
}
