// SPDX-License-Identifier: MIT
#include "platform/directshow/base_pin.h"

#include <wrl/client.h>

#include "platform/directshow/enumerators.h"

using Microsoft::WRL::ComPtr;

namespace {

// How a refusal of CheckMediaType looks from outside.
HRESULT asRefusal(HRESULT checked) {
  const bool isPlainRefusal = SUCCEEDED(checked) || checked == E_FAIL || checked == E_INVALIDARG;
  return isPlainRefusal ? VFW_E_TYPE_NOT_ACCEPTED : checked;
}

}  // namespace

CBasePin::CBasePin(const TCHAR* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT*,
                   LPCWSTR name, PIN_DIRECTION direction)
    : CUnknown(objectName, nullptr),
      m_dir(direction),
      m_pLock(lock),
      m_pFilter(filter),
      name_(name) {
}

HRESULT CBasePin::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid == IID_IPin) return GetInterface(static_cast<IPin*>(this), object);
  if (iid == IID_IQualityControl) {
    return GetInterface(static_cast<IQualityControl*>(this), object);
  }
  return CUnknown::NonDelegatingQueryInterface(iid, object);
}

ULONG CBasePin::NonDelegatingAddRef() {
  return m_pFilter->AddRef();
}

ULONG CBasePin::NonDelegatingRelease() {
  return m_pFilter->Release();
}

HRESULT CBasePin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
  if (!receiver) return E_POINTER;
  const CAutoLock lock(m_pLock);
  if (m_Connected) return VFW_E_ALREADY_CONNECTED;
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  return withoutThrowing(
      [&] { return agreeMediaType(receiver, type ? CMediaType(*type) : CMediaType()); });
}

HRESULT CBasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
  if (!connector || !type) return E_POINTER;
  const CAutoLock lock(m_pLock);
  if (m_Connected) return VFW_E_ALREADY_CONNECTED;
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  HRESULT result = withoutThrowing([&] { return prepareConnection(connector, CMediaType(*type)); });
  if (SUCCEEDED(result)) result = CompleteConnect(connector);
  if (FAILED(result)) undoConnection();
  return SUCCEEDED(result) ? S_OK : result;
}

// Finds a type that both pins take: the wanted one, or one that either proposes and that fits what
// the wanted one fixes. The receiver's proposals come first.
HRESULT CBasePin::agreeMediaType(IPin* receiver, const CMediaType& wanted) {
  if (!wanted.IsPartiallySpecified()) return attemptConnection(receiver, wanted);

  HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
  IPin* const proposers[] = {receiver, this};
  for (IPin* proposer : proposers) {
    ComPtr<IEnumMediaTypes> types;
    if (FAILED(proposer->EnumMediaTypes(&types)) || !types) continue;
    const HRESULT result = tryMediaTypes(receiver, wanted, types.Get());
    if (SUCCEEDED(result)) return result;
    if (result != VFW_E_NO_ACCEPTABLE_TYPES) failure = result;
  }
  return failure;
}

HRESULT CBasePin::tryMediaTypes(IPin* receiver, const CMediaType& wanted, IEnumMediaTypes* types) {
  HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
  AM_MEDIA_TYPE* proposed = nullptr;
  while (types->Next(1, &proposed, nullptr) == S_OK) {
    const CMediaType type(*proposed);
    DeleteMediaType(proposed);
    if (!type.MatchesPartial(&wanted)) continue;
    const HRESULT result = attemptConnection(receiver, type);
    if (SUCCEEDED(result)) return result;
    // A refused type says nothing; what else went wrong is worth more than "no type".
    if (asRefusal(result) != VFW_E_TYPE_NOT_ACCEPTED) failure = result;
  }
  return failure;
}

HRESULT CBasePin::attemptConnection(IPin* receiver, const CMediaType& type) {
  HRESULT result = prepareConnection(receiver, type);
  if (SUCCEEDED(result)) {
    result = receiver->ReceiveConnection(this, &type);
    if (SUCCEEDED(result)) {
      result = CompleteConnect(receiver);
      if (FAILED(result)) receiver->Disconnect();
    }
  }
  if (FAILED(result)) undoConnection();
  return SUCCEEDED(result) ? S_OK : result;
}

