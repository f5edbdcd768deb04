// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <sstream>

#include "txsub/options/completions.h"
#include "txsub/options/options.h"
#include "txsub/options/subcommand.h"
#include "txsub/version.h"

namespace korr::txsub {

namespace {

constexpr const char* kProgramExamples =
    "Examples:\n"
    "  txsub probe recording.ts                  what subtitles are in it?\n"
    "  txsub convert recording.ts -o subs.vtt    write them as WebVTT\n"
    "  txsub COMMAND --help                      all about one command";

// The error is CLI11's way out for --help and --version, too.
NoCommand explainUsage(const CLI::App& program, const CLI::ParseError& error) {
  std::ostringstream out;
  std::ostringstream errors;
  const bool isResult = program.exit(error, out, errors) == 0;
  return {.text = isResult ? out.str() : errors.str(), .exitCode = isResult ? kDone : kUsage};
}

}  // namespace

void introduce(CLI::App& program) {
  program.set_version_flag("--version", program.get_name() + ' ' + version());
  program.failure_message([](const CLI::App* app, const CLI::Error& error) {
    return app->get_name() + ": " + error.what() + "\nSee '" + app->get_name() + " --help'.\n";
  });
}

std::variant<Command, NoCommand> parseCommandLine(const std::vector<std::string>& arguments) {
  CLI::App program{"Subtitles of broadcast recordings as WebVTT, SRT and TTML.", "txsub"};
  program.allow_windows_style_options(false);  // a path may begin with a slash
  introduce(program);
  program.require_subcommand(1);
  program.footer(std::string(kProgramExamples) + "\n\n" + std::string(exitCodes()));
  std::vector<std::unique_ptr<ISubcommand>> subcommands;
  for (const auto add :
       {addConvert, addProbe, addExtract, addRender, addPreview, addBatch, addStream}) {
    subcommands.push_back(add(program));
  }

  // For packagers; users of a package need not know of it.
  std::optional<Shell> shell;
  auto* completions = program.add_subcommand("completions", "Print what a shell completes with");
  completions->group("");
  addChoice(*completions, "SHELL", shell,
            {{"bash", Shell::Bash}, {"zsh", Shell::Zsh}, {"fish", Shell::Fish}},
            "bash, zsh or fish")
      ->required();

  try {
    // CLI11 takes the arguments last first, without the program's name.
    program.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
    for (const auto& subcommand : subcommands) {
      if (subcommand->isCalled()) return subcommand->settle();
    }
    if (shell) return NoCommand{.text = completionScript(program, *shell), .exitCode = kDone};
    throw CLI::CallForHelp();
  } catch (const CLI::ParseError& error) {
    return explainUsage(program, error);
  }
}

}  // namespace korr::txsub
