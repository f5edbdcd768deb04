// SPDX-License-Identifier: MIT
#include "tests/filter/graph_test_bench.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "testkit/encoders/caption_builder.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

using namespace std::chrono_literals;

namespace {

// Ends the program when a test hangs: a deadlock is a failure, not a time-out of everything.
void watch(const std::stop_token& testHasEnded) {
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any stopped;
  stopped.wait_for(lock, testHasEnded, 60s, [] { return false; });
  if (testHasEnded.stop_requested()) return;
  std::fputs("deadlock: the test did not end within a minute\n", stderr);
  std::_Exit(3);
}

CMediaType inputMediaType(bool isTeletext) {
  CMediaType type(isTeletext ? &MEDIATYPE_TimedText : &MEDIATYPE_ClosedCaptions);
  type.SetSubtype(isTeletext ? &MEDIASUBTYPE_TeletextPes : &MEDIASUBTYPE_ClosedCaptionTriplets);
  type.SetFormatType(&FORMAT_SubtitleStream);
  return type;
}

}  // namespace

ComPtr<CSubtitleConverter> createFilter() {
  HRESULT result = S_OK;
  return static_cast<CSubtitleConverter*>(CSubtitleConverter::CreateInstance(nullptr, &result));
}

GraphTestBench::GraphTestBench(const Settings& settings) : watchdog_(watch) {
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  source = new host::CPushSource(
      {.type = inputMediaType(settings.isTeletext), .buffers = 32, .bufferSize = 1024});
  sink = new host::CCollectingSink({.onSample = [this](const auto& sample) { return keep(sample); },
                                    .onEndOfStream = [this] { noteEnd(); },
                                    .onNewSegment =
                                        [this](REFERENCE_TIME start) {
                                          if (onNewSegment) onNewSegment(start);
                                        }});
  configure(settings);
  CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph));
  graph.As(&control_);
  graph->AddFilter(source.Get(), L"source");
  graph->AddFilter(filter.Get(), L"converter");
  graph->AddFilter(sink.Get(), L"sink");
  ComPtr<IMediaFilter> clocked;
  graph.As(&clocked);
  clocked->SetSyncSource(nullptr);  // as fast as possible
  EXPECT_EQ(graph->ConnectDirect(source->GetPin(0), filter->GetPin(0), nullptr), S_OK);
  EXPECT_EQ(graph->ConnectDirect(filter->GetPin(1), sink->GetPin(0), nullptr), S_OK);
  filter->SetLogger(&logger);
}

GraphTestBench::~GraphTestBench() {
  stop();
  control_.Reset();
  graph.Reset();
  filter->SetLogger(nullptr);
  source.Reset();
  sink.Reset();
  filter.Reset();
  EXPECT_EQ(CBaseObject::ObjectsActive(), othersObjects_) << "a reference leaked";
  CoUninitialize();
}

void GraphTestBench::configure(const Settings& settings) {
  filter->SetConfiguration(static_cast<std::uint32_t>(settings.mode), settings.page,
                           settings.durationMs, settings.language.c_str(), 0, 0, 0);
}

HRESULT GraphTestBench::keep(const host::ReceivedSample& sample) {
  if (onReceive) {
    const HRESULT result = onReceive(*sample.sample);
    if (result != S_OK) return result;
  }
  const std::scoped_lock lock(mutex_);
  received_.push_back({.start = sample.start,
                       .stop = sample.stop,
                       .data = {sample.data.begin(), sample.data.end()}});
  return S_OK;
}

void GraphTestBench::noteEnd() {
  const std::scoped_lock lock(mutex_);
  isAtEnd_ = true;
  ended_.notify_one();
}

void GraphTestBench::finish() {
  EXPECT_EQ(source->endOfStream(), S_OK);
  std::unique_lock lock(mutex_);
  EXPECT_TRUE(ended_.wait_for(lock, 10s, [this] { return isAtEnd_; }));
  isAtEnd_ = false;
}

void GraphTestBench::play(std::initializer_list<InputSample> samples) {
  EXPECT_GE(run(), 0);
  for (const auto& sample : samples) push(sample);
  finish();
}

void GraphTestBench::reconnectOutput(IMemAllocator& allocator) {
  IPin* const output = filter->GetPin(1);
  auto& pin = static_cast<CBaseInputPin&>(*sink->GetPin(0));
  graph->Disconnect(output);
  graph->Disconnect(&pin);
  EXPECT_EQ(pin.NotifyAllocator(&allocator, FALSE), S_OK);  // now the one that it offers
  EXPECT_EQ(graph->ConnectDirect(output, &pin, nullptr), S_OK);
}

void GraphTestBench::pushWithUnknownFormatType(InputSample sample) {
  sample.format.emplace();
  source->setSampleFormatType(GUID_NULL);
  source->push(sample);
  source->setSampleFormatType(FORMAT_SubtitleStream);
}

std::vector<Received> GraphTestBench::received() {
  const std::scoped_lock lock(mutex_);
  return received_;
}

InputSample captionSample(double seconds, const std::vector<std::uint8_t>& triplets) {
  const auto start = static_cast<std::uint64_t>(seconds * 1e7);
  InputSample sample;
  sample.data = triplets;
  sample.times = {.start = start, .stop = start};
  sample.sync = true;
  return sample;
}

InputSample captionText(double seconds, std::string_view text) {
  encoders::CaptionBuilder builder;
  builder.resumeCaptionLoading().eraseNonDisplayedMemory().preamble(15).text(text).endOfCaption();
  return captionSample(seconds, builder.triplets());
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
