// SPDX-License-Identifier: MIT

#include "batch/runner.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "platform/child_process.h"
#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kGlance{500};
constexpr std::chrono::seconds kGrace{5};  // to end in by itself
constexpr int kNoSubtitlesExit = 3;
constexpr std::string_view kName = "txsub: ";  // before what conversions say
constexpr std::size_t kMostMessages = 10;
constexpr std::size_t kLongestMessage = 1000;  // bytes

std::vector<std::string> argumentsOf(const Job& job) {
  std::vector<std::string> arguments{"convert", "--output", job.output, "--stats=json",
                                     "--complete-only"};
  arguments.insert(arguments.end(), job.options.begin(), job.options.end());
  arguments.insert(arguments.end(), {"--", job.input});
  return arguments;
}

// A line of the conversion's statistics.
std::optional<JobService> serviceFrom(const std::string& line) {
  const auto object = nlohmann::json::parse(line, nullptr, false);
  if (!object.is_object() || object.value("file", "").empty()) return std::nullopt;
  return JobService{.name = object.value("service", ""),
                    .cues = object.value("cues", std::uint64_t{0}),
                    .first = object.value("first", 0.0),
                    .last = object.value("last", 0.0),
                    .file = object.value("file", "")};
}

void readErrors(const fs::path& file, JobResult& result) {
  std::ifstream lines(file, std::ios::binary);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.starts_with('{')) {
      if (auto service = serviceFrom(line)) result.services.push_back(std::move(*service));
      continue;
    }
    if (line.starts_with(kName)) line.erase(0, kName.size());
    if (line.starts_with("warning: ")) ++result.damage;
    if (result.messages.size() < kMostMessages) {
      result.messages.push_back(line.substr(0, kLongestMessage));
    }
  }
}

/// A recording that is being converted.
class Work {
 public:
  Work(const Job& job, const RunnerSettings& settings, fs::path errors)
      : job_(job),
        result_{.key = keyOf(job)},
        errors_(std::move(errors)),
        child_({.program = settings.program,
                .arguments = argumentsOf(job),
                .errors = errors_,
                .memoryLimit = settings.memoryLimit}) {
    if (settings.timeLimit) deadline_ = started_ + *settings.timeLimit;
  }

  ~Work() {
    std::error_code ignored;
    fs::remove(errors_, ignored);
  }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  const Job& job() const { return job_; }
  const JobKey& key() const { return result_.key; }
  platform::ChildProcess& child() { return child_; }
  bool hasEnded() { return child_.exitCode().has_value(); }

  void askToEnd() {
    child_.askToEnd();
    deadline_ = Clock::now() + kGrace;
    isAsked_ = true;
  }

  /// Ends what takes too long.
  void keepTime() {
    if (!deadline_ || Clock::now() < *deadline_) return;
    if (isAsked_) return child_.kill();
    isLate_ = true;
    askToEnd();
  }

  JobResult takeResult() {
    const std::chrono::duration<double> taken = Clock::now() - started_;
    result_.seconds = std::round(taken.count() * 1000) / 1000;
    result_.exitCode = *child_.exitCode();
    readErrors(errors_, result_);
    if (isLate_) {
      result_.messages.emplace_back("it took too long and was ended (--time-limit)");
    } else if (result_.exitCode < 0) {
      result_.messages.push_back("a signal ended it (" + std::to_string(-result_.exitCode) + ')');
    } else if (result_.exitCode == 0) {
      result_.status = JobStatus::Done;
    } else if (result_.exitCode == kNoSubtitlesExit) {
      result_.status = JobStatus::NoSubtitles;
    }
    return std::move(result_);
  }

 private:
  Job job_;
  JobResult result_;
  fs::path errors_;
  Clock::time_point started_ = Clock::now();
  std::optional<Clock::time_point> deadline_;
  bool isAsked_ = false;
  bool isLate_ = false;
  platform::ChildProcess child_;
};

/// The batch under way.
class Batch {
 public:
  Batch(const RunnerSettings& settings, Ledger& ledger, IBatchMonitor& monitor)
      : settings_(settings), ledger_(ledger), monitor_(monitor), works_(settings.processes) {}

  void run(const std::vector<Job>& jobs);

 private:
  void start(const Job& job, std::size_t place);
  void wait();
  void collect();
  void settle(std::unique_ptr<Work>& work);
  void stop();
  bool isBusy() const {
    return std::any_of(works_.begin(), works_.end(),
                       [](const auto& work) { return work != nullptr; });
  }

  const RunnerSettings& settings_;
  Ledger& ledger_;
  IBatchMonitor& monitor_;
  std::vector<std::unique_ptr<Work>> works_;  // null: a free place
  std::uint64_t done_ = 0;
};

void Batch::run(const std::vector<Job>& jobs) {
  std::uint64_t total = 0;
  for (const auto& job : jobs) total += keyOf(job).size;
  auto next = jobs.begin();
  while ((next != jobs.end() || isBusy()) && !monitor_.isStopWanted()) {
    for (std::size_t place = 0; place < works_.size() && next != jobs.end(); ++place) {
      if (!works_[place]) start(*next++, place);
    }
    wait();
    collect();
    monitor_.onProgress(done_, total);
  }
  if (isBusy()) stop();
}

void Batch::start(const Job& job, std::size_t place) {
  std::error_code ignored;  // the conversion says what is wrong with its output
  const fs::path folder = pathFromUtf8(job.output).parent_path();
  if (!folder.empty() && folder.native().find('$') == fs::path::string_type::npos) {
    fs::create_directories(folder, ignored);
  }
  fs::path errors = settings_.errorsPrefix;
  errors += std::to_string(place);
  works_[place] = std::make_unique<Work>(job, settings_, std::move(errors));
}

void Batch::wait() {
  std::vector<platform::ChildProcess*> children;
  for (const auto& work : works_) {
    if (work) children.push_back(&work->child());
  }
  platform::waitForAny(children, kGlance);
}

void Batch::collect() {
  for (auto& work : works_) {
    if (!work) continue;
    work->keepTime();
    if (work->hasEnded()) settle(work);
  }
}

void Batch::settle(std::unique_ptr<Work>& work) {
  const JobResult result = work->takeResult();
  ledger_.add(result);
  done_ += result.key.size;
  monitor_.onResult(work->job(), result);
  work.reset();
}

// What was asked to end and is done all the same counts.
void Batch::stop() {
  for (auto& work : works_) {
    if (work) work->askToEnd();
  }
  while (isBusy()) {
    wait();
    for (auto& work : works_) {
      if (!work) continue;
      work->keepTime();
      if (!work->hasEnded()) continue;
      if (work->child().exitCode() == 0) {
        settle(work);
      } else {
        work.reset();
      }
    }
  }
}

}  // namespace

void runJobs(const std::vector<Job>& jobs, const RunnerSettings& settings, Ledger& ledger,
             IBatchMonitor& monitor) {
  Batch(settings, ledger, monitor).run(jobs);
}

}  // namespace korr::txsub
