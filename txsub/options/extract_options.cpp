// SPDX-License-Identifier: MIT
#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kExtractExamples =
    "The file holds the subtitle stream and nothing of picture and sound, which makes it the best\n"
    "way to report a fault. Without --pid the first stream that carries subtitles is taken.\n\n"
    "Examples:\n"
    "  txsub extract news.ts -o report.jsonl\n"
    "  txsub extract mux.ts --pid 0x1f4 -o teletext.jsonl";

void addExtractOptions(CLI::App& command, ExtractOptions& options) {
  command
      .add_option("-o,--output", options.output,
                  "The .jsonl file to write; '-' for standard output")
      ->type_name("FILE")
      ->required();
}

}  // namespace

std::unique_ptr<ISubcommand> addExtract(CLI::App& program) {
  return std::make_unique<PlainSubcommand<ExtractOptions>>(
      program, "extract", "Record what the filter's input pin would receive", kExtractExamples,
      addExtractOptions);
}

}  // namespace korr::txsub
