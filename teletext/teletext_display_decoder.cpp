// SPDX-License-Identifier: MIT
#include "teletext/teletext_display_decoder.h"

#include <algorithm>
#include <utility>

#include "teletext/packet_numbers.h"
#include "teletext/teletext_rules.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

TeletextDisplayDecoder::TeletextDisplayDecoder(std::uint32_t page, std::uint32_t characterGroup,
                                               bool isAskedFor, IDisplayListener& listener,
                                               log::ILogger* logger)
    : magazine_(magazineOf(page)),
      page_(page & 0xFF),
      listener_(listener),
      logger_(logger),
      display_{.characterGroup = characterGroup, .magazine = {}, .isAskedFor = isAskedFor},
      wantedMagazines_(magazine_ < 8 ? 1u << magazine_ : 0) {
  // Until a header is received well, a damaged one is taken for that of a subtitle.
  memory_.header.subtitle = memory_.header.erasePage = true;
}

void TeletextDisplayDecoder::decode(std::span<const std::uint8_t> unit, MediaTime time) {
  forEachPacket(
      unit, kReceiver.dropsDamagedAddresses,
      [this](std::uint32_t magazine) { return (wantedMagazines_ >> magazine & 1) != 0; },
      [this, time](const Packet& packet) { take(packet, time); });
}

// The header that ends a page may come with the next one, long after.
void TeletextDisplayDecoder::settle(MediaTime until) {
  if (receiving_ && headerTime_ < until) show();
}

void TeletextDisplayDecoder::finish(MediaTime /*end*/) {
  complete();
}

void TeletextDisplayDecoder::take(const Packet& packet, MediaTime time) {
  if (packet.number == kHeaderPacket) return takeHeader(packet, time);
  if (packet.magazine != magazine_) return;
  if (packet.number == kMagazineEnhancementPacket) return takeMagazineSets(packet);
  if (!receiving_) return;
  if (packet.number <= kLastRowPacket) {
    memory_.storeRow(packet.number, packet.data, composed_);
  } else if (packet.number == kEnhancementPacket) {
    memory_.storeEnhancement(packet.data);
  } else if (packet.number == kPageEnhancementPacket) {
    if (const auto sets = readPageDesignation(packet.data)) memory_.designation = sets;
  }
}

// Any header ends the page before it, also one that is damaged beyond repair.
void TeletextDisplayDecoder::takeHeader(const Packet& packet, MediaTime time) {
  complete();
  if (packet.magazine != magazine_ || readPageNumber(packet.data) != page_) return;
  headerTime_ = std::max(headerTime_, time);
  auto header = readPageHeader(packet.data);
  if (isHeaderDamaged(packet.data)) {
    tellDamage("the header is damaged; it is read as the one before");
    header = memory_.header;
  }
  begin(header, packet);
}

void TeletextDisplayDecoder::takeMagazineSets(const Packet& packet) {
  const auto sets = readMagazineDesignation(packet.data);
  if (!sets || sets == display_.magazine) return;
  display_.magazine = sets;
  composed_ = {};
}

// Pages of one number and different subcodes are different pages (9.3.1.2).
void TeletextDisplayDecoder::begin(const PageHeader& header, const Packet& packet) {
  if (kReceiver.erases(header) || header.subcode() != memory_.header.subcode()) memory_.erase();
  memory_.header = header;
  memory_.rows[0].reset();
  if (!header.suppressHeader) memory_.storeRow(0, packet.data, composed_);
  receiving_ = true;
  // Where pages are sent in series, any header ends this one (9.3.1.3, C11).
  wantedMagazines_ = header.magazineSerial ? 0xFF : 1u << magazine_;
}

void TeletextDisplayDecoder::complete() {
  if (!std::exchange(receiving_, false)) return;
  wantedMagazines_ = 1u << magazine_;
  show();
}

void TeletextDisplayDecoder::show() {
  if (memory_ == composed_) return;
  composed_ = memory_;
  auto text = compose(memory_, display_);
  if (text == shown_) return;
  shown_ = std::move(text);
  if (!shown_.rows.empty() && memory_.damagedCells() != 0) {
    tellDamage("letters with wrong parity are left blank");
  }
  listener_.onDisplay(headerTime_, Subtitle(shown_));
}

void TeletextDisplayDecoder::tellDamage(const char* what) const {
  log::write(logger_, log::Level::Warning, "teletext page %x%02x, %.3f s: %s",
             magazine_ == 0 ? 8u : magazine_, page_,
             static_cast<double>(headerTime_) / static_cast<double>(kSecond), what);
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
