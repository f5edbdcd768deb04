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
