// SPDX-License-Identifier: MIT
#include "testkit/encoders/dtvcc_encoder.h"

#include <algorithm>
#include <utility>

namespace korr::encoders {
namespace {

// CEA-708-E, 7.1.8.
constexpr std::pair<char32_t, unsigned> kG2[] = {
    {U'…', 0x25}, {U'Š', 0x2A}, {U'Œ', 0x2C}, {U'█', 0x30}, {U'‘', 0x31}, {U'’', 0x32},
    {U'“', 0x33}, {U'”', 0x34}, {U'•', 0x35}, {U'™', 0x39}, {U'š', 0x3A}, {U'œ', 0x3C},
    {U'℠', 0x3D}, {U'Ÿ', 0x3F}, {U'⅛', 0x76}, {U'⅜', 0x77}, {U'⅝', 0x78}, {U'⅞', 0x79},
    {U'│', 0x7A}, {U'┐', 0x7B}, {U'└', 0x7C}, {U'─', 0x7D}, {U'┘', 0x7E}, {U'┌', 0x7F},
};

/// Takes one code point off well-formed UTF-8.
char32_t takeCodePoint(std::string_view& utf8) {
  const auto first = static_cast<unsigned char>(utf8.front());
  const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  char32_t character = size == 1 ? first : first & (0x7Fu >> size);
  for (std::size_t i = 1; i < size; ++i) {
    character = character << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3Fu);
  }
  utf8.remove_prefix(size);
  return character;
}

}  // namespace

DtvccCodes& DtvccCodes::bytes(std::initializer_list<unsigned> values) {
  for (const unsigned value : values) codes_.push_back(static_cast<std::uint8_t>(value));
  return *this;
}

DtvccCodes& DtvccCodes::text(std::string_view utf8) {
  while (!utf8.empty()) character(takeCodePoint(utf8));
  return *this;
}

void DtvccCodes::character(char32_t character) {
  if (character == U'♪') {
    bytes({0x7F});
  } else if (character < 0x7F || (character >= 0xA1 && character < 0x100)) {
    bytes({static_cast<unsigned>(character)});
  } else if (const auto* known =
                 std::ranges::find(kG2, character, &std::pair<char32_t, unsigned>::first);
             known != std::end(kG2)) {
    bytes({0x10, known->second});
  } else if (character < 0x10000) {
    bytes({0x18, static_cast<unsigned>(character >> 8), static_cast<unsigned>(character & 0xFF)});
  } else {
    this->character(0xD800 + ((character - 0x10000) >> 10));
    this->character(0xDC00 + ((character - 0x10000) & 0x3FF));
  }
}

DtvccCodes& DtvccCodes::eucKr(std::string_view text) {
  while (!text.empty()) {
    const unsigned first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
      bytes({first});
      text.remove_prefix(1);
    } else {
      bytes({0x18, first, static_cast<unsigned char>(text[1])});
      text.remove_prefix(2);
    }
  }
  return *this;
}

DtvccCodes& DtvccCodes::define(unsigned id, const DtvccWindow& window) {
  return bytes({0x98 + id,
                (window.visible ? 0x20u : 0u) | (window.rowLock ? 0x10u : 0u) |
                    (window.columnLock ? 0x08u : 0u) | window.priority,
                (window.relative ? 0x80u : 0u) | window.vertical, window.horizontal,
                window.anchor << 4 | (window.rows - 1), window.columns - 1,
                window.windowStyle << 3 | window.penStyle});
}

DtvccCodes& DtvccCodes::attributes(const DtvccWindowAttributes& a) {
  return bytes(
      {0x97, a.fillOpacity << 6 | a.fill, (a.border & 3) << 6 | a.borderColour,
       (a.border & 4) << 5 | (a.wordWrap ? 0x40u : 0u) | a.print << 4 | a.scroll << 2 | a.justify,
       0});
}

DtvccCodes& DtvccCodes::pen(const DtvccPen& pen) {
  return bytes(
      {0x90, pen.tag << 4 | pen.offset << 2 | pen.size,
       (pen.italic ? 0x80u : 0u) | (pen.underline ? 0x40u : 0u) | pen.edge << 3 | pen.font});
}

DtvccCodes& DtvccCodes::colour(const DtvccPenColour& colour) {
  return bytes({0x91, colour.foregroundOpacity << 6 | colour.foreground,
                colour.backgroundOpacity << 6 | colour.background, colour.edge});
}

DtvccChannel& DtvccChannel::add(unsigned service, const DtvccCodes& codes) {
  return addBytes(service, codes.codes());
}

DtvccChannel& DtvccChannel::addBytes(unsigned service, std::span<const std::uint8_t> codes) {
  const std::size_t header = service > 6 ? 2 : 1;
  while (!codes.empty()) {
    if (data_.size() + header >= kLargestPacketData) endPacket();
    const std::size_t size =
        std::min({codes.size(), kLargestBlock, kLargestPacketData - data_.size() - header});
    // CEA-708-E, 6.2.1 and 6.2.2.
    data_.push_back(static_cast<std::uint8_t>(std::min(service, 7u) << 5 | size));
    if (service > 6) data_.push_back(static_cast<std::uint8_t>(service));
    data_.insert(data_.end(), codes.begin(), codes.begin() + static_cast<std::ptrdiff_t>(size));
    codes = codes.subspan(size);
  }
  return *this;
}

DtvccChannel& DtvccChannel::endPacket() {
  if (!data_.empty()) packet(std::exchange(data_, {}));
  return *this;
}

DtvccChannel& DtvccChannel::packet(std::span<const std::uint8_t> data) {
  std::vector<std::uint8_t> packet(data.begin(), data.end());
  if (packet.size() % 2 == 0) packet.push_back(0);  // a null block header
  const std::size_t pairs = (packet.size() + 1) / 2;
  packet.insert(packet.begin(), static_cast<std::uint8_t>(sequence_ << 6 | (pairs & 0x3F)));
  sequence_ = (sequence_ + 1) % 4;
  for (std::size_t i = 0; i < packet.size(); i += 2) {
    triplets_.insert(triplets_.end(),
                     {static_cast<std::uint8_t>(i == 0 ? 0xFF : 0xFE), packet[i], packet[i + 1]});
  }
  return *this;
}

DtvccChannel& DtvccChannel::skipSequenceNumbers(unsigned count) {
  sequence_ = (sequence_ + count) % 4;
  return *this;
}

std::vector<std::uint8_t> DtvccChannel::take() {
  endPacket();
  return std::exchange(triplets_, {});
}

}  // namespace korr::encoders
