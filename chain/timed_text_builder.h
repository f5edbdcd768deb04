// The timing rule: when documents are made and which interval each one covers.
#pragma once

#include <cstdint>
#include <memory>

#include "chain/chain_counters.h"
#include "framing/nal.h"
#include "model/interfaces.h"
#include "model/output_sink.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Feeds access units to a parser and delivers the document of the past interval whenever the
/// subtitle changes or a segment's duration has passed. Not thread-safe. Exceptions of the parser
/// and the writer pass through; the next unit goes on where this one stopped.
class TimedTextBuilder final : public packaging::lib_parse_es::NALListener {
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

  void onNal(packaging::lib_parse_es::UniqueNAL unit) override;

  /// Does nothing: the pending document is not flushed at end of stream.
  void onEndOfStream() override {}

  /// Delivers the pending document up to `end`, as a unit at that time would. For consumers that
  /// keep what the live system drops at its end.
  void flush(MediaTime end);

  const ChainCounters& counters() const { return counters_; }

 private:
  void emitPending(MediaTime end);
  void deliver(MediaTime start, MediaTime stop);
  void probeInitialDocument();
  void convertAt(MediaTime time);

  Settings settings_;
  IOutputSink& sink_;
  std::unique_ptr<ISubtitleParser> parser_;
  std::unique_ptr<ISubtitleConverter> writer_;
  MediaTime lastTime_ = 0;  // the end of the interval covered so far; 0: no document made yet
  ByteBuffer pending_;      // the last converted document, not yet emitted
  bool headerProbed_ = false;
  ChainCounters counters_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
