// SPDX-License-Identifier: MIT

// A pin that gives samples.
#pragma once

#include "platform/directshow/base_pin.h"

/// An output pin over the downstream pin's IMemInputPin, with the allocator that both settle on.
/// GetDeliveryBuffer and the Deliver functions run on the streaming thread without a lock: they are
/// called only between Active and the end of the state change to stopped.
class CBaseOutputPin : public CBasePin {
 public:
  /// As CBasePin.
  CBaseOutputPin(const TCHAR* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result,
                 LPCWSTR name);
  ~CBaseOutputPin() override;

  // IPin: an output pin takes no stream, E_UNEXPECTED.
  HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
  HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }

  HRESULT CheckConnect(IPin* pin) override;
  HRESULT CompleteConnect(IPin* receiver) override;
  HRESULT BreakConnect() override;
  HRESULT Active() override;
  HRESULT Inactive() override;

  /// Settles the allocator: the downstream pin's, or else a CMemAllocator.
  virtual HRESULT DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator);

  /// Sets the properties of `allocator`; `wanted` holds what the downstream pin asks for.
  virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) = 0;

  /// Waits for an empty sample. `start`, `stop`: may be null. `flags`: AM_GBF_*.
  virtual HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start,
                                    REFERENCE_TIME* stop, DWORD flags);
  virtual HRESULT Deliver(IMediaSample* sample);
  virtual HRESULT DeliverEndOfStream();
  virtual HRESULT DeliverBeginFlush();
  virtual HRESULT DeliverEndFlush();
  virtual HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

 protected:
  IMemAllocator* m_pAllocator = nullptr;  // counted
  IMemInputPin* m_pInputPin = nullptr;    // counted

 private:
  HRESULT useAllocator(IMemInputPin* pin, IMemAllocator* allocator, ALLOCATOR_PROPERTIES wanted);
};
