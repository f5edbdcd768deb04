// SPDX-License-Identifier: MIT

// Any bytes as DVB subtitles: read as a data field as they are, and, so that more of them get past
// the splitter, as the bodies of segments. Whatever is shown has the size that it says.
#include <cstdlib>

#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "dvb_subtitle/errors.h"
#include "testkit/encoders/dvb_encoder.h"

namespace {

using korr::encoders::Bytes;
using korr::encoders::DvbEncoder;
using korr::encoding::subtitling::MediaTime;
using namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle;

void feed(DVBSubtitleParser& parser, const Bytes& field, MediaTime time, bool discontinuity) {
  try {
    parser.parse(field.data(), static_cast<std::int64_t>(field.size()), time, discontinuity);
  } catch (const DataFieldError&) {
  }
  const auto subtitle = parser.currentSubtitle(time);
  const auto& bitmap = *subtitle.bitmap();
  const auto rows = bitmap.pixels->paintedRows();
  if (bitmap.pixels->size() != std::size_t{bitmap.width} * bitmap.height * 4 ||
      rows.end > bitmap.height) {
    std::abort();
  }
}

// Two bytes choose type and length of each segment; the first is always a small display, so that
// painting is what takes the time.
Bytes asSegments(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint8_t kTypes[] = {0x10, 0x11, 0x12, 0x13, 0x80, 0x13, 0x11, 0x14};
  DvbEncoder field;
  field.display(64, 32);
  while (size >= 2) {
    const std::uint8_t type = kTypes[data[0] % std::size(kTypes)];
    const std::size_t length = std::min<std::size_t>(data[1], size - 2);
    field.segment(type, Bytes(data + 2, data + 2 + length));
    data += 2 + length;
    size -= 2 + length;
  }
  return field.bytes();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Bytes field(data, data + size);
  DVBSubtitleParser parser(nullptr);
  feed(parser, field, 1000, true);
  feed(parser, field, 2000, false);
  feed(parser, asSegments(data, size), 3000, true);
  feed(parser, field, 4000, true);
  return 0;
}
