// SPDX-License-Identifier: MIT
#include "txgraph/graph_replay.h"

#include <qedit.h>
#include <wrl/client.h>

#include "filter/com_boundary.h"
#include "filter/media_types.h"
#include "txgraph/converter_module.h"
#include "txgraph/push_source.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

using Microsoft::WRL::ComPtr;
using namespace filters::mqs_subtitle_converter;  // NOLINT(google-build-using-namespace)

namespace {

// More than the filter asks for, so that neither thread waits for the other at every sample.
constexpr long kInputBuffers = 128;
constexpr long kLookOut = 100;  // milliseconds between two looks at what else the graph tells

// qedit.dll; mingw's headers have the interfaces only.
constexpr CLSID kSampleGrabber = {
    0xC1F400A0, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};
constexpr CLSID kNullRenderer = {
    0xC1F400A4, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};

CMediaType mediaTypeOf(const Recording& recording) {
  CMediaType type(&MEDIATYPE_TimedText);
  switch (recording.type) {
    case SubtitleInputType::Teletext:
      type.SetSubtype(&MEDIASUBTYPE_TeletextPes);
      break;
    case SubtitleInputType::DvbSubtitle:
      type.SetSubtype(&MEDIASUBTYPE_DvbSubtitlePes);
      break;
    case SubtitleInputType::ClosedCaption:
      type.SetType(&MEDIATYPE_ClosedCaptions);
      type.SetSubtype(&MEDIASUBTYPE_ClosedCaptionTriplets);
      break;
  }
  type.SetFormatType(&FORMAT_SubtitleStream);
  type.SetFormat(recording.format.data(), static_cast<ULONG>(recording.format.size()));
  return type;
}

REFERENCE_TIME firstTime(const Recording& recording) {
  for (const auto& sample : recording.samples) {
    if (sample.times) return static_cast<REFERENCE_TIME>(sample.times->start);
  }
  return 0;
}

ComPtr<IPin> pinOf(IBaseFilter* filter, const WCHAR* id) {
  ComPtr<IPin> pin;
  require(filter->FindPin(id, &pin), "find a pin");
  return pin;
}

/// Hands the samples of a SampleGrabber on.
class GrabberCallback final : public ISampleGrabberCB {
 public:
  explicit GrabberCallback(std::function<HRESULT(const ReceivedSample&)> onSample)
      : onSample_(std::move(onSample)) {}

  // On the stack of `replay`, which outlives the graph.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid != IID_IUnknown && iid != __uuidof(ISampleGrabberCB)) return E_NOINTERFACE;
    return GetInterface(this, object);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE SampleCB(double, IMediaSample* sample) override {
    return onSample_(describe(sample));
  }
  HRESULT STDMETHODCALLTYPE BufferCB(double, BYTE*, LONG) override { return E_NOTIMPL; }

