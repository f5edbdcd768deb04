// SPDX-License-Identifier: MIT

// Messages as finished text, for hosts in other languages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using testing::ElementsAre;

class TextSink final : public ISubtitleConverterLogSink {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE OnMessage(std::uint32_t level, BSTR text) override {
    lines.push_back(std::to_wstring(level) + L' ' + std::wstring(text, SysStringLen(text)));
    return E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE OnBufferCountersNamed(BSTR name) override {
    lines.push_back(std::wstring(L"counters ") + name);
    return S_OK;
  }

  ULONG references = 0;
  std::vector<std::wstring> lines;
};

TEST(Logging, SendsEveryMessageAsTextToASinkBesideTheLogger) {
  TextSink sink;
  {
    GraphTestBench bench({.isTeletext = true});
    ComPtr<ISubtitleConverterLogging> logging;
    ASSERT_EQ(bench.filter->QueryInterface(IID_PPV_ARGS(&logging)), S_OK);
    EXPECT_EQ(logging->SetLogSink(&sink), S_OK);
    InputSample sample = captionSample(1);
    sample.format = {0x56, 5, 'e', 'n', 'g', 2 << 3 | 0, 0x88};
    bench.play({sample});
    const std::wstring found = L"2 Teletext descriptor(s) detected : [eng, 888] ";
    EXPECT_THAT(sink.lines, ElementsAre(L"2 No Teletext descriptor detected", found));
    EXPECT_EQ(bench.logger.take().size(), 2u) << "the logger has them too";
    bench.stop();
    EXPECT_EQ(sink.references, 1u);
    EXPECT_EQ(logging->SetLogSink(nullptr), S_OK);
    EXPECT_EQ(sink.references, 0u) << "released as soon as another is set";
    bench.play({sample});
    EXPECT_EQ(sink.lines.size(), 2u);
    logging->SetLogSink(&sink);
  }
  EXPECT_EQ(sink.references, 0u) << "and when the filter ends";
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
