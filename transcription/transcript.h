// SPDX-License-Identifier: MIT

// The pictures of one service on their way to text.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cues/cue.h"
#include "recognition/picture_reader.h"
#include "services/service.h"
#include "transcription/late_engine.h"
#include "transcription/report_page.h"
#include "transcription/shapes_store.h"

namespace korr::txsub {

/// How the pictures of a service were read.
struct TranscriptStatistics {
  struct CueConfidence {
    MediaTime start = 0;  ///< 100 ns
    double confidence = 1;
  };

  std::string language;  ///< as the engine names it
  recognition::ReaderCounters reader;
  std::size_t shapes = 0;
  std::size_t doubtful = 0;         ///< cues that are worth a look
  std::vector<CueConfidence> cues;  ///< of each cue that was written
};

/// What a transcript works with.
struct TranscriptWiring {
  Service service;
  /// As the engine names it; empty: found by trial on the first pictures.
  std::string language;
  std::unique_ptr<ICueOutput> output;  ///< where the text goes
  /// The shapes of a language, which other transcripts may share.
  std::function<std::shared_ptr<ShapesStore>(const std::string& language)> shapesOf;
  std::function<MediaTime()> origin = {};  ///< the time that counts as 0 in the report
  /// Cues that ended so long ago (100 ns) are written when the output is flushed; nothing: all at
  /// the end, when everything is known.
  std::optional<MediaTime> delay = {};
  ReportPage* report = nullptr;    ///< may be null; not owned
  log::ILogger* logger = nullptr;  ///< never null; not owned
};

/// Reads each picture when it comes, the first few when the language is known, keeps what it saw
/// but not the picture, and hands the text on when later pictures cannot change it any more. Equal
/// text over adjoining intervals is one cue. A picture in which there is nothing to read makes no
/// cue. Not thread-safe.
class Transcript final : public ICueOutput {
 public:
  /// After so long a reader of a pipe gets what is known by then.
  static constexpr MediaTime kPipeDelay = 30 * encoding::subtitling::kSecond;

  explicit Transcript(TranscriptWiring wiring);

  void onCue(const Cue& cue) override;
  void open() override;
  void flush() override;
  void commit() override;

  /// Complete after `commit`.
  TranscriptStatistics statistics() const;

 private:
  struct Interval {
    MediaTime start = 0;
    MediaTime stop = 0;
  };

  /// What reads a language.
  struct Reading {
    Reading(const std::string& language, std::shared_ptr<ShapesStore> store, log::ILogger& logger);

    std::shared_ptr<ShapesStore> shapes;
    LateEngine engine;
    recognition::PictureReader reader;
  };

  void findOut();
  void begin(const std::string& language);
  void openWords();
  void write(std::size_t picture);
  void report(std::size_t picture, const recognition::RecognisedPicture& text);
  void giveOut();
  void warnOfLimits() const;

  TranscriptWiring wiring_;
  std::unique_ptr<recognition::IWordList> words_;  // null where there are none
  bool areWordsOpened_ = false;
  std::vector<encoding::subtitling::SubtitleBitmap> waiting_;  // for the language
  std::unique_ptr<Reading> reading_;  // nothing until the language is known
  std::vector<Interval> intervals_;   // of the pictures
  std::size_t written_ = 0;           // pictures whose text has been handed on
  struct Open {
    Interval interval;
    encoding::subtitling::PlacedText text;
  };
  std::optional<Open> open_;  // may go on, if equal text follows at once
  TranscriptStatistics statistics_;
};

}  // namespace korr::txsub
