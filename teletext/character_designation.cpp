// SPDX-License-Identifier: MIT
#include "teletext/character_designation.h"

#include "teletext/hamming.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

std::optional<std::uint32_t> triplet(std::span<const std::uint8_t, Packet::kDataSize> data,
                                     std::size_t number) {
  return decodeHamming2418(std::span<const std::uint8_t, 3>(data.data() + 1 + 3 * number, 3));
}

// Both packets start alike: the function and coding of a page in the first seven bits, where M/29
// has none, then the two designations.
std::optional<CharacterDesignation> read(std::span<const std::uint8_t, Packet::kDataSize> data,
                                         bool isPage) {
  constexpr std::uint32_t kTextPage = 0;  // function: basic level 1; coding: odd parity
  if (!kIsHamming84[data[0]] || decodeHamming84(data[0]) != 0) return std::nullopt;
  const auto first = triplet(data, 0);
  if (!first || (isPage && (*first & 0x7F) != kTextPage)) return std::nullopt;
  CharacterDesignation designation{.primary = *first >> 7 & 0x7F, .second = {}};
  if (const auto next = triplet(data, 1)) {
    designation.second = (*first >> 14 & 0xF) | (*next & 0x7) << 4;
  }
  return designation;
}

// The option of a designation goes before that of the header. Three zero bits leave it to the
// header, deliberately: many stations send these packets for their colours alone.
std::optional<CharacterSet> setOf(std::uint32_t designated, std::uint32_t option) {
  if ((designated & 7) == 0) {
    if (const auto set = CharacterSet::designated(designated | option)) return set;
  }
  return CharacterSet::designated(designated);
}

}  // namespace

std::optional<CharacterSet> CharacterDesignation::secondSet() const {
  return second ? CharacterSet::designated(*second) : std::nullopt;
}

std::optional<CharacterDesignation> readPageDesignation(
    std::span<const std::uint8_t, Packet::kDataSize> data) {
  return read(data, true);
}

std::optional<CharacterDesignation> readMagazineDesignation(
    std::span<const std::uint8_t, Packet::kDataSize> data) {
  return read(data, false);
}

CharacterSet defaultSet(const std::optional<CharacterDesignation>& page,
                        const std::optional<CharacterDesignation>& magazine, std::uint32_t group,
                        std::uint32_t option) {
  for (const auto* designation : {&page, &magazine}) {
    if (!*designation) continue;
    if (const auto set = setOf((*designation)->primary, option)) return *set;
  }
  return CharacterSet::of(group, option);
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
