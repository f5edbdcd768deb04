// SPDX-License-Identifier: MIT
#include "push_source.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "TXSubtitleConverter.h"

namespace converter = korr::streaming::direct_show::filters::mqs_subtitle_converter;

namespace example {

namespace {

constexpr WCHAR kPinName[] = L"Output";

/// Enumerates one item, a reference or a copy of which `take` gives away.
template <class Interface, class Item>
class OneItemEnumerator final : public Interface {
 public:
  using Take = HRESULT (*)(IUnknown* owner, Item* item);

  /// Holds a reference on `owner`, which has the item.
  OneItemEnumerator(IUnknown* owner, Take take, bool isAtEnd = false)
      : owner_(owner), take_(take), isAtEnd_(isAtEnd) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = iid == IID_IUnknown || iid == __uuidof(Interface) ? this : nullptr;
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* items, ULONG* fetched) override {
    if (!items) return E_POINTER;
    if (fetched) *fetched = 0;
    if (count == 0) return S_OK;
    if (isAtEnd_) return S_FALSE;
    const HRESULT result = take_(owner_.Get(), items);
    if (FAILED(result)) return result;
    isAtEnd_ = true;
    if (fetched) *fetched = 1;
    return count == 1 ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const bool isEnough = count == 0 || (count == 1 && !isAtEnd_);
    isAtEnd_ = isAtEnd_ || count != 0;
    return isEnough ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    isAtEnd_ = false;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(Interface** clone) override {
    if (!clone) return E_POINTER;
    *clone = new OneItemEnumerator(owner_.Get(), take_, isAtEnd_);
    return S_OK;
  }

 private:
  ~OneItemEnumerator() = default;

  std::atomic<ULONG> references_{1};
  Microsoft::WRL::ComPtr<IUnknown> owner_;
  Take take_;
  bool isAtEnd_;
};

/// A copy whose format block is in COM task memory.
HRESULT copyType(const AM_MEDIA_TYPE& from, AM_MEDIA_TYPE* to) {
  *to = from;
  to->pbFormat = nullptr;
  to->cbFormat = 0;
  if (from.cbFormat == 0) return S_OK;
  to->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(from.cbFormat));
  if (!to->pbFormat) return E_OUTOFMEMORY;
  to->cbFormat = from.cbFormat;
  std::memcpy(to->pbFormat, from.pbFormat, from.cbFormat);
  return S_OK;
}

HRESULT fill(IMediaSample& buffer, const Sample& sample) {
  BYTE* bytes = nullptr;
  const HRESULT result = buffer.GetPointer(&bytes);
  if (FAILED(result)) return result;
  const auto size = static_cast<long>(sample.data.size());
  if (size > buffer.GetSize()) return VFW_E_BUFFER_OVERFLOW;
  std::copy(sample.data.begin(), sample.data.end(), bytes);
  buffer.SetActualDataLength(size);
  REFERENCE_TIME start = sample.time;
  REFERENCE_TIME stop = start + 1;
  buffer.SetTime(&start, &stop);
  buffer.SetSyncPoint(sample.beginsPayload);
  buffer.SetDiscontinuity(FALSE);
  return S_OK;
}

}  // namespace

PushSource::PushSource(StreamType type, long bufferSize, long buffers)
    : type_(std::move(type)), bufferSize_(bufferSize), buffers_(buffers) {
}

HRESULT PushSource::push(const Sample& sample) {
  ComPtr<IMemAllocator> allocator;
  ComPtr<IMemInputPin> input;
  {
    const std::lock_guard<std::recursive_mutex> lock(mutex_);
    allocator = allocator_;
    input = input_;
  }
  if (!allocator) return VFW_E_NOT_CONNECTED;
  ComPtr<IMediaSample> buffer;
  HRESULT result = allocator->GetBuffer(&buffer, nullptr, nullptr, 0);
  if (SUCCEEDED(result)) result = fill(*buffer.Get(), sample);
  return SUCCEEDED(result) ? input->Receive(buffer.Get()) : result;
}

