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
/// state: it pauses under the filter lock, and then the worker has nothing to do that needs one.
class CSubtitleConverter final : public CBaseFilter, public ISubtitleConverterConfig {
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

  void newSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

  CBaseInputPin& inputPin() { return *inputPin_; }
  encoding::subtitling::ConversionMode mode() const { return configuration_.load()->mode; }
  log::ILogger& logger() { return logger_; }

 private:
  using Queue = concurrency::GenerationQueue<Microsoft::WRL::ComPtr<IMediaSample>>;
  using Entry = Queue::Entry;

  CSubtitleConverter(IUnknown* outer, HRESULT* result);

  void destroyChain();
  void logIfFailed(HRESULT result);

  // Worker.
  void processNext();
  HRESULT process(const Entry& entry);
  HRESULT convert(IMediaSample& sample);

  // Under the stream lock.
  HRESULT checkFormat(IMediaSample& sample);
  HRESULT startChain();

  CCritSec filterLock_;
  std::unique_ptr<CTessaryInputPin<CSubtitleConverterInputPin>> inputPin_;
  std::unique_ptr<CSubtitleConverterOutputPin> outputPin_;
  std::unique_ptr<UpStreamPin> outputSink_;
  Queue queue_;  // a null sample is the end of the stream
  ForwardingLogger logger_;
  std::atomic<std::uint64_t> opaqueValue_ = 0;
  std::pmr::unsynchronized_pool_resource itemMemory_;             // what the chain's framer holds
  std::unique_ptr<encoding::subtitling::ConversionChain> chain_;  // may be absent
  CCritSec streamLock_;  // the worker against state changes: guards the chain and what feeds it
  // Immutable once set, so that it can be read without a lock while the host sets another.
  std::atomic<std::shared_ptr<const encoding::subtitling::ChainConfiguration>> configuration_;
  std::vector<std::uint8_t> teletextFormat_;  // of the last sample that carried one
  Worker worker_;                             // last: ends before anything that it uses
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
