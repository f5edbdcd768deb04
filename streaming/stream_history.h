// SPDX-License-Identifier: MIT

// The segments of a stream as manifests list them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "streaming/segment.h"

namespace korr::txsub {

/// A segment that has been published.
struct PublishedSegment {
  std::uint64_t number = 0;
  StreamTicks startTicks = 0;
  StreamTicks duration = 0;
  bool isDiscontinuous = false;
  WallTime wallTime = 0;         ///< of its start
  StreamTicks offset = 0;        ///< where it is played, from the beginning on; over jumps too
  StreamTicks periodOffset = 0;  ///< the same of the first segment since the last jump

  friend bool operator==(const PublishedSegment&, const PublishedSegment&) = default;
};

/// What is listed, what has left the list and still waits to be removed, and the counts that
/// manifests carry on. Kept in a file beside the segments, so that a run goes on where another was
/// stopped or killed.
class StreamHistory {
 public:
  /// `window`: what stays listed at least; 100 ns, nothing: everything. `target`: that of the
  /// segments.
  StreamHistory(std::optional<MediaTime> window, MediaTime target)
      : window_(window), target_(target) {}

  /// Lists one more segment and takes those off that the window leaves behind.
  void add(const Segment& segment, WallTime wallTime);

  /// The numbers of segments that no player can want any more; forgotten with the call.
  std::vector<std::uint64_t> takeRemovable();

  std::span<const PublishedSegment> listed() const {
    return std::span(segments_).subspan(unlisted_);
  }

  /// Those that left the list and are not removed yet come first.
  std::span<const PublishedSegment> kept() const { return segments_; }

  /// How many discontinuities have left the list with their segments (RFC 8216, 4.3.3.3).
  std::uint64_t discontinuitySequence() const { return discontinuitySequence_; }

  /// That of the first segment ever; what DASH counts its periods from.
  WallTime beginning() const { return beginning_; }

  std::uint64_t nextNumber() const { return segments_.empty() ? 1 : segments_.back().number + 1; }
  std::optional<MediaTime> window() const { return window_; }
  MediaTime target() const { return target_; }

  /// One line of JSON, and back. Throws util::TessaryException for what is no history.
  std::string toJson() const;
  void restore(std::string_view json);

 private:
  MediaTime listedDuration() const;

  std::optional<MediaTime> window_;
  MediaTime target_;
  std::vector<PublishedSegment> segments_;
  std::size_t unlisted_ = 0;  // how many have left the list
  std::uint64_t discontinuitySequence_ = 0;
  WallTime beginning_ = 0;
};

}  // namespace korr::txsub
