// SPDX-License-Identifier: MIT

// The conversion chain as the filter's worker runs it, without the worker.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "chain/chain_configuration.h"
#include "readers/media_reader.h"
#include "sessions/session_monitor.h"

namespace korr::txsub {

using encoding::subtitling::ChainConfiguration;

/// The format block of a stream's media type, in which the teletext page of the language is looked
/// up, as in the filter. Nothing where the page has been chosen already.
using FormatBlock = std::optional<std::vector<std::uint8_t>>;

/// What passed through the chains of one host.
struct HostCounters {
  std::uint64_t samples = 0;  ///< handed to a framer
  std::uint64_t errors = 0;   ///< exceptions that a chain let pass
  encoding::subtitling::ChainCounters chain;
};

/// The samples of one stream as the framers take them.
using SharedSample = std::shared_ptr<const encoding::packaging::lib_parse_es::IMediaItem>;

/// Runs one chain over the samples of one stream and rebuilds it when a teletext sample carries
/// another format block. Exceptions of the chain become "Error: <message>" for the monitor, and the
/// next sample goes on; what else a chain has to say goes there too, with its place.
class ChainHost {
 public:
  using Chain = encoding::subtitling::IChain;
  using ChainSettings = encoding::subtitling::ConversionChain::Settings;

  struct Wiring {
    std::function<std::unique_ptr<Chain>(const ChainSettings&, log::ILogger*)> makeChain;
    ISessionMonitor& monitor;
    std::uint32_t pid = 0;  ///< for messages; 0 when there is none
  };

  /// Builds the first chain.
  ChainHost(const ChainConfiguration& configuration, SubtitleInputType type, FormatBlock format,
            Wiring wiring);

  void push(const InputSample& sample, const SharedSample& shared);

  /// The samples so far are whole units: the one in the framer does not wait for the next.
  void completeUnit();

  /// Live, `until` has passed: what began before it is shown as far as it has come.
  void settle(MediaTime until);

  /// The input has ended at `end`: completes the unit in the framer, then the chain.
  void finish(MediaTime end);

  /// Of all chains so far.
  HostCounters counters() const;

 private:
  // What chains say, with the place of the unit at hand.
  class Reporter final : public log::ILogger {
   public:
    Reporter(ISessionMonitor& monitor, std::uint32_t pid) : monitor_(monitor), place_{.pid = pid} {}

    void setTime(std::optional<MediaTime> time) { place_.time = time; }
    void error(const char* message) { monitor_.chainError(place_, message); }
    void logV(log::Level level, const char* format, std::va_list arguments) override;
    void nameBufferCounters(const char*) override {}

   private:
    ISessionMonitor& monitor_;
    Place place_;
  };

  void noteTime(const InputSample& sample);
  void checkFormat(const InputSample& sample);
  void start();
  template <class Action>
  void guarded(Action action);

  ChainConfiguration configuration_;
  SubtitleInputType type_;
  FormatBlock format_;
  std::vector<std::uint8_t> sampleFormat_;  // the last one that came with a sample
  Wiring wiring_;
  Reporter reporter_;
  bool holdsUnit_ = false;             // the framer does
  std::optional<MediaTime> unitTime_;  // of that unit
  std::unique_ptr<Chain> chain_;
  HostCounters past_;  // without what the present chain has counted
};

}  // namespace korr::txsub
