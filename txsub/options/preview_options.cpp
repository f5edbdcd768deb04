// SPDX-License-Identifier: MIT
#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kPreviewExamples =
    "The page needs nothing but itself: open it in any browser, or send it to somebody.\n\n"
    "Examples:\n"
    "  txsub preview news.ts -o news.html             all services of a recording\n"
    "  txsub preview mux.ts --pid 0x1f4 -o one.html   those of one stream\n"
    "  txsub preview film.ts --ocr auto -o film.html  pictures, and what they are read as";

class PreviewSubcommand final : public ISubcommand {
 public:
  explicit PreviewSubcommand(CLI::App& program)
      : command_(program.add_subcommand(
            "preview", "Make a web page that shows every subtitle of a recording")) {
    input_.addTo(*command_);
    command_
        ->add_option("-o,--output", options_.output,
                     "The .html file to write; '-' for standard output")
        ->type_name("FILE")
        ->required();
    command_->add_flag("--scan", options_.scan,
                       "Also show teletext pages that no descriptor names");
    addRules(*command_, options_.rules);
    ocr_.addTo(*command_);
    command_->footer(footer(kPreviewExamples));
  }

  bool isCalled() const override { return command_->parsed(); }

  Command settle() override {
    options_.input = input_.settle();
    options_.ocr = ocr_.settle();
    for (const char* option : {"--ocr-shapes", "--ocr-report"}) {
      if (command_->count(option) == 0 || options_.ocr.isAskedFor) continue;
      throw usageError(option, "goes with --ocr, as in --ocr auto");
    }
    return options_;
  }

 private:
  CLI::App* command_;
  InputArguments input_;
  OcrArguments ocr_;
  PreviewOptions options_;
};

}  // namespace

std::unique_ptr<ISubcommand> addPreview(CLI::App& program) {
  return std::make_unique<PreviewSubcommand>(program);
}

}  // namespace korr::txsub
