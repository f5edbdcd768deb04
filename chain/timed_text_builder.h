// SPDX-License-Identifier: MIT

// The documents of a chain: made when something else is shown, delivered once it is known until
// when.
#pragma once

#include <cstdint>
#include <memory>

#include "chain/chain_counters.h"
#include "chain/timeline.h"
#include "framing/nal.h"
#include "model/interfaces.h"
#include "model/output_sink.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Feeds access units to a parser and delivers the document of the past interval whenever the
/// subtitle changes or a segment's duration has passed. Not thread-safe. Exceptions of the parser
/// and the writer pass through; the next unit goes on where this one stopped.
class TimedTextBuilder final : public packaging::lib_parse_es::NALListener,
                               private ITimelineConsumer {
 public:
  struct Settings {
    /// 100 ns; 0 delivers every interval as one segment.
    std::int64_t segmentDuration = 0;
    /// Whether the writer's initial document is probed.
    bool isTtml = false;
  };

  /// `sink` is not owned. `writer` reads from the container of `parser`.
  TimedTextBuilder(IOutputSink& sink, std::unique_ptr<ISubtitleParser> parser,
                   std::unique_ptr<ISubtitleConverter> writer, Settings settings);

  void onNal(packaging::lib_parse_es::UniqueNAL unit) override { timeline_.onNal(std::move(unit)); }

  /// Does nothing: the pending document is not flushed at end of stream.
  void onEndOfStream() override {}

  ChainCounters counters() const;

 private:
  void take(MediaTime time) override;
  void onShown(MediaTime start, MediaTime stop) override;
  void probeInitialDocument();
  void deliver(MediaTime start, MediaTime stop);

  IOutputSink& sink_;
  std::unique_ptr<ISubtitleParser> parser_;
  std::unique_ptr<ISubtitleConverter> writer_;
  Timeline timeline_;
  ByteBuffer pending_;    // the last converted document, not yet delivered
  bool isInitialProbed_;  // or never is
  bool isProbeDue_ = false;
  ChainCounters delivered_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
