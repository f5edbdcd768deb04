#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kExamples =
    "The file holds the subtitle stream and nothing of picture and sound, which makes it the best\n"
    "way to report a fault. Without --pid the first stream that carries subtitles is taken.\n\n"
    "Examples:\n"
    "  txsub extract news.ts -o report.jsonl\n"
    "  txsub extract mux.ts --pid 0x1f4 -o teletext.jsonl";

class ExtractSubcommand final : public ISubcommand {
 public:
  explicit ExtractSubcommand(CLI::App& program)
      : command_(
            program.add_subcommand("extract", "Record what the filter's input pin would receive")) {
    input_.addTo(*command_);
    command_
        ->add_option("-o,--output", options_.output,
                     "The .jsonl file to write; '-' for standard output")
        ->type_name("FILE")
        ->required();
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
  ExtractOptions options_;
};

}  // namespace

std::unique_ptr<ISubcommand> addExtract(CLI::App& program) {
  return std::make_unique<ExtractSubcommand>(program);
}

}  // namespace korr::txsub
