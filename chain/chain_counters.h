// SPDX-License-Identifier: MIT

// What passed through a chain.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::inline v2_1 {

/// Plain sums, from the chain's start on.
struct ChainCounters {
  std::uint64_t units = 0;          ///< access units that the framer made
  std::uint64_t unitBytes = 0;      ///< their payload
  std::uint64_t untimedUnits = 0;   ///< of those, discarded because they had no time
  std::uint64_t documents = 0;      ///< documents delivered, a repetition counted again
  std::uint64_t buffers = 0;        ///< output buffers that they took
  std::uint64_t documentBytes = 0;  ///< bytes in those buffers
  std::uint64_t droppedPages = 0;   ///< DVB subtitle pages that never became whole
  std::uint64_t cutDocuments = 0;   ///< documents without their end: the sink gave no buffer

  ChainCounters& operator+=(const ChainCounters& other) {
    units += other.units;
    unitBytes += other.unitBytes;
    untimedUnits += other.untimedUnits;
    documents += other.documents;
    buffers += other.buffers;
    documentBytes += other.documentBytes;
    droppedPages += other.droppedPages;
    cutDocuments += other.cutDocuments;
    return *this;
  }
};

}  // namespace korr::encoding::subtitling::inline v2_1
