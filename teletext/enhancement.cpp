// SPDX-License-Identifier: MIT
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
constexpr std::uint32_t kFullRowColour = 0x01;
constexpr std::uint32_t kSetActivePosition = 0x04;
constexpr std::uint32_t kAddressDisplayRow0 = 0x07;
constexpr std::uint32_t kFirstObjectDefinition = 0x15;
constexpr std::uint32_t kLastObjectDefinition = 0x17;
constexpr std::uint32_t kTermination = 0x1F;

// Column address modes (EN 300 706, table 28).
constexpr std::uint32_t kModifiedCharacterSets = 0x08;
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
  if (mode == kG0Character) return characters.basicG0(data);
  if (mode == kG2Character) return characters.g2(data);
  if (mode < kFirstDiacritic) return std::nullopt;
  if (mode == kFirstDiacritic) {
    return data == kAsterisk ? GlyphText('@') : characters.basicG0(data);
  }
  const auto letter = characters.g0(data);
  if (!letter) return std::nullopt;
  return withDiacritic(*letter, mode - kFirstDiacritic);
}

}  // namespace

void Enhancements::clear() {
  glyphs_.clear();
  moveTo(0);
  terminated_ = false;
}

void Enhancements::take(std::span<const std::uint8_t, Packet::kDataSize> data,
                        const CharacterSet& characters) {
  for (std::uint32_t i = 0; i < kTripletsPerPacket && !terminated_; ++i) {
    // The designation code in byte 0 only numbers the packets.
    const std::span<const std::uint8_t, 3> raw(data.data() + 1 + 3 * i, 3);
    if (const auto triplet = decodeHamming2418(raw)) {
      takeTriplet(*triplet, characters);
    } else {
      missTriplet(dataOfTriplet(wordOfTriplet(raw)));
    }
  }
}

void Enhancements::takeTriplet(std::uint32_t triplet, const CharacterSet& page) {
  const std::uint32_t address = triplet & 0x3F;
  const std::uint32_t mode = triplet >> 6 & 0x1F;
  const auto data = static_cast<std::uint8_t>(triplet >> 11 & 0x7F);
  if (address >= kFirstRowAddress) return takeRowAddress(address, mode);
  // Columns come in order within a row: one that goes back belongs to a row that was missed.
  if (hasMissedTriplet_ && address < lastColumn_) activeRow_.reset();
  lastColumn_ = address;
  if (!activeRow_) return;
  if (mode == kModifiedCharacterSets) {
    rowCharacters_ = CharacterSet::designated(data);
  } else if (const auto glyph = characterOf(mode, data, rowCharacters_.value_or(page))) {
    glyphs_.insert_or_assign(keyOf(*activeRow_, address), *glyph);
  }
}

void Enhancements::takeRowAddress(std::uint32_t address, std::uint32_t mode) {
  if (mode == kSetActivePosition || mode == kFullRowColour) {
    const std::uint32_t row = address - kFirstRowAddress;
    moveTo(row == 0 ? kLastRow : row);
  } else if (mode == kAddressDisplayRow0 && address == kLastAddress) {
    moveTo(0);
  } else if (mode >= kFirstObjectDefinition && mode <= kLastObjectDefinition) {
    terminated_ = true;  // what follows is the object's, not the page's
  } else if (mode == kTermination && address == kLastAddress) {
    terminated_ = true;
  }
}

// Letters must not end up in another row than theirs: after a row address that is beyond repair
// columns mean nothing until the next one.
void Enhancements::missTriplet(std::uint32_t damaged) {
  if ((damaged & 0x3F) >= kFirstRowAddress) activeRow_.reset();
  hasMissedTriplet_ = true;
}

void Enhancements::moveTo(std::uint32_t row) {
  activeRow_ = row;
  lastColumn_ = 0;
  hasMissedTriplet_ = false;
  rowCharacters_.reset();
}

std::optional<GlyphText> Enhancements::at(std::uint32_t row, std::uint32_t column) const {
  if (glyphs_.empty()) return std::nullopt;
  const auto found = glyphs_.find(keyOf(row, column));
  if (found == glyphs_.end()) return std::nullopt;
  return found->second;
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
