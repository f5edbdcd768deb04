#include "platform/directshow/memory_allocator.h"

#include <bit>
#include <optional>

#include "platform/directshow/media_type.h"
#include "platform/spin.h"

namespace {

/// Holds a lock for the length of a scope. Others only hold it for moments.
class Guard {
 public:
  explicit Guard(SRWLOCK& lock) : lock_(lock) {
    if (!korr::platform::spinUntil([&] { return TryAcquireSRWLockExclusive(&lock_) != FALSE; }))
      AcquireSRWLockExclusive(&lock_);
  }
  ~Guard() { ReleaseSRWLockExclusive(&lock_); }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

 private:
  SRWLOCK& lock_;
};

HRESULT check(const ALLOCATOR_PROPERTIES& wanted) {
  if (wanted.cBuffers < 0 || wanted.cbBuffer < 0 || wanted.cbPrefix < 0) return E_INVALIDARG;
  const bool isPowerOfTwo = wanted.cbAlign > 0 && std::has_single_bit(ULONG(wanted.cbAlign));
  return isPowerOfTwo ? S_OK : VFW_E_BADALIGN;
}

}  // namespace

/// One sample. While it is out it holds a reference on its allocator.
class CMemAllocator::Sample final : public IMediaSample {
 public:
  Sample(CMemAllocator* allocator, BYTE* bytes, LONG size)
      : allocator_(allocator), bytes_(bytes), size_(size) {}
  Sample(const Sample&) = delete;
  Sample& operator=(const Sample&) = delete;

  /// The one behind in a list of free samples.
  Sample* next = nullptr;

  /// Counts the caller's reference.
  void goOut() {
    allocator_->AddRef();
    references_ = 1;
    state_ = {};
    state_.length = size_;
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
      state_.type.reset();
      CMemAllocator* const allocator = allocator_;
      allocator->ReleaseBuffer(this);
      allocator->Release();  // which may end this sample too
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
  LONG STDMETHODCALLTYPE GetActualDataLength() override { return state_.length; }
  HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) override {
    if (length < 0 || length > size_) return VFW_E_BUFFER_OVERFLOW;
    state_.length = length;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
    if (!start || !stop) return E_POINTER;
    if (!state_.time.start) return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = *state_.time.start;
    *stop = state_.time.stop.value_or(*start + 1);
    return state_.time.stop ? S_OK : VFW_S_NO_STOP_TIME;
  }
  HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
    if (!start && stop) return E_INVALIDARG;
    state_.time = {valueOf(start), valueOf(stop)};
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* start, LONGLONG* stop) override {
    if (!start || !stop) return E_POINTER;
    if (!state_.mediaTime.start) return VFW_E_MEDIA_TIME_NOT_SET;
    *start = *state_.mediaTime.start;
    *stop = *state_.mediaTime.stop;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* start, LONGLONG* stop) override {
    if (!start != !stop) return E_POINTER;
    state_.mediaTime = {valueOf(start), valueOf(stop)};
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
    if (!state_.type) return S_FALSE;
    *type = CreateMediaType(state_.type.get());
    return *type ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* type) override {
    return withoutThrowing([&] {
      state_.type = type ? std::make_unique<CMediaType>(*type) : nullptr;
      return S_OK;
    });
  }

 private:
  struct Interval {
    std::optional<LONGLONG> start;
    std::optional<LONGLONG> stop;
  };
  struct State {
    LONG length = 0;  // bytes
    Interval time;    // 100 ns
    Interval mediaTime;
    bool isSyncPoint = false;
    bool isPreroll = false;
    bool isDiscontinuity = false;
    std::unique_ptr<CMediaType> type;
  };

  static std::optional<LONGLONG> valueOf(const LONGLONG* value) {
    return value ? std::optional(*value) : std::nullopt;
  }
  static HRESULT answer(bool flag) { return flag ? S_OK : S_FALSE; }
  static HRESULT set(bool& flag, BOOL is) {
    flag = is != FALSE;
    return S_OK;
  }

  CMemAllocator* allocator_;
  BYTE* bytes_;
  LONG size_;
  std::atomic<LONG> references_ = 0;
  State state_;
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
  const Guard guard(lock_);
  if (isCommitted_) return VFW_E_ALREADY_COMMITTED;
  if (available_ != samples_.size()) return VFW_E_BUFFERS_OUTSTANDING;
  free_ = nullptr;
  returned_ = nullptr;
  available_ = 0;
  samples_.clear();
  properties_ = *wanted;
  *granted = properties_;
  return S_OK;
}

HRESULT CMemAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
  if (!properties) return E_POINTER;
  const Guard guard(lock_);
  *properties = properties_;
  return S_OK;
}

HRESULT CMemAllocator::Commit() {
  const Guard guard(lock_);
  if (properties_.cBuffers == 0 || properties_.cbBuffer == 0) return VFW_E_SIZENOTSET;
  const HRESULT result = withoutThrowing([this] {
    if (samples_.empty()) makeSamples();
    return S_OK;
  });
  if (SUCCEEDED(result)) isCommitted_ = true;
  return result;
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
  for (const auto& sample : samples) {
    sample->next = free_;
    free_ = sample.get();
  }
  available_ = count;
  manyAvailable_ = count - count / 4;
  samples_.swap(samples);
  memory_.swap(memory);
}

HRESULT CMemAllocator::Decommit() {
  const Guard guard(lock_);
  isCommitted_ = false;
  WakeAllConditionVariable(&isFree_);
  return S_OK;
}

HRESULT CMemAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME*, REFERENCE_TIME*,
                                 DWORD flags) {
  if (!sample) return E_POINTER;
  *sample = nullptr;
  if (!(flags & AM_GBF_NOWAIT) && available_ == 0) {
    // Not for the first one back: who takes each at once disturbs who gives back.
    korr::platform::spinUntil([this] { return available_ >= manyAvailable_ || !isCommitted_; });
  }
  const Guard guard(lock_);
  if (!isCommitted_) return VFW_E_NOT_COMMITTED;
  Sample* taken = takeFree();
  if (!taken && (flags & AM_GBF_NOWAIT)) return VFW_E_TIMEOUT;
  if (!taken) taken = awaitFree();
  if (!taken) return VFW_E_NOT_COMMITTED;
  taken->goOut();
  *sample = taken;
  return S_OK;
}

// Null when all are out. Under the lock.
CMemAllocator::Sample* CMemAllocator::takeFree() {
  if (!free_) free_ = returned_.exchange(nullptr);
  Sample* const taken = free_;
  if (!taken) return nullptr;
  free_ = taken->next;
  --available_;
  return taken;
}

// Null when the allocator is decommitted. Under the lock, which it lets go of while it waits.
CMemAllocator::Sample* CMemAllocator::awaitFree() {
  Sample* taken = nullptr;
  ++waiting_;  // before the next look, so that nobody who gives back later fails to wake
  while (isCommitted_ && !(taken = takeFree()))
    SleepConditionVariableSRW(&isFree_, &lock_, INFINITE, 0);
  --waiting_;
  return taken;
}

HRESULT CMemAllocator::ReleaseBuffer(IMediaSample* sample) {
  if (!sample) return E_POINTER;
  const auto returned = static_cast<Sample*>(sample);
  returned->next = returned_;
  while (!returned_.compare_exchange_weak(returned->next, returned)) {
  }
  ++available_;
  if (waiting_ != 0) {
    const Guard guard(lock_);
    WakeConditionVariable(&isFree_);
  }
  return S_OK;
}
