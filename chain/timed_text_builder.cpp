#include "chain/timed_text_builder.h"

#include <algorithm>
#include <cstring>

namespace korr::encoding::subtitling::inline v2_1 {

TimedTextBuilder::TimedTextBuilder(IOutputSink& sink, std::unique_ptr<ISubtitleParser> parser,
                                   std::unique_ptr<ISubtitleConverter> writer, Settings settings)
    : settings_(settings), sink_(sink), parser_(std::move(parser)), writer_(std::move(writer)) {
}

void TimedTextBuilder::onNal(packaging::lib_parse_es::UniqueNAL unit) {
  const auto& payload = unit->payload;
  ++counters_.units;
  counters_.unitBytes += payload.size();
  if (!unit->hasTime) {
    ++counters_.untimedUnits;
    return;
  }
  const MediaTime time = unit->startTime;
  // Every unit counts as discontinuous, deliberately: a parser keeps nothing half-read across
  // units.
  parser_->parse(payload.empty() ? nullptr : payload.data(),
                 static_cast<std::int64_t>(payload.size()), time, true);
  const bool changed = parser_->hasChanged();

  if (lastTime_ == 0) {
    lastTime_ = time;
    convertAt(time);
    return;
  }
  const auto elapsed = static_cast<std::int64_t>(time - lastTime_);
  if (elapsed <= 0) return;
  if (!changed && elapsed < settings_.segmentDuration) return;

  probeInitialDocument();
  emitPending(time);
  convertAt(time);
}

void TimedTextBuilder::flush(MediaTime end) {
  if (lastTime_ != 0 && end > lastTime_) emitPending(end);
}

// Makes the next pending document; when the writer throws, the old one stays.
void TimedTextBuilder::convertAt(MediaTime time) {
  ByteBuffer next;
  writer_->convert(next, time);
  pending_ = std::move(next);
}

// The writer's initial document is asked for until it first yields bytes; they are not delivered.
void TimedTextBuilder::probeInitialDocument() {
  if (!settings_.isTtml || headerProbed_) return;
  ByteBuffer probe;
  writer_->initialDocument(probe);
  headerProbed_ = !probe.empty();
}

// Delivers the pending document over [lastTime_, end), once per segment.
void TimedTextBuilder::emitPending(MediaTime end) {
  const auto segment = static_cast<MediaTime>(settings_.segmentDuration);
  if (const MediaTime step = end - lastTime_; step > kDay) {
    // A break in time, not an interval to fill: one segment, then on from the new time.
    deliver(lastTime_, lastTime_ + (segment != 0 ? std::min(segment, step) : kDay));
    lastTime_ = end;
    return;
  }
  while (lastTime_ != end) {
    const MediaTime rest = end - lastTime_;
    const MediaTime stop = lastTime_ + (segment != 0 ? std::min(segment, rest) : rest);
    deliver(lastTime_, stop);
    lastTime_ = stop;
  }
}

// Cuts the pending document into as many output buffers as it needs; an empty one still takes one.
void TimedTextBuilder::deliver(MediaTime start, MediaTime stop) {
  ++counters_.documents;
  std::size_t offset = 0;
  do {
    auto buffer = sink_.getBuffer();
    if (!buffer) {
      ++counters_.cutDocuments;
      return;
    }
    const std::size_t length = std::min(pending_.size() - offset, buffer->capacity());
    if (length != 0) std::memcpy(buffer->data(), pending_.data() + offset, length);
    buffer->setUsedLength(length);
    buffer->setSyncPoint(offset == 0);
    buffer->setDiscontinuity(offset == 0);
    buffer->setTime(start, stop);
    ++counters_.buffers;
    counters_.documentBytes += length;
    sink_.deliver(std::move(buffer));
    offset += length;
    if (length == 0) return;
  } while (offset < pending_.size());
}

}  // namespace korr::encoding::subtitling::inline v2_1
