// The filter in a real graph, between a source and a sink that the test holds in its hands.
#pragma once

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "filter/host/collecting_sink.h"
#include "filter/host/push_source.h"
#include "filter/media_types.h"
#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

using Microsoft::WRL::ComPtr;
using txsub::InputSample;

/// Ends the program when a test hangs: a deadlock is a failure, not a time-out of everything.
class Watchdog {
 public:
  Watchdog();
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable done_;
  bool isDone_ = false;
  std::thread thread_;
};

/// Keeps the filter's messages, each with its level before it.
class RecordingLogger final : public mqs_subtitle_converter::ILogger {
 public:
  void STDMETHODCALLTYPE Log(std::uint32_t level, const char* format,
                             std::va_list arguments) override;
  void STDMETHODCALLTYPE NameBufferCounters(const char* name) override;

  std::vector<std::string> take();

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// What the sink got, as owned values.
struct Received {
  std::uint64_t start = 0;
  std::uint64_t stop = 0;
  bool sync = false;
  bool discontinuity = false;
  std::string data;

  friend bool operator==(const Received&, const Received&) = default;
};

/// Source, filter and sink in a graph, connected on construction.
class GraphTestBench {
 public:
  struct Settings {
    SubtitleInputType input = SubtitleInputType::ClosedCaption;
    ConversionMode mode = ConversionMode::WebVtt;
    std::uint32_t page = 1;
    std::uint32_t durationMs = 2000;
    std::string language = {};
    bool hearingImpaired = false;
    std::vector<std::uint8_t> format = {};  ///< the connection's format block
  };

  explicit GraphTestBench(const Settings& settings);
  ~GraphTestBench();
  GraphTestBench(const GraphTestBench&) = delete;
  GraphTestBench& operator=(const GraphTestBench&) = delete;

  void configure(const Settings& settings);

  HRESULT run() { return control_->Run(); }
  HRESULT pause() { return control_->Pause(); }
  HRESULT stop() { return control_->Stop(); }

  /// Pushes a sample, which must be taken.
  void push(const InputSample& sample) { EXPECT_EQ(source->push(sample), S_OK); }

  /// Pushes the end of the stream and waits until it has arrived at the sink.
  void finish();

  /// Waits until the sink has `count` samples in all; false after ten seconds.
  bool waitForSamples(std::size_t count);

  std::vector<Received> received();

  ComPtr<IPin> filterPin(PIN_DIRECTION direction);

  /// Pushes a sample with a media type of a format type that the filter may not know.
  void pushWithFormatType(InputSample sample, const GUID& formatType);

  ComPtr<IGraphBuilder> graph;
  ComPtr<host::CPushSource> source;
  ComPtr<IBaseFilter> filter;
  ComPtr<ISubtitleConverterConfig> config;
  ComPtr<host::CCollectingSink> sink;
  RecordingLogger logger;

  /// Called on the worker before a sample is kept; anything but S_OK is what the sink answers.
  std::function<HRESULT(IMediaSample&)> onReceive;

 private:
  HRESULT keep(const host::ReceivedSample& sample);

  Watchdog watchdog_;
  ComPtr<IMediaControl> control_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Received> received_;
  bool isAtEnd_ = false;
};

/// The media type of an input.
CMediaType inputMediaType(SubtitleInputType type, const std::vector<std::uint8_t>& format = {});

/// A sample of caption triplets at a time (seconds).
InputSample captionSample(double seconds, const std::vector<std::uint8_t>& triplets);

/// A sample that puts `text` on the screen in place of what is there.
InputSample captionText(double seconds, std::string_view text);

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
