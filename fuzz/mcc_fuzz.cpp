// SPDX-License-Identifier: MIT

// Any bytes as an MCC file: refused, or pictures of whole triplets whose times never run backwards.
#include <cstdlib>
#include <span>
#include <string>

#include "readers/mcc_reader.h"
#include "testkit/reader_support.h"

namespace {

using namespace korr::txsub;
using korr::test_support::MemorySource;

class Listener final : public IReaderListener {
 public:
  bool onStream(const StreamInfo&) override { return true; }
  void onSample(const StreamInfo&, const InputSample& sample) override {
    if (sample.data.size() % 3 != 0 || !sample.times || sample.times->start < last_) std::abort();
    last_ = sample.times->start;
  }

 private:
  MediaTime last_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = "File Format=MacCaption_MCC V1.0\n" + std::string(data, data + size);
  Listener listener;
  MccReader reader(std::make_unique<MemorySource>(text), {});
  try {
    while (reader.read(listener)) {
    }
  } catch (const korr::util::TessaryException&) {
  }
  return 0;
}
