// SPDX-License-Identifier: MIT

// Pushes a recording through the chain as the graph's filter does, without graph, threads and
// files, and prints the seconds it took: chain_replay RECORDING PAGE OUTPUT
#include <chrono>
#include <cstdio>
#include <string>

#include "files/sample_recorder.h"
#include "sessions/chain_host.h"
#include "sessions/service_session.h"
#include "txgraph/recording.h"
#include "txsub/console.h"

namespace {

using namespace korr;  // NOLINT(google-build-using-namespace)
using Clock = std::chrono::steady_clock;

/// To WebVTT, which is kept in memory until the clock has stopped.
std::chrono::duration<double> replay(const streaming::direct_show::host::Recording& recording,
                                     std::uint32_t page, const std::string& output) {
  txsub::Console console;
  txsub::ChainConfiguration configuration;
  configuration.mode = encoding::subtitling::ConversionMode::WebVtt;
  configuration.page = page;
  const auto start = Clock::now();
  txsub::SampleRecorder recorder;
  txsub::ChainHost host(configuration, recording.type, recording.format,
                        {.makeChain =
                             [&recorder](const auto& settings, log::ILogger* logger) {
                               return std::make_unique<encoding::subtitling::ConversionChain>(
                                   recorder, settings, logger);
                             },
                         .monitor = console});
  for (const auto& sample : recording.samples) host.push(sample, txsub::share(sample));
  recorder.endOfStream();
  const auto elapsed = Clock::now() - start;
  recorder.open(output);
  recorder.commit();
  return elapsed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: chain_replay RECORDING PAGE OUTPUT\n");
    return 2;
  }
  try {
    const auto page = static_cast<std::uint32_t>(std::stoul(argv[2], nullptr, 16));
    const auto recording = streaming::direct_show::host::readRecording(argv[1], nullptr);
    std::printf("%.4f\n", replay(recording, page, argv[3]).count());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "chain_replay: %s\n", error.what());
    return 1;
  }
}
