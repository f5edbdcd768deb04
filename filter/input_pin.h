// SPDX-License-Identifier: MIT

// The filter's input: takes every sample and does no work on the streaming thread.
#pragma once

#include <memory>

#include "filter/com_boundary.h"
#include "filter/input_pin_with_dynamic_media_type.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

class CSubtitleConverter;

/// What an input pin of the filter leaves to the filter: the pin's calls on their way there.
class CSubtitleConverterInputPin {
 public:
  /// `filter` is not owned: it owns the pin.
  explicit CSubtitleConverterInputPin(CSubtitleConverter* filter) : filter_(filter) {}

  bool accepts(const AM_MEDIA_TYPE& type) const;

  /// The one type that is proposed: teletext. The others are accepted, but never proposed.
  CMediaType proposal() const;

  /// Queues a sample, or the end of the stream (null).
  void intake(IMediaSample* sample);

  void beginFlush();
  void endFlush();
  void newSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);
  void disconnected();

  log::ILogger& logger();

 private:
  CSubtitleConverter* filter_;
};

/// The input pin over a policy such as the above.
template <class Policy>
class CTessaryInputPin final : public CInputPinWithDynamicMediaType {
 public:
  static constexpr const WCHAR* kName = L"Input";

  // The allocator asked for. The buffer size is deliberate: upstream knows its payloads.
  static constexpr ALLOCATOR_PROPERTIES kRequirements = {
      .cBuffers = 32, .cbBuffer = 1, .cbAlign = 32, .cbPrefix = 0};

  /// `filter` and `filterLock` are not owned.
  CTessaryInputPin(CBaseFilter* filter, CCritSec* filterLock, HRESULT* result,
                   std::shared_ptr<Policy> policy)
      : CInputPinWithDynamicMediaType(TEXT("TessaryInputPinObject"), filter, filterLock, result,
                                      kName),
        policy_(std::move(policy)) {}

  HRESULT CheckMediaType(const CMediaType* type) override {
    if (!type) return E_POINTER;
    return policy_->accepts(*type) ? S_OK : S_FALSE;
  }

  HRESULT GetMediaType(int position, CMediaType* type) override {
    if (!type) return E_POINTER;
    if (position < 0) return E_INVALIDARG;
    if (position > 0) return VFW_S_NO_MORE_ITEMS;
    return type->Set(policy_->proposal());
  }

  HRESULT BreakConnect() override {
    policy_->disconnected();
    return CInputPinWithDynamicMediaType::BreakConnect();
  }

  // IPin

  HRESULT STDMETHODCALLTYPE EndOfStream() override {
    return atComBoundary(policy_->logger(), [this] {
      const CAutoLock lock(&receiveLock_);
      if (!IsFlushing()) policy_->intake(nullptr);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE BeginFlush() override {
    return atComBoundary(policy_->logger(), [this] {
      CBaseInputPin::BeginFlush();
      policy_->beginFlush();
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE EndFlush() override {
    return atComBoundary(policy_->logger(), [this] {
      policy_->endFlush();
      return CBaseInputPin::EndFlush();
    });
  }

  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop,
                                       double rate) override {
    return atComBoundary(policy_->logger(), [&] {
      const CAutoLock lock(&receiveLock_);
      policy_->newSegment(start, stop, rate);
      return S_OK;
    });
  }

  // IMemInputPin

  /// Samples that come while the filter is stopped are dropped, and S_OK all the same.
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override {
    if (!sample) return E_POINTER;
    return atComBoundary(policy_->logger(), [this, sample] {
      const CAutoLock lock(&receiveLock_);
      if (IsFlushing()) return S_FALSE;
      policy_->intake(sample);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_FALSE; }

  HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* wanted) override {
    if (!wanted) return E_POINTER;
    *wanted = kRequirements;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override {
    return atComBoundary(policy_->logger(), [&] {
      const HRESULT result = CBaseInputPin::NotifyAllocator(allocator, readOnly);
      if (FAILED(result)) throw HResultError(result);
      return result;
    });
  }

 private:
  CCritSec receiveLock_;  // one sample at a time, should several threads deliver
  std::shared_ptr<Policy> policy_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
