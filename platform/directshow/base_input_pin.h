// SPDX-License-Identifier: MIT

// A pin that takes samples.
#pragma once

#include "platform/directshow/base_pin.h"

/// An input pin with IMemInputPin over the allocator that the upstream pin settles on.
class CBaseInputPin : public CBasePin, public IMemInputPin {
 public:
  /// As CBasePin.
  CBaseInputPin(const TCHAR* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
                LPCWSTR name);
  ~CBaseInputPin() override;

  DECLARE_IUNKNOWN
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

  // IPin
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

  // IMemInputPin
  HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override;
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
  HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* wanted) override;
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
  HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** samples, long count,
                                            long* processed) override;
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override;

  HRESULT Inactive() override;
  HRESULT BreakConnect() override;

  /// Whether a sample is welcome: S_OK; S_FALSE while flushing; an error while not connected or
  /// stopped.
  virtual HRESULT CheckStreaming();

  /// Sends a quality message on: to the sink that was set, or else upstream.
  HRESULT PassNotify(const Quality& quality);

  bool IsReadOnly() const { return m_bReadOnly; }
  bool IsFlushing() const { return m_bFlushing; }

 protected:
  IMemAllocator* m_pAllocator = nullptr;  // counted
  bool m_bReadOnly = false;
  std::atomic<bool> m_bFlushing = false;

 private:
  void releaseAllocator();
};
