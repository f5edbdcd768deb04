// From the chain's timing to cues.
#pragma once

#include <memory>
#include <optional>

#include "cues/cue.h"
#include "model/interfaces.h"
#include "model/output_sink.h"

namespace korr::txsub {

/// Stands where a chain has its writer and its sink: keeps the subtitle that a writer would turn
/// into a document, and learns from the deliveries how long it was shown. Equal subtitles over
/// adjoining intervals make one cue, empty ones none.
class SubtitleRecorder final : public encoding::subtitling::IOutputSink {
 public:
  /// `listener` is not owned.
  explicit SubtitleRecorder(ICueListener& listener) : listener_(listener) {}

  /// The writer of the chain whose sink this is; must not outlive the recorder.
  std::unique_ptr<encoding::subtitling::ISubtitleConverter> makeWriter(
      encoding::subtitling::ISubtitleContainer& container);

  /// Hands out the last cue.
  void finish();

  /// Whether the last subtitle has something to see and has been shown for no time yet.
  bool isWaiting() const { return current_ && (!open_ || open_->subtitle != current_); }

  /// When the page of the last subtitle times out, if that is a picture with something to see.
  std::optional<MediaTime> pictureEnd() const;

  /// Whether any subtitle with something to see has come.
  bool hasShown() const { return hasShown_; }

  /// Whether a picture has come that times out at the moment that it is shown.
  bool hasTimedOutAtOnce() const { return hasTimedOutAtOnce_; }

  std::unique_ptr<encoding::subtitling::IOutputBuffer> getBuffer() override;
  void deliver(std::unique_ptr<encoding::subtitling::IOutputBuffer> buffer) override;
  void endOfStream() override {}

 private:
  class Writer;

  void setCurrent(Subtitle subtitle);
  void show(MediaTime start, MediaTime stop);

  ICueListener& listener_;
  std::shared_ptr<const Subtitle> current_;  // what the chain delivers next; null: nothing to see
  std::optional<Cue> open_;                  // may go on in the next interval
  bool hasShown_ = false;
  bool hasTimedOutAtOnce_ = false;
};

}  // namespace korr::txsub
