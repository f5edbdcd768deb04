// SPDX-License-Identifier: MIT
#include "chain/display_chain.h"

#include "chain/decoder_factory.h"
#include "chain/framer_factory.h"
#include "chain/parser_factory.h"
#include "chain/timeline.h"

namespace korr::encoding::subtitling::inline v2_1 {

using packaging::lib_parse_es::UniqueNAL;

/// Takes units and tells a listener what they show.
class DisplayChain::Display : public packaging::lib_parse_es::NALListener {
 public:
  void onEndOfStream() override {}
  virtual void settle(MediaTime) {}
  virtual void finish(MediaTime end) = 0;
  virtual ChainCounters counters() const = 0;
};

/// By a receiver's rules.
class DisplayChain::DecoderDisplay final : public Display {
 public:
  explicit DecoderDisplay(std::unique_ptr<IDisplayDecoder> decoder)
      : decoder_(std::move(decoder)) {}

  void onNal(UniqueNAL unit) override {
    ++counters_.units;
    counters_.unitBytes += unit->payload.size();
    if (!unit->hasTime) {
      ++counters_.untimedUnits;
      return;
    }
    decoder_->decode(unit->payload, unit->startTime);
  }

  void settle(MediaTime until) override { decoder_->settle(until); }
  void finish(MediaTime end) override { decoder_->finish(end); }
  ChainCounters counters() const override { return counters_; }

 private:
  std::unique_ptr<IDisplayDecoder> decoder_;
  ChainCounters counters_;
};

/// By the filter's: the subtitles that its documents are made of, at the times at which they are.
class DisplayChain::ParserDisplay final : public Display, private ITimelineConsumer {
 public:
  ParserDisplay(IDisplayListener& listener, const Settings& settings, log::ILogger* logger)
      : listener_(listener),
        parser_(createParser({.inputType = settings.inputType,
                              .page = settings.page,
                              .container = &container_,
                              .pageOption = settings.pageOption,
                              .dvbPages = settings.dvbPages,
                              .logger = logger,
                              .droppedPages = &droppedPages_})),
        timeline_(
            *parser_, *this,
            {.segmentDuration = static_cast<std::int64_t>(settings.durationMs * kMillisecond)}) {}

  void onNal(UniqueNAL unit) override { timeline_.onNal(std::move(unit)); }
  void finish(MediaTime) override {}

  ChainCounters counters() const override {
    ChainCounters counters = timeline_.counters();
    counters.droppedPages = droppedPages_;
    return counters;
  }

 private:
  void take(MediaTime time) override {
    listener_.onDisplay(time, container_->currentSubtitle(time));
  }
  void onShown(MediaTime, MediaTime) override {}

  IDisplayListener& listener_;
  std::uint64_t droppedPages_ = 0;
  ISubtitleContainer* container_ = nullptr;  // the parser's
  std::unique_ptr<ISubtitleParser> parser_;
  Timeline timeline_;
};

DisplayChain::DisplayChain(IDisplayListener& listener, const Settings& settings,
                           log::ILogger* logger) {
  if (settings.rules == DisplayRules::Filter) {
    display_ = std::make_unique<ParserDisplay>(listener, settings, logger);
  } else {
    display_ =
        std::make_unique<DecoderDisplay>(createDisplayDecoder({.inputType = settings.inputType,
                                                               .page = settings.page,
                                                               .pageOption = settings.pageOption,
                                                               .isAskedFor = settings.isAskedFor,
                                                               .dvbPages = settings.dvbPages,
                                                               .listener = listener,
                                                               .logger = logger}));
  }
  framer_ = createFramer(settings.inputType);
  framer_->setListener(display_.get());
}

DisplayChain::~DisplayChain() = default;

void DisplayChain::settle(MediaTime until) {
  display_->settle(until);
}

void DisplayChain::finish(MediaTime end) {
  display_->finish(end);
}

ChainCounters DisplayChain::counters() const {
  return display_->counters();
}

}  // namespace korr::encoding::subtitling::inline v2_1
