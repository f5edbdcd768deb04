// SPDX-License-Identifier: MIT

// Any bytes as DVB subtitles, read as a receiver does: as a data field as they are, and as the
// bodies of segments. Displays come in the order of time, and what is shown has the size that it
// says.
#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "dvb_subtitle/dvb_display_decoder.h"
#include "testkit/encoders/dvb_encoder.h"

namespace {

using korr::encoders::Bytes;
using korr::encoders::DvbEncoder;
using namespace korr::encoding::subtitling;
using dvb::lib_dvb_subtitle::DvbDisplayDecoder;

class Checker final : public IDisplayListener {
 public:
  void onDisplay(MediaTime time, Subtitle subtitle) override {
    const SubtitleBitmap& bitmap = *subtitle.bitmap();
    const auto rows = bitmap.pixels->paintedRows();
    if (time < last_ || bitmap.pixels->size() != std::size_t{bitmap.width} * bitmap.height * 4 ||
        rows.end > bitmap.height || (bitmap.visible && bitmap.end < time)) {
      std::abort();
    }
    last_ = time;
  }

 private:
  MediaTime last_ = 0;
};

// Two bytes choose type, page and length of each segment; the first is always a small display, so
// that painting is what takes the time.
Bytes asSegments(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint8_t kTypes[] = {0x10, 0x11, 0x12, 0x13, 0x80, 0x13, 0x11, 0x14};
  DvbEncoder field;
  field.display(64, 32);
  while (size >= 2) {
    const std::uint8_t type = kTypes[data[0] % std::size(kTypes)];
    const std::size_t length = std::min<std::size_t>(data[1], size - 2);
    field.ofPage(data[0] < 0xE0 ? 1 : 2).segment(type, Bytes(data + 2, data + 2 + length));
    data += 2 + length;
    size -= 2 + length;
  }
  return field.bytes();
}

void decodeAll(std::optional<DvbPages> pages, const Bytes& field, const Bytes& segments) {
  Checker checker;
  DvbDisplayDecoder decoder(pages, checker, nullptr);
  decoder.decode(field, kSecond);
  decoder.decode(segments, 2 * kSecond);
  decoder.decode(segments, 2 * kSecond);
  decoder.decode(field, 9 * kSecond);
  decoder.decode(segments, 10 * kSecond);
  decoder.finish(11 * kSecond);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Bytes field(data, data + size);
  const Bytes segments = asSegments(data, size);
  decodeAll({}, field, segments);
  decodeAll(DvbPages{.composition = 1, .ancillary = 2}, field, segments);
  return 0;
}
