// SPDX-License-Identifier: MIT
#include "sessions/chain_host.h"

#include <exception>

#include "files/output_file.h"

namespace korr::txsub {

ChainHost::ChainHost(const ChainConfiguration& configuration, SubtitleInputType type,
                     FormatBlock format, Wiring wiring)
    : configuration_(configuration),
      type_(type),
      format_(std::move(format)),
      wiring_(std::move(wiring)),
      reporter_(wiring_.monitor, wiring_.pid) {
  guarded([this] { start(); });
}

void ChainHost::push(const InputSample& sample, const SharedSample& shared) {
  guarded([&] {
    checkFormat(sample);
    if (!chain_) start();
    ++past_.samples;
    noteTime(sample);
    chain_->framer().push(shared);
  });
}

// The framers of PES payloads hold a unit until the next begins; it is read only then.
void ChainHost::noteTime(const InputSample& sample) {
  const auto time = sample.times ? std::optional(sample.times->start) : std::nullopt;
  if (type_ == SubtitleInputType::ClosedCaption) {
    reporter_.setTime(time);
    return;
  }
  reporter_.setTime(unitTime_);
  if (sample.sync || !holdsUnit_) unitTime_ = time;
  holdsUnit_ = true;
}

void ChainHost::completeUnit() {
  if (!chain_) return;
  if (holdsUnit_) reporter_.setTime(unitTime_);
  holdsUnit_ = false;
  guarded([&] { chain_->framer().endOfStream(); });
}

void ChainHost::settle(MediaTime until) {
  if (chain_) guarded([&] { chain_->settle(until); });
}

void ChainHost::finish(MediaTime end) {
  if (!chain_) return;
  completeUnit();
  guarded([&] { chain_->finish(end); });
}

// The first block that comes with a sample rebuilds the chain even when it equals the stream's own:
// only blocks of samples are remembered, as in the filter.
void ChainHost::checkFormat(const InputSample& sample) {
  if (!sample.format) return;
  if (type_ != SubtitleInputType::Teletext || *sample.format == sampleFormat_) return;
  past_ = counters();
  chain_.reset();
  holdsUnit_ = false;
  unitTime_.reset();
  sampleFormat_ = *sample.format;
  if (format_) format_ = *sample.format;
}

HostCounters ChainHost::counters() const {
  HostCounters sum = past_;
  if (chain_) sum.chain += chain_->counters();
  return sum;
}

void ChainHost::start() {
  const auto settings =
      encoding::subtitling::chainSettings(configuration_, type_, format_, &reporter_);
  chain_ = wiring_.makeChain(settings, &reporter_);
}

void ChainHost::Reporter::logV(log::Level level, const char* format, std::va_list arguments) {
  monitor_.report(level, place_, util::vformat(format, arguments));
}

template <class Action>
void ChainHost::guarded(Action action) {
  try {
    action();
  } catch (const OutputError&) {
    throw;
  } catch (const std::exception& error) {
    ++past_.errors;
    reporter_.error(error.what());
  }
}

}  // namespace korr::txsub
