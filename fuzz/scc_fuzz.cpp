// Any bytes as an SCC file: refused, or one pair a frame with times that never run backwards.
#include <algorithm>
#include <cstdlib>
#include <span>

#include "txsub/input/scc_reader.h"

namespace {

using namespace korr::txsub;

class Source final : public IByteSource {
 public:
  explicit Source(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::size_t read(std::uint8_t* buffer, std::size_t size) override {
    const auto taken = bytes_.first(std::min(size, bytes_.size()));
    std::ranges::copy(taken, buffer);
    bytes_ = bytes_.subspan(taken.size());
    return taken.size();
  }
  std::optional<std::uint64_t> size() const override { return {}; }

 private:
  std::span<const std::uint8_t> bytes_;
};

class Listener final : public IReaderListener {
 public:
  bool onStream(const StreamInfo&) override { return true; }
  void onSample(const StreamInfo&, const InputSample& sample) override {
    if (sample.data.size() != 3 || !sample.times || sample.times->start < last_) std::abort();
    last_ = sample.times->stop;
  }

 private:
  MediaTime last_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Listener listener;
  SccReader reader(std::make_unique<Source>(std::span(data, size)), {});
  try {
    while (reader.read(listener)) {
    }
  } catch (const korr::util::TessaryException&) {
  }
  return 0;
}
