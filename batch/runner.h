// SPDX-License-Identifier: MIT

// Works a batch off.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "batch/ledger.h"
#include "batch/manifest.h"

namespace korr::txsub {

struct RunnerSettings {
  std::filesystem::path program;       ///< that converts
  unsigned processes = 1;              ///< at a time
  std::filesystem::path errorsPrefix;  ///< of files that hold what conversions say, meanwhile
  std::optional<std::chrono::seconds> timeLimit = {};  ///< of a recording
  std::optional<std::uint64_t> memoryLimit = {};       ///< of a recording, bytes
};

/// Is told how a batch goes, and may end it.
class IBatchMonitor {
 public:
  virtual void onResult(const Job& job, const JobResult& result) = 0;

  /// Bytes of the inputs whose jobs have ended, and of all that are to do.
  virtual void onProgress(std::uint64_t done, std::uint64_t total) = 0;

  virtual bool isStopWanted() const = 0;

 protected:
  ~IBatchMonitor() = default;
};

/// Converts what the ledger does not hold yet, each recording in a process of its own. What a
/// stopped batch has not finished leaves no output and no result. Throws util::TessaryException
/// when the ledger cannot be written, std::system_error when no process can be started.
void runJobs(const std::vector<Job>& jobs, const RunnerSettings& settings, Ledger& ledger,
             IBatchMonitor& monitor);

}  // namespace korr::txsub
