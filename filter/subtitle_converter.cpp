// SPDX-License-Identifier: MIT
#include "filter/subtitle_converter.h"

#include "filter/media_sample_item.h"
#include "filter/media_types.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

using encoding::subtitling::ChainConfiguration;
using encoding::subtitling::ConversionChain;
using log::Level;

namespace {

/// Frees a media type that came in COM task memory.
struct MediaTypeDeleter {
  void operator()(AM_MEDIA_TYPE* type) const { DeleteMediaType(type); }
};

std::span<const std::uint8_t> formatOf(const AM_MEDIA_TYPE& type) {
  return {type.pbFormat, type.pbFormat ? type.cbFormat : 0};
}

}  // namespace

CUnknown* CALLBACK CSubtitleConverter::CreateInstance(IUnknown* outer, HRESULT* result) {
  log::DiscardingLogger nobody;  // the host had no chance to set one
  CSubtitleConverter* created = nullptr;
  const HRESULT made = atComBoundary(nobody, [&] {
    created = new CSubtitleConverter(outer, result);
    return S_OK;
  });
  if (FAILED(made)) *result = made;
  return created;
}

CSubtitleConverter::CSubtitleConverter(IUnknown* outer, HRESULT* result)
    : CBaseFilter(kName, outer, &filterLock_, CLSID_TXSubtitleConverter),
      inputPin_(std::make_unique<CTessaryInputPin<CSubtitleConverterInputPin>>(
          this, &filterLock_, result, std::make_shared<CSubtitleConverterInputPin>(this))),
      outputPin_(std::make_unique<CSubtitleConverterOutputPin>(this, result)),
      outputSink_(std::make_unique<UpStreamPin>(outputPin_.get())),
      configuration_(std::make_shared<const ChainConfiguration>()),
      worker_(queue_.semaphore(), [this] { processNext(); }) {
}

HRESULT CSubtitleConverter::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid == IID_ISubtitleConverterConfig) {
    return GetInterface(static_cast<ISubtitleConverterConfig*>(this), object);
  }
  if (iid == IID_ISubtitleConverterLogging) {
    return GetInterface(static_cast<ISubtitleConverterLogging*>(this), object);
  }
  return CBaseFilter::NonDelegatingQueryInterface(iid, object);
}

HRESULT CSubtitleConverter::SetLogger(mqs_subtitle_converter::ILogger* logger) {
  logger_.setTarget(logger);
  return S_OK;
}

HRESULT CSubtitleConverter::SetLogSink(ISubtitleConverterLogSink* sink) {
  logger_.setSink(sink);
  return S_OK;
}

HRESULT CSubtitleConverter::SetOpaqueValue(std::uint64_t value) {
  opaqueValue_ = value;
  return S_OK;
}

HRESULT CSubtitleConverter::SetConfiguration(std::uint32_t mode, std::uint32_t page,
                                             std::uint32_t durationMs, const char* language,
                                             std::uint8_t hearingImpaired, std::uint32_t pageOption,
                                             std::uint8_t ttmlOption) {
  return atComBoundary(logger_, [&] {
    configuration_ = std::make_shared<const ChainConfiguration>(
        ChainConfiguration{.mode = static_cast<encoding::subtitling::ConversionMode>(mode),
                           .page = page,
                           .durationMs = durationMs,
                           .language = language ? language : "",
                           .hearingImpaired = hearingImpaired != 0,
                           .pageOption = pageOption,
                           .ttmlOption = ttmlOption != 0});
    outputPin_->IncrementTypeVersion();
    return S_OK;
  });
}

CBasePin* CSubtitleConverter::GetPin(int index) {
  if (index == 0) return inputPin_.get();
  return index == 1 ? outputPin_.get() : nullptr;
}

// What fails in stopping (an allocator that does not decommit, say) leaves the filter stopped all
// the same, so all that is left of the stream goes in any case.
HRESULT CSubtitleConverter::Stop() {
  return atComBoundary(logger_, [this] {
    // Decommits the output's allocator, so a worker that waits for a buffer goes on.
    const HRESULT result = CBaseFilter::Stop();
    outputSink_->setFlushing(true);
    queue_.outdate();  // or the worker would build a new chain for what is left of it
    destroyChain();
    queue_.drain();
    return FAILED(result) ? result : S_OK;
  });
}

HRESULT CSubtitleConverter::Pause() {
  return atComBoundary(logger_, [this] {
    const bool wasStopped = IsStopped();
    const HRESULT result = CBaseFilter::Pause();
    if (FAILED(result) || !wasStopped) return result;
    outputSink_->setFlushing(false);
    try {
      const CAutoLock lock(&streamLock_);
      tellMissedSegment();
      const HRESULT started = startIfNeeded();
      return FAILED(started) ? started : S_OK;
    } catch (const std::exception& error) {
      // The graph runs without output; every later sample tries again.
      log::write(&logger_, Level::Error, "Error: %s", error.what());
      return S_OK;
    }
  });
}

void CSubtitleConverter::intake(IMediaSample* sample) {
  const CAutoLock lock(&filterLock_);  // against a stop in between
  if (!IsStopped()) queue_.push({.sample = sample, .segment = nullptr});
}

void CSubtitleConverter::newSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  const CAutoLock lock(&filterLock_);  // as above
  lastSegment_ = {.start = start, .stop = stop, .rate = rate, .number = lastSegment_.number + 1};
  if (IsStopped()) return;
  queue_.push({.sample = nullptr, .segment = std::make_unique<const Segment>(lastSegment_)});
}

void CSubtitleConverter::forgetFormat() {
  const CAutoLock lock(&streamLock_);
  teletextFormat_.clear();
}

