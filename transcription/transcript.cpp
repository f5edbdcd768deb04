// SPDX-License-Identifier: MIT
#include "transcription/transcript.h"

#include <utility>

#include "recognition/tesseract/engine_module.h"
#include "transcription/language_finder.h"
#include "transcription/placed_text_of.h"

namespace korr::txsub {

using encoding::subtitling::PlacedText;
using encoding::subtitling::Subtitle;

namespace {

// They are kept whole until the language is known: as few as tell it.
constexpr std::size_t kTrialPictures = 4;

// What is read where no language reads anything.
constexpr const char* kUsualLanguage = "eng";

}  // namespace

Transcript::Reading::Reading(const std::string& language, std::shared_ptr<ShapesStore> store,
                             log::ILogger& logger)
    : shapes(std::move(store)),
      engine(language, logger),
      reader({.engine = recognition::engineProblem(language).empty() ? &engine : nullptr,
              .book = &shapes->book(),
              .script = recognition::scriptOf(language)}) {
  if (shapes->wordGap() > 0) reader.setWordGap(shapes->wordGap());
}

Transcript::Transcript(TranscriptWiring wiring) : wiring_(std::move(wiring)) {
  if (!wiring_.language.empty()) begin(wiring_.language);
}

void Transcript::begin(const std::string& language) {
  statistics_.language = language;
  reading_ = std::make_unique<Reading>(language, wiring_.shapesOf(language), *wiring_.logger);
  for (const auto& bitmap : std::exchange(waiting_, {})) reading_->reader.add(bitmap);
}

// By trial.
void Transcript::findOut() {
  const auto found = findLanguage(waiting_, recognition::engineLanguagesHere());
  const std::string language = found.empty() ? kUsualLanguage : found;
  log::write(wiring_.logger, log::Level::Warning,
             "nothing says which language %s are in; %s '%s' (name it with --ocr if it is not)",
             describe(wiring_.service).c_str(),
             found.empty() ? "they are read as" : "by trial they are in", language.c_str());
  begin(language);
}

void Transcript::onCue(const Cue& cue) {
  const auto* bitmap = cue.subtitle->bitmap();
  if (!bitmap) return;
  intervals_.push_back({.start = cue.start, .stop = cue.stop});
  if (reading_) {
    reading_->reader.add(*bitmap);
    return;
  }
  waiting_.push_back(*bitmap);
  if (waiting_.size() == kTrialPictures) findOut();
}

void Transcript::open() {
  wiring_.output->open();
}

// Whoever reads along gets text that is some pictures old.
void Transcript::flush() {
  if (wiring_.delay && reading_ && !intervals_.empty()) {
    const MediaTime now = intervals_.back().stop;
    while (written_ < intervals_.size() && intervals_[written_].stop + *wiring_.delay <= now) {
      write(written_++);
    }
  }
  wiring_.output->flush();
}

void Transcript::commit() {
  if (!reading_) findOut();
  while (written_ < intervals_.size()) write(written_++);
  giveOut();
  wiring_.output->commit();
  reading_->shapes->save(reading_->reader.wordGap());
  warnOfLimits();
}

// Half a second for some languages: only when text is asked for.
void Transcript::openWords() {
  if (std::exchange(areWordsOpened_, true)) return;
  try {
    words_ = recognition::loadWordList(statistics_.language);
  } catch (const util::TessaryException&) {
    // Without the module there are no words either; the engine has said so.
  }
  reading_->reader.setWords(words_.get());
}

void Transcript::warnOfLimits() const {
  const auto service = describe(wiring_.service);
  if (reading_->reader.counters().engineLines >= recognition::kMostEngineLines) {
    log::write(wiring_.logger, log::Level::Warning,
               "the engine has read %zu lines of %s; those after them have known letters only",
               recognition::kMostEngineLines, service.c_str());
  }
  if (reading_->shapes->book().shapeCount() >= recognition::kMostShapes) {
    log::write(wiring_.logger, log::Level::Warning,
               "%s have more than %zu shapes; those after them are not learnt", service.c_str(),
               recognition::kMostShapes);
  }
}

void Transcript::write(std::size_t picture) {
  openWords();
  const auto read = reading_->reader.text(picture);
  if (!read.lines.empty()) {
    const auto& interval = intervals_[picture];
    if (read.confidence < recognition::kDoubtful) report(picture, read);
    auto text = placedTextOf(read);
    if (open_ && open_->interval.stop == interval.start && saySame(open_->text, text)) {
      open_->interval.stop = interval.stop;
      open_->text.confidence = std::min(open_->text.confidence, text.confidence);
    } else {
      giveOut();
      open_ = {.interval = interval, .text = std::move(text)};
    }
  }
  reading_->reader.forget(picture);
}

void Transcript::report(std::size_t picture, const recognition::RecognisedPicture& text) {
  ++statistics_.doubtful;
  if (!wiring_.report) return;
  const MediaTime origin = wiring_.origin ? wiring_.origin() : 0;
  const auto since = [origin](MediaTime time) { return time > origin ? time - origin : 0; };
  const auto& interval = intervals_[picture];
  wiring_.report->add({.service = describe(wiring_.service),
                       .start = since(interval.start),
                       .stop = since(interval.stop),
                       .picture = reading_->reader.draw(picture),
                       .text = text});
}

void Transcript::giveOut() {
  if (!open_) return;
  const auto open = *std::exchange(open_, std::nullopt);
  statistics_.cues.push_back({open.interval.start, open.text.confidence});
  wiring_.output->onCue({.start = open.interval.start,
                         .stop = open.interval.stop,
                         .subtitle = std::make_shared<const Subtitle>(open.text)});
}

TranscriptStatistics Transcript::statistics() const {
  auto statistics = statistics_;
  if (!reading_) return statistics;
  statistics.reader = reading_->reader.counters();
  statistics.shapes = reading_->shapes->book().shapeCount();
  return statistics;
}

}  // namespace korr::txsub
