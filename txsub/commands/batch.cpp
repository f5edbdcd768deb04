// SPDX-License-Identifier: MIT

#include "batch/ledger.h"
#include "batch/manifest.h"
#include "batch/runner.h"
#include "platform/process.h"
#include "readers/byte_source.h"
#include "txsub/commands/commands.h"
#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostMistakes = 20;

std::string readWhole(const std::string& path) {
  FileSource source(path);
  std::string text;
  std::vector<std::uint8_t> buffer(1U << 16U);
  while (const std::size_t size = source.read(buffer.data(), buffer.size())) {
    text.append(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size));
  }
  return text;
}

// What `convert` says of its command line, without what it says to everybody.
std::optional<std::string> whyRefused(const Job& job) {
  std::vector<std::string> arguments{"txsub", "convert", "-o", job.output};
  arguments.insert(arguments.end(), job.options.begin(), job.options.end());
  arguments.insert(arguments.end(), {"--", job.input});
  const auto parsed = parseCommandLine(arguments);
  const auto* nothing = std::get_if<NoCommand>(&parsed);
  if (!nothing) {
    const auto* options = std::get_if<ConvertOptions>(&std::get<Command>(parsed));
    if (options->statistics == StatisticsFormat::None && !options->completeOnly) return {};
    return "--stats and --complete-only are given by the batch itself";
  }
  std::string text = nothing->text.substr(0, nothing->text.find('\n'));
  constexpr std::string_view kName = "txsub: ";
  if (text.starts_with(kName)) text.erase(0, kName.size());
  return text;
}

std::string placeOf(const std::string& manifest, const ManifestMistake& mistake) {
  return inputName(manifest) + ", line " + std::to_string(mistake.line) +
         (mistake.column ? ", column " + std::to_string(*mistake.column) : "") + ": ";
}

// "done.jsonl" of shard 3 of 16: "done-3-of-16.jsonl".
fs::path resultsOf(const fs::path& family, const Shard& shard) {
  if (shard.count == 1) return family;
  fs::path file = family;
  file.replace_filename(utf8FromPath(family.stem()) + '-' + std::to_string(shard.index) + "-of-" +
                        std::to_string(shard.count) + utf8FromPath(family.extension()));
  return file;
}

class BatchReport final : public IBatchMonitor {
 public:
  explicit BatchReport(Console& console) : console_(console) {}

  void onResult(const Job& job, const JobResult& result) override {
    const std::string name = inputName(job.input);
    switch (result.status) {
      case JobStatus::Done:
        ++done_;
        console_.detail(name + " is converted");
        return;
      case JobStatus::NoSubtitles:
        ++silent_;
        console_.detail(name + " shows no subtitles");
        return;
      case JobStatus::Failed:
        ++failed_;
        console_.warning(name + " (line " + std::to_string(job.line) + ") has failed" +
                         (result.messages.empty() ? "" : ": " + result.messages.back()));
    }
  }

  void onProgress(std::uint64_t done, std::uint64_t total) override {
    console_.showProgress({.bytesRead = done, .bytesTotal = total});
  }

  bool isStopWanted() const override { return console_.isStopWanted(); }

  bool hasFailures() const { return failed_ != 0; }

  std::string summary(std::size_t wanted, std::size_t settledBefore) const {
    const std::size_t left = wanted - settledBefore - done_ - silent_ - failed_;
    return std::to_string(wanted) + " recordings: " + std::to_string(done_) + " converted, " +
           std::to_string(silent_) + " without subtitles, " + std::to_string(failed_) +
           " failed, " + std::to_string(settledBefore) + " settled before" +
           (left == 0 ? "" : ", " + std::to_string(left) + " left");
  }

 private:
  Console& console_;
  std::size_t done_ = 0;
  std::size_t silent_ = 0;
  std::size_t failed_ = 0;
};

std::vector<Job> shardOf(const std::vector<Job>& jobs, const Shard& shard) {
  std::vector<Job> share;
  for (std::size_t i = shard.index - 1; i < jobs.size(); i += shard.count) share.push_back(jobs[i]);
  return share;
}

ExitCode refuse(const std::string& path, const std::vector<ManifestMistake>& mistakes,
                Console& console) {
  for (std::size_t i = 0; i < std::min(mistakes.size(), kMostMistakes); ++i) {
    console.error(placeOf(path, mistakes[i]) + mistakes[i].message);
  }
  if (mistakes.size() > kMostMistakes) {
    console.error("and " + std::to_string(mistakes.size() - kMostMistakes) + " more mistakes");
  }
  console.error("nothing has been started");
  return kUsage;
}

}  // namespace

ExitCode run(const BatchOptions& options, Console& console) {
  const std::string& path = options.input.path;
  const Manifest manifest = readManifest(
      readWhole(path), {.output = options.output, .options = options.options}, whyRefused);
  if (!manifest.mistakes.empty()) return refuse(path, manifest.mistakes, console);

  const fs::path family = pathFromUtf8(options.results);
  const fs::path results = resultsOf(family, options.shard);
  Ledger ledger(results, family);
  const std::vector<Job> share = shardOf(manifest.jobs, options.shard);
  std::vector<Job> jobs;
  for (const auto& job : share) {
    if (!ledger.isSettled(keyOf(job))) jobs.push_back(job);
  }

  RunnerSettings settings{
      .program = platform::programFile(), .processes = options.processes, .errorsPrefix = results};
  settings.errorsPrefix += ".part" + std::to_string(platform::processId()) + '-';
  if (options.timeLimit != 0) settings.timeLimit = std::chrono::seconds(options.timeLimit);
  if (options.memoryLimit != 0) {
    settings.memoryLimit = std::uint64_t{options.memoryLimit} * 1'000'000;
  }
  BatchReport report(console);
  runJobs(jobs, settings, ledger, report);
  console.endProgress();
  console.note(report.summary(share.size(), share.size() - jobs.size()));
  return report.hasFailures() || report.isStopWanted() ? kFailed : kDone;
}

}  // namespace korr::txsub
