// SPDX-License-Identifier: MIT
#include "platform/directshow/memory_allocator.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

#include "platform/directshow/media_type.h"

namespace {

HRESULT check(const ALLOCATOR_PROPERTIES& wanted) {
  if (wanted.cBuffers < 0 || wanted.cbBuffer < 0 || wanted.cbPrefix < 0) return E_INVALIDARG;
  const bool isPowerOfTwo = wanted.cbAlign > 0 && std::has_single_bit(ULONG(wanted.cbAlign));
  return isPowerOfTwo ? S_OK : VFW_E_BADALIGN;
}

}  // namespace

/// One sample. While it is out it keeps its allocator alive.
class alignas(korr::concurrency::kCacheLine) CMemAllocator::Sample final : public IMediaSample2 {
 public:
  Sample(CMemAllocator* allocator, BYTE* bytes, LONG size)
      : allocator_(allocator), bytes_(bytes), size_(size) {}
  Sample(const Sample&) = delete;
  Sample& operator=(const Sample&) = delete;

  /// For the pool.
  Sample* next = nullptr;

  /// As long as its buffer and without any property, with a reference for the caller.
  void goOut() {
    references_ = 1;
    length_ = size_;
    state_ = {};
  }

  // IUnknown

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    if (iid == IID_IUnknown || iid == IID_IMediaSample || iid == IID_IMediaSample2) {
      return GetInterface(this, object);
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = --references_;
    if (left == 0) {
      if (has(AM_SAMPLE_TYPECHANGED)) type_.reset();
      allocator_->ReleaseBuffer(this);  // which may end this sample
    }
    return static_cast<ULONG>(left);
  }

  // IMediaSample

