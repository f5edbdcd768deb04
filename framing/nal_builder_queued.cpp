// SPDX-License-Identifier: MIT
#include "framing/nal_builder_queued.h"

#include <algorithm>
#include <stdexcept>

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

namespace {

// A sample never has less than nothing, whatever its length says.
std::size_t lengthOf(const IMediaItem& item) {
  return static_cast<std::size_t>(std::max<std::int32_t>(item.length(), 0));
}

}  // namespace

Result NALBuilderQueued::push(std::shared_ptr<const IMediaItem> item) {
  // The item joins the queue before the listener can throw, so that it is never lost.
  UniqueNAL complete;
  if (item->startFlag()) {
    isDropping_ = false;
    if (!pending_.empty()) complete = assemble();
  }
  if (isDropping_) return kOk;
  pendingBytes_ += lengthOf(*item);
  pending_.push_back(std::move(item));
  if (complete) deliver(std::move(complete));
  if (pendingBytes_ > kMostBytes || pending_.size() > kMostSamples) drop();
  return kOk;
}

void NALBuilderQueued::drop() {
  pending_.clear();
  pendingBytes_ = 0;
  isDropping_ = true;
  throw std::length_error(
      "A subtitle unit that no sample ends has passed 4 MiB or 65,536 samples; it is dropped, up "
      "to "
      "the next sample with its start flag set");
}

void NALBuilderQueued::endOfStream() {
  if (!pending_.empty()) {
    if (auto complete = assemble()) deliver(std::move(complete));
  }
  forwardEndOfStream();
}

// Empties the queue into one unit. An item without a payload is dropped together with the unit
// begun; what follows it stays queued.
UniqueNAL NALBuilderQueued::assemble() {
  std::size_t size = 0;
  for (const auto& item : pending_) size += lengthOf(*item);

  auto unit = makeUnit();
  unit->type = type_;
  unit->payload.reserve(size);
  for (bool isFirst = true; !pending_.empty(); isFirst = false) {
    const auto item = std::move(pending_.front());
    pending_.pop_front();
    pendingBytes_ -= lengthOf(*item);
    const std::uint8_t* data = nullptr;
    if (failed(item->payload(data))) return nullptr;
    if (isFirst) unit->takeTimeAndFlags(*item);
    unit->payload.insert(unit->payload.end(), data, data + lengthOf(*item));
  }
  return unit;
}

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
