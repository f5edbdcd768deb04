// SPDX-License-Identifier: MIT

// An allocator that a test interferes with.
#pragma once

#include <streams.h>
#include <wrl/client.h>

#include <atomic>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Passes everything on to one that works. Outlives its users.
class HookedAllocator final : public IMemAllocator {
 public:
  HookedAllocator() { CMemAllocator::create(&inner_); }

  HRESULT decommitAnswer = S_OK;  ///< it decommits all the same
  std::atomic<int> asked = 0;     ///< how many buffers it has been asked for
  std::atomic<bool> isDecommitted = false;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* wanted,
                                          ALLOCATOR_PROPERTIES* granted) override {
    return inner_->SetProperties(wanted, granted);
  }
  HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* properties) override {
    return inner_->GetProperties(properties);
  }
  HRESULT STDMETHODCALLTYPE Commit() override {
    isDecommitted = false;
    return inner_->Commit();
  }
  HRESULT STDMETHODCALLTYPE Decommit() override {
    inner_->Decommit();
    isDecommitted = true;
    return decommitAnswer;
  }
  HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** sample, REFERENCE_TIME* start,
                                      REFERENCE_TIME* stop, DWORD flags) override {
    ++asked;
    return inner_->GetBuffer(sample, start, stop, flags);
  }
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* sample) override {
    return inner_->ReleaseBuffer(sample);
  }

 private:
  Microsoft::WRL::ComPtr<IMemAllocator> inner_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
