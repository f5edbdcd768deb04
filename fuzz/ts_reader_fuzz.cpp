// SPDX-License-Identifier: MIT

// Any bytes as a transport stream. The first byte of the input says how the rest is meant: as it
// stands, or as packets after sound tables, so that the sync bytes need not be found by chance.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>

#include "readers/mpegts/ts_reader.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/reader_support.h"

namespace {

using namespace korr::txsub;
using korr::encoders::Bytes;
using korr::encoders::TsBuilder;
using korr::encoders::TsProgram;
using korr::encoders::TsStream;
using korr::test_support::MemorySource;

class Listener final : public IReaderListener {
 public:
  bool onStream(const StreamInfo&) override { return true; }
  void onSample(const StreamInfo& stream, const InputSample& sample) override {
    if (sample.data.empty() || !sample.times || !sample.sync) std::abort();
    if (stream.isVideo && sample.data.size() % 3 != 0) std::abort();
  }
};

/// Four PIDs, so that a byte is enough to name one.
Bytes tables() {
  const TsProgram program{.pmtPid = 0x1000,
                          .pcrPid = 0x100,
                          .streams = {{.pid = 0x100, .type = TsStream::kH264},
                                      {.pid = 0x101, .descriptors = {0x56, 0}},
                                      {.pid = 0x102, .descriptors = {0x59, 0}},
                                      {.pid = 0x103}}};
  return TsBuilder().tables(program).take();
}

Bytes packets(std::span<const std::uint8_t> input) {
  Bytes stream = tables();
  constexpr std::size_t kFree = TsBuilder::kPacketBytes - 2;  // without sync byte, half of the PID
  while (!input.empty()) {
    const auto body = input.first(std::min(kFree, input.size()));
    input = input.subspan(body.size());
    const auto start = static_cast<std::uint8_t>(0x01 | (body[0] & 0x40));
    const auto pid = static_cast<std::uint8_t>(body[0] & 0x03);
    stream.insert(stream.end(), {0x47, start, pid});
    stream.insert(stream.end(), body.begin() + 1, body.end());
    stream.resize(stream.size() + kFree - body.size(), 0xFF);
  }
  return stream;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::span<const std::uint8_t> rest(data + 1, size - 1);
  const Bytes stream = data[0] % 2 == 0 ? Bytes(rest.begin(), rest.end()) : packets(rest);
  Listener listener;
  TsReader reader(std::make_unique<MemorySource>(stream, data[0] < 0x80 ? SIZE_MAX : 1000), {});
  while (reader.read(listener)) {
  }
  return 0;
}
