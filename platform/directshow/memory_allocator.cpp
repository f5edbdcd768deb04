#include "platform/directshow/memory_allocator.h"

#include <bit>
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
class alignas(korr::concurrency::kCacheLine) CMemAllocator::Sample final : public IMediaSample {
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
    if (iid == IID_IUnknown || iid == IID_IMediaSample) return GetInterface(this, object);
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = --references_;
    if (left == 0) {
      if (state_.hasType) type_.reset();
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
    if (!state_.hasStart) return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = state_.start;
    *stop = state_.hasStop ? state_.stop : *start + 1;
    return state_.hasStop ? S_OK : VFW_S_NO_STOP_TIME;
  }
  HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
    if (!start && stop) return E_INVALIDARG;
    state_.hasStart = start != nullptr;
    state_.hasStop = stop != nullptr;
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

  HRESULT STDMETHODCALLTYPE IsSyncPoint() override { return answer(state_.isSyncPoint); }
  HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL is) override { return set(state_.isSyncPoint, is); }
  HRESULT STDMETHODCALLTYPE IsPreroll() override { return answer(state_.isPreroll); }
  HRESULT STDMETHODCALLTYPE SetPreroll(BOOL is) override { return set(state_.isPreroll, is); }
  HRESULT STDMETHODCALLTYPE IsDiscontinuity() override { return answer(state_.isDiscontinuity); }
  HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL is) override {
    return set(state_.isDiscontinuity, is);
  }

  HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** type) override {
    if (!type) return E_POINTER;
    *type = nullptr;
    if (!state_.hasType) return S_FALSE;
    *type = CreateMediaType(type_.get());
    return *type ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* type) override {
    return withoutThrowing([&] {
      if (type || state_.hasType) type_ = type ? std::make_unique<CMediaType>(*type) : nullptr;
      state_.hasType = type != nullptr;
      return S_OK;
    });
  }

 private:
  struct State {
    bool isSyncPoint = false;
    bool isPreroll = false;
    bool isDiscontinuity = false;
    bool hasStart = false;
    bool hasStop = false;
    bool hasMediaTime = false;
    bool hasType = false;
    LONGLONG start = 0;  // 100 ns
    LONGLONG stop = 0;
  };

  static HRESULT answer(bool flag) { return flag ? S_OK : S_FALSE; }
  static HRESULT set(bool& flag, BOOL is) {
    flag = is != FALSE;
    return S_OK;
  }

  // What every use of a sample touches, up to the state, lies in its first cache line.
  std::atomic<LONG> references_ = 0;
  LONG length_ = 0;  // bytes
  CMemAllocator* allocator_;
  BYTE* bytes_;
  State state_;

  LONG size_;
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
