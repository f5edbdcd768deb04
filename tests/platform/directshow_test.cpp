// SPDX-License-Identifier: MIT

// The rules of COM and DirectShow that filters get wrong most often, on a filter with two pins.
#include <gtest/gtest.h>
#include <streams.h>
#include <wrl/client.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>

using Microsoft::WRL::ComPtr;

namespace {

const CLSID kTestClass = {
    0x6E7B4C8A, 0x0D0B, 0x4E0E, {0x9A, 0x57, 0x26, 0xC0, 0x59, 0x6A, 0x1F, 0x01}};
const WCHAR kTestName[] = L"Test filter";
const AMOVIESETUP_FILTER kSetup = {&kTestClass, kTestName, MERIT_DO_NOT_USE, 0, nullptr};

std::wstring longName(std::size_t length) {
  return std::wstring(length, L'n');
}

class TestInputPin final : public CBaseInputPin {
 public:
  TestInputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
      : CBaseInputPin(TEXT("input"), filter, lock, result, L"Input") {}

  HRESULT CheckMediaType(const CMediaType* type) override {
    return type->majortype == MEDIATYPE_Text ? S_OK : S_FALSE;
  }
  HRESULT CompleteConnect(IPin* connector) override {
    return refuseCompletion ? VFW_E_NO_TRANSPORT : CBaseInputPin::CompleteConnect(connector);
  }
  HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override {
    return hasAllocator ? CBaseInputPin::GetAllocator(allocator) : VFW_E_NO_ALLOCATOR;
  }

  IMemAllocator* allocator() { return m_pAllocator; }

  bool refuseCompletion = false;
  bool hasAllocator = true;
};

class TestOutputPin final : public CBaseOutputPin {
 public:
  TestOutputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
      : CBaseOutputPin(TEXT("output"), filter, lock, result, longName(MAX_PIN_NAME).c_str()) {}

  HRESULT CheckMediaType(const CMediaType* type) override {
    return type->majortype == MEDIATYPE_Text ? S_OK : S_FALSE;
  }
  HRESULT GetMediaType(int position, CMediaType* type) override {
    static const GUID* const kMajorTypes[] = {&MEDIATYPE_Video, &MEDIATYPE_Text, &MEDIATYPE_Audio};
    if (position > 2) return VFW_S_NO_MORE_ITEMS;
    type->SetType(kMajorTypes[position]);
    type->SetFormatType(&FORMAT_None);
    return S_OK;
  }
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) override {
    if (refuseAllocators) return VFW_E_BADALIGN;
    wanted->cBuffers = 2;
    wanted->cbBuffer = 16;
    ALLOCATOR_PROPERTIES actual = {};
    return allocator->SetProperties(wanted, &actual);
  }

  IMemAllocator* allocator() { return m_pAllocator; }

  bool refuseAllocators = false;
};

class TestFilter final : public CBaseFilter {
 public:
  explicit TestFilter(IUnknown* outer)
      : CBaseFilter(TEXT("filter"), outer, &lock_, kTestClass),
        input(this, &lock_, &result_),
        output(this, &lock_, &result_) {}

  static CUnknown* CALLBACK create(IUnknown* outer, HRESULT*) { return new TestFilter(outer); }

  int GetPinCount() override { return 2; }
  CBasePin* GetPin(int index) override {
    if (index == 0) return &input;
    return index == 1 ? static_cast<CBasePin*>(&output) : nullptr;
  }
  const AMOVIESETUP_FILTER* GetSetupData() override { return &kSetup; }

 private:
  CCritSec lock_;
  HRESULT result_ = S_OK;

 public:
  TestInputPin input;
  TestOutputPin output;
};

ULONG referencesOf(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

class DirectShowBaseClasses : public testing::Test {
 protected:
  DirectShowBaseClasses() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    source_ = new TestFilter(nullptr);
    sink_ = new TestFilter(nullptr);
  }

  ~DirectShowBaseClasses() override {
    source_->Stop();
    sink_->Stop();
    disconnect();
    source_.Reset();
    sink_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), 0) << "a reference leaked";
    CoUninitialize();
  }

  HRESULT connect(const AM_MEDIA_TYPE* type = nullptr) {
    return source_->output.Connect(&sink_->input, type);
  }
  void disconnect() {
    source_->output.Disconnect();
    sink_->input.Disconnect();
  }

  ComPtr<TestFilter> source_;
  ComPtr<TestFilter> sink_;
};

