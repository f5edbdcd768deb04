// SPDX-License-Identifier: MIT

// What input and output pins share: connecting, and what is known of the connection.
#pragma once

#include <string>

#include "platform/directshow/base_filter.h"
#include "platform/directshow/media_type.h"

/// One pin of a filter, which owns it: the pin's references count as the filter's. Connections are
/// guarded by the lock given at construction; they change only while the filter is stopped.
class CBasePin : public CUnknown, public IPin, public IQualityControl {
 public:
  /// `filter` and `lock` are not owned. `name` is also the pin's identifier in the filter.
  /// `result` is left alone on success.
  CBasePin(const TCHAR* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
           LPCWSTR name, PIN_DIRECTION direction);

  DECLARE_IUNKNOWN
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;
  ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

  // IPin
  HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
  HRESULT STDMETHODCALLTYPE Disconnect() override;
  HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pin) override;
  HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* type) override;
  HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* info) override;
  HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* direction) override;
  HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
  HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override;
  HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** enumerator) override;
  HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* count) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop,
                                       double rate) override;

  // IQualityControl
  HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* self, Quality quality) override;
  HRESULT STDMETHODCALLTYPE SetSink(IQualityControl* sink) override;

  /// S_OK when the pin can work with `type`; anything else is a refusal.
  virtual HRESULT CheckMediaType(const CMediaType* type) = 0;

  /// Stores the type that the pin proposes at `position`, in order of preference:
  /// VFW_S_NO_MORE_ITEMS past the last.
  virtual HRESULT GetMediaType(int position, CMediaType* type);

  /// Takes over the type of the connection being made.
  virtual HRESULT SetMediaType(const CMediaType* type);

  /// The three steps of a connection: whether `pin` will do, what to do once both have agreed, and
  /// undoing both.
  virtual HRESULT CheckConnect(IPin* pin);
  virtual HRESULT CompleteConnect(IPin* receiver);
  virtual HRESULT BreakConnect();

  /// State changes of the filter; called only while connected.
  virtual HRESULT Active() { return S_OK; }
  virtual HRESULT Run(REFERENCE_TIME) { return S_OK; }
  virtual HRESULT Inactive() { return S_OK; }

  /// Changes whenever the proposed types do.
  virtual LONG GetMediaTypeVersion() { return typeVersion_; }
  void IncrementTypeVersion() { ++typeVersion_; }

  bool IsConnected() const { return m_Connected != nullptr; }
  bool IsStopped() const { return m_pFilter->IsStopped(); }
  IPin* GetConnected() { return m_Connected; }  ///< not referenced
  LPWSTR Name() { return name_.data(); }

 protected:
  IPin* m_Connected = nullptr;  // counted
  PIN_DIRECTION m_dir;
  CCritSec* m_pLock;
  CBaseFilter* m_pFilter;
  IQualityControl* m_pQSink = nullptr;  // not counted, as the interface asks
  CMediaType m_mt;                      // of the connection

 private:
  HRESULT agreeMediaType(IPin* receiver, const CMediaType& wanted);
  HRESULT tryMediaTypes(IPin* receiver, const CMediaType& wanted, IEnumMediaTypes* types);
  HRESULT attemptConnection(IPin* receiver, const CMediaType& type);
  HRESULT prepareConnection(IPin* peer, const CMediaType& type);
  void undoConnection();

  std::wstring name_;
  std::atomic<LONG> typeVersion_ = 1;
};
