// SPDX-License-Identifier: MIT
#include "platform/directshow/base_output_pin.h"

#include <wrl/client.h>

#include "platform/directshow/memory_allocator.h"

using Microsoft::WRL::ComPtr;

CBaseOutputPin::CBaseOutputPin(const TCHAR* objectName, CBaseFilter* filter, CCritSec* lock,
                               HRESULT* result, LPCWSTR name)
    : CBasePin(objectName, filter, lock, result, name, PINDIR_OUTPUT) {
}

CBaseOutputPin::~CBaseOutputPin() {
  CBaseOutputPin::BreakConnect();
}

HRESULT CBaseOutputPin::CheckConnect(IPin* pin) {
  const HRESULT result = CBasePin::CheckConnect(pin);
  if (FAILED(result)) return result;
  if (m_pInputPin) m_pInputPin->Release();
  m_pInputPin = nullptr;
  return pin->QueryInterface(IID_PPV_ARGS(&m_pInputPin));
}

HRESULT CBaseOutputPin::CompleteConnect(IPin*) {
  return DecideAllocator(m_pInputPin, &m_pAllocator);
}

HRESULT CBaseOutputPin::BreakConnect() {
  if (m_pAllocator) {
    m_pAllocator->Decommit();
    m_pAllocator->Release();
    m_pAllocator = nullptr;
  }
  if (m_pInputPin) {
    m_pInputPin->Release();
    m_pInputPin = nullptr;
  }
  return CBasePin::BreakConnect();
}

HRESULT CBaseOutputPin::Active() {
  return m_pAllocator ? m_pAllocator->Commit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::Inactive() {
  return m_pAllocator ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator) {
  *allocator = nullptr;
  ALLOCATOR_PROPERTIES wanted = {};
  if (FAILED(pin->GetAllocatorRequirements(&wanted))) wanted = {};
  if (wanted.cbAlign == 0) wanted.cbAlign = 1;

  ComPtr<IMemAllocator> candidate;
  HRESULT result = pin->GetAllocator(&candidate);
  if (SUCCEEDED(result)) result = useAllocator(pin, candidate.Get(), wanted);
  if (FAILED(result)) {
    candidate.Reset();
    result = CMemAllocator::create(&candidate);
    if (SUCCEEDED(result)) result = useAllocator(pin, candidate.Get(), wanted);
  }
  if (SUCCEEDED(result)) *allocator = candidate.Detach();
  return result;
}

HRESULT CBaseOutputPin::useAllocator(IMemInputPin* pin, IMemAllocator* allocator,
                                     ALLOCATOR_PROPERTIES wanted) {
  const HRESULT result = DecideBufferSize(allocator, &wanted);
  return SUCCEEDED(result) ? pin->NotifyAllocator(allocator, FALSE) : result;
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start,
                                          REFERENCE_TIME* stop, DWORD flags) {
  return m_pAllocator ? m_pAllocator->GetBuffer(sample, start, stop, flags) : E_NOINTERFACE;
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* sample) {
  return m_pInputPin ? m_pInputPin->Receive(sample) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndOfStream() {
  return m_Connected ? m_Connected->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverBeginFlush() {
  return m_Connected ? m_Connected->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndFlush() {
  return m_Connected ? m_Connected->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  return m_Connected ? m_Connected->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}
