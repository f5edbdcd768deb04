// SPDX-License-Identifier: MIT

// The timing rule: which subtitle is shown over which interval.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "chain/chain_counters.h"
#include "framing/nal.h"
#include "model/interfaces.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Is told when to take what a parser shows, and then over which intervals that was shown.
class ITimelineConsumer {
 public:
  virtual ~ITimelineConsumer() = default;

  /// From `time` on the parser's container may show something else: what it shows then is taken.
  /// When this throws, what was taken before stays.
  virtual void take(MediaTime time) = 0;

  /// What was taken last was shown over [start, stop), which is no longer than a segment. The
  /// intervals between two calls of `take` adjoin; after a break in time the next starts later.
  virtual void onShown(MediaTime start, MediaTime stop) = 0;
};

/// Feeds access units to a parser; what it shows is taken when it changes and whenever a segment's
/// duration has passed. Not thread-safe. Exceptions of the parser and the consumer pass through;
/// the next unit goes on where this one stopped.
class Timeline final : public packaging::lib_parse_es::NALListener {
 public:
  struct Settings {
    /// 100 ns; 0 makes every interval one segment.
    std::int64_t segmentDuration = 0;
    /// Whether nothing is shown before a unit of a later time than 0.
    bool startsAfterZero = false;
  };

  /// `parser` and `consumer` are not owned.
  Timeline(ISubtitleParser& parser, ITimelineConsumer& consumer, Settings settings)
      : settings_(settings), parser_(parser), consumer_(consumer) {}

  void onNal(packaging::lib_parse_es::UniqueNAL unit) override;

  /// Does nothing: the interval that has no end yet is not shown at the end of the stream.
  void onEndOfStream() override {}

  /// Shows what was taken last up to `end`, as a unit at that time would.
  void showUntil(MediaTime end);

  /// `units`, `unitBytes` and `untimedUnits`.
  const ChainCounters& counters() const { return counters_; }

 private:
  Settings settings_;
  ISubtitleParser& parser_;
  ITimelineConsumer& consumer_;
  std::optional<MediaTime> shownUntil_;  // the end of the interval covered so far
  ChainCounters counters_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
