#include "filter/host/collecting_sink.h"

#include <wrl/client.h>

#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

using filters::mqs_subtitle_converter::MEDIATYPE_TimedText;
using Microsoft::WRL::ComPtr;

CCollectingSink::CCollectingSink(Callbacks callbacks)
    : CBaseFilter(TEXT("collecting sink"), nullptr, &lock_, GUID_NULL),
      callbacks_(std::move(callbacks)),
      pin_(this, &lock_, &pinResult_) {
}

HRESULT CCollectingSink::Pin::CheckMediaType(const CMediaType* type) {
  return type->majortype == MEDIATYPE_TimedText ? S_OK : S_FALSE;
}

HRESULT CCollectingSink::Pin::Receive(IMediaSample* sample) {
  const HRESULT result = CBaseInputPin::Receive(sample);
  if (result != S_OK) return result;
  REFERENCE_TIME start = 0;
  REFERENCE_TIME stop = 0;
  sample->GetTime(&start, &stop);
  BYTE* bytes = nullptr;
  const HRESULT pointed = sample->GetPointer(&bytes);
  if (FAILED(pointed)) return pointed;
  return sink_->callbacks_.onSample(
      {.start = static_cast<std::uint64_t>(start),
       .stop = static_cast<std::uint64_t>(stop),
       .sync = sample->IsSyncPoint() == S_OK,
       .discontinuity = sample->IsDiscontinuity() == S_OK,
       .data = {bytes, static_cast<std::size_t>(sample->GetActualDataLength())},
       .sample = sample});
}

HRESULT CCollectingSink::Pin::EndOfStream() {
  const HRESULT result = CheckStreaming();
  if (result != S_OK) return result;
  sink_->callbacks_.onEndOfStream();
  ComPtr<IMediaEventSink> events;
  if (IFilterGraph* graph = sink_->GetFilterGraph()) graph->QueryInterface(IID_PPV_ARGS(&events));
  if (!events) return S_OK;
  return events->Notify(EC_COMPLETE, S_OK,
                        reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(sink_)));
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
