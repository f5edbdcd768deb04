// SPDX-License-Identifier: MIT
#include "sessions/service_session.h"

#include <algorithm>

#include "chain/display_chain.h"
#include "chain/writer_factory.h"

namespace korr::txsub {

namespace {

using encoding::packaging::lib_parse_es::IMediaItem;
using encoding::packaging::lib_parse_es::Result;
using encoding::subtitling::ByteBuffer;
using encoding::subtitling::ConversionChain;
using encoding::subtitling::DisplayChain;
using encoding::subtitling::ISubtitleContainer;
using encoding::subtitling::ISubtitleConverter;

class SampleItem final : public IMediaItem {
 public:
  explicit SampleItem(const InputSample& sample) : sample_(sample) {}

  std::int32_t length() const override { return static_cast<std::int32_t>(sample_.data.size()); }

  Result payload(const std::uint8_t*& data) const override {
    data = sample_.data.data();
    return encoding::packaging::lib_parse_es::kOk;
  }

  std::optional<Times> times() const override {
    if (!sample_.times) return std::nullopt;
    return Times{.start = sample_.times->start, .stop = sample_.times->stop};
  }

  bool startFlag() const override { return sample_.sync; }
  bool secondFlag() const override { return sample_.discontinuity; }

 private:
  InputSample sample_;
};

// Passes a container's answers on and notes whether any had something to see.
class WatchedContainer final : public ISubtitleContainer {
 public:
  WatchedContainer(ISubtitleContainer& container, bool& hasShown)
      : container_(container), hasShown_(hasShown) {}

  encoding::subtitling::Subtitle currentSubtitle(MediaTime time) override {
    auto subtitle = container_.currentSubtitle(time);
    if (!isEmpty(subtitle)) hasShown_ = true;
    return subtitle;
  }

 private:
  ISubtitleContainer& container_;
  bool& hasShown_;
};

}  // namespace

SharedSample share(const InputSample& sample) {
  return std::make_shared<const SampleItem>(sample);
}

CueSession::CueSession(const Service& service, const Settings& settings,
                       std::unique_ptr<ICueOutput> output, ISessionMonitor& monitor)
    : ServiceSession(service),
      output_(std::move(output)),
      recorder_(*output_, settings.configuration.durationMs * encoding::subtitling::kMillisecond),
      host_(settings.configuration, service.type, settings.format,
            {.makeChain =
                 [this, settings](const ChainHost::ChainSettings& chain, log::ILogger* logger) {
                   return makeDisplayChain(display(settings.rules), this->service(), settings,
                                           chain, logger);
                 },
             .monitor = monitor,
             .pid = service.pid}) {
}

std::unique_ptr<DisplayChain> makeDisplayChain(encoding::subtitling::IDisplayListener& listener,
                                               const Service& service,
                                               const CueSession::Settings& settings,
                                               const ChainHost::ChainSettings& chain,
                                               log::ILogger* logger) {
  return std::make_unique<DisplayChain>(
      listener,
      DisplayChain::Settings{.rules = settings.rules,
                             .inputType = chain.inputType,
                             .page = chain.page,
                             .pageOption = chain.pageOption,
                             .isAskedFor = settings.isAskedFor || service.isDeclared,
                             .dvbPages = service.dvbPages,
                             .durationMs = chain.durationMs},
      logger);
}

// By the filter's rules captions are shown row by row; there is nothing that grows.
encoding::subtitling::IDisplayListener& CueSession::display(DisplayRules rules) {
  if (rules == DisplayRules::Filter) return recorder_;
  if (!rows_) rows_.emplace(recorder_, GrowingRows::Output::File);
  return *rows_;
}

void CueSession::push(const InputSample& sample, const SharedSample& shared) {
  if (sample.times) lastTime_ = std::max(lastTime_, sample.times->start);
  host_.push(sample, shared);
}

void CueSession::endInput(MediaTime end) {
  end = std::max(end, lastTime_);
  host_.finish(end);
  if (rows_) rows_->finish();
  recorder_.finish(end);
}

// The mode's writer over a watched container.
class SampleSession::WatchedWriter final : public ISubtitleConverter {
 public:
  WatchedWriter(ISubtitleContainer& container, bool& hasShown,
                const ChainConfiguration& configuration)
      : container_(container, hasShown),
        writer_(encoding::subtitling::createWriter({.container = container_,
                                                    .mode = configuration.mode,
                                                    .ttmlOption = configuration.ttmlOption})) {}

  void convert(ByteBuffer& out, MediaTime time) override { writer_->convert(out, time); }
  void initialDocument(ByteBuffer& out) override { writer_->initialDocument(out); }

 private:
  WatchedContainer container_;
  std::unique_ptr<ISubtitleConverter> writer_;
};

SampleSession::SampleSession(const Service& service, const ChainConfiguration& configuration,
                             FormatBlock format, std::string path, bool isCertain,
                             ISessionMonitor& monitor)
    : ServiceSession(service),
      path_(std::move(path)),
      hasShown_(isCertain),
      host_(configuration, service.type, std::move(format),
            {.makeChain =
                 [this, configuration](const ChainHost::ChainSettings& settings,
                                       log::ILogger* logger) {
                   return std::make_unique<ConversionChain>(
                       recorder_, settings, logger, [&](ISubtitleContainer& container) {
                         return std::make_unique<WatchedWriter>(container, hasShown_,
                                                                configuration);
                       });
                 },
             .monitor = monitor,
             .pid = service.pid}) {
}

}  // namespace korr::txsub
