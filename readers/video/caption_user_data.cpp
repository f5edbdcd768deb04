// SPDX-License-Identifier: MIT
#include "readers/video/caption_user_data.h"

#include <algorithm>
#include <array>

namespace korr::txsub {
namespace {

/// Whether `bytes` begins with `prefix`, which is then taken off.
template <std::size_t size>
bool takePrefix(std::span<const std::uint8_t>& bytes,
                const std::array<std::uint8_t, size>& prefix) {
  if (bytes.size() < size || !std::equal(prefix.begin(), prefix.end(), bytes.begin())) return false;
  bytes = bytes.subspan(size);
  return true;
}

/// A number of an SEI header: each byte 0xFF adds 255, the first other byte ends it.
std::size_t takeSeiNumber(std::span<const std::uint8_t>& rest) {
  std::size_t number = 0;
  while (!rest.empty()) {
    const std::uint8_t byte = rest.front();
    rest = rest.subspan(1);
    number += byte;
    if (byte != 0xFF) break;
  }
  return number;
}

}  // namespace

std::optional<CcData> captionsOfUserData(std::span<const std::uint8_t> userData) {
  constexpr std::array<std::uint8_t, 4> kAtscIdentifier{'G', 'A', '9', '4'};
  constexpr std::array<std::uint8_t, 1> kCcDataType{0x03};  // user_data_type_code
  constexpr std::uint8_t kProcessCcData = 0x40;
  constexpr std::uint8_t kCcCount = 0x1F;
  constexpr std::size_t kHeaderBytes = 2;  // flags and cc_count, then em_data

  if (!takePrefix(userData, kAtscIdentifier) || !takePrefix(userData, kCcDataType)) return {};
  if (userData.empty() || !(userData[0] & kProcessCcData)) return {};

  CcData captions;
  captions.announced = userData[0] & kCcCount;
  userData = userData.subspan(std::min(kHeaderBytes, userData.size()));
  const std::size_t count = std::min(captions.announced, userData.size() / kTripletBytes);
  captions.triplets = userData.first(count * kTripletBytes);
  return captions;
}

std::optional<CcData> captionsOfRegisteredUserData(std::span<const std::uint8_t> payload) {
  // itu_t_t35_country_code of the United States, itu_t_t35_provider_code of ATSC
  constexpr std::array<std::uint8_t, 3> kAtscProvider{0xB5, 0x00, 0x31};
  if (!takePrefix(payload, kAtscProvider)) return {};
  return captionsOfUserData(payload);
}

std::optional<SeiMessage> takeSeiMessage(std::span<const std::uint8_t>& rest) {
  constexpr std::size_t kSmallestMessage = 2;  // one byte alone can only be rbsp_trailing_bits
  if (rest.size() < kSmallestMessage) return {};

  SeiMessage message;
  message.type = takeSeiNumber(rest);
  message.announced = takeSeiNumber(rest);
  message.payload = rest.first(std::min(message.announced, rest.size()));
  rest = rest.subspan(message.payload.size());
  return message;
}

void removeEmulationPrevention(std::vector<std::uint8_t>& unit) {
  constexpr std::uint8_t kPreventionByte = 3;
  std::size_t kept = 0;
  unsigned zeros = 0;
  for (const std::uint8_t byte : unit) {
    const bool prevention = zeros >= 2 && byte == kPreventionByte;
    zeros = byte == 0 ? zeros + 1 : 0;
    if (!prevention) unit[kept++] = byte;
  }
  unit.resize(kept);
}

}  // namespace korr::txsub
