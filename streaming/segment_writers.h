// SPDX-License-Identifier: MIT

// What a segment holds, in each format.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "streaming/display_cutter.h"
#include "streaming/mp4_track.h"

namespace korr::txsub {

/// A WebVTT file (RFC 8216, 3.5): cues with the times of the stream's ticks, the map from these to
/// the programme's clock, and the style of the colours that they have.
std::string webVttSegment(const Segment& segment, const std::vector<SegmentCue>& cues);

/// A movie fragment of a codec; `language` in ISO 639-2. A picture that cannot be encoded throws
/// util::TessaryException.
ByteBuffer mp4Segment(Mp4Codec codec, std::string_view language, const Segment& segment,
                      const std::vector<SegmentCue>& cues);

}  // namespace korr::txsub
