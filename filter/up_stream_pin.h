// SPDX-License-Identifier: MIT

// The output pin as the chain's sink.
#pragma once

#include <atomic>
#include <utility>

#include "filter/output_pin.h"
#include "model/output_sink.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Takes buffers from the output pin's allocator and delivers them downstream; the only way in
/// which the chain meets the pin. Used by the worker.
class UpStreamPin final : public encoding::subtitling::IOutputSink {
 public:
  /// `pin` is not owned.
  explicit UpStreamPin(CSubtitleConverterOutputPin* pin) : pin_(pin) {}

  std::unique_ptr<encoding::subtitling::IOutputBuffer> getBuffer() override;
  void deliver(std::unique_ptr<encoding::subtitling::IOutputBuffer> buffer) override;
  void endOfStream() override;

  /// While set, there are no buffers, so that what the worker is at ends soon. Any thread.
  void setFlushing(bool flushing) { isFlushing_ = flushing; }

  /// While set, there are no buffers either: what the chain still makes is of before a stop or a
  /// flush that its sink has called for.
  void setOutdated(bool outdated) { isOutdated_ = outdated; }
  bool isOutdated() const { return isOutdated_; }

  /// The first failure of a delivery since this was last asked, or S_OK.
  HRESULT takeResult() { return std::exchange(result_, S_OK); }

 private:
  void note(HRESULT result);

  CSubtitleConverterOutputPin* pin_;
  std::atomic<bool> isFlushing_ = false;
  bool isOutdated_ = false;
  HRESULT result_ = S_OK;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
