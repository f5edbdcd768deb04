// SPDX-License-Identifier: MIT
#include "platform/directshow/base_input_pin.h"

#include <wrl/client.h>

#include "platform/directshow/memory_allocator.h"

using Microsoft::WRL::ComPtr;

CBaseInputPin::CBaseInputPin(const TCHAR* objectName, CBaseFilter* filter, CCritSec* lock,
                             HRESULT* result, LPCWSTR name)
    : CBasePin(objectName, filter, lock, result, name, PINDIR_INPUT) {
}

CBaseInputPin::~CBaseInputPin() {
  releaseAllocator();
}

HRESULT CBaseInputPin::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid == IID_IMemInputPin) return GetInterface(static_cast<IMemInputPin*>(this), object);
  return CBasePin::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseInputPin::BeginFlush() {
  const CAutoLock lock(m_pLock);
  m_bFlushing = true;
  return S_OK;
}

HRESULT CBaseInputPin::EndFlush() {
  const CAutoLock lock(m_pLock);
  m_bFlushing = false;
  return S_OK;
}

HRESULT CBaseInputPin::GetAllocator(IMemAllocator** allocator) {
  if (!allocator) return E_POINTER;
  *allocator = nullptr;
  const CAutoLock lock(m_pLock);
  if (!m_pAllocator) {
    const HRESULT result = CMemAllocator::create(&m_pAllocator);
    if (FAILED(result)) return result;
  }
  m_pAllocator->AddRef();
  *allocator = m_pAllocator;
  return S_OK;
}

HRESULT CBaseInputPin::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) {
  if (!allocator) return E_POINTER;
  const CAutoLock lock(m_pLock);
  allocator->AddRef();
  if (m_pAllocator) m_pAllocator->Release();
  m_pAllocator = allocator;
  m_bReadOnly = readOnly != FALSE;
  return S_OK;
}

HRESULT CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) {
  return E_NOTIMPL;
}

HRESULT CBaseInputPin::Receive(IMediaSample* sample) {
  if (!sample) return E_POINTER;
  return CheckStreaming();
}

// Stops at the first sample that is not taken.
HRESULT CBaseInputPin::ReceiveMultiple(IMediaSample** samples, long count, long* processed) {
  if (!samples || !processed) return E_POINTER;
  HRESULT result = S_OK;
  for (*processed = 0; *processed < count; ++*processed) {
    result = Receive(samples[*processed]);
    if (result != S_OK) break;
  }
  return result;
}

HRESULT CBaseInputPin::ReceiveCanBlock() {
  return S_OK;
}

HRESULT CBaseInputPin::Inactive() {
  m_bFlushing = false;
  return m_pAllocator ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseInputPin::BreakConnect() {
  releaseAllocator();
  return CBasePin::BreakConnect();
}

HRESULT CBaseInputPin::CheckStreaming() {
  if (!IsConnected()) return VFW_E_NOT_CONNECTED;
  if (IsStopped()) return VFW_E_WRONG_STATE;
  return IsFlushing() ? S_FALSE : S_OK;
}

HRESULT CBaseInputPin::PassNotify(const Quality& quality) {
  ComPtr<IQualityControl> target;
  {
    const CAutoLock lock(m_pLock);
    if (m_pQSink) {
      target = m_pQSink;
    } else if (m_Connected) {
      m_Connected->QueryInterface(IID_PPV_ARGS(&target));
    }
  }
  return target ? target->Notify(m_pFilter, quality) : VFW_E_NOT_FOUND;
}

void CBaseInputPin::releaseAllocator() {
  if (!m_pAllocator) return;
  m_pAllocator->Decommit();
  m_pAllocator->Release();
  m_pAllocator = nullptr;
}