  HRESULT STDMETHODCALLTYPE GetPointer(BYTE** bytes) override {
    if (!bytes) return E_POINTER;
    *bytes = bytes_;
    return S_OK;
  }
  LONG STDMETHODCALLTYPE GetSize() override { return size_; }
  LONG STDMETHODCALLTYPE GetActualDataLength() override { return length_; }
  HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) override {
    if (length < 0 || length > size_) return VFW_E_BUFFER_OVERFLOW;
    length_ = length;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
    if (!start || !stop) return E_POINTER;
    if (!has(AM_SAMPLE_TIMEVALID)) return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = state_.start;
    *stop = has(AM_SAMPLE_STOPVALID) ? state_.stop : *start + 1;
    return has(AM_SAMPLE_STOPVALID) ? S_OK : VFW_S_NO_STOP_TIME;
  }
  HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
    if (!start && stop) return E_INVALIDARG;
    set(AM_SAMPLE_TIMEVALID, start != nullptr);
    set(AM_SAMPLE_STOPVALID, stop != nullptr);
    if (start) state_.start = *start;
    if (stop) state_.stop = *stop;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* start, LONGLONG* stop) override {
    if (!start || !stop) return E_POINTER;
    if (!state_.hasMediaTime) return VFW_E_MEDIA_TIME_NOT_SET;
    *start = mediaStart_;
    *stop = mediaStop_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* start, LONGLONG* stop) override {
    if (!start != !stop) return E_POINTER;
    state_.hasMediaTime = start != nullptr;
    if (start) mediaStart_ = *start;
    if (stop) mediaStop_ = *stop;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE IsSyncPoint() override { return answer(AM_SAMPLE_SPLICEPOINT); }
  HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL is) override {
    return set(AM_SAMPLE_SPLICEPOINT, is != FALSE);
  }
  HRESULT STDMETHODCALLTYPE IsPreroll() override { return answer(AM_SAMPLE_PREROLL); }
  HRESULT STDMETHODCALLTYPE SetPreroll(BOOL is) override {
    return set(AM_SAMPLE_PREROLL, is != FALSE);
  }
  HRESULT STDMETHODCALLTYPE IsDiscontinuity() override {
    return answer(AM_SAMPLE_DATADISCONTINUITY);
  }
  HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL is) override {
    return set(AM_SAMPLE_DATADISCONTINUITY, is != FALSE);
  }

  HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** type) override {
    if (!type) return E_POINTER;
    *type = nullptr;
    if (!has(AM_SAMPLE_TYPECHANGED)) return S_FALSE;
    *type = CreateMediaType(type_.get());
    return *type ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* type) override {
    return withoutThrowing([&] {
      if (type || has(AM_SAMPLE_TYPECHANGED)) {
        type_ = type ? std::make_unique<CMediaType>(*type) : nullptr;
      }
      return set(AM_SAMPLE_TYPECHANGED, type != nullptr);
    });
  }

  // IMediaSample2

  HRESULT STDMETHODCALLTYPE GetProperties(DWORD size, BYTE* properties) override {
    if (!properties) return E_POINTER;
    AM_SAMPLE2_PROPERTIES all = allProperties();
    all.cbData = std::min<DWORD>(size, sizeof all);
    std::memcpy(properties, &all, all.cbData);
    return S_OK;
  }

  /// Members past `size` stay as they are. The buffer cannot be changed.
  HRESULT STDMETHODCALLTYPE SetProperties(DWORD size, const BYTE* properties) override {
    if (!properties) return E_POINTER;
    AM_SAMPLE2_PROPERTIES all = allProperties();
    std::memcpy(&all, properties, std::min<std::size_t>(size, sizeof all));
    if ((all.pbBuffer && all.pbBuffer != bytes_) || (all.cbBuffer && all.cbBuffer != size_)) {
      return E_INVALIDARG;
    }
    if (all.lActual < 0 || all.lActual > size_) return VFW_E_BUFFER_OVERFLOW;
    const bool hasType = (all.dwSampleFlags & AM_SAMPLE_TYPECHANGED) && all.pMediaType;
    const HRESULT result = SetMediaType(hasType ? all.pMediaType : nullptr);
    if (FAILED(result)) return result;
    const DWORD typeFlag = state_.flags & AM_SAMPLE_TYPECHANGED;
    state_.flags = (all.dwSampleFlags & ~DWORD{AM_SAMPLE_TYPECHANGED}) | typeFlag;
    state_.start = all.tStart;
    state_.stop = all.tStop;
    state_.hasStream = true;
    length_ = all.lActual;
    typeSpecificFlags_ = all.dwTypeSpecificFlags;
    streamId_ = all.dwStreamId;
    return S_OK;
  }

 private:
  struct State {
    DWORD flags = 0;  // AM_SAMPLE_*: which of the properties there are
    bool hasMediaTime = false;
    bool hasStream = false;
    LONGLONG start = 0;  // 100 ns
    LONGLONG stop = 0;
  };

  bool has(DWORD flag) const { return (state_.flags & flag) != 0; }
  HRESULT answer(DWORD flag) const { return has(flag) ? S_OK : S_FALSE; }
  HRESULT set(DWORD flag, bool is) {
    state_.flags = is ? state_.flags | flag : state_.flags & ~flag;
    return S_OK;
  }

  AM_SAMPLE2_PROPERTIES allProperties() const {
    AM_SAMPLE2_PROPERTIES all = {};
    all.dwTypeSpecificFlags = state_.hasStream ? typeSpecificFlags_ : 0;
    all.dwSampleFlags = state_.flags;
    all.lActual = length_;
    all.tStart = state_.start;
    all.tStop = state_.stop;
    all.dwStreamId = state_.hasStream ? streamId_ : DWORD{AM_STREAM_MEDIA};
    all.pMediaType = has(AM_SAMPLE_TYPECHANGED) ? type_.get() : nullptr;
    all.pbBuffer = bytes_;
    all.cbBuffer = size_;
    return all;
  }

  // What every use of a sample touches, up to the state, lies in its first cache line.
  std::atomic<LONG> references_ = 0;
  LONG length_ = 0;  // bytes
  CMemAllocator* allocator_;
  BYTE* bytes_;
  State state_;

  LONG size_;
  DWORD typeSpecificFlags_ = 0;  // these two while the state has a stream
  DWORD streamId_ = 0;
  LONGLONG mediaStart_ = 0;
  LONGLONG mediaStop_ = 0;
  std::unique_ptr<CMediaType> type_;
};

