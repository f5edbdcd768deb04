// SPDX-License-Identifier: MIT

// A source filter that a host pushes samples through.
#pragma once

#include <streams.h>

#include "readers/media_reader.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

/// One output pin of a fixed media type. The caller's thread is the streaming thread.
class CPushSource final : public CBaseFilter {
 public:
  struct Settings {
    CMediaType type;
    long buffers = 1;     ///< at least; downstream may ask for more
    long bufferSize = 1;  ///< bytes; no sample may be larger
  };

  explicit CPushSource(Settings settings);

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }

  /// Stores a buffer filled with a sample as it was recorded; waits while all are in use
  /// downstream.
  HRESULT fill(const txsub::InputSample& sample, IMediaSample** filled);

  HRESULT deliver(IMediaSample* filled) { return pin_.Deliver(filled); }

  /// Both of the above.
  HRESULT push(const txsub::InputSample& sample);

  /// The format type of media types attached to samples from now on.
  void setSampleFormatType(const GUID& formatType) { sampleFormatType_ = formatType; }

  HRESULT endOfStream() { return pin_.DeliverEndOfStream(); }
  HRESULT beginFlush() { return pin_.DeliverBeginFlush(); }
  HRESULT endFlush() { return pin_.DeliverEndFlush(); }
  HRESULT newSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    return pin_.DeliverNewSegment(start, stop, rate);
  }

 private:
  class Pin final : public CBaseOutputPin {
   public:
    Pin(CPushSource* filter, CCritSec* lock, HRESULT* result)
        : CBaseOutputPin(TEXT("push source pin"), filter, lock, result, L"Output"),
          source_(filter) {}

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) override;

   private:
    CPushSource* source_;
  };

  HRESULT copy(const txsub::InputSample& sample, IMediaSample& target) const;

  CCritSec lock_;
  Settings settings_;
  GUID sampleFormatType_;
  HRESULT pinResult_ = S_OK;
  Pin pin_;
};

}  // namespace korr::streaming::direct_show::host::inline v2_1
