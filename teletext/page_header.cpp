// SPDX-License-Identifier: MIT
#include "teletext/page_header.h"

#include <algorithm>

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

// Bit D`number` of a decoded byte.
bool bit(std::uint8_t nibble, int number) {
  return (nibble >> (number - 1) & 1) != 0;
}

}  // namespace

PageHeader readPageHeader(std::span<const std::uint8_t, Packet::kDataSize> data) {
  const auto nibble = [&](std::size_t i) { return decodeHamming84(data[i]); };
  PageHeader header;
  header.page = nibble(0) + 16u * nibble(1);
  header.s1 = nibble(2);
  header.s2 = nibble(3) & 7u;
  header.erasePage = bit(nibble(3), 4);
  header.s3 = nibble(4);
  header.s4 = nibble(5) & 3u;
  header.newsflash = bit(nibble(5), 3);
  header.subtitle = bit(nibble(5), 4);
  header.suppressHeader = bit(nibble(6), 1);
  header.update = bit(nibble(6), 2);
  header.interruptedSequence = bit(nibble(6), 3);
  header.inhibitDisplay = bit(nibble(6), 4);
  header.magazineSerial = bit(nibble(7), 1);
  header.nationalOption = 4u * bit(nibble(7), 2) + 2u * bit(nibble(7), 3) + 1u * bit(nibble(7), 4);
  return header;
}

std::optional<std::uint32_t> readPageNumber(std::span<const std::uint8_t, Packet::kDataSize> data) {
  if (!kIsHamming84[data[0]] || !kIsHamming84[data[1]]) return std::nullopt;
  return decodeHamming84(data[0]) + 16u * decodeHamming84(data[1]);
}

bool isHeaderDamaged(std::span<const std::uint8_t, Packet::kDataSize> data) {
  return std::ranges::any_of(data.first<kHeaderTextColumn>(),
                             [](std::uint8_t byte) { return !kIsHamming84[byte]; });
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
