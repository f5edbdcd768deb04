#include "chain/display_chain.h"

#include "chain/framer_factory.h"
#include "chain/parser_factory.h"

namespace korr::encoding::subtitling::inline v2_1 {

DisplayChain::DisplayChain(IDisplayListener& listener, const Settings& settings,
                           log::ILogger* logger) {
  ISubtitleContainer* container = nullptr;
  auto parser = createParser({.inputType = settings.inputType,
                              .page = settings.page,
                              .container = &container,
                              .pageOption = settings.pageOption,
                              .dvbPages = settings.dvbPages,
                              .logger = logger,
                              .droppedPages = &droppedPages_});
  display_ = std::make_unique<ParserDisplay>(
      std::move(parser), *container, static_cast<std::int64_t>(settings.durationMs * kMillisecond),
      listener);
  framer_ = createFramer(settings.inputType);
  framer_->setListener(display_.get());
}

ChainCounters DisplayChain::counters() const {
  ChainCounters counters = display_->counters();
  counters.droppedPages = droppedPages_;
  return counters;
}

}  // namespace korr::encoding::subtitling::inline v2_1
