// SPDX-License-Identifier: MIT
#include "dvb_subtitle/dvb_subtitle_parser.h"

#include <optional>
#include <utility>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

void DVBSubtitleParser::parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
                              bool discontinuity) {
  constexpr MediaTime kHistory = 5 * kSecond;

  if (discontinuity) splitter_.reset();
  std::vector<Segment> segments;
  if (size > 0) segments = splitter_.split({data, static_cast<std::size_t>(size)});

  std::optional<SubtitleBitmap> first;
  renderer_.beginPayload();
  for (const Segment& segment : segments) {
    auto page = renderer_.decode(segment, time);
    if (!first) first = std::move(page);
  }
  if (first) history_.store(*std::move(first));
  if (time > kHistory) history_.eraseBefore(time - kHistory);
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
