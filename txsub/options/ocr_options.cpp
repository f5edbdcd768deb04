// SPDX-License-Identifier: MIT
#include "transcription/transcriber.h"
#include "txsub/options/subcommand.h"

namespace korr::txsub {

void OcrArguments::addTo(CLI::App& command) {
  command
      .add_option("--ocr", languages_,
                  "Languages in which pictures are read, such as deu or deu+eng (ISO 639-2); auto: "
                  "what the recording says. Also makes TTML of text, where pictures would be kept")
      ->type_name("LANGUAGES");
  command
      .add_option("--ocr-shapes", shapes_,
                  "A file of the channel's letters: read first, added to at the end; it can be "
                  "corrected by hand. With --all there is one for each language, FILE-deu")
      ->type_name("FILE");
  command
      .add_option("--ocr-report", report_,
                  "An .html page with all doubtful cues: picture, text, reason and confidence")
      ->type_name("FILE");
}

OcrOptions OcrArguments::settle() const {
  OcrOptions options;
  options.isAskedFor = !languages_.empty();
  options.shapes = shapes_;
  options.report = report_;
  if (options.isAskedFor && lowerCase(languages_) != "auto") {
    options.languages = engineLanguages(lowerCase(languages_));
    if (options.languages.empty()) {
      throw usageError("--ocr", "'" + languages_ +
                                    "' is neither auto nor languages of three letters such as "
                                    "deu or deu+eng");
    }
  }
  if (shapes_ == "-" || report_ == "-") {
    throw usageError(shapes_ == "-" ? "--ocr-shapes" : "--ocr-report",
                     "name a file; standard output is for the subtitles");
  }
  return options;
}

}  // namespace korr::txsub
