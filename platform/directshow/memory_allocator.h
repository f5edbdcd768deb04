// Samples in memory.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "platform/cache_line.h"
#include "platform/directshow/unknown.h"

/// A fixed number of samples of one size. It enters the kernel only to wait, where the platform's
/// own allocator does so for every sample taken and given back. Threads may share it.
///
/// What is granted is what was asked for. The memory is kept while decommitted, until other
/// properties are set; samples that are still out keep the allocator alive.
class CMemAllocator final : public CUnknown, public IMemAllocator {
 public:
  /// Stores a new allocator in `allocator`.
  static HRESULT create(IMemAllocator** allocator);

  ~CMemAllocator() override;

  DECLARE_IUNKNOWN
  ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

  // IMemAllocator
  HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* wanted,
                                          ALLOCATOR_PROPERTIES* granted) override;
  HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* properties) override;
  HRESULT STDMETHODCALLTYPE Commit() override;

  /// Ends every wait for a sample with VFW_E_NOT_COMMITTED.
  HRESULT STDMETHODCALLTYPE Decommit() override;

  /// A sample as long as its buffer, without times, flags and type. Waits for one to come back,
  /// unless `flags` has AM_GBF_NOWAIT: VFW_E_TIMEOUT then. `start`, `stop`: not used.
  HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** sample, REFERENCE_TIME* start,
                                      REFERENCE_TIME* stop, DWORD flags) override;

  /// Samples call it with their last release; nobody else has to.
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* sample) override;

 private:
  class Sample;

  CMemAllocator();

  void makeSamples();
  Sample* takeFree();
  Sample* awaitFree();

  /// How many samples are out.
  std::uint64_t out() const { return taken_ - back_; }

  // In `back_`, less the samples still out: only those keep the allocator alive.
  static constexpr std::uint64_t kOrphaned = std::uint64_t{1} << 63;

  // Samples come back without the lock, on a stack that a taker empties at once when it has used up
  // what it took before: whoever gives back and whoever takes seldom meet.
  alignas(korr::platform::kCacheLine) std::atomic<Sample*> returned_ = nullptr;
  std::atomic<std::uint64_t> back_ = 0;  // how many samples ever came back
  std::atomic<int> waiting_ = 0;         // threads that need to be woken

  // How many samples ever went out; written under the lock.
  alignas(korr::platform::kCacheLine) std::atomic<std::uint64_t> taken_ = 0;
  std::atomic<std::uint64_t> fewOut_ = 0;
  SRWLOCK lock_ = SRWLOCK_INIT;  // over taking, and over what follows
  CONDITION_VARIABLE isFree_ = CONDITION_VARIABLE_INIT;
  std::atomic<bool> isCommitted_ = false;  // written under the lock
  ALLOCATOR_PROPERTIES properties_ = {};
  std::vector<BYTE> memory_;
  std::vector<std::unique_ptr<Sample>> samples_;
  Sample* free_ = nullptr;  // the last one back goes out first: its memory is warm
};
