// SPDX-License-Identifier: MIT

// Teletext packets and PES data fields, written the way a subtitle author thinks of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "teletext/character_sets.h"
#include "teletext/teletext_descriptor.h"

namespace korr::encoders {

/// A packet as a data unit carries it: the magazine and row address, then 40 bytes.
using TeletextPacket = std::array<std::uint8_t, 42>;

/// A page header (EN 300 706, 9.3.1).
struct TeletextHeader {
  std::uint32_t page = 0x888;  ///< magazine 1 to 8, then two hexadecimal digits
  bool erasePage = true;
  bool subtitle = true;
  bool suppressHeader = true;
  bool update = false;
  std::uint32_t nationalOption = 0;  ///< C12 C13 C14, C12 in bit 2
  bool newsflash = false;
  bool inhibitDisplay = false;
  bool magazineSerial = false;
  std::uint32_t subcode = 0;  ///< S4 S3 S2 S1, a nibble each
  std::string_view text{};    ///< codes of columns 8 to 39, the rest blank
};
TeletextPacket headerPacket(const TeletextHeader& header);

/// Packets 1 to 24. `codes`: 0x00 to 0x7F from column 0 on, the rest blank.
TeletextPacket rowPacket(std::uint32_t page, std::uint32_t row, std::string_view codes);

/// One enhancement (EN 300 706, 12.3.1).
struct TeletextTriplet {
  std::uint32_t address = 0;  ///< 0 to 63
  std::uint32_t mode = 0;     ///< 0 to 31
  std::uint32_t data = 0;     ///< 0 to 127

  static TeletextTriplet row(std::uint32_t row) { return {row == 24 ? 40 : 40 + row, 0x04, 0}; }
  static TeletextTriplet termination() { return {63, 0x1F, 0}; }
};

/// A packet 26 of at most 13 triplets, filled up with terminations.
TeletextPacket enhancementPacket(std::uint32_t page, std::uint32_t designation,
                                 std::span<const TeletextTriplet> triplets);

/// A packet X/28/0 of a page (9.4.2) or M/29/0 of its magazine (9.5.1), by `number`: seven bits
/// each of tables 32 and 33; 0x7F designates nothing.
TeletextPacket designationPacket(std::uint32_t page, std::uint32_t number, std::uint32_t primary,
                                 std::uint32_t second = 0x7F);

/// 18 data bits as the three bytes of a PES packet (EN 300 706, 8.3).
std::array<std::uint8_t, 3> encodeHamming2418(std::uint32_t data);

inline constexpr std::uint8_t kEbuTeletext = 0x02;
inline constexpr std::uint8_t kEbuTeletextSubtitle = 0x03;

/// A PES data field: the data_identifier, then units of 46 bytes (EN 300 472, 4.2).
std::vector<std::uint8_t> teletextDataField(std::span<const TeletextPacket> packets,
                                            std::uint8_t unitId = kEbuTeletextSubtitle,
                                            std::uint8_t dataIdentifier = 0x10);

/// The same, filled up with stuffing units so that its PES packet of a 45-byte header ends with a
/// transport packet.
std::vector<std::uint8_t> stuffedTeletextDataField(std::span<const TeletextPacket> packets);

/// A teletext descriptor (EN 300 468, 6.2.43) of at most 51 pages.
std::vector<std::uint8_t> teletextDescriptor(
    std::span<const encoding::subtitling::teletext::lib_teletext::TeletextPage> pages);

/// Text of a nation as a subtitle row: the codes of a box, and what packet 26 must bring.
struct TeletextLine {
  std::string codes;
  std::vector<TeletextTriplet> triplets;
};

/// One part of a line. Teletext colours are spacing attributes: each takes a cell.
struct TeletextSpan {
  std::string_view utf8;
  int colour = 7;
};

struct TeletextLayout {
  std::uint32_t row = 20;
  bool doubleHeight = false;
};

/// Boxes and centres a line. Letters that the set lacks come as packet 26, their base letter
/// beneath them. Throws std::invalid_argument for a letter that teletext does not have.
TeletextLine teletextLine(const encoding::subtitling::teletext::lib_teletext::CharacterSet& set,
                          std::span<const TeletextSpan> spans, const TeletextLayout& layout);

}  // namespace korr::encoders
