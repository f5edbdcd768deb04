// SPDX-License-Identifier: MIT
#include "txgraph/push_source.h"

#include <wrl/client.h>

#include <algorithm>
#include <cstring>

#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

using filters::mqs_subtitle_converter::FORMAT_SubtitleStream;
using Microsoft::WRL::ComPtr;

CPushSource::CPushSource(Settings settings)
    : CBaseFilter(TEXT("push source"), nullptr, &lock_, GUID_NULL),
      settings_(std::move(settings)),
      sampleFormatType_(FORMAT_SubtitleStream),
      pin_(this, &lock_, &pinResult_) {
}

HRESULT CPushSource::fill(const txsub::InputSample& sample, IMediaSample** filled) {
  *filled = nullptr;
  ComPtr<IMediaSample> target;
  HRESULT result = pin_.GetDeliveryBuffer(&target, nullptr, nullptr, 0);
  if (SUCCEEDED(result)) result = copy(sample, *target.Get());
  if (SUCCEEDED(result)) *filled = target.Detach();
  return result;
}

HRESULT CPushSource::push(const txsub::InputSample& sample) {
  ComPtr<IMediaSample> filled;
  const HRESULT result = fill(sample, &filled);
  return SUCCEEDED(result) ? deliver(filled.Get()) : result;
}

HRESULT CPushSource::copy(const txsub::InputSample& sample, IMediaSample& target) const {
  BYTE* bytes = nullptr;
  HRESULT result = target.GetPointer(&bytes);
  if (FAILED(result)) return result;
  if (sample.data.size() > static_cast<std::size_t>(target.GetSize())) return VFW_E_BUFFER_OVERFLOW;
  std::ranges::copy(sample.data, bytes);
  target.SetActualDataLength(static_cast<long>(sample.data.size()));
  target.SetSyncPoint(sample.sync);
  target.SetDiscontinuity(sample.discontinuity);
  if (sample.times) {
    auto start = static_cast<REFERENCE_TIME>(sample.times->start);
    auto stop = static_cast<REFERENCE_TIME>(sample.times->stop);
    target.SetTime(&start, &stop);
  } else {
    target.SetTime(nullptr, nullptr);
  }
  if (!sample.format) return target.SetMediaType(nullptr);
  CMediaType changed(settings_.type);
  changed.SetFormatType(&sampleFormatType_);
  changed.SetFormat(sample.format->data(), static_cast<ULONG>(sample.format->size()));
  return target.SetMediaType(&changed);
}

HRESULT CPushSource::Pin::CheckMediaType(const CMediaType* type) {
  return type->MatchesPartial(&source_->settings_.type) ? S_OK : S_FALSE;
}

HRESULT CPushSource::Pin::GetMediaType(int position, CMediaType* type) {
  if (position != 0) return VFW_S_NO_MORE_ITEMS;
  return type->Set(source_->settings_.type);
}

HRESULT CPushSource::Pin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) {
  wanted->cBuffers = std::max(wanted->cBuffers, source_->settings_.buffers);
  wanted->cbBuffer = std::max(wanted->cbBuffer, source_->settings_.bufferSize);
  ALLOCATOR_PROPERTIES granted = {};
  return allocator->SetProperties(wanted, &granted);
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
