#include "teletext/enhancement.h"

#include "teletext/hamming.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

constexpr std::uint32_t kTripletsPerPacket = 13;

// Addresses from here on are rows, those below columns (EN 300 706, 12.3.1).
constexpr std::uint32_t kFirstRowAddress = 40;
constexpr std::uint32_t kLastRow = 24;
constexpr std::uint32_t kLastAddress = 63;

// Row address modes (EN 300 706, table 27).
constexpr std::uint32_t kSetActivePosition = 0x04;
constexpr std::uint32_t kAddressDisplayRow0 = 0x07;
constexpr std::uint32_t kTermination = 0x1F;

// Column address modes (EN 300 706, table 28).
constexpr std::uint32_t kG0Character = 0x09;
constexpr std::uint32_t kG2Character = 0x0F;
constexpr std::uint32_t kFirstDiacritic = 0x10;
constexpr std::uint8_t kAsterisk = 0x2A;

constexpr std::uint32_t keyOf(std::uint32_t row, std::uint32_t column) {
  return row * 64 + column;
}

std::optional<GlyphText> characterOf(std::uint32_t mode, std::uint8_t data,
                                     const CharacterSet& characters) {
  if (data < 0x20) return std::nullopt;
  if (mode == kG0Character) return characters.g0(data);
  if (mode == kG2Character) return characters.g2(data);
  if (mode < kFirstDiacritic) return std::nullopt;
  if (mode == kFirstDiacritic && data == kAsterisk) return GlyphText('@');
  const auto letter = characters.g0(data);
  if (!letter) return std::nullopt;
  return withDiacritic(*letter, mode - kFirstDiacritic);
}

}  // namespace

void Enhancements::clear() {
  glyphs_.clear();
  activeRow_ = 0;
  terminated_ = false;
}

void Enhancements::take(std::span<const std::uint8_t, Packet::kDataSize> data,
                        const CharacterSet& characters) {
  for (std::uint32_t i = 0; i < kTripletsPerPacket && !terminated_; ++i) {
    // The designation code in byte 0 only numbers the packets.
    const std::span<const std::uint8_t, 3> raw(data.data() + 1 + 3 * i, 3);
    if (const auto triplet = decodeHamming2418(raw)) takeTriplet(*triplet, characters);
  }
}

void Enhancements::takeTriplet(std::uint32_t triplet, const CharacterSet& characters) {
  const std::uint32_t address = triplet & 0x3F;
  const std::uint32_t mode = triplet >> 6 & 0x1F;
  const auto data = static_cast<std::uint8_t>(triplet >> 11 & 0x7F);
  if (address >= kFirstRowAddress) return takeRowAddress(address, mode);
  if (const auto glyph = characterOf(mode, data, characters))
    glyphs_.insert_or_assign(keyOf(activeRow_, address), *glyph);
}

void Enhancements::takeRowAddress(std::uint32_t address, std::uint32_t mode) {
  if (mode == kSetActivePosition) {
    const std::uint32_t row = address - kFirstRowAddress;
    activeRow_ = row == 0 ? kLastRow : row;
  } else if (mode == kAddressDisplayRow0) {
    activeRow_ = 0;
  } else if (mode == kTermination && address == kLastAddress) {
    terminated_ = true;
  }
}

std::optional<GlyphText> Enhancements::at(std::uint32_t row, std::uint32_t column) const {
  if (glyphs_.empty()) return std::nullopt;
  const auto found = glyphs_.find(keyOf(row, column));
  if (found == glyphs_.end()) return std::nullopt;
  return found->second;
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
