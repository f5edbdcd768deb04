// SPDX-License-Identifier: MIT

// What every DirectShow filter has: states, clock, pins, its place in a graph.
#pragma once

#include <string>

#include "platform/directshow/locks.h"
#include "platform/directshow/unknown.h"

class CBasePin;

using AMOVIESETUP_MEDIATYPE = REGPINTYPES;
using AMOVIESETUP_PIN = REGFILTERPINS;

/// What the filter mapper is told about a filter.
struct AMOVIESETUP_FILTER {
  const CLSID* clsID;
  const WCHAR* strName;
  DWORD dwMerit;
  UINT nPins;
  const AMOVIESETUP_PIN* lpPin;
};

/// IBaseFilter over the pins that the derived class names, and IAMovieSetup over its setup data.
/// State changes and graph membership are guarded by the lock given at construction.
class CBaseFilter : public CUnknown, public IBaseFilter, public IAMovieSetup {
 public:
  /// `lock` is not owned. `outer`: the aggregating object, or null.
  CBaseFilter(const TCHAR* name, IUnknown* outer, CCritSec* lock, REFCLSID clsid);
  ~CBaseFilter() override;

  DECLARE_IUNKNOWN
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

  // IPersist
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override;

  // IMediaFilter
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
  HRESULT STDMETHODCALLTYPE GetState(DWORD timeoutMs, FILTER_STATE* state) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;

  // IBaseFilter
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** enumerator) override;
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) override;

  // IAMovieSetup: S_FALSE without setup data.
  HRESULT STDMETHODCALLTYPE Register() override;
  HRESULT STDMETHODCALLTYPE Unregister() override;

  virtual int GetPinCount() = 0;
  virtual CBasePin* GetPin(int index) = 0;  ///< null when there is none; not referenced

  /// Changes whenever the set of pins does.
  virtual LONG GetPinVersion() { return pinVersion_; }
  void IncrementPinVersion() { ++pinVersion_; }

  /// What the filter mapper is told about this filter; null when nothing.
  virtual const AMOVIESETUP_FILTER* GetSetupData() { return nullptr; }

  bool IsStopped() const { return m_State == State_Stopped; }
  IFilterGraph* GetFilterGraph() { return m_pGraph; }

 protected:
  std::atomic<FILTER_STATE> m_State = State_Stopped;
  IReferenceClock* m_pClock = nullptr;  // counted
  REFERENCE_TIME m_tStart = 0;
  CLSID m_clsid;
  CCritSec* m_pLock;
  IFilterGraph* m_pGraph = nullptr;  // not counted: the graph owns the filter

 private:
  std::wstring name_;  // in the graph
  std::atomic<LONG> pinVersion_ = 1;
};

/// Registers a filter with the filter mapper, or removes it.
HRESULT registerWithFilterMapper(const AMOVIESETUP_FILTER& setup, bool add);