TEST_F(DirectShowBaseClasses, AnswerOneIdentityFromEveryFace) {
  ComPtr<IUnknown> identity;
  ASSERT_EQ(source_->QueryInterface(IID_PPV_ARGS(&identity)), S_OK);
  for (const IID* iid : {&IID_IBaseFilter, &IID_IMediaFilter, &IID_IPersist, &IID_IAMovieSetup}) {
    ComPtr<IUnknown> face;
    ComPtr<IUnknown> back;
    ASSERT_EQ(identity->QueryInterface(*iid, &face), S_OK);
    ASSERT_EQ(face.As(&back), S_OK);
    EXPECT_EQ(back.Get(), identity.Get());
  }
  void* none = this;
  EXPECT_EQ(identity->QueryInterface(IID_IPin, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(identity->QueryInterface(IID_IPin, nullptr), E_POINTER);
}

TEST_F(DirectShowBaseClasses, CountReferencesOfPinsAsTheFilters) {
  const ULONG before = referencesOf(static_cast<IBaseFilter*>(source_.Get()));
  ComPtr<IPin> pin(&source_->input);
  EXPECT_EQ(referencesOf(static_cast<IBaseFilter*>(source_.Get())), before + 1);
}

TEST_F(DirectShowBaseClasses, EnumeratePins) {
  ComPtr<IEnumPins> pins;
  ASSERT_EQ(source_->EnumPins(&pins), S_OK);
  IPin* found[3] = {};
  ULONG fetched = 7;
  EXPECT_EQ(pins->Next(2, found, nullptr), E_INVALIDARG);
  EXPECT_EQ(pins->Next(1, nullptr, &fetched), E_POINTER);
  ASSERT_EQ(pins->Next(1, found, nullptr), S_OK);
  EXPECT_EQ(found[0], &source_->input);
  found[0]->Release();

  ComPtr<IEnumPins> clone;
  ASSERT_EQ(pins->Clone(&clone), S_OK);
  ASSERT_EQ(clone->Next(3, found, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 1u);
  EXPECT_EQ(found[0], &source_->output);
  found[0]->Release();

  EXPECT_EQ(pins->Skip(1), S_OK);
  EXPECT_EQ(pins->Skip(1), S_FALSE);
  EXPECT_EQ(pins->Next(1, found, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0u);
  ASSERT_EQ(pins->Clone(&clone), S_OK);
  EXPECT_EQ(clone->Next(1, found, &fetched), S_FALSE);

  source_->IncrementPinVersion();
  EXPECT_EQ(pins->Next(1, found, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(pins->Clone(&clone), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(pins->Reset(), S_OK);
  EXPECT_EQ(pins->Skip(2), S_OK);
}

TEST_F(DirectShowBaseClasses, EnumerateMediaTypes) {
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(source_->output.EnumMediaTypes(&types), S_OK);
  AM_MEDIA_TYPE* found[4] = {};
  ULONG fetched = 0;
  ASSERT_EQ(types->Next(4, found, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 3u);
  EXPECT_EQ(found[1]->majortype, MEDIATYPE_Text);
  for (ULONG i = 0; i < fetched; ++i) DeleteMediaType(found[i]);

  source_->output.IncrementTypeVersion();
  EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
}

TEST_F(DirectShowBaseClasses, GiveCountedReferencesAndCutNamesInTheirInformation) {
  PIN_INFO pin = {};
  ASSERT_EQ(source_->output.QueryPinInfo(&pin), S_OK);
  EXPECT_EQ(std::wstring(pin.achName), longName(MAX_PIN_NAME - 1));
  EXPECT_EQ(pin.pFilter, source_.Get());
  pin.pFilter->Release();

  ComPtr<IGraphBuilder> graph;
  ASSERT_EQ(
      CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph)),
      S_OK);
  const ULONG before = referencesOf(graph.Get());
  ASSERT_EQ(source_->JoinFilterGraph(graph.Get(), longName(MAX_FILTER_NAME).c_str()), S_OK);
  EXPECT_EQ(referencesOf(graph.Get()), before) << "a filter takes no reference on its graph";

  FILTER_INFO filter = {};
  ASSERT_EQ(source_->QueryFilterInfo(&filter), S_OK);
  EXPECT_EQ(std::wstring(filter.achName), longName(MAX_FILTER_NAME - 1));
  EXPECT_EQ(filter.pGraph, graph.Get());
  EXPECT_EQ(filter.pGraph->Release(), before);
  EXPECT_EQ(source_->JoinFilterGraph(nullptr, nullptr), S_OK);
}

TEST_F(DirectShowBaseClasses, FindPinsByTheirIdentifier) {
  LPWSTR id = nullptr;
  ASSERT_EQ(source_->output.QueryId(&id), S_OK);
  ComPtr<IPin> pin;
  EXPECT_EQ(source_->FindPin(id, &pin), S_OK);
  EXPECT_EQ(pin.Get(), &source_->output);
  CoTaskMemFree(id);
  EXPECT_EQ(source_->FindPin(L"Nowhere", pin.ReleaseAndGetAddressOf()), VFW_E_NOT_FOUND);
  EXPECT_EQ(pin.Get(), nullptr);
}

TEST_F(DirectShowBaseClasses, RefuseNullPointers) {
  EXPECT_EQ(source_->EnumPins(nullptr), E_POINTER);
  EXPECT_EQ(source_->FindPin(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(source_->GetState(0, nullptr), E_POINTER);
  EXPECT_EQ(source_->GetSyncSource(nullptr), E_POINTER);
  EXPECT_EQ(source_->GetClassID(nullptr), E_POINTER);
  EXPECT_EQ(source_->QueryFilterInfo(nullptr), E_POINTER);
  EXPECT_EQ(source_->QueryVendorInfo(nullptr), E_POINTER);
  EXPECT_EQ(source_->output.Connect(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(source_->output.ConnectedTo(nullptr), E_POINTER);
  EXPECT_EQ(source_->output.ConnectionMediaType(nullptr), E_POINTER);
  EXPECT_EQ(source_->output.QueryPinInfo(nullptr), E_POINTER);
  EXPECT_EQ(source_->output.QueryAccept(nullptr), E_POINTER);
  EXPECT_EQ(sink_->input.ReceiveConnection(&source_->output, nullptr), E_POINTER);
  EXPECT_EQ(sink_->input.NotifyAllocator(nullptr, FALSE), E_POINTER);
  EXPECT_EQ(sink_->input.Receive(nullptr), E_POINTER);
}

TEST_F(DirectShowBaseClasses, AgreeOnTheFirstTypeThatBothTakeAndThatFitsAPartialOne) {
  const CMediaType audio(&MEDIATYPE_Audio);
  EXPECT_EQ(connect(&audio), VFW_E_NO_ACCEPTABLE_TYPES);
  const CMediaType text(&MEDIATYPE_Text);
  EXPECT_EQ(connect(&text), S_OK);
  disconnect();
  ASSERT_EQ(connect(), S_OK);
  ComPtr<IPin> peer;
  EXPECT_EQ(sink_->input.ConnectedTo(&peer), S_OK);
  EXPECT_EQ(peer.Get(), &source_->output);
  CMediaType agreed;
  EXPECT_EQ(sink_->input.ConnectionMediaType(&agreed), S_OK);
  EXPECT_EQ(agreed.majortype, MEDIATYPE_Text);
  EXPECT_EQ(agreed.formattype, FORMAT_None);
}

TEST_F(DirectShowBaseClasses, ClearTheResultsOfAPinThatIsNotConnected) {
  IPin* pin = &source_->input;
  EXPECT_EQ(source_->output.ConnectedTo(&pin), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin, nullptr);
  AM_MEDIA_TYPE type;
  std::memset(&type, 0xCC, sizeof type);
  EXPECT_EQ(source_->output.ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(type.pbFormat, nullptr);
  EXPECT_EQ(type.majortype, GUID_NULL);
}

TEST_F(DirectShowBaseClasses, AnswerAnUnwelcomeTypeWithSFalse) {
  const CMediaType video(&MEDIATYPE_Video);
  EXPECT_EQ(source_->output.QueryAccept(&video), S_FALSE);
  const CMediaType text(&MEDIATYPE_Text);
  EXPECT_EQ(source_->output.QueryAccept(&text), S_OK);
}

TEST_F(DirectShowBaseClasses, RefuseConnectionsTwiceInTheWrongDirectionOrWhileActive) {
  EXPECT_EQ(source_->output.Connect(&sink_->output, nullptr), VFW_E_INVALID_DIRECTION);
  ASSERT_EQ(source_->Pause(), S_OK);
  EXPECT_EQ(connect(), VFW_E_NOT_STOPPED);
  source_->Stop();
  sink_->Pause();
  EXPECT_NE(connect(), S_OK);
  sink_->Stop();

  ASSERT_EQ(connect(), S_OK);
  EXPECT_EQ(connect(), VFW_E_ALREADY_CONNECTED);
  source_->Pause();
  EXPECT_EQ(source_->output.Disconnect(), VFW_E_NOT_STOPPED);
  source_->Stop();
  EXPECT_EQ(source_->output.Disconnect(), S_OK);
  EXPECT_EQ(source_->output.Disconnect(), S_FALSE);
}

TEST_F(DirectShowBaseClasses, LeaveNoTraceOfAFailedConnection) {
  const std::function<void(bool)> obstacles[] = {
      [this](bool on) { sink_->input.refuseCompletion = on; },
      [this](bool on) { source_->output.refuseAllocators = on; },
  };
  for (const auto& obstruct : obstacles) {
    obstruct(true);
    EXPECT_LT(connect(), 0);
    EXPECT_FALSE(source_->output.IsConnected());
    EXPECT_FALSE(sink_->input.IsConnected());
    EXPECT_EQ(source_->output.allocator(), nullptr);
    EXPECT_EQ(sink_->input.allocator(), nullptr);
    obstruct(false);
    EXPECT_EQ(connect(), S_OK) << "and the next one must work";
    disconnect();
  }
}

TEST_F(DirectShowBaseClasses, UseTheSinksAllocatorOrOneOfTheirOwn) {
  ASSERT_EQ(connect(), S_OK);
  EXPECT_EQ(source_->output.allocator(), sink_->input.allocator());
  disconnect();

  sink_->input.hasAllocator = false;
  ASSERT_EQ(connect(), S_OK);
  EXPECT_EQ(source_->output.allocator(), sink_->input.allocator());
}

TEST_F(DirectShowBaseClasses, CommitTheAllocatorFromPauseToStop) {
  ASSERT_EQ(connect(), S_OK);
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(source_->output.GetDeliveryBuffer(&sample, nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
  ASSERT_EQ(source_->Pause(), S_OK);
  EXPECT_EQ(source_->output.GetDeliveryBuffer(&sample, nullptr, nullptr, 0), S_OK);
  sample.Reset();
  ASSERT_EQ(source_->Stop(), S_OK);
  EXPECT_EQ(source_->output.GetDeliveryBuffer(&sample, nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);

  ComPtr<IMemAllocator> allocator(source_->output.allocator());
  disconnect();
  EXPECT_EQ(referencesOf(allocator.Get()), 1u) << "disconnecting releases it";
}

TEST_F(DirectShowBaseClasses, RefuseSamplesWhileStoppedOrFlushing) {
  ASSERT_EQ(connect(), S_OK);
  ASSERT_EQ(source_->Pause(), S_OK);
  ComPtr<IMediaSample> sample;
  ASSERT_EQ(source_->output.GetDeliveryBuffer(&sample, nullptr, nullptr, 0), S_OK);
  EXPECT_EQ(source_->output.Deliver(sample.Get()), VFW_E_WRONG_STATE);
  sink_->Pause();
  EXPECT_EQ(source_->output.Deliver(sample.Get()), S_OK);
  EXPECT_EQ(source_->output.DeliverBeginFlush(), S_OK);
  EXPECT_EQ(source_->output.Deliver(sample.Get()), S_FALSE);
  long processed = 0;
  IMediaSample* samples[] = {sample.Get(), sample.Get()};
  EXPECT_EQ(sink_->input.ReceiveMultiple(samples, 2, &processed), S_FALSE);
  EXPECT_EQ(processed, 0);
  EXPECT_EQ(source_->output.DeliverEndFlush(), S_OK);
  EXPECT_EQ(sink_->input.ReceiveMultiple(samples, 2, &processed), S_OK);
  EXPECT_EQ(processed, 2);
}

TEST(MediaType, CopiesItsFormatBlockAndComparesIt) {
  const BYTE format[] = {1, 2, 3};
  CMediaType type(&MEDIATYPE_Text);
  ASSERT_TRUE(type.SetFormat(format, sizeof format));
  CMediaType copy(type);
  EXPECT_NE(copy.pbFormat, type.pbFormat);
  EXPECT_TRUE(copy == type);
  copy.pbFormat[2] = 4;
  EXPECT_FALSE(copy == type);
  type = type;  // NOLINT(clang-diagnostic-self-assign-overloaded): must not free its own block
  EXPECT_EQ(type.pbFormat[2], 3);
  copy.SetFormat(nullptr, 0);
  EXPECT_EQ(copy.pbFormat, nullptr);
}

/// An outer object around an aggregated filter.
class Outer final : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid == IID_IUnknown) return GetInterface(this, object);
    return inner->QueryInterface(iid, object);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  ULONG references = 1;
  ComPtr<IUnknown> inner;
};

TEST(ClassFactory, CreatesAggregatedObjects) {
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(DllGetClassObject(kTestClass, IID_PPV_ARGS(&factory)), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  Outer outer;
  void* object = nullptr;
  EXPECT_EQ(factory->CreateInstance(&outer, IID_IBaseFilter, &object), E_NOINTERFACE);
  ASSERT_EQ(factory->CreateInstance(&outer, IID_PPV_ARGS(&outer.inner)), S_OK);
  {
    ComPtr<IBaseFilter> filter;
    ASSERT_EQ(outer.QueryInterface(IID_PPV_ARGS(&filter)), S_OK);
    EXPECT_EQ(outer.references, 2u) << "a face of the filter counts on the outer object";
    ComPtr<IUnknown> identity;
    ASSERT_EQ(filter.As(&identity), S_OK);
    EXPECT_EQ(identity.Get(), &outer);
  }
  EXPECT_EQ(outer.references, 1u);
  outer.inner.Reset();
  EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  factory.Reset();
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE) << "locked";
  DllGetClassObject(kTestClass, IID_PPV_ARGS(&factory));
  factory->LockServer(FALSE);
  factory.Reset();
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_EQ(DllGetClassObject(CLSID_FilterGraph, IID_PPV_ARGS(&factory)),
            CLASS_E_CLASSNOTAVAILABLE);
}

TEST(Registration, WritesTheClassAndTakesItBack) {
  const std::wstring key = L"CLSID\\{6E7B4C8A-0D0B-4E0E-9A57-26C0596A1F01}\\InprocServer32";
  const auto threadingModel = [&key] {
    WCHAR value[16] = {};
    DWORD size = sizeof value;
    RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), L"ThreadingModel", RRF_RT_REG_SZ, nullptr, value,
                 &size);
    return std::wstring(value);
  };
  ASSERT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
  EXPECT_EQ(threadingModel(), L"Both");
  EXPECT_EQ(AMovieDllRegisterServer2(FALSE), S_OK);
  EXPECT_EQ(threadingModel(), L"");
  EXPECT_EQ(AMovieDllRegisterServer2(FALSE), S_OK) << "removing what is not there is no failure";
}

}  // namespace

CFactoryTemplate g_Templates[] = {{kTestName, &kTestClass, TestFilter::create, nullptr, &kSetup}};
int g_cTemplates = 1;
