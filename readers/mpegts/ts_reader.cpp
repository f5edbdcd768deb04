// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_reader.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace korr::txsub {
namespace {

using Clock = std::chrono::steady_clock;

// Small enough to stay in the cache between the kernel and us.
constexpr std::size_t kChunk = 128 * 1024;
constexpr std::size_t kChunksAtOnce = 8;
// How much of the beginning is kept while the tables are looked for, which are due every half
// second (TR 101 290, 5.2.1), at 40 Mbit/s or so at most.
constexpr std::size_t kOpening = 2 * 1024 * 1024;

}  // namespace

TsReader::TsReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : tablesDue_(options.tablesDue),
      report_(options.logger),
      input_(std::move(source), options.logger),
      demultiplexer_(options, report_) {
}

bool TsReader::read(IReaderListener& listener) {
  demultiplexer_.setListener(listener);
  if (!std::exchange(isOpen_, true)) {
    open();
  } else {
    readOn();
  }
  if (input_.isAtEnd()) demultiplexer_.flush();
  return !input_.isAtEnd();
}

void TsReader::readOn() {
  for (std::size_t i = 0; i < kChunksAtOnce && !input_.isAtEnd(); ++i) {
    const bool hasMoreWaiting = input_.fill(kChunk) == kChunk;
    process();
    if (!hasMoreWaiting) return;  // a slow pipe: do not hold back what came
  }
}

void TsReader::open() {
  scout();
  demultiplexer_.apply();
  process();
}

// Tells by the tables what there is before the first packet is used, so that nothing of the
// beginning is lost.
void TsReader::scout() {
  TsFraming framing;
  std::size_t at = 0;
  std::optional<Clock::time_point> due;
  while (!input_.isAtEnd() && !demultiplexer_.areTablesComplete() &&
         input_.bytes().size() < kOpening) {
    if (due && Clock::now() >= *due) return;  // a slow pipe that may never have any
    input_.fill(kChunk);
    if (!due) due = Clock::now() + tablesDue_;
    while (const auto* const packet = framing.next(input_.bytes(), at, input_.isAtEnd(), 0)) {
      demultiplexer_.scout(TsPacket(packet));
    }
  }
}

void TsReader::process() {
  const auto bytes = input_.bytes();
  std::size_t at = ahead_;
  while (const auto* const packet = framing_.next(bytes, at, input_.isAtEnd(), input_.offset())) {
    demultiplexer_.take(TsPacket(packet));
  }
  const std::size_t used = std::min(at, bytes.size());
  ahead_ = at - used;
  input_.drop(used);
}

void TsReader::unselect(std::uint32_t streamId) {
  demultiplexer_.unselect(streamId);
}

ReadProgress TsReader::progress() const {
  return {.bytesRead = input_.offset(), .bytesTotal = input_.size()};
}

std::optional<MediaTime> TsReader::startTime(std::uint32_t program) const {
  const TsProgramTime* const time = demultiplexer_.timeOf(program);
  if (!time || !time->start()) return {};
  return toMediaTime(*time->start());
}

std::optional<MediaTime> TsReader::endTime(std::uint32_t program) const {
  const TsProgramTime* const time = demultiplexer_.timeOf(program);
  if (!time || !time->end) return {};
  return toMediaTime(*time->end);
}

ReaderFindings TsReader::findings() const {
  return {.hasAskedPid = demultiplexer_.hasAskedPid(),
          .otherSubtitles = demultiplexer_.otherSubtitles()};
}

}  // namespace korr::txsub
