// SPDX-License-Identifier: MIT
#include "chain/timed_text_builder.h"

#include <algorithm>
#include <cstring>

namespace korr::encoding::subtitling::inline v2_1 {

TimedTextBuilder::TimedTextBuilder(IOutputSink& sink, std::unique_ptr<ISubtitleParser> parser,
                                   std::unique_ptr<ISubtitleConverter> writer, Settings settings)
    : sink_(sink),
      parser_(std::move(parser)),
      writer_(std::move(writer)),
      timeline_(*parser_, *this,
                {.segmentDuration = settings.segmentDuration, .startsAfterZero = true}),
      isInitialProbed_(!settings.isTtml) {
}

ChainCounters TimedTextBuilder::counters() const {
  ChainCounters sum = timeline_.counters();
  sum += delivered_;
  return sum;
}

// Makes the next pending document; when the writer throws, the old one stays.
void TimedTextBuilder::take(MediaTime time) {
  isProbeDue_ = !isInitialProbed_;
  ByteBuffer next;
  writer_->convert(next, time);
  pending_ = std::move(next);
}

void TimedTextBuilder::onShown(MediaTime start, MediaTime stop) {
  if (isProbeDue_) probeInitialDocument();
  deliver(start, stop);
}

// The writer's initial document is asked for, once for all segments of an interval, until it first
// yields bytes; they are not delivered.
void TimedTextBuilder::probeInitialDocument() {
  ByteBuffer probe;
  writer_->initialDocument(probe);
  isInitialProbed_ = !probe.empty();
  isProbeDue_ = false;
}

// Cuts the pending document into as many output buffers as it needs; an empty one still takes one.
void TimedTextBuilder::deliver(MediaTime start, MediaTime stop) {
  ++delivered_.documents;
  std::size_t offset = 0;
  do {
    auto buffer = sink_.getBuffer();
    if (!buffer) {
      ++delivered_.cutDocuments;
      return;
    }
    const std::size_t length = std::min(pending_.size() - offset, buffer->capacity());
    if (length != 0) std::memcpy(buffer->data(), pending_.data() + offset, length);
    buffer->setUsedLength(length);
    buffer->setSyncPoint(offset == 0);
    buffer->setDiscontinuity(offset == 0);
    buffer->setTime(start, stop);
    ++delivered_.buffers;
    delivered_.documentBytes += length;
    sink_.deliver(std::move(buffer));
    offset += length;
    if (length == 0) return;
  } while (offset < pending_.size());
}

}  // namespace korr::encoding::subtitling::inline v2_1
