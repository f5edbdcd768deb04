// SPDX-License-Identifier: MIT

// A renderer that hands what it receives to its host.
#pragma once

#include <streams.h>

#include <cstdint>
#include <functional>
#include <span>

namespace korr::streaming::direct_show::host::inline v2_1 {

/// One sample as it arrived. The bytes last as long as the call.
struct ReceivedSample {
  std::uint64_t start = 0;  ///< 100 ns
  std::uint64_t stop = 0;   ///< 100 ns
  bool sync = false;
  bool discontinuity = false;
  std::span<const std::uint8_t> data;
  IMediaSample* sample = nullptr;  ///< the sample itself, for a host that keeps it
};

/// What a sample of timed text holds.
ReceivedSample describe(IMediaSample* sample);

/// One input pin that takes timed text of any subtype. With a clock in the graph, samples wait
/// until they are due.
class CCollectingSink final : public CBaseFilter, public IAMFilterMiscFlags {
 public:
  /// Called on the streaming thread; what `onSample` returns is what Receive returns.
  struct Callbacks {
    std::function<HRESULT(const ReceivedSample&)> onSample;
    std::function<void()> onEndOfStream;
    std::function<void(REFERENCE_TIME start)> onNewSegment = {};  ///< may be empty
  };

  /// `timeBase`: the sample time (100 ns) that is due when the graph starts.
  explicit CCollectingSink(Callbacks callbacks, REFERENCE_TIME timeBase = 0);
  ~CCollectingSink() override;

  DECLARE_IUNKNOWN
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

  // IAMFilterMiscFlags: the graph waits for the end of the stream at renderers only.
  ULONG STDMETHODCALLTYPE GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override { return index == 0 ? &pin_ : nullptr; }

 private:
  class Pin final : public CBaseInputPin {
   public:
    Pin(CCollectingSink* filter, CCritSec* lock, HRESULT* result)
        : CBaseInputPin(TEXT("collecting sink pin"), filter, lock, result, L"Input"),
          sink_(filter) {}

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop,
                                         double rate) override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;
    HRESULT Active() override;
    HRESULT Inactive() override;

   private:
    CCollectingSink* sink_;
  };

  void waitUntilDue(REFERENCE_TIME start);

  CCritSec lock_;
  Callbacks callbacks_;
  REFERENCE_TIME timeBase_;
  HANDLE due_;      // auto-reset: the clock says that it is time
  HANDLE stopped_;  // while set nobody waits
  HRESULT pinResult_ = S_OK;
  Pin pin_;
};

}  // namespace korr::streaming::direct_show::host::inline v2_1
