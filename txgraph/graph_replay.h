// SPDX-License-Identifier: MIT

// A recording through the filter in a real graph.
#pragma once

#include <functional>
#include <string>

#include "chain/chain_configuration.h"
#include "sdk/include/TXSubtitleConverter.h"
#include "txgraph/collecting_sink.h"
#include "txgraph/recording.h"
#include "txgraph/replay_statistics.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

enum class SinkKind {
  Collecting,  ///< our own
  Grabber,     ///< the platform's SampleGrabber before its NullRenderer
};

struct ReplaySettings {
  std::string module;  ///< a file (UTF-8); empty: the registered module
  SinkKind sink = SinkKind::Collecting;
  bool useClock = false;  ///< deliver when samples are due, not as fast as possible
  encoding::subtitling::ChainConfiguration configuration;
  filters::mqs_subtitle_converter::ILogger* logger = nullptr;
  ReplayStatistics* statistics = nullptr;  ///< may be null
};

/// Builds source, converter and sink, runs the graph and pushes the recording through it; returns
/// when the end of the stream has come out. `onSample` is called on the converter's thread; what it
/// throws ends the graph. Throws util::TessaryException, also when the graph ends before the stream
/// does: what has come out then is not all of it.
void replay(const Recording& recording, const ReplaySettings& settings,
            const std::function<void(const ReceivedSample&)>& onSample);

}  // namespace korr::streaming::direct_show::host::inline v2_1
