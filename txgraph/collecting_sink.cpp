// SPDX-License-Identifier: MIT
#include "txgraph/collecting_sink.h"

#include <wrl/client.h>

#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

using filters::mqs_subtitle_converter::MEDIATYPE_TimedText;
using Microsoft::WRL::ComPtr;

ReceivedSample describe(IMediaSample* sample) {
  REFERENCE_TIME start = 0;
  REFERENCE_TIME stop = 0;
  sample->GetTime(&start, &stop);
  BYTE* bytes = nullptr;
  sample->GetPointer(&bytes);
  const auto length = static_cast<std::size_t>(sample->GetActualDataLength());
  return {.start = static_cast<std::uint64_t>(start),
          .stop = static_cast<std::uint64_t>(stop),
          .sync = sample->IsSyncPoint() == S_OK,
          .discontinuity = sample->IsDiscontinuity() == S_OK,
          .data = {bytes, bytes ? length : 0},
          .sample = sample};
}

CCollectingSink::CCollectingSink(Callbacks callbacks, REFERENCE_TIME timeBase)
    : CBaseFilter(TEXT("collecting sink"), nullptr, &lock_, GUID_NULL),
      callbacks_(std::move(callbacks)),
      timeBase_(timeBase),
      due_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      stopped_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      pin_(this, &lock_, &pinResult_) {
}

CCollectingSink::~CCollectingSink() {
  CloseHandle(due_);
  CloseHandle(stopped_);
}

HRESULT CCollectingSink::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid == IID_IAMFilterMiscFlags) {
    return GetInterface(static_cast<IAMFilterMiscFlags*>(this), object);
  }
  return CBaseFilter::NonDelegatingQueryInterface(iid, object);
}

void CCollectingSink::waitUntilDue(REFERENCE_TIME start) {
  ComPtr<IReferenceClock> clock;
  GetSyncSource(&clock);
  DWORD_PTR cookie = 0;
  if (!clock || m_State != State_Running ||
      FAILED(clock->AdviseTime(m_tStart, start - timeBase_, reinterpret_cast<HEVENT>(due_),
                               &cookie))) {
    return;
  }
  const HANDLE either[] = {stopped_, due_};
  WaitForMultipleObjects(2, either, FALSE, INFINITE);
  clock->Unadvise(cookie);
}

HRESULT CCollectingSink::Pin::Active() {
  ResetEvent(sink_->stopped_);
  return CBaseInputPin::Active();
}

HRESULT CCollectingSink::Pin::Inactive() {
  SetEvent(sink_->stopped_);
  return CBaseInputPin::Inactive();
}

HRESULT CCollectingSink::Pin::BeginFlush() {
  SetEvent(sink_->stopped_);
  return CBaseInputPin::BeginFlush();
}

HRESULT CCollectingSink::Pin::EndFlush() {
  ResetEvent(sink_->stopped_);
  return CBaseInputPin::EndFlush();
}

HRESULT CCollectingSink::Pin::CheckMediaType(const CMediaType* type) {
  return type->majortype == MEDIATYPE_TimedText ? S_OK : S_FALSE;
}

HRESULT CCollectingSink::Pin::Receive(IMediaSample* sample) {
  const HRESULT result = CBaseInputPin::Receive(sample);
  if (result != S_OK) return result;
  const ReceivedSample received = describe(sample);
  sink_->waitUntilDue(static_cast<REFERENCE_TIME>(received.start));
  return sink_->callbacks_.onSample(received);
}

HRESULT CCollectingSink::Pin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  if (sink_->callbacks_.onNewSegment) sink_->callbacks_.onNewSegment(start);
  return CBaseInputPin::NewSegment(start, stop, rate);
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
