// SPDX-License-Identifier: MIT
#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kExamples =
    "The page needs nothing but itself: open it in any browser, or send it to somebody.\n\n"
    "Examples:\n"
    "  txsub preview news.ts -o news.html             all services of a recording\n"
    "  txsub preview mux.ts --pid 0x1f4 -o one.html   those of one stream";

void addOptions(CLI::App& command, PreviewOptions& options) {
  command
      .add_option("-o,--output", options.output, "The .html file to write; '-' for standard output")
      ->type_name("FILE")
      ->required();
  command.add_flag("--scan", options.scan, "Also show teletext pages that no descriptor names");
  addRules(command, options.rules);
}

}  // namespace

std::unique_ptr<ISubcommand> addPreview(CLI::App& program) {
  return std::make_unique<PlainSubcommand<PreviewOptions>>(
      program, "preview", "Make a web page that shows every subtitle of a recording", kExamples,
      addOptions);
}

}  // namespace korr::txsub
