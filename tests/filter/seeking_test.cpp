// SPDX-License-Identifier: MIT

// What renderers ask of the filter's output goes on to the source.
#include <gtest/gtest.h>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

/// A source of captions that can tell its position.
class SeekableSource final : public CBaseFilter {
 public:
  SeekableSource() : CBaseFilter(TEXT("seekable source"), nullptr, &lock_, GUID_NULL) {}

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int) override { return &pin_; }

 private:
  class Pin final : public CBaseOutputPin, public IMediaSeeking {
   public:
    Pin(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
        : CBaseOutputPin(TEXT("pin"), filter, lock, result, L"Output") {}

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override {
      if (iid == IID_IMediaSeeking) return GetInterface(static_cast<IMediaSeeking*>(this), object);
      return CBaseOutputPin::NonDelegatingQueryInterface(iid, object);
    }
    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT GetMediaType(int position, CMediaType* type) override {
      type->SetType(&MEDIATYPE_ClosedCaptions);
      type->SetSubtype(&MEDIASUBTYPE_ClosedCaptionTriplets);
      return position == 0 ? S_OK : VFW_S_NO_MORE_ITEMS;
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) override {
      ALLOCATOR_PROPERTIES granted = {};
      return allocator->SetProperties(wanted, &granted);
    }

    // IMediaSeeking
    HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG* duration) override {
      *duration = 1234;
      return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCapabilities(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CheckCapabilities(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsFormatSupported(const GUID*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE QueryPreferredFormat(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTimeFormat(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsUsingTimeFormat(const GUID*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetTimeFormat(const GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStopPosition(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ConvertTimeFormat(LONGLONG*, const GUID*, LONGLONG,
                                                const GUID*) override {
      return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG*, DWORD, LONGLONG*, DWORD) override {
      return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetPositions(LONGLONG*, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG*, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetRate(double) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRate(double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPreroll(LONGLONG*) override { return E_NOTIMPL; }
  };

  CCritSec lock_;
  HRESULT result_ = S_OK;
  Pin pin_{this, &lock_, &result_};
};

TEST(Seeking, ReachesTheSourceThroughTheOutput) {
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  {
    const auto filter = createFilter();
    const ComPtr<SeekableSource> source(new SeekableSource);
    ComPtr<IMediaSeeking> seeking;
    ComPtr<IMediaPosition> position;
    ASSERT_EQ(filter->GetPin(1)->QueryInterface(IID_PPV_ARGS(&seeking)), S_OK);
    ASSERT_EQ(filter->GetPin(1)->QueryInterface(IID_IMediaPosition, &position), S_OK);
    LONGLONG duration = 0;
    EXPECT_TRUE(FAILED(seeking->GetDuration(&duration))) << "nobody is upstream";
    ASSERT_EQ(source->GetPin(0)->Connect(filter->GetPin(0), nullptr), S_OK);
    EXPECT_EQ(seeking->GetDuration(&duration), S_OK);
    EXPECT_EQ(duration, 1234);
    ComPtr<IPin> pin;
    ASSERT_EQ(seeking.As(&pin), S_OK);
    EXPECT_EQ(pin.Get(), filter->GetPin(1)) << "one identity";
    source->GetPin(0)->Disconnect();
    filter->GetPin(0)->Disconnect();
  }
  EXPECT_EQ(CBaseObject::ObjectsActive(), 0) << "a reference leaked";
  CoUninitialize();
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