// The part of connecting that both sides share.
HRESULT CBasePin::prepareConnection(IPin* peer, const CMediaType& type) {
  HRESULT result = CheckConnect(peer);
  if (FAILED(result)) return result;
  result = CheckMediaType(&type);
  if (result != S_OK) return asRefusal(result);
  m_Connected = peer;
  m_Connected->AddRef();
  return SetMediaType(&type);
}

void CBasePin::undoConnection() {
  BreakConnect();
  if (m_Connected) m_Connected->Release();
  m_Connected = nullptr;
  m_mt = CMediaType();
}

HRESULT CBasePin::Disconnect() {
  const CAutoLock lock(m_pLock);
  if (!IsStopped()) return VFW_E_NOT_STOPPED;
  if (!m_Connected) return S_FALSE;
  undoConnection();
  return S_OK;
}

HRESULT CBasePin::ConnectedTo(IPin** pin) {
  if (!pin) return E_POINTER;
  const CAutoLock lock(m_pLock);
  *pin = m_Connected;
  if (!m_Connected) return VFW_E_NOT_CONNECTED;
  m_Connected->AddRef();
  return S_OK;
}

HRESULT CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
  if (!type) return E_POINTER;
  *type = AM_MEDIA_TYPE{};
  const CAutoLock lock(m_pLock);
  if (!m_Connected) return VFW_E_NOT_CONNECTED;
  return CopyMediaType(type, &m_mt);
}

HRESULT CBasePin::QueryPinInfo(PIN_INFO* info) {
  if (!info) return E_POINTER;
  info->achName[name_.copy(info->achName, MAX_PIN_NAME - 1)] = L'\0';
  info->dir = m_dir;
  info->pFilter = m_pFilter;
  m_pFilter->AddRef();
  return S_OK;
}

HRESULT CBasePin::QueryDirection(PIN_DIRECTION* direction) {
  if (!direction) return E_POINTER;
  *direction = m_dir;
  return S_OK;
}

HRESULT CBasePin::QueryId(LPWSTR* id) {
  if (!id) return E_POINTER;
  *id = static_cast<LPWSTR>(CoTaskMemAlloc((name_.size() + 1) * sizeof(WCHAR)));
  if (!*id) return E_OUTOFMEMORY;
  (*id)[name_.copy(*id, name_.size())] = L'\0';
  return S_OK;
}

HRESULT CBasePin::QueryAccept(const AM_MEDIA_TYPE* type) {
  if (!type) return E_POINTER;
  return withoutThrowing([&] {
    const CMediaType asked(*type);
    return CheckMediaType(&asked) == S_OK ? S_OK : S_FALSE;
  });
}

HRESULT CBasePin::EnumMediaTypes(IEnumMediaTypes** enumerator) {
  if (!enumerator) return E_POINTER;
  return CEnumMediaTypes::Create(this, enumerator);
}

// Every input pin feeds every output pin.
HRESULT CBasePin::QueryInternalConnections(IPin**, ULONG*) {
  return E_NOTIMPL;
}

HRESULT CBasePin::EndOfStream() {
  return S_OK;
}

HRESULT CBasePin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
  return S_OK;
}

HRESULT CBasePin::Notify(IBaseFilter*, Quality) {
  return E_NOTIMPL;
}

HRESULT CBasePin::SetSink(IQualityControl* sink) {
  const CAutoLock lock(m_pLock);
  m_pQSink = sink;
  return S_OK;
}

HRESULT CBasePin::GetMediaType(int, CMediaType*) {
  return E_UNEXPECTED;
}

HRESULT CBasePin::SetMediaType(const CMediaType* type) {
  return m_mt.Set(*type);
}

HRESULT CBasePin::CheckConnect(IPin* pin) {
  PIN_DIRECTION direction = m_dir;
  const HRESULT result = pin->QueryDirection(&direction);
  if (FAILED(result)) return result;
  return direction == m_dir ? VFW_E_INVALID_DIRECTION : S_OK;
}

HRESULT CBasePin::CompleteConnect(IPin*) {
  return S_OK;
}

HRESULT CBasePin::BreakConnect() {
  return S_OK;
}
