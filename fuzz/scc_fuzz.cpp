// SPDX-License-Identifier: MIT

// Any bytes as an SCC file: refused, or one pair a frame with times that never run backwards.
#include <cstdlib>
#include <span>

#include "readers/scc_reader.h"
#include "testkit/reader_support.h"

namespace {

using namespace korr::txsub;
using korr::test_support::MemorySource;

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
  SccReader reader(std::make_unique<MemorySource>(std::span(data, size)), {});
  try {
    while (reader.read(listener)) {
    }
  } catch (const korr::util::TessaryException&) {
  }
  return 0;
}