 private:
  std::function<HRESULT(const ReceivedSample&)> onSample_;
};

/// The graph while it is built and run.
class Replay {
 public:
  Replay(const Recording& recording, const ReplaySettings& settings,
         const std::function<void(const ReceivedSample&)>& onSample)
      : recording_(recording),
        settings_(settings),
        onSample_(
            [this, &onSample](const ReceivedSample& sample) { return take(sample, onSample); }),
        grabberCallback_(onSample_) {
    require(
        CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph_)),
        "create a filter graph");
    addSource();
    addConverter();
    addSink();
  }

  ~Replay() {
    if (control_) control_->Stop();
    if (config_) config_->SetLogger(nullptr);
  }
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  void run() {
    if (!settings_.useClock) {
      ComPtr<IMediaFilter> clocked;
      require(graph_.As(&clocked), "reach the graph's clock");
      require(clocked->SetSyncSource(nullptr), "run without a clock");
    }
    require(graph_.As(&control_), "control the graph");
    require(control_->Run(), "run the graph");
    pushAll();
    require(source_->endOfStream(), "end the stream");
    waitForEnd();
    if (settings_.statistics) settings_.statistics->noteEnd();
    require(control_->Stop(), "stop the graph");
  }

 private:
  void addSource() {
    source_ =
        new CPushSource({.type = mediaTypeOf(recording_),
                         .buffers = kInputBuffers + static_cast<long>(longestUnit(recording_)),
                         .bufferSize = static_cast<long>(largestSample(recording_))});
    require(graph_->AddFilter(source_.Get(), L"Recording"), "add the source");
  }

  void addConverter() {
    converter_ = createConverter(settings_.module);
    require(converter_.As(&config_), "configure the converter");
    const auto& configuration = settings_.configuration;
    config_->SetLogger(settings_.logger);
    config_->SetConfiguration(static_cast<std::uint32_t>(configuration.mode), configuration.page,
                              configuration.durationMs, configuration.language.c_str(),
                              configuration.hearingImpaired, configuration.pageOption,
                              configuration.ttmlOption);
    require(graph_->AddFilter(converter_.Get(), L"Converter"), "add the converter");
    require(
        graph_->ConnectDirect(source_->GetPin(0), pinOf(converter_.Get(), L"Input").Get(), nullptr),
        "connect the converter's input");
  }

  void addSink() {
    const auto output = pinOf(converter_.Get(), L"Output");
    if (settings_.sink == SinkKind::Collecting) {
      sink_ = new CCollectingSink({.onSample = onSample_, .onEndOfStream = [] {}},
                                  firstTime(recording_));
      require(graph_->AddFilter(sink_.Get(), L"Sink"), "add the sink");
      require(graph_->ConnectDirect(output.Get(), sink_->GetPin(0), nullptr),
              "connect the converter's output");
      return;
    }
    ComPtr<IBaseFilter> grabber;
    ComPtr<IBaseFilter> renderer;
    ComPtr<ISampleGrabber> grabbing;
    require(CoCreateInstance(kSampleGrabber, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&grabber)),
            "create the platform's SampleGrabber");
    require(CoCreateInstance(kNullRenderer, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&renderer)),
            "create the platform's NullRenderer");
    require(grabber.As(&grabbing), "set up the SampleGrabber");
    const CMediaType type(&MEDIATYPE_TimedText);
    require(grabbing->SetMediaType(&type), "set up the SampleGrabber");
    require(grabbing->SetCallback(&grabberCallback_, 0), "set up the SampleGrabber");
    require(graph_->AddFilter(grabber.Get(), L"Grabber"), "add the SampleGrabber");
    require(graph_->AddFilter(renderer.Get(), L"Renderer"), "add the NullRenderer");
    require(graph_->ConnectDirect(output.Get(), pinOf(grabber.Get(), L"In").Get(), nullptr),
            "connect the SampleGrabber");
    require(graph_->ConnectDirect(pinOf(grabber.Get(), L"Out").Get(),
                                  pinOf(renderer.Get(), L"In").Get(), nullptr),
            "connect the NullRenderer");
  }

  void pushAll() {
    for (std::size_t i = 0; i < recording_.samples.size(); ++i) {
      ComPtr<IMediaSample> filled;
      require(source_->fill(recording_.samples[i], &filled), "get a buffer");
      const auto deliver = [&] { require(source_->deliver(filled.Get()), "deliver a sample"); };
      if (settings_.statistics) {
        settings_.statistics->timePush(i, deliver);
      } else {
        deliver();
      }
    }
  }

  // What the host throws at a sample ends the graph.
  HRESULT take(const ReceivedSample& sample,
               const std::function<void(const ReceivedSample&)>& onSample) {
    if (settings_.statistics) settings_.statistics->noteDelivered(sample.stop);
    log::DiscardingLogger nobody;  // `waitForEnd` tells
    const HRESULT result = atComBoundary(nobody, [&] {
      onSample(sample);
      return S_OK;
    });
    ComPtr<IMediaEventSink> events;
    if (FAILED(result) && SUCCEEDED(graph_.As(&events))) events->Notify(EC_ERRORABORT, result, 0);
    return result;
  }

  void waitForEnd() {
    ComPtr<IMediaEvent> events;
    require(graph_->QueryInterface(IID_IMediaEvent, &events), "reach the graph's events");
    long end = 0;
    HRESULT waited = E_ABORT;  // not over yet
    while (waited == E_ABORT) {
      waited = events->WaitForCompletion(kLookOut, &end);
      // Where the platform waits for complete streams only, an end before that is among these.
      requireNoAbort(*events.Get());
    }
    require(waited, "wait for the end of the stream");
    if (end != EC_COMPLETE) require(E_ABORT, "replay to the end");
  }

  static void requireNoAbort(IMediaEvent& events) {
    long event = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    while (SUCCEEDED(events.GetEvent(&event, &first, &second, 0))) {
      events.FreeEventParams(event, first, second);
      const auto reason = static_cast<HRESULT>(first);
      if (event == EC_ERRORABORT) require(FAILED(reason) ? reason : E_FAIL, "replay to the end");
      if (event == EC_USERABORT) require(E_ABORT, "replay to the end");
    }
  }

  const Recording& recording_;
  const ReplaySettings& settings_;
  std::function<HRESULT(const ReceivedSample&)> onSample_;
  GrabberCallback grabberCallback_;
  ComPtr<IGraphBuilder> graph_;
  ComPtr<IMediaControl> control_;
  ComPtr<CPushSource> source_;
  ComPtr<IBaseFilter> converter_;
  ComPtr<ISubtitleConverterConfig> config_;
  ComPtr<CCollectingSink> sink_;
};

}  // namespace

void replay(const Recording& recording, const ReplaySettings& settings,
            const std::function<void(const ReceivedSample&)>& onSample) {
  Replay(recording, settings, onSample).run();
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
