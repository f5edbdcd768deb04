// SPDX-License-Identifier: MIT
#include "filter/output_pin.h"

#include <algorithm>
#include <string>

#include "filter/media_types.h"
#include "filter/subtitle_converter.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

// The base class stores the lock's address; nobody locks before construction ends.
CSubtitleConverterOutputPin::CSubtitleConverterOutputPin(CSubtitleConverter* filter,
                                                         HRESULT* result)
    : CBaseOutputPin(TEXT("output pin"), filter, &lock_, result, kName), filter_(filter) {
}

HRESULT CSubtitleConverterOutputPin::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid != IID_IMediaSeeking && iid != IID_IMediaPosition) {
    return CBaseOutputPin::NonDelegatingQueryInterface(iid, object);
  }
  if (!object) return E_POINTER;
  *object = nullptr;
  const CAutoLock lock(&lock_);
  const HRESULT result = seeking_ ? S_OK : makeSeeking();
  return SUCCEEDED(result) ? seeking_->QueryInterface(iid, object) : result;
}

// The platform's own object for this asks whoever the input is connected to at the time.
HRESULT CSubtitleConverterOutputPin::makeSeeking() {
  Microsoft::WRL::ComPtr<IUnknown> made;
  HRESULT result = CoCreateInstance(CLSID_SeekingPassThru, GetOwner(), CLSCTX_INPROC_SERVER,
                                    IID_PPV_ARGS(&made));
  if (FAILED(result)) return result;
  Microsoft::WRL::ComPtr<ISeekingPassThru> passThru;
  result = made.As(&passThru);
  if (SUCCEEDED(result)) result = passThru->Init(FALSE, &filter_->inputPin());
  if (SUCCEEDED(result)) seeking_ = made;
  return result;
}

HRESULT CSubtitleConverterOutputPin::CheckMediaType(const CMediaType* type) {
  if (!type) return E_POINTER;
  return isOutputType(*type) ? S_OK : S_FALSE;
}

HRESULT CSubtitleConverterOutputPin::GetMediaType(int position, CMediaType* type) {
  if (position != 0) return VFW_S_NO_MORE_ITEMS;
  if (!type) return E_POINTER;
  CMediaType offered(&MEDIATYPE_TimedText);
  offered.SetSubtype(&outputSubtype(filter_->mode()));
  return type->Set(offered);
}

HRESULT CSubtitleConverterOutputPin::DecideBufferSize(IMemAllocator* allocator,
                                                      ALLOCATOR_PROPERTIES* wanted) {
  if (!allocator || !wanted) return E_POINTER;
  return atComBoundary(filter_->logger(), [&] {
    wanted->cBuffers = std::max(wanted->cBuffers, kBuffers);
    wanted->cbBuffer = kBufferSize;
    wanted->cbAlign = std::max(wanted->cbAlign, kAlignment);
    wanted->cbPrefix = 0;
    ALLOCATOR_PROPERTIES granted = {};
    const HRESULT result = allocator->SetProperties(wanted, &granted);
    if (FAILED(result)) return result;
    const std::string name = std::string("subtitle_converter_") + displayName(filter_->mode());
    filter_->logger().nameBufferCounters(name.c_str());
    return S_OK;
  });
}

HRESULT CSubtitleConverterOutputPin::Notify(IBaseFilter*, Quality quality) {
  return filter_->inputPin().PassNotify(quality);
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
