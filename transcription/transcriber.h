// SPDX-License-Identifier: MIT

// All services of a run whose pictures become text.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "transcription/transcript.h"

namespace korr::txsub {

struct TranscriberSetup {
  std::string languages = {};       ///< as --ocr names them, "deu+eng"; empty: each service's own
  std::string shapesPath = {};      ///< UTF-8; empty for none
  bool hasFilePerLanguage = false;  ///< "shapes-deu.txt" for "shapes.txt"
  std::string reportPath = {};      ///< UTF-8; empty for none
  std::string title = {};           ///< what the recording is called
};

/// Languages as the engine names them: bibliographic codes and those of its own habit replaced.
/// Empty when one of them is no code of three letters.
std::string engineLanguages(const std::string& iso639);

/// Makes the transcripts of services, which share a book of shapes where one file is given for
/// them. Not thread-safe.
class Transcriber {
 public:
  /// `logger` is not owned and outlives the transcripts.
  Transcriber(TranscriberSetup setup, log::ILogger& logger);

  /// Why the pictures of a service cannot be read here, and what to install; empty when they can.
  /// Letters that a file of shapes knows can always be read. Throws util::TessaryException for
  /// shapes that cannot be read.
  std::string problemOf(const Service& service);

  /// Between the service's pictures and `output`, which takes their text. The transcriber outlives
  /// what is returned.
  std::unique_ptr<Transcript> transcribe(const Service& service, std::unique_ptr<ICueOutput> output,
                                         std::function<MediaTime()> origin,
                                         std::optional<MediaTime> delay);

  /// Writes the report. Throws OutputError.
  void finish();

 private:
  std::string languageOf(const Service& service) const;
  std::shared_ptr<ShapesStore> shapesOf(const std::string& language);

  TranscriberSetup setup_;
  log::ILogger& logger_;
  std::optional<ReportPage> report_;
  std::map<std::string, std::shared_ptr<ShapesStore>> stores_;  // by their paths
};

}  // namespace korr::txsub
