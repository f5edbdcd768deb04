// SPDX-License-Identifier: MIT

// The source that the package carries as an example.
#include "push_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using testing::HasSubstr;

TEST(PushSourceExample, FeedsTheFilter) {
  GraphTestBench bench({});
  IPin* const input = bench.filter->GetPin(0);
  bench.graph->RemoveFilter(bench.source.Get());
  ComPtr<example::PushSource> source;
  source.Attach(new example::PushSource(
      {MEDIATYPE_ClosedCaptions, MEDIASUBTYPE_ClosedCaptionTriplets, {}}, 100, 40));
  EXPECT_EQ(source->push({}), VFW_E_NOT_CONNECTED);
  ASSERT_EQ(bench.graph->AddFilter(source.Get(), L"example"), S_OK);
  ASSERT_EQ(bench.graph->ConnectDirect(source->output(), input, nullptr), S_OK);
  CMediaType type;
  ASSERT_EQ(source->output()->ConnectionMediaType(&type), S_OK);
  EXPECT_EQ(type.subtype, MEDIASUBTYPE_ClosedCaptionTriplets);

  const auto push = [&](const InputSample& sample) {
    return source->push({sample.data, static_cast<REFERENCE_TIME>(sample.times->start), true});
  };
  ASSERT_GE(bench.run(), 0);
  EXPECT_EQ(push(captionText(1, "Hello")), S_OK);
  EXPECT_EQ(push(captionSample(3)), S_OK);
  EXPECT_EQ(source->endOfStream(), S_OK);
  for (int i = 0; i < 5000 && bench.received().empty(); ++i) Sleep(1);
  ASSERT_FALSE(bench.received().empty());
  EXPECT_THAT(bench.received().back().data, HasSubstr("Hello"));
  EXPECT_EQ(source->flush(0, 1), S_OK);
  EXPECT_EQ(push(captionSample(5, std::vector<std::uint8_t>(101))), VFW_E_BUFFER_OVERFLOW);
  EXPECT_EQ(bench.stop(), S_OK);
  EXPECT_EQ(push(captionSample(5)), VFW_E_NOT_COMMITTED);
  EXPECT_EQ(source->output()->Disconnect(), S_OK);
  bench.graph->Disconnect(input);
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
