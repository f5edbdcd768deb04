// The filter in a host: how a graph is built around it. See docs/integrating.md.
#include <dshow.h>
#include <wrl/client.h>

#include <cstdio>

#include "TXSubtitleConverter.h"

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

/// Connects source, filter and sink.
HRESULT connect(IGraphBuilder* graph, IPin* source, IBaseFilter* filter, IPin* sink) {
  ComPtr<IPin> input;
  ComPtr<IPin> output;
  HRESULT result = filter->FindPin(L"Input", &input);
  if (SUCCEEDED(result)) result = filter->FindPin(L"Output", &output);
  if (SUCCEEDED(result)) result = graph->ConnectDirect(source, input.Get(), nullptr);
  if (SUCCEEDED(result)) result = graph->ConnectDirect(output.Get(), sink, nullptr);
  return result;
}

}  // namespace

int main() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 1;
  int exitCode = 1;
  {
    PrintingLogger logger;
    ComPtr<IGraphBuilder> graph;
    ComPtr<IBaseFilter> filter;
    HRESULT result =
        CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph));
    if (SUCCEEDED(result)) result = addConverter(graph.Get(), &logger, filter);
    std::printf("the converter %s\n", SUCCEEDED(result) ? "is in the graph" : "is not registered");

    // Your source and your sink go here; without them there is nothing to connect or run.
    IPin* source = nullptr;
    IPin* sink = nullptr;
    if (SUCCEEDED(result) && source && sink) {
      result = connect(graph.Get(), source, filter.Get(), sink);
    }
    exitCode = SUCCEEDED(result) ? 0 : 1;
    // The logger must outlive its use.
    graph.Reset();
    filter.Reset();
  }
  CoUninitialize();
  return exitCode;
}
