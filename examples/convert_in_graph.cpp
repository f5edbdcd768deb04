// SPDX-License-Identifier: MIT

// The filter in a host: how a graph is built around it. See docs/integrating.md.
#include <dshow.h>
#include <wrl/client.h>

#include <cstdio>

#include "TXSubtitleConverter.h"
#include "push_source.h"

using Microsoft::WRL::ComPtr;
namespace converter = korr::streaming::direct_show::filters::mqs_subtitle_converter;

namespace {

/// Prints the filter's messages.
class PrintingLogger final : public converter::ILogger {
 public:
  void STDMETHODCALLTYPE Log(std::uint32_t level, const char* format,
                             std::va_list arguments) override {
    std::fprintf(stderr, "[%u] ", static_cast<unsigned>(level));
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
  }
  void STDMETHODCALLTYPE NameBufferCounters(const char*) override {}
};

/// Adds the filter to `graph`, set up for WebVTT of English teletext, or of page 888 where no
/// descriptor names an English page.
HRESULT addConverter(IGraphBuilder* graph, converter::ILogger* logger,
                     ComPtr<IBaseFilter>& filter) {
  HRESULT result = CoCreateInstance(converter::CLSID_TXSubtitleConverter, nullptr,
                                    CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&filter));
  if (FAILED(result)) return result;
  result = graph->AddFilter(filter.Get(), L"Subtitles");
  if (FAILED(result)) return result;

  ComPtr<converter::ISubtitleConverterConfig> config;
  result = filter.As(&config);
  if (FAILED(result)) return result;
  config->SetLogger(logger);
  return config->SetConfiguration(4 /* WebVTT */, 0x888, 2000, "eng", 0, 0, 0);
}

/// Adds a source of teletext, whose descriptors the PMT would give, and connects it.
HRESULT addSource(IGraphBuilder* graph, IBaseFilter* filter, ComPtr<example::PushSource>& source) {
  example::StreamType type;
  type.major = converter::MEDIATYPE_TimedText;
  type.sub = converter::MEDIASUBTYPE_TeletextPes;
  type.format = {0x56, 5, 'e', 'n', 'g', 2 << 3 | 0, 0x88};  // an English subtitle page 888
  source.Attach(new example::PushSource(type, 64 * 1024, 64));
  HRESULT result = graph->AddFilter(source.Get(), L"Source");
  ComPtr<IPin> input;
  if (SUCCEEDED(result)) result = filter->FindPin(L"Input", &input);
  if (SUCCEEDED(result)) result = graph->ConnectDirect(source->output(), input.Get(), nullptr);
  return result;
}

/// Connects your sink.
HRESULT addSink(IGraphBuilder* graph, IBaseFilter* filter, IPin* sink) {
  ComPtr<IPin> output;
  const HRESULT result = filter->FindPin(L"Output", &output);
  return SUCCEEDED(result) ? graph->ConnectDirect(output.Get(), sink, nullptr) : result;
}

/// Runs the graph and pushes what you have: here nothing but the end of the stream.
HRESULT run(IGraphBuilder* graph, example::PushSource& source) {
  ComPtr<IMediaControl> control;
  HRESULT result = graph->QueryInterface(IID_IMediaControl, &control);
  if (SUCCEEDED(result)) result = control->Run();
  if (FAILED(result)) return result;
  // source.push({payload, time, true}); and so on, a sample for every PES payload
  source.endOfStream();
  // Your sink says when the end has come through.
  return control->Stop();
}

}  // namespace

int main() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 1;
  int exitCode = 1;
  {
    PrintingLogger logger;
    ComPtr<IGraphBuilder> graph;
    ComPtr<IBaseFilter> filter;
    ComPtr<example::PushSource> source;
    HRESULT result =
        CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph));
    if (SUCCEEDED(result)) result = addConverter(graph.Get(), &logger, filter);
    std::printf("the converter %s\n", SUCCEEDED(result) ? "is in the graph" : "is not registered");

    if (SUCCEEDED(result)) result = addSource(graph.Get(), filter.Get(), source);
    IPin* sink = nullptr;  // your sink goes here
    if (SUCCEEDED(result) && sink) result = addSink(graph.Get(), filter.Get(), sink);
    if (SUCCEEDED(result)) result = run(graph.Get(), *source.Get());
    exitCode = SUCCEEDED(result) ? 0 : 1;
    // The logger must outlive its use.
    graph.Reset();
    source.Reset();
    filter.Reset();
  }
  CoUninitialize();
  return exitCode;
}
