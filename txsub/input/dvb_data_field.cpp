#include "txsub/input/dvb_data_field.h"

#include <cstddef>

namespace korr::txsub {

std::span<const std::uint8_t> upToEndMarker(std::span<const std::uint8_t> payload) {
  constexpr std::uint8_t kSyncByte = 0x0F;
  constexpr std::uint8_t kEndMarker = 0xFF;
  constexpr std::size_t kSegmentHeader = 6;
  std::size_t at = 2;  // data_identifier, subtitle_stream_id
  while (at + kSegmentHeader <= payload.size() && payload[at] == kSyncByte) {
    at += kSegmentHeader + (std::size_t{payload[at + 4]} << 8 | payload[at + 5]);
  }
  if (at >= payload.size() || payload[at] != kEndMarker) return payload;
  return payload.first(at + 1);
}

}  // namespace korr::txsub
