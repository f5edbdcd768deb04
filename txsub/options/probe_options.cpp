#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kExamples =
    "Examples:\n"
    "  txsub probe news.ts            a table for the eye\n"
    "  txsub probe news.ts --json     the same for programs\n"
    "  txsub probe news.ts --scan     also teletext pages that no descriptor names";

class ProbeSubcommand final : public ISubcommand {
 public:
  explicit ProbeSubcommand(CLI::App& program)
      : command_(program.add_subcommand("probe", "List the subtitle services of a recording")) {
    input_.addTo(*command_);
    command_->add_flag("--json", options_.json, "Write JSON");
    command_->add_flag("--scan", options_.scan,
                       "Also list teletext pages that no descriptor names");
    command_->footer(footer(kExamples));
  }

  bool isCalled() const override { return command_->parsed(); }

  Command settle() override {
    options_.input = input_.settle();
    return options_;
  }

 private:
  CLI::App* command_;
  InputArguments input_;
  ProbeOptions options_;
};

}  // namespace

std::unique_ptr<ISubcommand> addProbe(CLI::App& program) {
  return std::make_unique<ProbeSubcommand>(program);
}

}  // namespace korr::txsub
