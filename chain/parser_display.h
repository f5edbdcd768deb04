// What the filter's parsers show over time.
#pragma once

#include <memory>

#include "chain/timeline.h"
#include "model/display.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Runs a parser by the timing rule and tells a listener what it shows: the subtitles that
/// documents are made of, at the times at which they are made.
class ParserDisplay final : public packaging::lib_parse_es::NALListener, private ITimelineConsumer {
 public:
  /// `container` is the parser's; `listener` is not owned. `segmentDuration` in 100 ns.
  ParserDisplay(std::unique_ptr<ISubtitleParser> parser, ISubtitleContainer& container,
                std::int64_t segmentDuration, IDisplayListener& listener)
      : parser_(std::move(parser)),
        container_(container),
        listener_(listener),
        timeline_(*parser_, *this, {.segmentDuration = segmentDuration}) {}

  void onNal(packaging::lib_parse_es::UniqueNAL unit) override { timeline_.onNal(std::move(unit)); }
  void onEndOfStream() override {}

  ChainCounters counters() const { return timeline_.counters(); }

 private:
  void take(MediaTime time) override {
    listener_.onDisplay(time, container_.currentSubtitle(time));
  }
  void onShown(MediaTime, MediaTime) override {}

  std::unique_ptr<ISubtitleParser> parser_;
  ISubtitleContainer& container_;
  IDisplayListener& listener_;
  Timeline timeline_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