HRESULT PushSource::endOfStream() {
  ComPtr<IPin> receiver;
  pin_.ConnectedTo(&receiver);
  return receiver ? receiver->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT PushSource::flush(REFERENCE_TIME start, REFERENCE_TIME stop) {
  ComPtr<IPin> receiver;
  pin_.ConnectedTo(&receiver);
  if (!receiver) return VFW_E_NOT_CONNECTED;
  HRESULT result = receiver->BeginFlush();
  if (SUCCEEDED(result)) result = receiver->EndFlush();
  return SUCCEEDED(result) ? receiver->NewSegment(start, stop, 1.0) : result;
}

// Valid as long as the source.
AM_MEDIA_TYPE PushSource::mediaType() {
  AM_MEDIA_TYPE type = {};
  type.majortype = type_.major;
  type.subtype = type_.sub;
  type.formattype = converter::FORMAT_SubtitleStream;
  type.bTemporalCompression = TRUE;
  type.cbFormat = static_cast<ULONG>(type_.format.size());
  type.pbFormat = type_.format.empty() ? nullptr : type_.format.data();
  return type;
}

HRESULT PushSource::connect(IPin* receiver) {
  ComPtr<IMemInputPin> input;
  HRESULT result = receiver->QueryInterface(IID_IMemInputPin, &input);
  if (FAILED(result)) return result;
  const AM_MEDIA_TYPE type = mediaType();
  result = receiver->ReceiveConnection(&pin_, &type);
  if (FAILED(result)) return result;
  result = agreeOnAllocator(input.Get());
  if (FAILED(result)) {
    receiver->Disconnect();
    return result;
  }
  receiver_ = receiver;
  input_ = input;
  return S_OK;
}

// The receiver's allocator, or else the platform's.
HRESULT PushSource::agreeOnAllocator(IMemInputPin* input) {
  ComPtr<IMemAllocator> allocator;
  HRESULT result = input->GetAllocator(&allocator);
  if (SUCCEEDED(result)) result = use(input, allocator.Get());
  if (SUCCEEDED(result)) return result;
  result = CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                            &allocator);
  return SUCCEEDED(result) ? use(input, allocator.Get()) : result;
}

HRESULT PushSource::use(IMemInputPin* input, IMemAllocator* allocator) {
  ALLOCATOR_PROPERTIES wanted = {};
  input->GetAllocatorRequirements(&wanted);
  wanted.cBuffers = std::max(wanted.cBuffers, buffers_);
  wanted.cbBuffer = std::max(wanted.cbBuffer, bufferSize_);
  wanted.cbAlign = std::max(wanted.cbAlign, 1L);
  ALLOCATOR_PROPERTIES granted = {};
  HRESULT result = allocator->SetProperties(&wanted, &granted);
  if (FAILED(result)) return result;
  if (granted.cBuffers < buffers_ || granted.cbBuffer < bufferSize_) return E_FAIL;
  result = input->NotifyAllocator(allocator, FALSE);
  if (SUCCEEDED(result)) allocator_ = allocator;
  return result;
}

// IUnknown

HRESULT PushSource::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  const bool isOurs = iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter ||
                      iid == IID_IBaseFilter;
  *object = isOurs ? this : nullptr;
  if (!isOurs) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG PushSource::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT PushSource::GetClassID(CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = GUID_NULL;  // nobody creates it by class
  return S_OK;
}

// IMediaFilter. A push that waits for a buffer ends with the stop.

HRESULT PushSource::Stop() {
  const std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (state_ != State_Stopped && allocator_) allocator_->Decommit();
  state_ = State_Stopped;
  return S_OK;
}

HRESULT PushSource::Pause() {
  const std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (state_ == State_Stopped && allocator_) {
    const HRESULT result = allocator_->Commit();
    if (FAILED(result)) return result;
  }
  state_ = State_Paused;
  return S_OK;
}

HRESULT PushSource::Run(REFERENCE_TIME) {
  const HRESULT result = Pause();
  if (SUCCEEDED(result)) state_ = State_Running;
  return result;
}

HRESULT PushSource::GetState(DWORD, FILTER_STATE* state) {
  if (!state) return E_POINTER;
  *state = state_;
  return S_OK;
}

HRESULT PushSource::SetSyncSource(IReferenceClock* clock) {
  const std::lock_guard<std::recursive_mutex> lock(mutex_);
  clock_ = clock;
  return S_OK;
}

HRESULT PushSource::GetSyncSource(IReferenceClock** clock) {
  if (!clock) return E_POINTER;
  const std::lock_guard<std::recursive_mutex> lock(mutex_);
  return clock_.CopyTo(clock);
}

// IBaseFilter

HRESULT PushSource::EnumPins(IEnumPins** pins) {
  if (!pins) return E_POINTER;
  *pins = new OneItemEnumerator<IEnumPins, IPin*>(this, [](IUnknown* owner, IPin** pin) {
    *pin = static_cast<PushSource*>(static_cast<IBaseFilter*>(owner))->output();
    (*pin)->AddRef();
    return S_OK;
  });
  return S_OK;
}

HRESULT PushSource::FindPin(LPCWSTR id, IPin** pin) {
  if (!id || !pin) return E_POINTER;
  *pin = std::wcscmp(id, kPinName) == 0 ? &pin_ : nullptr;
  if (!*pin) return VFW_E_NOT_FOUND;
  (*pin)->AddRef();
  return S_OK;
}

