// SPDX-License-Identifier: MIT

// What the pins accept, propose and ask for.
#include <gmock/gmock.h>

#include <array>

#include "filter/media_types.h"
#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using testing::ElementsAre;

std::array<long, 4> numbersOf(const ALLOCATOR_PROPERTIES& properties) {
  return {properties.cBuffers, properties.cbBuffer, properties.cbAlign, properties.cbPrefix};
}

class FilterPins : public testing::Test {
 protected:
  FilterPins() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    filter_->SetLogger(&logger_);
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

  RecordingLogger logger_;
  ComPtr<CSubtitleConverter> filter_ = createFilter();
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
  EXPECT_THAT(numbersOf(wanted), ElementsAre(32, 1, 32, 0));
  EXPECT_EQ(input().ReceiveCanBlock(), S_FALSE);
}

TEST_F(FilterPins, AnswerMisuseWithResultsAndSayWhatWasWrong) {
  EXPECT_EQ(input().NotifyAllocator(nullptr, FALSE), E_POINTER);
  EXPECT_THAT(logger_.take(), ElementsAre(testing::StartsWith("0 Error: ")));
  EXPECT_EQ(input().Receive(nullptr), E_POINTER);
}

TEST_F(FilterPins, OfferTheTypeOfTheModeAndAcceptEveryTextType) {
  for (std::uint32_t mode = 0; mode < 8; ++mode) {
    SCOPED_TRACE(mode);
    setMode(mode);
    const GUID& expected = mode == 2   ? MEDIASUBTYPE_Ttml
                           : mode == 4 ? MEDIASUBTYPE_WebVtt
                           : mode == 6 ? MEDIASUBTYPE_YoutubeSrt
                                       : GUID_NULL;
    CMediaType offered;
    ASSERT_EQ(output().GetMediaType(0, &offered), S_OK);
    EXPECT_EQ(offered.majortype, MEDIATYPE_TimedText);
    EXPECT_EQ(offered.subtype, expected);
    EXPECT_EQ(output().CheckMediaType(&offered), expected == GUID_NULL ? S_FALSE : S_OK);
    for (const GUID& sub : {MEDIASUBTYPE_Ttml, MEDIASUBTYPE_WebVtt, MEDIASUBTYPE_YoutubeSrt}) {
      const CMediaType asked = type(MEDIATYPE_TimedText, sub);
      EXPECT_EQ(output().CheckMediaType(&asked), S_OK);
    }
  }
  EXPECT_EQ(output().GetMediaType(1, nullptr), VFW_S_NO_MORE_ITEMS);
  EXPECT_EQ(output().GetMediaType(-1, nullptr), VFW_S_NO_MORE_ITEMS);
  EXPECT_EQ(output().GetMediaType(0, nullptr), E_POINTER);
  EXPECT_EQ(output().CheckMediaType(nullptr), E_POINTER);
}

// As docs/integrating.md says: a type without a format type is an open one, and open types are only
// matched with proposals.
TEST_F(FilterPins, ConnectOnATypeThatIsNamedInFull) {
  setMode(3);
  const ComPtr<host::CCollectingSink> sink(
      new host::CCollectingSink({.onSample = nullptr, .onEndOfStream = nullptr}));
  CMediaType named = type(MEDIATYPE_TimedText, MEDIASUBTYPE_WebVtt);
  EXPECT_EQ(output().Connect(sink->GetPin(0), &named), VFW_E_NO_ACCEPTABLE_TYPES);
  named.SetFormatType(&FORMAT_None);
  EXPECT_EQ(output().Connect(sink->GetPin(0), &named), S_OK);
  output().Disconnect();
  sink->GetPin(0)->Disconnect();
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
  FakeAllocator allocator;
  ALLOCATOR_PROPERTIES wanted = {.cBuffers = 1, .cbBuffer = 9999, .cbAlign = 1, .cbPrefix = 7};
  ASSERT_EQ(output().DecideBufferSize(&allocator, &wanted), S_OK);
  EXPECT_THAT(numbersOf(allocator.asked), ElementsAre(128, 1024, 32, 0));
  EXPECT_THAT(logger_.take(), ElementsAre("counters subtitle_converter_TTML"));

  setMode(6);
  wanted = {.cBuffers = 500, .cbBuffer = 1, .cbAlign = 64, .cbPrefix = 0};
  ASSERT_EQ(output().DecideBufferSize(&allocator, &wanted), S_OK);
  EXPECT_THAT(numbersOf(allocator.asked), ElementsAre(500, 1024, 64, 0));
  EXPECT_THAT(logger_.take(), ElementsAre("counters subtitle_converter_Youtube Srt"));

  allocator.answer = VFW_E_ALREADY_COMMITTED;
  EXPECT_EQ(output().DecideBufferSize(&allocator, &wanted), VFW_E_ALREADY_COMMITTED);
  EXPECT_TRUE(logger_.take().empty()) << "no name for counters of an allocator that refused";
  EXPECT_EQ(output().DecideBufferSize(nullptr, &wanted), E_POINTER);
}

/// Takes down the quality message that reaches it.
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
