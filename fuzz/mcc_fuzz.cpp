// SPDX-License-Identifier: MIT

// Any bytes as the lines of an MCC file. A section counts 31 triplets at most (SMPTE ST 334-2), and
// a packet of 255 bytes has room for a few.
#include <string>

#include "fuzz/caption_file_reading.h"
#include "readers/mcc_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace korr::txsub;
  const std::string text = "File Format=MacCaption_MCC V1.0\n" + std::string(data, data + size);
  readCaptionFile<MccReader>(text, 255 / 3);
  return 0;
}
