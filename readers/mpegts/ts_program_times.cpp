// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_program_times.h"

namespace korr::txsub {

void TsProgramTimes::follow(const std::map<std::uint16_t, TsProgramMap>& programs) {
  programs_.clear();
  for (const auto& [program, map] : programs) {
    if (map.pcrPid != kNone) programs_[map.pcrPid].push_back(program);
  }
}

void TsProgramTimes::takePcr(std::uint16_t pid, std::uint64_t pcr, bool discontinuity) {
  const auto programs = programs_.find(pid);
  if (programs != programs_.end()) {
    for (const std::uint16_t program : programs->second) {
      times_[program].clock.onPcr(pcr, discontinuity);
    }
  } else if (!untabled_) {
    untabled_ = pid;
  }
  if (areRivals_) return;
  if (untabled_ == pid) {
    times_[0].clock.onPcr(pcr, discontinuity);
  } else if (programs == programs_.end()) {
    areRivals_ = true;
    times_[0].clock = TsClock();
  }
}

std::vector<std::uint32_t> TsProgramTimes::programsOf(std::uint16_t pid) const {
  std::vector<std::uint32_t> programs;
  if (const auto found = programs_.find(pid); found != programs_.end()) {
    programs.assign(found->second.begin(), found->second.end());
  }
  if (!areRivals_ && untabled_ == pid) programs.push_back(0);
  return programs;
}

std::vector<std::uint16_t> TsProgramTimes::pids() const {
  std::vector<std::uint16_t> pids;
  for (const auto& [pid, programs] : programs_) pids.push_back(pid);
  if (untabled_) pids.push_back(*untabled_);
  return pids;
}

const TsProgramTime* TsProgramTimes::find(std::uint32_t program) const {
  const auto time = times_.find(program);
  return time == times_.end() ? nullptr : &time->second;
}

}  // namespace korr::txsub
