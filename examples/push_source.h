// SPDX-License-Identifier: MIT

// A source of subtitles for hosts that have none: a filter with one output pin
// that the host pushes samples through. C++17; the platform's headers and
// TXSubtitleConverter.h alone, no base classes. Take it as it is, or as a
// pattern.
#pragma once

#include <dshow.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

namespace example {

/// One stream: its media type, with no format block unless one is given.
struct StreamType {
  GUID major = GUID_NULL;
  GUID sub = GUID_NULL;
  std::vector<BYTE> format;  ///< teletext: the stream's descriptors, as the PMT carries them
};

/// One sample as the filter takes it.
struct Sample {
  std::vector<BYTE> data;
  REFERENCE_TIME time = 0;    ///< presentation time of the PES payload, 100 ns
  bool beginsPayload = true;  ///< whether a PES payload begins here: the sync point
};

/// The source. Every call may come from any thread; `push` and its like from
/// one at a time, which is the streaming thread.
class PushSource final : public IBaseFilter {
 public:
  /// Born with one reference, for the caller (ComPtr::Attach). `bufferSize`: of
  /// the largest sample, in bytes; `buffers`: more than the longest payload has
  /// parts.
  PushSource(StreamType type, long bufferSize, long buffers);

  /// The output pin, to connect; not referenced.
  IPin* output() { return &pin_; }

  /// Waits for a buffer, fills it and hands it to the filter. Fails while the
  /// graph is stopped.
  HRESULT push(const Sample& sample);

  HRESULT endOfStream();

  /// After a seek: what is on its way is thrown away, and the new segment
  /// announced.
  HRESULT flush(REFERENCE_TIME start, REFERENCE_TIME stop);

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override;

  // IPersist
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override;

  // IMediaFilter
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
  HRESULT STDMETHODCALLTYPE GetState(DWORD milliseconds, FILTER_STATE* state) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;

  // IBaseFilter
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) override;

 private:
  /// The pin is part of the filter, so its references count as the filter's.
  class Pin final : public IPin {
   public:
    explicit Pin(PushSource& source) : source_(source) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return source_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return source_.Release(); }

    HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) override;
    HRESULT STDMETHODCALLTYPE Disconnect() override;
    HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pin) override;
    HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* info) override;
    HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* direction) override;
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** types) override;
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin**, ULONG*) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override {
      return S_OK;
    }

   private:
    PushSource& source_;
  };

  template <class Interface>
  using ComPtr = Microsoft::WRL::ComPtr<Interface>;

  ~PushSource() = default;

  AM_MEDIA_TYPE mediaType();
  HRESULT connect(IPin* receiver);
  HRESULT agreeOnAllocator(IMemInputPin* input);
  HRESULT use(IMemInputPin* input, IMemAllocator* allocator);

  std::atomic<ULONG> references_{1};
  StreamType type_;
  const long bufferSize_;
  const long buffers_;
  std::recursive_mutex mutex_;  // over what follows; a receiver may call back
  std::atomic<FILTER_STATE> state_{State_Stopped};
  IFilterGraph* graph_ = nullptr;  // not referenced: the graph owns the filter
  std::vector<WCHAR> name_{L'\0'};
  ComPtr<IReferenceClock> clock_;
  ComPtr<IPin> receiver_;  // while connected, with the next two
  ComPtr<IMemInputPin> input_;
  ComPtr<IMemAllocator> allocator_;
  Pin pin_{*this};
};

}  // namespace example
