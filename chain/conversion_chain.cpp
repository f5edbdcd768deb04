// SPDX-License-Identifier: MIT
#include "chain/conversion_chain.h"

#include "chain/framer_factory.h"
#include "chain/parser_factory.h"
#include "chain/writer_factory.h"

namespace korr::encoding::subtitling::inline v2_1 {

namespace {

std::unique_ptr<TimedTextBuilder> createBuilder(IOutputSink& sink,
                                                const ConversionChain::Settings& settings,
                                                log::ILogger* logger, std::uint64_t& droppedPages,
                                                const ConversionChain::WriterFactory& makeWriter) {
  ISubtitleContainer* container = nullptr;
  auto parser = createParser({.inputType = settings.inputType,
                              .page = settings.page,
                              .container = &container,
                              .pageOption = settings.pageOption,
                              .logger = logger,
                              .droppedPages = &droppedPages});
  auto writer = makeWriter(*container);
  const auto segmentDuration = static_cast<std::int64_t>(settings.durationMs * kMillisecond);
  return std::make_unique<TimedTextBuilder>(
      sink, std::move(parser), std::move(writer),
      TimedTextBuilder::Settings{.segmentDuration = segmentDuration,
                                 .isTtml = settings.mode == ConversionMode::Ttml});
}

}  // namespace

ConversionChain::ConversionChain(IOutputSink& sink, const Settings& settings, log::ILogger* logger)
    : ConversionChain(sink, settings, logger, [&settings](ISubtitleContainer& container) {
        return createWriter(
            {.container = container, .mode = settings.mode, .ttmlOption = settings.ttmlOption});
      }) {
}

ConversionChain::ConversionChain(IOutputSink& sink, const Settings& settings, log::ILogger* logger,
                                 const WriterFactory& makeWriter)
    : builder_(createBuilder(sink, settings, logger, droppedPages_, makeWriter)),
      framer_(createFramer(settings.inputType)) {
  framer_->setListener(builder_.get());
}

ChainCounters ConversionChain::counters() const {
  ChainCounters counters = builder_->counters();
  counters.droppedPages = droppedPages_;
  return counters;
}

}  // namespace korr::encoding::subtitling::inline v2_1
