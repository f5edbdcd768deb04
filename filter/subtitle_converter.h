// SPDX-License-Identifier: MIT

// The filter: one subtitle stream in, timed text out.
#pragma once

#include <streams.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <vector>

#include "chain/chain_configuration.h"
#include "concurrency/generation_queue.h"
#include "filter/forwarding_logger.h"
#include "filter/input_pin.h"
#include "filter/output_pin.h"
#include "filter/up_stream_pin.h"
#include "filter/worker.h"
#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Hosts one conversion chain between its two pins.
///
/// Three kinds of thread meet here. The graph's control thread changes states and configures. The
/// upstream thread only queues samples (`intake`). The worker does everything else: it parses,
/// converts and delivers.
///
/// Locks: the filter lock, then the queue's (intake). The stream lock, held while the chain is
/// built, fed or destroyed; its holder may take the filter lock, to read the connection's type, or
/// the queue's. So whoever waits for the stream lock holds neither, but for `Run` from the stopped
/// state and a connection that ends: then the filter is stopped, and the worker has nothing to do
/// that needs one.
///
/// The sink is called by the worker, under the stream lock, and may call back: to stop the graph
/// from its own Receive, say. What then has to go is in use further up the same thread, and goes as
/// soon as the worker is done with the sample that it is at; nothing more comes out of it.
class CSubtitleConverter final : public CBaseFilter,
                                 public ISubtitleConverterConfig,
                                 public ISubtitleConverterLogging {
 public:
  static constexpr const WCHAR* kName = L"Tessary Subtitle Converter";

  /// For the class factory. Null, and a failure in `result`, when the filter cannot be made.
  static CUnknown* CALLBACK CreateInstance(IUnknown* outer, HRESULT* result);

  ~CSubtitleConverter() override = default;

  DECLARE_IUNKNOWN
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

  // ISubtitleConverterConfig
  HRESULT STDMETHODCALLTYPE SetLogger(mqs_subtitle_converter::ILogger* logger) override;
  HRESULT STDMETHODCALLTYPE SetOpaqueValue(std::uint64_t value) override;
  HRESULT STDMETHODCALLTYPE SetConfiguration(std::uint32_t mode, std::uint32_t page,
                                             std::uint32_t durationMs, const char* language,
                                             std::uint8_t hearingImpaired, std::uint32_t pageOption,
                                             std::uint8_t ttmlOption) override;

  // ISubtitleConverterLogging
  HRESULT STDMETHODCALLTYPE SetLogSink(ISubtitleConverterLogSink* sink) override;

  // IBaseFilter
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  int GetPinCount() override { return 2; }
  CBasePin* GetPin(int index) override;

  // For the pins.

  /// Queues a sample, or the end of the stream (null), for the worker. Upstream thread.
  void intake(IMediaSample* sample);

  /// Forgets what is queued and lets go of a delivery that waits. Upstream thread.
  void beginFlush();

  /// Destroys the chain: nothing of before the flush survives in it. Upstream thread.
  void endFlush();

  /// Queues the segment that the samples after it belong to. One that a stop or a flush has
  /// overtaken is told when the stream goes on. Upstream thread.
  void newSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

  /// The input's connection has ended, and its format with it.
  void forgetFormat();

  CBaseInputPin& inputPin() { return *inputPin_; }
  encoding::subtitling::ConversionMode mode() const { return configuration_.load()->mode; }
  log::ILogger& logger() { return logger_; }

 private:
  struct Segment {
    REFERENCE_TIME start = 0;  // 100 ns
    REFERENCE_TIME stop = 0;   // 100 ns
    double rate = 1;
    std::uint64_t number = 0;  // counted from 1
  };

  /// A sample, a segment, or neither: the end of the stream.
  struct Input {
    Microsoft::WRL::ComPtr<IMediaSample> sample;
    std::unique_ptr<const Segment> segment;
  };
  using Queue = concurrency::GenerationQueue<Input>;

  CSubtitleConverter(IUnknown* outer, HRESULT* result);

  void destroyChain();
  void logIfFailed(HRESULT result);

  // Worker.
  void processNext();
  void processAndLog(const Input& input);
  HRESULT process(const Input& input);
  HRESULT convert(IMediaSample& sample);

  // Under the stream lock.
  void tell(const Segment& segment);
  void tellMissedSegment();
  HRESULT startIfNeeded();
  HRESULT checkFormat(IMediaSample& sample);
  HRESULT startChain();

  CCritSec filterLock_;
  std::unique_ptr<CTessaryInputPin<CSubtitleConverterInputPin>> inputPin_;
  std::unique_ptr<CSubtitleConverterOutputPin> outputPin_;
  std::unique_ptr<UpStreamPin> outputSink_;
  Queue queue_;
  Segment lastSegment_;  // of all that have come in; under the filter lock
  ForwardingLogger logger_;
  std::atomic<std::uint64_t> opaqueValue_ = 0;
  std::pmr::unsynchronized_pool_resource itemMemory_;             // what the chain's framer holds
  std::unique_ptr<encoding::subtitling::ConversionChain> chain_;  // may be absent
  CCritSec streamLock_;  // the worker against state changes: guards the chain and what feeds it
  // Immutable once set, so that it can be read without a lock while the host sets another.
  std::atomic<std::shared_ptr<const encoding::subtitling::ChainConfiguration>> configuration_;
  std::vector<std::uint8_t> teletextFormat_;  // of the connection's last sample that carried one
  std::uint64_t toldSegment_ = 0;             // the number of the last one that went downstream
  bool isProcessing_ = false;  // who holds the stream lock meanwhile is the worker, called back
  Worker worker_;              // last: ends before anything that it uses
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
