// SPDX-License-Identifier: MIT

// The filter's output: offers the type of the configured mode, with room for many small documents.
#pragma once

#include <streams.h>
#include <wrl/client.h>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

class CSubtitleConverter;

/// Negotiates type and allocator; the chain delivers through UpStreamPin.
class CSubtitleConverterOutputPin final : public CBaseOutputPin {
 public:
  static constexpr const WCHAR* kName = L"Output";

  // The allocator asked for; counts and alignments above these are kept.
  static constexpr long kBuffers = 128;
  static constexpr long kBufferSize = 1024;  // bytes
  static constexpr long kAlignment = 32;     // bytes

  /// `filter` is not owned: it owns the pin.
  CSubtitleConverterOutputPin(CSubtitleConverter* filter, HRESULT* result);

  /// IMediaSeeking and IMediaPosition too: what they are asked goes on to the upstream filter.
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT GetMediaType(int position, CMediaType* type) override;
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) override;

  /// Lets go of whoever waits for a buffer: there are none until `resumeWaits`.
  void endWaits() {
    if (m_pAllocator) m_pAllocator->Decommit();
  }

  /// There are buffers again, or a failure says why not. Not while stopped.
  HRESULT resumeWaits() { return m_pAllocator ? m_pAllocator->Commit() : S_OK; }

  /// Passes quality messages on to the upstream filter.
  HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* self, Quality quality) override;

 private:
  HRESULT makeSeeking();

  // The pin's own lock and not the filter's: connecting the output need not wait for the input.
  CCritSec lock_;
  CSubtitleConverter* filter_;
  Microsoft::WRL::ComPtr<IUnknown> seeking_;  // made when first asked for; aggregated
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
