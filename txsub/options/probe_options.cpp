// SPDX-License-Identifier: MIT
#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kProbeExamples =
    "Examples:\n"
    "  txsub probe news.ts            a table for the eye\n"
    "  txsub probe news.ts --json     the same for programs\n"
    "  txsub probe news.ts --scan     also teletext pages that no descriptor names";

void addProbeOptions(CLI::App& command, ProbeOptions& options) {
  command.add_flag("--json", options.json, "Write JSON");
  command.add_flag("--scan", options.scan, "Also list teletext pages that no descriptor names");
  addRules(command, options.rules);
}

}  // namespace

std::unique_ptr<ISubcommand> addProbe(CLI::App& program) {
  return std::make_unique<PlainSubcommand<ProbeOptions>>(
      program, "probe", "List the subtitle services of a recording", kProbeExamples,
      addProbeOptions);
}

}  // namespace korr::txsub
