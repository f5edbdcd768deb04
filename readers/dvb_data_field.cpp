// SPDX-License-Identifier: MIT
#include "readers/dvb_data_field.h"

namespace korr::txsub {

namespace {

std::uint16_t read16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

}  // namespace

std::optional<DvbSegment> takeDvbSegment(std::span<const std::uint8_t>& rest) {
  constexpr std::uint8_t kSyncByte = 0x0F;
  constexpr std::size_t kHeader = 6;
  if (rest.size() < kHeader || rest[0] != kSyncByte) return {};
  const std::size_t size = kHeader + read16(&rest[4]);
  if (size > rest.size()) return {};
  const DvbSegment segment{.type = rest[1], .page = read16(&rest[2]), .bytes = rest.first(size)};
  rest = rest.subspan(size);
  return segment;
}

bool isAtEndMarker(std::span<const std::uint8_t> rest) {
  constexpr std::uint8_t kEndMarker = 0xFF;
  return !rest.empty() && rest[0] == kEndMarker;
}

std::span<const std::uint8_t> upToEndMarker(std::span<const std::uint8_t> payload) {
  if (payload.size() < kDvbFieldHeader) return payload;
  auto rest = payload.subspan(kDvbFieldHeader);
  while (takeDvbSegment(rest)) {
  }
  return isAtEndMarker(rest) ? payload.first(payload.size() - rest.size() + 1) : payload;
}

}  // namespace korr::txsub
