// SPDX-License-Identifier: MIT

// Any bytes as an SCC file: one pair a frame.
#include "fuzz/caption_file_reading.h"
#include "readers/scc_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korr::txsub;
  readCaptionFile<SccReader>({reinterpret_cast<const char*>(data), size}, 1);
  return 0;
}
