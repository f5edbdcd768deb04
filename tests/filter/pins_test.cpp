// What the pins accept, propose and ask for.
#include <gtest/gtest.h>

#include <optional>

#include "filter/subtitle_converter.h"
#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

class FilterPins : public testing::Test {
 protected:
  FilterPins() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    HRESULT result = S_OK;
    filter_ =
        static_cast<CSubtitleConverter*>(CSubtitleConverter::CreateInstance(nullptr, &result));
  }
  ~FilterPins() override {
    filter_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
    CoUninitialize();
  }

  CBaseInputPin& input() { return filter_->inputPin(); }
  CBaseOutputPin& output() { return static_cast<CBaseOutputPin&>(*filter_->GetPin(1)); }

  void setMode(std::uint32_t mode) { filter_->SetConfiguration(mode, 0, 2000, nullptr, 0, 0, 0); }

  static CMediaType type(const GUID& major, const GUID& sub) {
    CMediaType made(&major);
    made.SetSubtype(&sub);
    return made;
  }

  ComPtr<CSubtitleConverter> filter_;
};

TEST_F(FilterPins, AcceptThreeKindsOfInput) {
  const auto check = [this](const GUID& major, const GUID& sub) {
    const CMediaType asked = type(major, sub);
    return input().CheckMediaType(&asked);
  };
  EXPECT_EQ(check(MEDIATYPE_TimedText, MEDIASUBTYPE_TeletextPes), S_OK);
  EXPECT_EQ(check(MEDIATYPE_TimedText, MEDIASUBTYPE_DvbSubtitlePes), S_OK);
  EXPECT_EQ(check(MEDIATYPE_ClosedCaptions, MEDIASUBTYPE_ClosedCaptionTriplets), S_OK);
  EXPECT_EQ(check(MEDIATYPE_TimedText, MEDIASUBTYPE_ClosedCaptionTriplets), S_FALSE);
  EXPECT_EQ(check(MEDIATYPE_ClosedCaptions, MEDIASUBTYPE_TeletextPes), S_FALSE);
  EXPECT_EQ(check(MEDIATYPE_TimedText, MEDIASUBTYPE_WebVtt), S_FALSE);
}

TEST_F(FilterPins, ProposeTeletextAlone) {
  CMediaType proposed;
  EXPECT_EQ(input().GetMediaType(0, nullptr), E_POINTER);
  EXPECT_EQ(input().GetMediaType(-1, &proposed), E_INVALIDARG);
  EXPECT_EQ(input().GetMediaType(1, &proposed), VFW_S_NO_MORE_ITEMS);
  ASSERT_EQ(input().GetMediaType(0, &proposed), S_OK);
  EXPECT_EQ(classifyInput(proposed), SubtitleInputType::Teletext);
  EXPECT_EQ(proposed.formattype, GUID_NULL);
}

TEST_F(FilterPins, AskForManySmallInputBuffersAndNeverBlock) {
  ALLOCATOR_PROPERTIES wanted = {};
  EXPECT_EQ(input().GetAllocatorRequirements(nullptr), E_POINTER);
  ASSERT_EQ(input().GetAllocatorRequirements(&wanted), S_OK);
  EXPECT_EQ(wanted.cBuffers, 32);
  EXPECT_EQ(wanted.cbBuffer, 1);
  EXPECT_EQ(wanted.cbAlign, 32);
  EXPECT_EQ(wanted.cbPrefix, 0);
  EXPECT_EQ(input().ReceiveCanBlock(), S_FALSE);
}

TEST_F(FilterPins, AnswerMisuseWithResultsAndSayWhatWasWrong) {
  RecordingLogger logger;
  filter_->SetLogger(&logger);
  EXPECT_EQ(input().NotifyAllocator(nullptr, FALSE), E_POINTER);
  const auto lines = logger.take();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].rfind("0 Error: ", 0), 0u) << lines[0];
  EXPECT_EQ(input().Receive(nullptr), E_POINTER);
  filter_->SetLogger(nullptr);
}

TEST_F(FilterPins, OfferTheTypeOfTheMode) {
  const struct {
    std::uint32_t mode;
    const GUID& subtype;
  } kRows[] = {
      {0, GUID_NULL},           {1, GUID_NULL}, {2, MEDIASUBTYPE_Ttml},       {3, GUID_NULL},
      {4, MEDIASUBTYPE_WebVtt}, {5, GUID_NULL}, {6, MEDIASUBTYPE_YoutubeSrt}, {7, GUID_NULL}};
  for (const auto& row : kRows) {
    setMode(row.mode);
    CMediaType offered;
    ASSERT_EQ(output().GetMediaType(0, &offered), S_OK);
    EXPECT_EQ(offered.majortype, MEDIATYPE_TimedText);
    EXPECT_EQ(offered.subtype, row.subtype) << row.mode;
    EXPECT_EQ(output().CheckMediaType(&offered), row.subtype == GUID_NULL ? S_FALSE : S_OK);
  }
  EXPECT_EQ(output().GetMediaType(1, nullptr), VFW_S_NO_MORE_ITEMS);
  EXPECT_EQ(output().GetMediaType(-1, nullptr), VFW_S_NO_MORE_ITEMS);
  EXPECT_EQ(output().GetMediaType(0, nullptr), E_POINTER);
  EXPECT_EQ(output().CheckMediaType(nullptr), E_POINTER);
}

