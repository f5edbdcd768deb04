// SPDX-License-Identifier: MIT
#include "transcription/transcript.h"

#include <utility>

#include "recognition/letters.h"
#include "recognition/tesseract/engine_module.h"
#include "transcription/placed_text_of.h"

namespace korr::txsub {

using encoding::subtitling::PlacedText;
using encoding::subtitling::Subtitle;

Transcript::Transcript(TranscriptWiring wiring)
    : wiring_(std::move(wiring)),
      engine_(wiring_.language, *wiring_.logger),
      reader_({.engine = wiring_.hasEngine ? &engine_ : nullptr,
               .words = nullptr,
               .book = &wiring_.shapes->book(),
               .script = recognition::isJoinedLanguage(wiring_.language)
                             ? recognition::Script::Joined
                             : recognition::Script::Separate}) {
  statistics_.language = wiring_.language;
  if (wiring_.shapes->wordGap() > 0) reader_.setWordGap(wiring_.shapes->wordGap());
}

void Transcript::onCue(const Cue& cue) {
  if (const auto* bitmap = cue.subtitle->bitmap()) {
    reader_.add(*bitmap);
    intervals_.push_back({.start = cue.start, .stop = cue.stop});
  }
}

void Transcript::open() {
  wiring_.output->open();
}

// Whoever reads along gets text that is some pictures old.
void Transcript::flush() {
  if (wiring_.delay && !intervals_.empty()) {
    const MediaTime now = intervals_.back().stop;
    while (written_ < intervals_.size() && intervals_[written_].stop + *wiring_.delay <= now) {
      write(written_++);
    }
  }
  wiring_.output->flush();
}

void Transcript::commit() {
  while (written_ < intervals_.size()) write(written_++);
  giveOut();
  wiring_.output->commit();
  wiring_.shapes->save(reader_.wordGap());
}

// Half a second for some languages: only when text is asked for.
void Transcript::openWords() {
  if (std::exchange(areWordsOpened_, true)) return;
  try {
    words_ = recognition::loadWordList(wiring_.language);
  } catch (const util::TessaryException&) {
    // Without the module there are no words either; the engine has said so.
  }
  reader_.setWords(words_.get());
}

void Transcript::write(std::size_t picture) {
  openWords();
  const auto read = reader_.text(picture);
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
  reader_.forget(picture);
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
                       .picture = reader_.draw(picture),
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
  statistics.reader = reader_.counters();
  statistics.shapes = wiring_.shapes->book().shapeCount();
  return statistics;
}

}  // namespace korr::txsub
