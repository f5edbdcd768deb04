// SPDX-License-Identifier: MIT

// The media presentation description of MPEG-DASH (ISO/IEC 23009-1).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "streaming/hls_playlist.h"
#include "streaming/stream_history.h"

namespace korr::txsub {

/// A subtitle track (5.3.3), the same in all periods.
struct DashTrack {
  unsigned id = 0;
  std::string codecs;    ///< RFC 6381
  std::string language;  ///< BCP 47
  std::string label = {};
  bool forHardOfHearing = false;
  SegmentNames names;
};

/// Segments between two jumps of the clock (5.3.2).
struct DashPeriod {
  std::string id;
  StreamTicks start = 0;               ///< since the presentation's beginning
  StreamTicks presentationOffset = 0;  ///< the segments' ticks at that moment
  StreamTicks firstTicks = 0;          ///< of the first segment that is still listed
  std::uint64_t firstNumber = 1;
  std::vector<StreamTicks> durations = {};
};

/// (5.3.1)
struct DashManifest {
  bool isDynamic = true;
  WallTime beginning = 0;
  WallTime published = 0;
  std::optional<MediaTime> window = {};  ///< nothing: all of it stays
  MediaTime longestSegment = 0;
  std::vector<DashPeriod> periods = {};
  std::vector<DashTrack> tracks = {};
};

DashManifest manifestOf(const StreamHistory& history, std::vector<DashTrack> tracks, bool isEnded,
                        WallTime now);

std::string toXml(const DashManifest& manifest);

/// The AdaptationSet elements of the last period alone, to be pasted into another manifest.
std::string adaptationSets(const DashManifest& manifest);

}  // namespace korr::txsub
