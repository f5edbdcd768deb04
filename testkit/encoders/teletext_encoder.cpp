// SPDX-License-Identifier: MIT
#include "testkit/encoders/teletext_encoder.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <stdexcept>

#include "teletext/hamming.h"
#include "testkit/encoders/bit_writer.h"

namespace korr::encoders {
namespace {

using encoding::subtitling::GlyphText;
using encoding::subtitling::teletext::lib_teletext::CharacterSet;
using encoding::subtitling::teletext::lib_teletext::encodeHamming84;
using encoding::subtitling::teletext::lib_teletext::reverseBits;
using encoding::subtitling::teletext::lib_teletext::TeletextPage;
using encoding::subtitling::teletext::lib_teletext::withDiacritic;

constexpr std::size_t kData = 2;  // where a packet's own bytes begin
constexpr std::size_t kColumns = 40;
constexpr std::size_t kTripletsPerPacket = 13;

std::uint8_t hamming(std::uint32_t nibble) {
  return encodeHamming84(static_cast<std::uint8_t>(nibble & 0xF));
}

std::uint8_t withParity(std::uint8_t code) {
  const auto byte = static_cast<std::uint8_t>(code | (std::popcount(code) % 2 == 0 ? 0x80 : 0));
  return reverseBits(byte);
}

TeletextPacket packetOf(std::uint32_t page, std::uint32_t number) {
  const std::uint32_t magazine = page >> 8 & 7;
  TeletextPacket packet{};
  packet.fill(withParity(' '));
  packet[0] = hamming(magazine | (number & 1) << 3);
  packet[1] = hamming(number >> 1);
  return packet;
}

void putText(TeletextPacket& packet, std::size_t column, std::string_view codes) {
  for (const char code : codes.substr(0, kColumns - column)) {
    packet[kData + column++] = withParity(static_cast<std::uint8_t>(code));
  }
}

// What stands in a cell of its own or needs packet 26 over a base letter.
struct Cell {
  char code = ' ';
  std::optional<TeletextTriplet> enhancement;
};

template <class Find>
std::optional<char> codeOf(std::string_view glyph, const Find& find) {
  for (std::uint8_t code = 0x20; code < 0x7F; ++code) {
    if (find(code) == GlyphText(glyph)) return static_cast<char>(code);
  }
  return std::nullopt;
}

Cell cellOf(const CharacterSet& set, std::string_view glyph) {
  constexpr std::uint32_t kG2Character = 0x0F;
  constexpr std::uint32_t kWithoutDiacritic = 0x10;
  constexpr std::uint32_t kDiacritics = 16;
  const auto g0 = [&](std::uint8_t code) { return set.g0(code); };
  if (const auto code = codeOf(glyph, g0)) return {.code = *code, .enhancement = {}};
  if (const auto code = codeOf(glyph, [&](std::uint8_t c) { return set.g2(c); })) {
    return {.enhancement = TeletextTriplet{0, kG2Character, static_cast<std::uint8_t>(*code)}};
  }
  if (glyph == "@") return {.enhancement = TeletextTriplet{0, kWithoutDiacritic, '*'}};
  for (std::uint32_t mark = 1; mark < kDiacritics; ++mark) {
    const auto code = codeOf(glyph, [&](std::uint8_t c) {
      const auto base = set.g0(c);
      return base ? std::optional(withDiacritic(*base, mark)) : std::nullopt;
    });
    if (!code) continue;
    return {.code = *code,
            .enhancement =
                TeletextTriplet{0, kWithoutDiacritic + mark, static_cast<std::uint8_t>(*code)}};
  }
  throw std::invalid_argument("teletext has no '" + std::string(glyph) + "'");
}

std::string_view takeGlyph(std::string_view& utf8) {
  std::size_t size = 1;
  while (size < utf8.size() && (static_cast<std::uint8_t>(utf8[size]) & 0xC0) == 0x80) ++size;
  const auto glyph = utf8.substr(0, size);
  utf8.remove_prefix(size);
  return glyph;
}

}  // namespace

TeletextPacket headerPacket(const TeletextHeader& header) {
  TeletextPacket packet = packetOf(header.page, 0);
  const std::uint32_t option = header.nationalOption;
  const auto at = [](unsigned bit, bool isSet) { return isSet ? 1u << (bit - 1) : 0u; };
  const std::array<std::uint32_t, 8> nibbles = {
      header.page,
      header.page >> 4,
      header.subcode,
      (header.subcode >> 4 & 7) | at(4, header.erasePage),
      header.subcode >> 8,
      (header.subcode >> 12 & 3) | at(3, header.newsflash) | at(4, header.subtitle),
      at(1, header.suppressHeader) | at(2, header.update) | at(4, header.inhibitDisplay),
      at(1, header.magazineSerial) | at(2, (option & 4) != 0) | at(3, (option & 2) != 0) |
          at(4, (option & 1) != 0)};
  std::ranges::transform(nibbles, packet.begin() + kData, hamming);
  putText(packet, nibbles.size(), header.text);
  return packet;
}

TeletextPacket rowPacket(std::uint32_t page, std::uint32_t row, std::string_view codes) {
  TeletextPacket packet = packetOf(page, row);
  putText(packet, 0, codes);
  return packet;
}

TeletextPacket enhancementPacket(std::uint32_t page, std::uint32_t designation,
                                 std::span<const TeletextTriplet> triplets) {
  TeletextPacket packet = packetOf(page, 26);
  packet[kData] = hamming(designation);
  for (std::size_t i = 0; i < kTripletsPerPacket; ++i) {
    const auto triplet = i < triplets.size() ? triplets[i] : TeletextTriplet::termination();
    const auto bytes = encodeHamming2418(triplet.address | triplet.mode << 6 | triplet.data << 11);
    std::ranges::copy(bytes, packet.begin() + static_cast<std::ptrdiff_t>(kData + 1 + 3 * i));
  }
  return packet;
}

TeletextPacket designationPacket(std::uint32_t page, std::uint32_t number, std::uint32_t primary,
                                 std::uint32_t second) {
  TeletextPacket packet = packetOf(page, number);
  packet[kData] = hamming(0);
  for (std::size_t i = 0; i < kTripletsPerPacket; ++i) {
    const std::uint32_t bits = i == 0   ? primary << 7 | (second & 0xF) << 14
                               : i == 1 ? second >> 4
                                        : 0;
    std::ranges::copy(encodeHamming2418(bits),
                      packet.begin() + static_cast<std::ptrdiff_t>(kData + 1 + 3 * i));
  }
  return packet;
}

std::array<std::uint8_t, 3> encodeHamming2418(std::uint32_t data) {
  // Positions count from 1; those that are powers of two and the last hold the protection bits.
  std::uint32_t word = 0;
  for (unsigned position = 3, bit = 0; position < 24; ++position) {
    if (std::has_single_bit(position)) continue;
    word |= (data >> bit++ & 1) << (position - 1);
  }
  for (unsigned check = 1; check < 24; check *= 2) {
    unsigned ones = 0;
    for (unsigned position = 1; position < 24; ++position) {
      if (position & check) ones += word >> (position - 1) & 1;
    }
    if (ones % 2 == 0) word |= 1u << (check - 1);
  }
  if (std::popcount(word) % 2 == 0) word |= 1u << 23;
  return {reverseBits(static_cast<std::uint8_t>(word)),
          reverseBits(static_cast<std::uint8_t>(word >> 8)),
          reverseBits(static_cast<std::uint8_t>(word >> 16))};
}

std::vector<std::uint8_t> teletextDataField(std::span<const TeletextPacket> packets,
                                            std::uint8_t unitId, std::uint8_t dataIdentifier) {
  constexpr std::uint8_t kUnitLength = 0x2C;
  constexpr std::uint8_t kFramingCode = 0xE4;
  std::vector<std::uint8_t> field{dataIdentifier};
  std::uint8_t line = 7;
  for (const TeletextPacket& packet : packets) {
    const auto fieldAndLine = static_cast<std::uint8_t>(0b11'1'00000 | line++ % 32);
    field.insert(field.end(), {unitId, kUnitLength, fieldAndLine, kFramingCode});
    field.insert(field.end(), packet.begin(), packet.end());
  }
  return field;
}

std::vector<std::uint8_t> stuffedTeletextDataField(std::span<const TeletextPacket> packets) {
  constexpr std::uint8_t kStuffingUnit = 0xFF;
  constexpr std::size_t kPesHeader = 45;
  constexpr std::size_t kTransportPayload = 184;
  std::vector<std::uint8_t> field = teletextDataField(packets);
  while ((kPesHeader + field.size()) % kTransportPayload != 0) {
    field.insert(field.end(), {kStuffingUnit, 0x2C});
    field.insert(field.end(), 0x2C, 0xFF);
  }
  return field;
}

std::vector<std::uint8_t> teletextDescriptor(std::span<const TeletextPage> pages) {
  BitWriter bits;
  bits.put(0x56, 8).put(pages.size() * 5, 8);
  for (const TeletextPage& page : pages) {
    for (const char letter : page.language) bits.put(static_cast<std::uint8_t>(letter), 8);
    bits.put(page.type, 5).put(page.magazine % 8, 3).put(page.page, 8);
  }
  return bits.bytes();
}

TeletextLine teletextLine(const CharacterSet& set, std::span<const TeletextSpan> spans,
                          const TeletextLayout& layout) {
  constexpr std::string_view kStartBox = "\x0B\x0B";
  constexpr std::string_view kEndBox = "\x0A\x0A";
  constexpr char kDoubleHeight = 0x0D;
  constexpr int kWhite = 7;

  std::string head = layout.doubleHeight ? std::string(1, kDoubleHeight) : std::string();
  std::string body;
  std::vector<std::pair<std::size_t, TeletextTriplet>> enhancements;  // by place in the body
  int colour = kWhite;
  for (const TeletextSpan& span : spans) {
    if (span.colour != colour) (body.empty() ? head : body) += static_cast<char>(span.colour);
    colour = span.colour;
    for (std::string_view rest = span.utf8; !rest.empty();) {
      const Cell cell = cellOf(set, takeGlyph(rest));
      if (cell.enhancement) enhancements.emplace_back(body.size(), *cell.enhancement);
      body += cell.code;
    }
  }
  head += kStartBox;
  const std::size_t length = head.size() + body.size() + kEndBox.size();
  if (length > kColumns) throw std::invalid_argument("a line of " + std::to_string(length));
  const std::size_t left = (kColumns - length) / 2;

  TeletextLine line;
  line.codes = std::string(left, ' ') + head + body + std::string(kEndBox);
  if (!enhancements.empty()) line.triplets.push_back(TeletextTriplet::row(layout.row));
  for (auto [place, triplet] : enhancements) {
    triplet.address = static_cast<std::uint32_t>(left + head.size() + place);
    line.triplets.push_back(triplet);
  }
  return line;
}

}  // namespace korr::encoders
