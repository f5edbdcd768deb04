// SPDX-License-Identifier: MIT
#include "platform/directshow/base_filter.h"

#include <wrl/client.h>

#include <cwchar>

#include "platform/directshow/base_pin.h"
#include "platform/directshow/enumerators.h"

using Microsoft::WRL::ComPtr;

namespace {

// Calls `change` for every connected pin and returns the first failure. Pins without a connection
// take no part in state changes.
template <class Change>
HRESULT forConnectedPins(CBaseFilter& filter, bool stopAtFailure, Change change) {
  HRESULT result = S_OK;
  for (int i = 0; i < filter.GetPinCount(); ++i) {
    CBasePin* pin = filter.GetPin(i);
    if (!pin || !pin->IsConnected()) continue;
    const HRESULT one = change(*pin);
    if (SUCCEEDED(one) || FAILED(result)) continue;
    result = one;
    if (stopAtFailure) return result;
  }
  return result;
}

}  // namespace

CBaseFilter::CBaseFilter(const TCHAR* name, IUnknown* outer, CCritSec* lock, REFCLSID clsid)
    : CUnknown(name, outer), m_clsid(clsid), m_pLock(lock) {
}

CBaseFilter::~CBaseFilter() {
  if (m_pClock) m_pClock->Release();
}

HRESULT CBaseFilter::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (iid == IID_IBaseFilter || iid == IID_IMediaFilter || iid == IID_IPersist) {
    return GetInterface(static_cast<IBaseFilter*>(this), object);
  }
  if (iid == IID_IAMovieSetup) return GetInterface(static_cast<IAMovieSetup*>(this), object);
  return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseFilter::GetClassID(CLSID* clsid) {
  if (!clsid) return E_POINTER;
  *clsid = m_clsid;
  return S_OK;
}

HRESULT CBaseFilter::Stop() {
  const CAutoLock lock(m_pLock);
  HRESULT result = S_OK;
  if (!IsStopped()) {
    // All pins are told, even after one that fails: half a stop helps nobody.
    result = forConnectedPins(*this, false, [](CBasePin& pin) { return pin.Inactive(); });
  }
  m_State = State_Stopped;
  return result;
}

HRESULT CBaseFilter::Pause() {
  const CAutoLock lock(m_pLock);
  if (IsStopped()) {
    const HRESULT result =
        forConnectedPins(*this, true, [](CBasePin& pin) { return pin.Active(); });
    if (FAILED(result)) return result;
  }
  m_State = State_Paused;
  return S_OK;
}

HRESULT CBaseFilter::Run(REFERENCE_TIME start) {
  const CAutoLock lock(m_pLock);
  m_tStart = start;
  if (IsStopped()) {
    const HRESULT result = Pause();
    if (FAILED(result)) return result;
  }
  if (m_State != State_Running) {
    const HRESULT result =
        forConnectedPins(*this, true, [start](CBasePin& pin) { return pin.Run(start); });
    if (FAILED(result)) return result;
  }
  m_State = State_Running;
  return S_OK;
}

// State changes are complete when they return, so there is nothing to wait for.
HRESULT CBaseFilter::GetState(DWORD, FILTER_STATE* state) {
  if (!state) return E_POINTER;
  *state = m_State;
  return S_OK;
}

HRESULT CBaseFilter::SetSyncSource(IReferenceClock* clock) {
  const CAutoLock lock(m_pLock);
  if (clock) clock->AddRef();
  if (m_pClock) m_pClock->Release();
  m_pClock = clock;
  return S_OK;
}

HRESULT CBaseFilter::GetSyncSource(IReferenceClock** clock) {
  if (!clock) return E_POINTER;
  const CAutoLock lock(m_pLock);
  if (m_pClock) m_pClock->AddRef();
  *clock = m_pClock;
  return S_OK;
}

HRESULT CBaseFilter::EnumPins(IEnumPins** enumerator) {
  if (!enumerator) return E_POINTER;
  return CEnumPins::Create(this, enumerator);
}

HRESULT CBaseFilter::FindPin(LPCWSTR id, IPin** pin) {
  if (!id || !pin) return E_POINTER;
  *pin = nullptr;
  const CAutoLock lock(m_pLock);
  for (int i = 0; i < GetPinCount(); ++i) {
    CBasePin* candidate = GetPin(i);
    if (!candidate || std::wcscmp(candidate->Name(), id) != 0) continue;
    candidate->AddRef();
    *pin = candidate;
    return S_OK;
  }
  return VFW_E_NOT_FOUND;
}

HRESULT CBaseFilter::QueryFilterInfo(FILTER_INFO* info) {
  if (!info) return E_POINTER;
  const CAutoLock lock(m_pLock);
  info->achName[name_.copy(info->achName, MAX_FILTER_NAME - 1)] = L'\0';
  info->pGraph = m_pGraph;
  if (m_pGraph) m_pGraph->AddRef();
  return S_OK;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
  const CAutoLock lock(m_pLock);
  return withoutThrowing([&] {
    name_ = name && graph ? name : L"";
    m_pGraph = graph;  // a reference would be a circle
    return S_OK;
  });
}

HRESULT CBaseFilter::QueryVendorInfo(LPWSTR* info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  return E_NOTIMPL;
}

HRESULT CBaseFilter::Register() {
  const AMOVIESETUP_FILTER* setup = GetSetupData();
  return setup ? registerWithFilterMapper(*setup, true) : S_FALSE;
}

HRESULT CBaseFilter::Unregister() {
  const AMOVIESETUP_FILTER* setup = GetSetupData();
  return setup ? registerWithFilterMapper(*setup, false) : S_FALSE;
}

HRESULT registerWithFilterMapper(const AMOVIESETUP_FILTER& setup, bool add) {
  ComPtr<IFilterMapper2> mapper;
  HRESULT result =
      CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&mapper));
  if (FAILED(result)) return result;
  // A filter that was registered before may have had other data; one that was not is no failure.
  result = mapper->UnregisterFilter(nullptr, nullptr, *setup.clsID);
  if (!add) return result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ? S_OK : result;
  REGFILTER2 data = {};
  data.dwVersion = 1;
  data.dwMerit = setup.dwMerit;
  data.cPins = setup.nPins;
  data.rgPins = setup.lpPin;
  return mapper->RegisterFilter(*setup.clsID, setup.strName, nullptr, nullptr, nullptr, &data);
}
