// A renderer that hands what it receives to its host.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "platform/directshow/streams.h"

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

/// One input pin that takes timed text of any subtype.
class CCollectingSink final : public CBaseFilter {
 public:
  /// Called on the streaming thread; what `onSample` returns is what Receive returns.
  struct Callbacks {
    std::function<HRESULT(const ReceivedSample&)> onSample;
    std::function<void()> onEndOfStream;
  };

  explicit CCollectingSink(Callbacks callbacks);

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

   private:
    CCollectingSink* sink_;
  };

  CCritSec lock_;
  Callbacks callbacks_;
  HRESULT pinResult_ = S_OK;
  Pin pin_;
};

}  // namespace korr::streaming::direct_show::host::inline v2_1
