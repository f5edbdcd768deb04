// SPDX-License-Identifier: MIT

// Samples in memory.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "concurrency/sample_pool.h"
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

  std::mutex setup_;  // over what follows
  ALLOCATOR_PROPERTIES properties_ = {};
  std::vector<BYTE> memory_;
  std::vector<std::unique_ptr<Sample>> samples_;
  korr::concurrency::SamplePool<Sample> pool_;
};
