// SPDX-License-Identifier: MIT

// What became of the jobs of a batch, in this run and before.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "batch/manifest.h"

namespace korr::txsub {

/// Tells whether a job is the same as one of before: its recording, too, by size and time.
struct JobKey {
  std::string input;
  std::string output;
  std::vector<std::string> options;
  std::uint64_t size = 0;     ///< bytes; 0 when the input is no file
  std::int64_t modified = 0;  ///< nanoseconds since 1970; 0 when the input is no file

  friend auto operator<=>(const JobKey&, const JobKey&) = default;
};

JobKey keyOf(const Job& job);

enum class JobStatus {
  Done,
  NoSubtitles,  ///< nothing that was asked for is shown in the recording
  Failed,
};

/// A service that came out of a recording.
struct JobService {
  std::string name;
  std::uint64_t cues = 0;
  double first = 0;  ///< seconds from the recording's start
  double last = 0;   ///< end of the last cue, likewise
  std::string file;
};

struct JobResult {
  JobKey key;
  JobStatus status = JobStatus::Failed;
  int exitCode = 0;  ///< minus the number of the signal that ended the conversion
  double seconds = 0;
  std::vector<JobService> services = {};
  std::uint64_t damage = 0;                ///< warnings
  std::vector<std::string> messages = {};  ///< the first of what the conversion said
};

/// A file with one line of JSON for each result, which is only ever added to. Not thread-safe.
class Ledger {
 public:
  /// Reads what is in `file` and, where several machines share a batch, in their files beside it:
  /// whatever begins and ends with the same as `family`. A line that a kill has torn counts for
  /// nothing. Throws util::TessaryException when `file` cannot be written.
  Ledger(const std::filesystem::path& file, const std::filesystem::path& family);
  ~Ledger();
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;

  /// Whether there is nothing left to do: a result says so, and its files are still there.
  bool isSettled(const JobKey& key) const { return settled_.contains(key); }

  /// Throws util::TessaryException when the file cannot be written.
  void add(const JobResult& result);

 private:
  void readFile(const std::filesystem::path& file);
  [[noreturn]] void fail() const;

  std::filesystem::path path_;
  std::set<JobKey> settled_;
  std::FILE* file_ = nullptr;
};

}  // namespace korr::txsub
