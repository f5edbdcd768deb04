// SPDX-License-Identifier: MIT
#include "files/caption_file.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "files/mcc_file.h"
#include "files/scc_file.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using encoding::subtitling::MediaTime;
using util::TimeCodeRate;

constexpr std::array<TimeCodeRate, 8> kRates = {{
    {24000, 1001, 24, false},
    {24, 1, 24, false},
    {25, 1, 25, false},
    {30000, 1001, 30, true},
    {30, 1, 30, false},
    {50, 1, 50, false},
    {60000, 1001, 60, true},
    {60, 1, 60, false},
}};

double durationOf(const TimeCodeRate& rate) {
  return static_cast<double>(kSecond) * rate.denominator / rate.numerator;
}

// The mean time from a picture to the next, but for pauses.
double meanStep(std::span<const MediaTime> times) {
  std::vector<double> steps;
  for (std::size_t i = 1; i < times.size(); ++i) {
    if (times[i] > times[i - 1]) steps.push_back(static_cast<double>(times[i] - times[i - 1]));
  }
  if (steps.empty()) return 0;
  std::ranges::sort(steps);
  const double median = steps[steps.size() / 2];
  double sum = 0;
  std::size_t count = 0;
  for (const double step : steps) {
    if (std::abs(step - median) > median / 4) continue;
    sum += step;
    ++count;
  }
  return sum / static_cast<double>(count);
}

}  // namespace

TimeCodeRate frameRateOf(std::span<const MediaTime> times, bool dropFrame) {
  constexpr TimeCodeRate kTelevision{};
  const double step = meanStep(times);
  TimeCodeRate rate = kTelevision;
  if (step > 0) {
    rate = *std::ranges::min_element(kRates, {}, [step](const TimeCodeRate& candidate) {
      return std::abs(durationOf(candidate) - step);
    });
  }
  rate.dropFrame = rate.dropFrame && dropFrame;
  return rate;
}

std::unique_ptr<ICaptionFile> createCaptionFile(const CaptionFileRequest& request) {
  if (request.format == CaptionFormat::Mcc) return std::make_unique<MccFile>(request);
  return std::make_unique<SccFile>(request);
}

}  // namespace korr::txsub
