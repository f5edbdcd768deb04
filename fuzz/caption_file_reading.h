// SPDX-License-Identifier: MIT

// What the targets of caption files have in common.
#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>

#include "readers/media_reader.h"
#include "testkit/reader_support.h"

namespace korr::txsub {

/// Reads `text` to its end: refused, or pictures of whole triplets, at most `most` of them, whose
/// times never run backwards.
template <class Reader>
void readCaptionFile(std::string_view text, std::size_t most) {
  class Listener final : public IReaderListener {
   public:
    explicit Listener(std::size_t most) : most_(most * 3) {}

    bool onStream(const StreamInfo&) override { return true; }
    void onSample(const StreamInfo&, const InputSample& sample) override {
      if (sample.data.empty() || sample.data.size() % 3 != 0 || sample.data.size() > most_ ||
          !sample.times || sample.times->start < last_) {
        std::abort();
      }
      last_ = sample.times->start;
    }

   private:
    const std::size_t most_;
    MediaTime last_ = 0;
  };

  Listener listener(most);
  Reader reader(std::make_unique<test_support::MemorySource>(text), ReaderOptions{});
  try {
    while (reader.read(listener)) {
    }
  } catch (const util::TessaryException&) {
  }
}

}  // namespace korr::txsub
