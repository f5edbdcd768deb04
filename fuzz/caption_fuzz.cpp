// SPDX-License-Identifier: MIT

// Any bytes as caption triplets, one unit each of a length that the input chooses, through the
// whole chain: documents of text whose intervals follow one another, in memory that stays small.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>

#include "chain/conversion_chain.h"
#include "testkit/memory_item.h"

namespace {

using namespace korr::encoding::subtitling;
using korr::test_support::MemoryItem;

class Buffer final : public IOutputBuffer {
 public:
  std::uint8_t* data() override { return bytes_; }
  std::size_t capacity() const override { return sizeof bytes_; }
  void setUsedLength(std::size_t bytes) override {
    if (bytes > sizeof bytes_) std::abort();
  }
  void setSyncPoint(bool isSyncPoint) override { beginsDocument = isSyncPoint; }
  void setDiscontinuity(bool) override {}
  void setTime(MediaTime from, MediaTime to) override {
    start = from;
    stop = to;
  }

  bool beginsDocument = false;
  MediaTime start = 0;
  MediaTime stop = 0;

 private:
  std::uint8_t bytes_[1024];
};

class Sink final : public IOutputSink {
 public:
  std::unique_ptr<IOutputBuffer> getBuffer() override { return std::make_unique<Buffer>(); }
  void deliver(std::unique_ptr<IOutputBuffer> buffer) override {
    const auto& taken = static_cast<const Buffer&>(*buffer);
    if (taken.stop <= taken.start) std::abort();
    if (taken.beginsDocument && taken.start < covered_) std::abort();
    covered_ = taken.stop;
  }
  void endOfStream() override {}

 private:
  MediaTime covered_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span bytes(data, size);
  if (bytes.empty()) return 0;
  const std::uint32_t page = bytes[0] % 6;
  const auto mode = (bytes[0] & 0x80) != 0 ? ConversionMode::WebVtt : ConversionMode::YoutubeSrt;
  bytes = bytes.subspan(1);

  Sink sink;
  ConversionChain chain(
      sink, {.inputType = SubtitleInputType::ClosedCaption, .page = page, .mode = mode}, nullptr);
  MediaTime time = kSecond;
  while (!bytes.empty()) {
    const auto unit = bytes.subspan(1, std::min<std::size_t>(bytes[0] & 0x3F, bytes.size() - 1));
    time += bytes[0] * 10 * kMillisecond;
    auto item = std::make_shared<MemoryItem>();
    item->bytes.assign(unit.begin(), unit.end());
    item->time = {time, time + 1};
    item->sync = true;
    chain.framer().push(std::move(item));
    bytes = bytes.subspan(1 + unit.size());
  }
  chain.framer().endOfStream();
  return 0;
}