void CSubtitleConverter::beginFlush() {
  outputSink_->setFlushing(true);
  queue_.outdate();
  queue_.drain();
  outputPin_->endWaits();
  outputPin_->DeliverBeginFlush();
}

void CSubtitleConverter::endFlush() {
  // A sample may have passed the pin before the flush and been queued after it began.
  queue_.outdate();
  destroyChain();
  queue_.drain();
  outputPin_->DeliverEndFlush();
  {
    const CAutoLock lock(&streamLock_);
    tellMissedSegment();
  }
  const CAutoLock lock(&filterLock_);  // against a stop in between
  if (IsStopped()) return;
  logIfFailed(outputPin_->resumeWaits());
  outputSink_->setFlushing(false);
}

// Waits for the worker to be done with what it is at, unless this is the worker.
void CSubtitleConverter::destroyChain() {
  const CAutoLock lock(&streamLock_);
  if (isProcessing_) {
    outputSink_->setOutdated(true);  // processNext destroys the chain
  } else {
    chain_.reset();
  }
}

// One entry of the queue.
void CSubtitleConverter::processNext() {
  const auto entry = queue_.take();
  if (!entry) return;
  const CAutoLock lock(&streamLock_);
  if (!queue_.isCurrent(*entry)) return;
  isProcessing_ = true;
  processAndLog(entry->item);
  isProcessing_ = false;
  if (!outputSink_->isOutdated()) return;
  chain_.reset();
  outputSink_->setOutdated(false);
}

// Whatever goes wrong with an entry is logged, and the stream goes on.
void CSubtitleConverter::processAndLog(const Input& input) {
  try {
    const HRESULT result = process(input);
    if (result != VFW_E_NOT_COMMITTED) logIfFailed(result);
  } catch (const std::exception& error) {
    log::write(&logger_, Level::Error, "Error: %s", error.what());
  }
}

void CSubtitleConverter::logIfFailed(HRESULT result) {
  if (SUCCEEDED(result)) return;
  log::write(&logger_, Level::Error, "Internal error (0x%x): %s", static_cast<unsigned>(result),
             systemMessage(result).c_str());
}

HRESULT CSubtitleConverter::process(const Input& input) {
  if (input.segment) {
    tell(*input.segment);
    return S_OK;
  }
  if (!input.sample) {
    // At once: the pending document, and what the framer holds, are not flushed.
    outputSink_->endOfStream();
    return outputSink_->takeResult();
  }
  const HRESULT result = convert(*input.sample.Get());
  const HRESULT delivered = outputSink_->takeResult();
  return FAILED(result) ? result : delivered;
}

void CSubtitleConverter::tell(const Segment& segment) {
  toldSegment_ = segment.number;
  outputPin_->DeliverNewSegment(segment.start, segment.stop, segment.rate);
}

// The last segment is still in force when a stop or a flush has taken it off the queue.
void CSubtitleConverter::tellMissedSegment() {
  Segment last;
  {
    const CAutoLock lock(&filterLock_);
    last = lastSegment_;
  }
  if (last.number != toldSegment_) tell(last);
}

HRESULT CSubtitleConverter::convert(IMediaSample& sample) {
  HRESULT result = checkFormat(sample);
  if (FAILED(result)) return result;
  if (!chain_) result = startChain();
  if (FAILED(result) || !chain_) return result;
  return chain_->framer().push(std::allocate_shared<const MediaSampleItem>(
      std::pmr::polymorphic_allocator<>(&itemMemory_), &sample));
}

// A sample that carries a media type changes the connection's. What the chain was built on may be
// gone with it: the pages of the teletext descriptors, or the subtitle system itself.
HRESULT CSubtitleConverter::checkFormat(IMediaSample& sample) {
  AM_MEDIA_TYPE* attached = nullptr;
  if (sample.GetMediaType(&attached) != S_OK || !attached) return S_OK;
  const std::unique_ptr<AM_MEDIA_TYPE, MediaTypeDeleter> type(attached);
  if (type->formattype != FORMAT_SubtitleStream) return E_FAIL;

  CMediaType before;
  HRESULT result = inputPin_->ConnectionMediaType(&before);
  if (FAILED(result)) return result;
  result = inputPin_->takeOver(*type);
  if (FAILED(result)) return result;

  const auto inputType = classifyInput(*type);
  if (inputType != classifyInput(before)) chain_.reset();
  const auto format = formatOf(*type);
  if (inputType == SubtitleInputType::Teletext && !std::ranges::equal(format, teletextFormat_)) {
    chain_.reset();
    teletextFormat_.assign(format.begin(), format.end());
  }
  return S_OK;
}

// The worker may have built the chain already, for a sample that came as soon as the state changed;
// or this is the worker, called back, and the chain of before is still in use: the next sample
// builds another.
HRESULT CSubtitleConverter::startIfNeeded() {
  return chain_ || isProcessing_ ? S_OK : startChain();
}

// Builds the chain for the input's connection, in place of the one there is. S_FALSE when the input
// is not connected.
HRESULT CSubtitleConverter::startChain() {
  if (!inputPin_->IsConnected()) return S_FALSE;
  CMediaType type;
  const HRESULT result = inputPin_->ConnectionMediaType(&type);
  if (FAILED(result)) return result;
  const auto inputType = classifyInput(type);
  if (!inputType) return E_FAIL;

  const auto settings = encoding::subtitling::chainSettings(*configuration_.load(), *inputType,
                                                            formatOf(type), &logger_);
  chain_ = std::make_unique<ConversionChain>(*outputSink_, settings, &logger_);
  return S_OK;
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
