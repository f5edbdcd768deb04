#include "tests/filter/graph_test_bench.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "filter/subtitle_converter.h"
#include "samples/encoders/caption_builder.h"
#include "util/exception.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

using namespace std::chrono_literals;

Watchdog::Watchdog()
    : thread_([this] {
        std::unique_lock lock(mutex_);
        if (done_.wait_for(lock, 60s, [this] { return isDone_; })) return;
        std::fputs("deadlock: the test did not end within a minute\n", stderr);
        std::_Exit(3);
      }) {
}

Watchdog::~Watchdog() {
  {
    const std::scoped_lock lock(mutex_);
    isDone_ = true;
  }
  done_.notify_one();
  thread_.join();
}

void RecordingLogger::Log(std::uint32_t level, const char* format, std::va_list arguments) {
  const std::scoped_lock lock(mutex_);
  lines_.push_back(std::to_string(level) + " " + util::vformat(format, arguments));
}

void RecordingLogger::NameBufferCounters(const char* name) {
  const std::scoped_lock lock(mutex_);
  lines_.push_back(std::string("counters ") + name);
}

std::vector<std::string> RecordingLogger::take() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(lines_, {});
}

GraphTestBench::GraphTestBench(const Settings& settings) {
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  source = new host::CPushSource(
      {.type = inputMediaType(settings.input, settings.format), .buffers = 32, .bufferSize = 1024});
  sink = new host::CCollectingSink({.onSample = [this](const auto& sample) { return keep(sample); },
                                    .onEndOfStream =
                                        [this] {
                                          const std::scoped_lock lock(mutex_);
                                          isAtEnd_ = true;
                                          changed_.notify_all();
                                        }});
  HRESULT result = S_OK;
  CUnknown* created = CSubtitleConverter::CreateInstance(nullptr, &result);
  created->NonDelegatingAddRef();
  created->NonDelegatingQueryInterface(IID_PPV_ARGS(&filter));
  created->NonDelegatingRelease();
  filter.As(&config);
  config->SetLogger(&logger);
  configure(settings);

  CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph));
  graph.As(&control_);
  graph->AddFilter(source.Get(), L"source");
  graph->AddFilter(filter.Get(), L"converter");
  graph->AddFilter(sink.Get(), L"sink");
  ComPtr<IMediaFilter> clocked;
  graph.As(&clocked);
  clocked->SetSyncSource(nullptr);  // as fast as possible
  EXPECT_EQ(graph->ConnectDirect(source->GetPin(0), filterPin(PINDIR_INPUT).Get(), nullptr), S_OK);
  EXPECT_EQ(graph->ConnectDirect(filterPin(PINDIR_OUTPUT).Get(), sink->GetPin(0), nullptr), S_OK);
}

GraphTestBench::~GraphTestBench() {
  stop();
  control_.Reset();
  graph.Reset();
  config->SetLogger(nullptr);
  config.Reset();
  source.Reset();
  sink.Reset();
  filter.Reset();
  EXPECT_EQ(CBaseObject::ObjectsActive(), 0) << "a reference leaked";
  CoUninitialize();
}

void GraphTestBench::configure(const Settings& settings) {
  config->SetConfiguration(static_cast<std::uint32_t>(settings.mode), settings.page,
                           settings.durationMs, settings.language.c_str(), settings.hearingImpaired,
                           0, 0);
}

HRESULT GraphTestBench::keep(const host::ReceivedSample& sample) {
  if (onReceive) {
    const HRESULT result = onReceive(*sample.sample);
    if (result != S_OK) return result;
  }
  const std::scoped_lock lock(mutex_);
  received_.push_back({.start = sample.start,
                       .stop = sample.stop,
                       .sync = sample.sync,
                       .discontinuity = sample.discontinuity,
                       .data = {sample.data.begin(), sample.data.end()}});
  changed_.notify_all();
  return S_OK;
}

void GraphTestBench::finish() {
  EXPECT_EQ(source->endOfStream(), S_OK);
  std::unique_lock lock(mutex_);
  EXPECT_TRUE(changed_.wait_for(lock, 10s, [this] { return isAtEnd_; }));
  isAtEnd_ = false;
}

bool GraphTestBench::waitForSamples(std::size_t count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, 10s, [&] { return received_.size() >= count; });
}

ComPtr<IPin> GraphTestBench::filterPin(PIN_DIRECTION direction) {
  ComPtr<IPin> pin;
  filter->FindPin(direction == PINDIR_INPUT ? L"Input" : L"Output", &pin);
  return pin;
}

void GraphTestBench::pushWithFormatType(InputSample sample, const GUID& formatType) {
  sample.format.emplace();
  source->setSampleFormatType(formatType);
  source->push(sample);
  source->setSampleFormatType(FORMAT_SubtitleStream);
}

std::vector<Received> GraphTestBench::received() {
  const std::scoped_lock lock(mutex_);
  return received_;
}

CMediaType inputMediaType(SubtitleInputType type, const std::vector<std::uint8_t>& format) {
  CMediaType mediaType(type == SubtitleInputType::ClosedCaption ? &MEDIATYPE_ClosedCaptions
                                                                : &MEDIATYPE_TimedText);
  mediaType.SetFormatType(&FORMAT_SubtitleStream);
  mediaType.SetFormat(format.data(), static_cast<ULONG>(format.size()));
  switch (type) {
    case SubtitleInputType::Teletext:
      mediaType.SetSubtype(&MEDIASUBTYPE_TeletextPes);
      break;
    case SubtitleInputType::DvbSubtitle:
      mediaType.SetSubtype(&MEDIASUBTYPE_DvbSubtitlePes);
      break;
    case SubtitleInputType::ClosedCaption:
      mediaType.SetSubtype(&MEDIASUBTYPE_ClosedCaptionTriplets);
      break;
  }
  return mediaType;
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