TEST_F(FilterPins, AcceptEveryTextTypeWhateverTheMode) {
  setMode(0);
  for (const GUID* subtype : {&MEDIASUBTYPE_Ttml, &MEDIASUBTYPE_WebVtt, &MEDIASUBTYPE_YoutubeSrt}) {
    const CMediaType asked = type(MEDIATYPE_TimedText, *subtype);
    EXPECT_EQ(output().CheckMediaType(&asked), S_OK);
  }
}

TEST_F(FilterPins, TellEnumeratorsWhenTheModeChanges) {
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(output().EnumMediaTypes(&types), S_OK);
  setMode(4);
  AM_MEDIA_TYPE* found = nullptr;
  EXPECT_EQ(types->Next(1, &found, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
}

/// Takes down what it is asked for, and grants it or not.
class FakeAllocator final : public IMemAllocator {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* wanted,
                                          ALLOCATOR_PROPERTIES* granted) override {
    asked = *wanted;
    *granted = {.cBuffers = 1, .cbBuffer = 1, .cbAlign = 1, .cbPrefix = 0};
    return answer;
  }
  HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Commit() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Decommit() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample**, REFERENCE_TIME*, REFERENCE_TIME*,
                                      DWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample*) override { return E_NOTIMPL; }

  ALLOCATOR_PROPERTIES asked = {};
  HRESULT answer = S_OK;
};

TEST_F(FilterPins, SizeTheOutputForManySmallDocuments) {
  RecordingLogger logger;
  filter_->SetLogger(&logger);
  FakeAllocator allocator;
  ALLOCATOR_PROPERTIES wanted = {.cBuffers = 1, .cbBuffer = 9999, .cbAlign = 1, .cbPrefix = 7};
  ASSERT_EQ(output().DecideBufferSize(&allocator, &wanted), S_OK);
  EXPECT_EQ(allocator.asked.cBuffers, 128);
  EXPECT_EQ(allocator.asked.cbBuffer, 1024);
  EXPECT_EQ(allocator.asked.cbAlign, 32);
  EXPECT_EQ(allocator.asked.cbPrefix, 0);
  EXPECT_EQ(logger.take(), std::vector<std::string>{"counters subtitle_converter_TTML"});

  setMode(6);
  wanted = {.cBuffers = 500, .cbBuffer = 1, .cbAlign = 64, .cbPrefix = 0};
  ASSERT_EQ(output().DecideBufferSize(&allocator, &wanted), S_OK);
  EXPECT_EQ(allocator.asked.cBuffers, 500);
  EXPECT_EQ(allocator.asked.cbAlign, 64);
  EXPECT_EQ(logger.take(), std::vector<std::string>{"counters subtitle_converter_Youtube Srt"});

  allocator.answer = VFW_E_ALREADY_COMMITTED;
  EXPECT_EQ(output().DecideBufferSize(&allocator, &wanted), VFW_E_ALREADY_COMMITTED);
  EXPECT_TRUE(logger.take().empty()) << "no name for counters of an allocator that refused";
  EXPECT_EQ(output().DecideBufferSize(nullptr, &wanted), E_POINTER);
  filter_->SetLogger(nullptr);
}

TEST_F(FilterPins, AreFoundByName) {
  ComPtr<IPin> pin;
  EXPECT_EQ(filter_->FindPin(L"Input", &pin), S_OK);
  EXPECT_EQ(pin.Get(), &input());
  EXPECT_EQ(filter_->FindPin(L"Output", pin.ReleaseAndGetAddressOf()), S_OK);
  EXPECT_EQ(pin.Get(), &output());
}

/// Counts the quality messages that reach it.
class QualitySink final : public IQualityControl {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE Notify(IBaseFilter*, Quality quality) override {
    proportion = quality.Proportion;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetSink(IQualityControl*) override { return E_NOTIMPL; }

  long proportion = 0;
};

TEST_F(FilterPins, PassQualityMessagesUpstream) {
  const Quality late = {.Type = Flood, .Proportion = 900, .Late = 1, .TimeStamp = 0};
  EXPECT_EQ(output().Notify(nullptr, late), VFW_E_NOT_FOUND) << "nobody upstream";
  QualitySink sink;
  input().SetSink(&sink);
  EXPECT_EQ(output().Notify(nullptr, late), S_OK);
  EXPECT_EQ(sink.proportion, 900);
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