HRESULT CMemAllocator::create(IMemAllocator** allocator) {
  return withoutThrowing(
      [&] { return GetInterface(new CMemAllocator, reinterpret_cast<void**>(allocator)); });
}

CMemAllocator::CMemAllocator() : CUnknown(TEXT("memory allocator"), nullptr) {
}

CMemAllocator::~CMemAllocator() = default;

HRESULT CMemAllocator::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid == IID_IMemAllocator) return GetInterface(static_cast<IMemAllocator*>(this), object);
  return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CMemAllocator::SetProperties(ALLOCATOR_PROPERTIES* wanted, ALLOCATOR_PROPERTIES* granted) {
  if (!wanted || !granted) return E_POINTER;
  *granted = {};
  const HRESULT result = check(*wanted);
  if (FAILED(result)) return result;
  const std::scoped_lock lock(setup_);
  if (pool_.isOpen()) return VFW_E_ALREADY_COMMITTED;
  if (pool_.out() != 0) return VFW_E_BUFFERS_OUTSTANDING;
  pool_.clear();
  samples_.clear();
  properties_ = *wanted;
  *granted = properties_;
  return S_OK;
}

HRESULT CMemAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
  if (!properties) return E_POINTER;
  const std::scoped_lock lock(setup_);
  *properties = properties_;
  return S_OK;
}

HRESULT CMemAllocator::Commit() {
  const std::scoped_lock lock(setup_);
  if (properties_.cBuffers == 0 || properties_.cbBuffer == 0) return VFW_E_SIZENOTSET;
  return withoutThrowing([this] {
    if (samples_.empty()) makeSamples();
    pool_.open();
    return S_OK;
  });
}

// All or nothing. The start of each prefix is aligned.
void CMemAllocator::makeSamples() {
  const auto count = static_cast<std::size_t>(properties_.cBuffers);
  const auto prefix = static_cast<std::size_t>(properties_.cbPrefix);
  const auto alignment = static_cast<std::size_t>(properties_.cbAlign);
  const auto used = prefix + static_cast<std::size_t>(properties_.cbBuffer);
  const auto stride = (used + alignment - 1) / alignment * alignment;

  std::vector<BYTE> memory(count * stride + alignment - 1);
  const auto misalignment = reinterpret_cast<std::uintptr_t>(memory.data()) % alignment;
  BYTE* next = memory.data() + (misalignment ? alignment - misalignment : 0);
  std::vector<std::unique_ptr<Sample>> samples;
  for (samples.reserve(count); samples.size() < count; next += stride) {
    samples.push_back(std::make_unique<Sample>(this, next + prefix, properties_.cbBuffer));
  }
  for (const auto& sample : samples) pool_.add(*sample);
  samples_.swap(samples);
  memory_.swap(memory);
}

HRESULT CMemAllocator::Decommit() {
  const std::scoped_lock lock(setup_);
  pool_.close();
  return S_OK;
}

HRESULT CMemAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME*, REFERENCE_TIME*,
                                 DWORD flags) {
  if (!sample) return E_POINTER;
  *sample = nullptr;
  const bool mayWait = !(flags & AM_GBF_NOWAIT);
  Sample* const taken = mayWait ? pool_.take() : pool_.tryTake();
  if (!taken) return mayWait || !pool_.isOpen() ? VFW_E_NOT_COMMITTED : VFW_E_TIMEOUT;
  taken->goOut();
  *sample = taken;
  return S_OK;
}

HRESULT CMemAllocator::ReleaseBuffer(IMediaSample* sample) {
  if (!sample) return E_POINTER;
  if (pool_.giveBack(*static_cast<Sample*>(sample))) delete this;
  return S_OK;
}

ULONG CMemAllocator::NonDelegatingRelease() {
  const LONG left = --m_cRef;
  if (left == 0 && pool_.orphan()) delete this;
  return static_cast<ULONG>(left);
}