HRESULT PushSource::QueryFilterInfo(FILTER_INFO* info) {
  if (!info) return E_POINTER;
  const std::lock_guard<std::recursive_mutex> lock(mutex_);
  const std::size_t length = std::min<std::size_t>(name_.size(), MAX_FILTER_NAME);
  std::copy_n(name_.begin(), length, info->achName);
  info->achName[length - 1] = L'\0';
  info->pGraph = graph_;
  if (graph_) graph_->AddRef();
  return S_OK;
}

HRESULT PushSource::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
  const std::lock_guard<std::recursive_mutex> lock(mutex_);
  graph_ = graph;
  const WCHAR* kept = graph && name ? name : L"";
  name_.assign(kept, kept + std::wcslen(kept) + 1);
  return S_OK;
}

HRESULT PushSource::QueryVendorInfo(LPWSTR*) {
  return E_NOTIMPL;
}

// IPin

HRESULT PushSource::Pin::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = iid == IID_IUnknown || iid == IID_IPin ? this : nullptr;
  if (!*object) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

// The type is the stream's own: `type` can only agree, or leave it open.
HRESULT PushSource::Pin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
  if (!receiver) return E_POINTER;
  if (type && QueryAccept(type) != S_OK) return VFW_E_TYPE_NOT_ACCEPTED;
  const std::lock_guard<std::recursive_mutex> lock(source_.mutex_);
  if (source_.receiver_) return VFW_E_ALREADY_CONNECTED;
  if (source_.state_ != State_Stopped) return VFW_E_NOT_STOPPED;
  return source_.connect(receiver);
}

HRESULT PushSource::Pin::ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) {
  return E_UNEXPECTED;  // it is an output
}

HRESULT PushSource::Pin::Disconnect() {
  const std::lock_guard<std::recursive_mutex> lock(source_.mutex_);
  if (source_.state_ != State_Stopped) return VFW_E_NOT_STOPPED;
  if (!source_.receiver_) return S_FALSE;
  source_.receiver_.Reset();
  source_.input_.Reset();
  source_.allocator_.Reset();
  return S_OK;
}

HRESULT PushSource::Pin::ConnectedTo(IPin** pin) {
  if (!pin) return E_POINTER;
  const std::lock_guard<std::recursive_mutex> lock(source_.mutex_);
  source_.receiver_.CopyTo(pin);
  return *pin ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT PushSource::Pin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
  if (!type) return E_POINTER;
  *type = {};
  const std::lock_guard<std::recursive_mutex> lock(source_.mutex_);
  return source_.receiver_ ? copyType(source_.mediaType(), type) : VFW_E_NOT_CONNECTED;
}

HRESULT PushSource::Pin::QueryPinInfo(PIN_INFO* info) {
  if (!info) return E_POINTER;
  info->dir = PINDIR_OUTPUT;
  std::copy(std::begin(kPinName), std::end(kPinName), info->achName);
  info->pFilter = &source_;
  source_.AddRef();
  return S_OK;
}

HRESULT PushSource::Pin::QueryDirection(PIN_DIRECTION* direction) {
  if (!direction) return E_POINTER;
  *direction = PINDIR_OUTPUT;
  return S_OK;
}

HRESULT PushSource::Pin::QueryId(LPWSTR* id) {
  if (!id) return E_POINTER;
  *id = static_cast<LPWSTR>(CoTaskMemAlloc(sizeof kPinName));
  if (!*id) return E_OUTOFMEMORY;
  std::memcpy(*id, kPinName, sizeof kPinName);
  return S_OK;
}

HRESULT PushSource::Pin::QueryAccept(const AM_MEDIA_TYPE* type) {
  if (!type) return E_POINTER;
  const auto fits = [](const GUID& asked, const GUID& has) {
    return asked == GUID_NULL || asked == has;
  };
  return fits(type->majortype, source_.type_.major) && fits(type->subtype, source_.type_.sub)
             ? S_OK
             : S_FALSE;
}

HRESULT PushSource::Pin::EnumMediaTypes(IEnumMediaTypes** types) {
  if (!types) return E_POINTER;
  *types = new OneItemEnumerator<IEnumMediaTypes, AM_MEDIA_TYPE*>(
      this, [](IUnknown* owner, AM_MEDIA_TYPE** type) {
        *type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof **type));
        if (!*type) return E_OUTOFMEMORY;
        auto& pin = *static_cast<Pin*>(static_cast<IPin*>(owner));
        const HRESULT result = copyType(pin.source_.mediaType(), *type);
        if (FAILED(result)) CoTaskMemFree(*type);
        return result;
      });
  return S_OK;
}

HRESULT PushSource::Pin::QueryInternalConnections(IPin**, ULONG*) {
  return E_NOTIMPL;
}

}  // namespace example
