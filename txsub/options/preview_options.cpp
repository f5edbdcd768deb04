#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kExamples =
    "The page needs nothing but itself: open it in any browser, or send it to somebody.\n\n"
    "Examples:\n"
    "  txsub preview news.ts -o news.html             all services of a recording\n"
    "  txsub preview mux.ts --pid 0x1f4 -o one.html   those of one stream";

class PreviewSubcommand final : public ISubcommand {
 public:
  explicit PreviewSubcommand(CLI::App& program)
      : command_(program.add_subcommand("preview",
                                        "Make a web page that shows every subtitle of a "
                                        "recording")) {
    input_.addTo(*command_);
    command_
        ->add_option("-o,--output", options_.output,
                     "The .html file to write; '-' for standard output")
        ->type_name("FILE")
        ->required();
    command_->add_flag("--scan", options_.scan,
                       "Also show teletext pages that no descriptor names");
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
  PreviewOptions options_;
};

}  // namespace

std::unique_ptr<ISubcommand> addPreview(CLI::App& program) {
  return std::make_unique<PreviewSubcommand>(program);
}

}  // namespace korr::txsub
