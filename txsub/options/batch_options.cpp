// SPDX-License-Identifier: MIT

#include <algorithm>
#include <filesystem>
#include <thread>

#include "txsub/options/subcommand.h"
#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

constexpr const char* kBatchExamples =
    "A line of the manifest is a path, or a JSON object: {\"input\": \"news.ts\", \"output\":\n"
    "\"news.vtt\", \"options\": [\"--page\", \"CC1\"]}. What a line leaves out is taken from here. "
    "'-' reads\n"
    "the manifest from standard input. Mistakes in it are told before anything starts.\n"
    "A second run does what is missing, has failed or has changed since. Ctrl-C leaves whole "
    "files\n"
    "only.\n\n"
    "Examples:\n"
    "  txsub batch list.txt -o 'subtitles/${input}.vtt' --jobs 8\n"
    "  txsub batch list.txt -o 'subtitles/${input}' -- --all\n"
    "                                                 every service, a folder a recording\n"
    "  txsub batch list.jsonl --shard 3/16            the third share of sixteen\n"
    "  find /archive -name '*.ts' | txsub batch - -o '${folder}/${input}.srt' --results "
    "done.jsonl\n\n"
    "Exit codes:\n"
    "  0  every recording is converted, or holds no subtitles\n"
    "  1  some have failed (the results say why), or the batch was interrupted\n"
    "  2  wrong usage, or mistakes in the manifest: nothing has been started";

// "3/16"
std::optional<Shard> parseShard(const std::string& text) {
  const auto slash = text.find('/');
  if (slash == std::string::npos) return std::nullopt;
  const auto index = parseNumber(std::string_view(text).substr(0, slash), 10);
  const auto count = parseNumber(std::string_view(text).substr(slash + 1), 10);
  if (!index || !count || *index < 1 || *index > *count) return std::nullopt;
  return Shard{.index = *index, .count = *count};
}

class BatchSubcommand final : public ISubcommand {
 public:
  explicit BatchSubcommand(CLI::App& program);

  bool isCalled() const override { return command_->parsed(); }
  Command settle() override;

 private:
  CLI::App* command_;
  BatchOptions options_;
  std::string shard_;
  bool isQuiet_ = false;
  bool isVerbose_ = false;
};

BatchSubcommand::BatchSubcommand(CLI::App& program)
    : command_(program.add_subcommand("batch", "Convert many recordings, each once")) {
  options_.processes = std::max(1U, std::thread::hardware_concurrency());
  command_->add_option("MANIFEST", options_.input.path, "The list of recordings")->required();
  command_
      ->add_option("-o,--output", options_.output,
                   "The output of lines that name none, as 'convert' takes it; ${input} is the "
                   "recording's name without its extension, ${folder} its folder")
      ->type_name("OUTPUT");
  command_
      ->add_option("--results", options_.results,
                   "Where a line of JSON is added for each recording (default: MANIFEST"
                   ".results.jsonl)")
      ->type_name("FILE");
  addNumber(*command_, "--jobs", options_.processes, 1, 1024,
            "Recordings at a time (default: one for each core)")
      ->type_name("N");
  command_
      ->add_option("--shard", shard_,
                   "Only every N-th recording, from the I-th on; its results go to a file of "
                   "their own, those of all shards are read")
      ->type_name("I/N");
  addNumber(*command_, "--time-limit", options_.timeLimit, 1, 1'000'000,
            "A recording that takes longer has failed")
      ->type_name("SECONDS");
  addNumber(*command_, "--memory-limit", options_.memoryLimit, 16, 1'000'000,
            "A recording that needs more memory has failed")
      ->type_name("MB");
  auto* quiet = command_->add_flag("-q,--quiet", isQuiet_, "Only errors, no progress");
  command_->add_flag("-v,--verbose", isVerbose_, "Also say what becomes of each recording")
      ->excludes(quiet);
  command_
      ->add_option("OPTIONS", options_.options,
                   "After '--': options of 'convert' for the lines that name none")
      ->type_name("");
  command_->footer(kBatchExamples);
}

Command BatchSubcommand::settle() {
  if (isQuiet_) options_.input.verbosity = Verbosity::Quiet;
  if (isVerbose_) options_.input.verbosity = Verbosity::Verbose;
  if (!shard_.empty()) {
    const auto shard = parseShard(shard_);
    if (!shard) throw usageError("--shard", "'" + shard_ + "' is not I/N with I from 1 to N");
    options_.shard = *shard;
  }
  if (options_.results.empty()) {
    if (options_.input.path == "-") {
      throw usageError("--results", "name the file for the results when the manifest is a pipe");
    }
    options_.results = options_.input.path + ".results.jsonl";
  }
  return options_;
}

}  // namespace

std::unique_ptr<ISubcommand> addBatch(CLI::App& program) {
  return std::make_unique<BatchSubcommand>(program);
}

}  // namespace korr::txsub
