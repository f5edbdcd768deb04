// SPDX-License-Identifier: MIT
#include "filter/input_pin.h"

#include "filter/media_types.h"
#include "filter/subtitle_converter.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

bool CSubtitleConverterInputPin::accepts(const AM_MEDIA_TYPE& type) const {
  return classifyInput(type).has_value();
}

CMediaType CSubtitleConverterInputPin::proposal() const {
  CMediaType type(&MEDIATYPE_TimedText);
  type.SetSubtype(&MEDIASUBTYPE_TeletextPes);
  return type;
}

void CSubtitleConverterInputPin::intake(IMediaSample* sample) {
  filter_->intake(sample);
}

void CSubtitleConverterInputPin::beginFlush() {
  filter_->beginFlush();
}

void CSubtitleConverterInputPin::endFlush() {
  filter_->endFlush();
}

void CSubtitleConverterInputPin::newSegment(REFERENCE_TIME start, REFERENCE_TIME stop,
                                            double rate) {
  filter_->newSegment(start, stop, rate);
}

void CSubtitleConverterInputPin::disconnected() {
  filter_->forgetFormat();
}

log::ILogger& CSubtitleConverterInputPin::logger() {
  return filter_->logger();
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
