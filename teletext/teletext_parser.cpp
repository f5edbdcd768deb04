// SPDX-License-Identifier: MIT
#include "teletext/teletext_parser.h"

#include "teletext/packet_numbers.h"
#include "teletext/row_decoder.h"
#include "teletext/teletext_rules.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
TeletextParser::TeletextParser(std::uint32_t page, std::uint32_t characterGroup)
    : magazine_(magazineOf(page)), page_(page & 0xFF), characterGroup_(characterGroup) {
}

void TeletextParser::parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
                           bool /*discontinuity*/) {
  if (size > 0) {
    forEachPacket(
        {data, static_cast<std::size_t>(size)}, kFilter.dropsDamagedAddresses,
        [this](std::uint32_t magazine) { return magazine == magazine_; },
        [this](const Packet& packet) { takePacket(packet); });
  }
  lastParseTime_ = time;
}

bool TeletextParser::hasChanged() {
  if (storeTouched_) {
    hasChanged_ = store_.page() != yielded_;
    storeTouched_ = false;
  }
  return hasChanged_;
}

Subtitle TeletextParser::currentSubtitle(MediaTime time) {
  if (time == lastParseTime_) {
    yielded_ = store_.page();
    storeTouched_ = false;
    hasChanged_ = false;
  }
  return Subtitle(yielded_);
}

void TeletextParser::takePacket(const Packet& packet) {
  if (packet.number == kHeaderPacket) return takeHeader(packet);
  if (!receiving_) return;
  if (packet.number <= kLastRowPacket) return storeRow(packet.number, 0, packet.data);
  if (packet.number == kEnhancementPacket) enhancements_.take(packet.data, characters());
}

// Every header of the page empties it, whether or not C4 (erase page) is set, deliberately.
void TeletextParser::takeHeader(const Packet& packet) {
  header_ = readPageHeader(packet.data);
  enhancements_.clear();
  const bool isSelected = header_.page == page_;
  if (isSelected && kFilter.erases(header_)) {
    store_.clear();
    storeTouched_ = true;
  }
  receiving_ = isSelected && kFilter.shows(header_);
  if (receiving_ && !header_.suppressHeader)
    storeRow(0, kHeaderTextColumn, headerText(packet.data));
}

void TeletextParser::storeRow(std::uint32_t row, std::uint32_t firstColumn,
                              std::span<const std::uint8_t> bytes) {
  const CharacterSet set = characters();
  store_.store(row, decodeRow<kFilter>(bytes, {row, firstColumn, set, enhancements_}));
  storeTouched_ = true;
}

CharacterSet TeletextParser::characters() const {
  return CharacterSet::of(characterGroup_, header_.nationalOption);
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
