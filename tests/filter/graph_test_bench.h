// SPDX-License-Identifier: MIT

// The filter in a real graph, between a source and a sink that the test holds in its hands.
#pragma once

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <condition_variable>
#include <functional>
#include <initializer_list>
#include <thread>

#include "filter/subtitle_converter.h"
#include "tests/filter/recording_logger.h"
#include "txgraph/collecting_sink.h"
#include "txgraph/push_source.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

using encoding::subtitling::ConversionMode;
using Microsoft::WRL::ComPtr;
using txsub::InputSample;

ComPtr<CSubtitleConverter> createFilter();

/// What the sink got, as owned values.
struct Received {
  std::uint64_t start = 0;
  std::uint64_t stop = 0;
  std::string data;
};

/// Source, filter and sink in a graph, connected on construction.
class GraphTestBench {
 public:
  struct Settings {
    bool isTeletext = false;  ///< captions otherwise
    ConversionMode mode = ConversionMode::WebVtt;
    std::uint32_t page = 1;
    std::uint32_t durationMs = 2000;
    std::string language = {};
  };

  explicit GraphTestBench(const Settings& settings);
  ~GraphTestBench();
  GraphTestBench(const GraphTestBench&) = delete;
  GraphTestBench& operator=(const GraphTestBench&) = delete;

 private:
  const LONG othersObjects_ = CBaseObject::ObjectsActive();  // first: before any of our own

 public:
  void configure(const Settings& settings);

  HRESULT run() { return control_->Run(); }
  HRESULT pause() { return control_->Pause(); }
  HRESULT stop() { return control_->Stop(); }

  /// Pushes a sample, which must be taken.
  void push(const InputSample& sample) { EXPECT_EQ(source->push(sample), S_OK); }

  /// Pushes the end of the stream and waits until it has arrived at the sink.
  void finish();

  /// Runs the graph if need be, pushes samples and finishes.
  void play(std::initializer_list<InputSample> samples);

  std::vector<Received> received();

  /// Connects the filter's output anew, with an allocator that the sink brings.
  void reconnectOutput(IMemAllocator& allocator);

  /// Pushes a sample with a media type of a format type that the filter does not know.
  void pushWithUnknownFormatType(InputSample sample);

  ComPtr<IGraphBuilder> graph;
  ComPtr<host::CPushSource> source;
  ComPtr<CSubtitleConverter> filter = createFilter();
  ComPtr<host::CCollectingSink> sink;
  RecordingLogger logger;  ///< of what comes after connecting

  /// Called on the worker before a sample is kept; anything but S_OK is what the sink answers.
  std::function<HRESULT(IMediaSample&)> onReceive;

  /// Called when the sink is told of a segment.
  std::function<void(REFERENCE_TIME start)> onNewSegment;

 private:
  HRESULT keep(const host::ReceivedSample& sample);
  void noteEnd();

  std::jthread watchdog_;
  ComPtr<IMediaControl> control_;
  std::mutex mutex_;
  std::condition_variable ended_;
  std::vector<Received> received_;
  bool isAtEnd_ = false;
};

/// A sample of caption triplets at a time (seconds): of padding, unless told otherwise.
InputSample captionSample(double seconds,
                          const std::vector<std::uint8_t>& triplets = {0xFC, 0x80, 0x80});

/// A sample that puts `text` on the screen in place of what is there.
InputSample captionText(double seconds, std::string_view text);

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
