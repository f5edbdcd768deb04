// SPDX-License-Identifier: MIT
#include "txgraph/recording.h"

#include <algorithm>

#include "readers/byte_source.h"
#include "readers/samples_reader.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

namespace {

/// Keeps every sample.
class Collector final : public txsub::IReaderListener {
 public:
  explicit Collector(std::vector<txsub::InputSample>& samples) : samples_(samples) {}

  bool onStream(const txsub::StreamInfo&) override { return true; }
  void onSample(const txsub::StreamInfo&, const txsub::InputSample& sample) override {
    samples_.push_back(sample);
  }

 private:
  std::vector<txsub::InputSample>& samples_;
};

}  // namespace

Recording readRecording(const std::string& path, log::ILogger* logger) {
  txsub::SamplesReader reader(std::make_unique<txsub::FileSource>(path),
                              {.pid = {}, .logger = logger});
  Recording recording{
      .type = reader.stream().type, .format = reader.stream().descriptors, .samples = {}};
  Collector collector(recording.samples);
  while (reader.read(collector)) {
  }
  return recording;
}

std::size_t longestUnit(const Recording& recording) {
  std::size_t longest = 1;
  std::size_t current = 0;
  for (const auto& sample : recording.samples) {
    current = sample.sync ? 1 : current + 1;
    longest = std::max(longest, current);
  }
  return longest;
}

std::size_t largestSample(const Recording& recording) {
  std::size_t largest = 1;
  for (const auto& sample : recording.samples) largest = std::max(largest, sample.data.size());
  return largest;
}

std::vector<UnitCompletion> unitCompletions(const Recording& recording) {
  std::vector<UnitCompletion> completions;
  const txsub::InputSample* first = nullptr;  // of the unit that is open
  for (std::size_t i = 0; i < recording.samples.size(); ++i) {
    const auto& sample = recording.samples[i];
    if (recording.type == txsub::SubtitleInputType::ClosedCaption) {
      if (sample.times) completions.push_back({.time = sample.times->start, .sample = i});
      continue;
    }
    if (first && !sample.sync) continue;
    if (first && first->times) completions.push_back({.time = first->times->start, .sample = i});
    first = &sample;
  }
  return completions;
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
