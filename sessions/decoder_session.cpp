// SPDX-License-Identifier: MIT
#include "sessions/decoder_session.h"

#include <algorithm>

#include "disc_subtitle/dvd_display_decoder.h"
#include "disc_subtitle/pgs_display_decoder.h"
#include "dtvcc/dtvcc_display_decoder.h"

namespace korr::txsub {

namespace disc = encoding::subtitling::disc;
using encoding::subtitling::IDisplayDecoder;
using encoding::subtitling::IDisplayListener;

bool hasDecoderOfItsOwn(const Service& service) {
  return digitalService(service) || service.pictures != PictureSystem::Dvb;
}

std::unique_ptr<IDisplayDecoder> createDecoder(const Service& service, bool wholeRows,
                                               IDisplayListener& listener, log::ILogger& logger) {
  if (service.pictures == PictureSystem::Pgs) {
    return std::make_unique<disc::PgsDisplayDecoder>(listener, &logger);
  }
  if (service.pictures == PictureSystem::Dvd) {
    const auto setup = disc::parseDvdSetup(service.pictureSetup);
    return std::make_unique<disc::DvdDisplayDecoder>(setup, listener, &logger);
  }
  namespace dtvcc = encoding::subtitling::dtvcc;
  return std::make_unique<dtvcc::DtvccDisplayDecoder>(
      dtvcc::DtvccOptions{.service = digitalService(service).value_or(1),
                          .charset = service.charset,
                          .isWide = service.isWide,
                          .wholeRows = wholeRows},
      listener, &logger);
}

void PlacedLogger::logV(log::Level level, const char* format, std::va_list arguments) {
  monitor_.report(level, place_, util::vformat(format, arguments));
}

DecoderSession::DecoderSession(const Service& service, MediaTime segment,
                               std::unique_ptr<ICueOutput> output, ISessionMonitor& monitor)
    : ServiceSession(service),
      output_(std::move(output)),
      recorder_(*output_, segment),
      logger_(monitor, service.pid),
      decoder_(createDecoder(service, true, recorder_, logger_)) {
}

void DecoderSession::push(const InputSample& sample, const SharedSample&) {
  if (!sample.times) return;
  lastTime_ = std::max(lastTime_, sample.times->start);
  logger_.setTime(sample.times->start);
  decoder_->decode(sample.data, sample.times->start);
  ++counters_.samples;
}

void DecoderSession::endInput(MediaTime end) {
  end = std::max(end, lastTime_);
  decoder_->finish(end);
  recorder_.finish(end);
}

}  // namespace korr::txsub
