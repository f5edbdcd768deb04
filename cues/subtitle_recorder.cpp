#include "cues/subtitle_recorder.h"

#include <algorithm>
#include <utility>

namespace korr::txsub {

namespace {

using encoding::subtitling::ByteBuffer;
using encoding::subtitling::IOutputBuffer;
using encoding::subtitling::ISubtitleContainer;
using encoding::subtitling::ISubtitleConverter;

// Only the times matter: the documents are empty.
class IntervalBuffer final : public IOutputBuffer {
 public:
  std::uint8_t* data() override { return nullptr; }
  std::size_t capacity() const override { return 0; }
  void setUsedLength(std::size_t) override {}
  void setSyncPoint(bool) override {}
  void setDiscontinuity(bool) override {}
  void setTime(MediaTime start, MediaTime stop) override {
    start_ = start;
    stop_ = stop;
  }

  MediaTime start() const { return start_; }
  MediaTime stop() const { return stop_; }

 private:
  MediaTime start_ = 0;
  MediaTime stop_ = 0;
};

// Whether every pixel is transparent: a DVB page without regions, which clears the screen, is such
// a picture.
bool isTransparent(const encoding::subtitling::SubtitleBitmap& bitmap) {
  constexpr std::size_t kBytesPerPixel = 4;
  const auto [first, end] = bitmap.pixels->paintedRows();
  const std::size_t stride = bitmap.width * kBytesPerPixel;
  const auto rows = bitmap.pixels->bytes().subspan(first * stride, (end - first) * stride);
  for (std::size_t alpha = kBytesPerPixel - 1; alpha < rows.size(); alpha += kBytesPerPixel) {
    if (rows[alpha] != 0) return false;
  }
  return true;
}

bool showsNothing(const Subtitle& subtitle) {
  return isEmpty(subtitle) || (subtitle.bitmap() && isTransparent(*subtitle.bitmap()));
}

// Whether no stream could have meant it: times come in ticks of 90 kHz, but the parts of a display
// set reach the chain closer together.
bool isPassing(const Cue& cue) {
  constexpr MediaTime kTick = encoding::subtitling::fromTicks90k(1);
  return cue.subtitle->bitmap() && cue.stop - cue.start < kTick;
}

bool timesOutAtOnce(const Subtitle& subtitle) {
  const auto* bitmap = subtitle.bitmap();
  return bitmap && bitmap->end <= bitmap->start;
}

}  // namespace

class SubtitleRecorder::Writer final : public ISubtitleConverter {
 public:
  Writer(SubtitleRecorder& recorder, ISubtitleContainer& container)
      : recorder_(recorder), container_(container) {}

  void convert(ByteBuffer& out, MediaTime time) override {
    out.clear();
    recorder_.setCurrent(container_.currentSubtitle(time));
  }

  void initialDocument(ByteBuffer& out) override { out.clear(); }

 private:
  SubtitleRecorder& recorder_;
  ISubtitleContainer& container_;
};

std::unique_ptr<ISubtitleConverter> SubtitleRecorder::makeWriter(ISubtitleContainer& container) {
  current_.reset();
  return std::make_unique<Writer>(*this, container);
}

void SubtitleRecorder::finish() {
  if (open_ && !isPassing(*open_)) listener_.onCue(*open_);
  open_.reset();
}

std::optional<MediaTime> SubtitleRecorder::pictureEnd() const {
  const auto* bitmap = current_ ? current_->bitmap() : nullptr;
  if (!bitmap) return {};
  return bitmap->end;
}

std::unique_ptr<IOutputBuffer> SubtitleRecorder::getBuffer() {
  return std::make_unique<IntervalBuffer>();
}

void SubtitleRecorder::deliver(std::unique_ptr<IOutputBuffer> buffer) {
  const auto& interval = static_cast<const IntervalBuffer&>(*buffer);
  if (current_) show(interval.start(), interval.stop());
}

// An equal subtitle keeps the old object, so that `show` need only compare addresses.
void SubtitleRecorder::setCurrent(Subtitle subtitle) {
  const auto& last = open_ ? open_->subtitle : current_;
  if (last && *last == subtitle) {
    current_ = last;
  } else if (showsNothing(subtitle)) {
    current_.reset();
  } else if (timesOutAtOnce(subtitle)) {
    current_.reset();
    hasTimedOutAtOnce_ = true;
  } else {
    current_ = std::make_shared<const Subtitle>(std::move(subtitle));
    hasShown_ = true;
  }
}

void SubtitleRecorder::show(MediaTime start, MediaTime stop) {
  if (const auto* bitmap = current_->bitmap()) {
    // A page that times out is gone then, even when nothing follows that would show it.
    start = std::max(start, bitmap->start);
    stop = std::min(stop, bitmap->end);
    if (start >= stop) return;
  }
  if (open_ && open_->subtitle == current_ && open_->stop == start) {
    open_->stop = stop;
    return;
  }
  finish();
  open_ = Cue{.start = start, .stop = stop, .subtitle = current_};
}

}  // namespace korr::txsub
