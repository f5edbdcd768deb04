// SPDX-License-Identifier: MIT

// Teletext subtitles: the parser of PES data fields.
#pragma once

#include "model/interfaces.h"
#include "teletext/enhancement.h"
#include "teletext/packet.h"
#include "teletext/page_header.h"
#include "teletext/page_store.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// Follows one page. A page is received from a header with C6 (subtitle) set to the next header;
/// each of its headers empties it. Not thread-safe; throws nothing but std::bad_alloc.
class TeletextParser final : public ISubtitleParser, public ISubtitleContainer {
 public:
  /// `page`: magazine * 256 + page number, such as 0x888; magazine 0 is 8. `characterGroup`: the
  /// default character-set group (EN 300 706, 15.2, table 32).
  TeletextParser(std::uint32_t page, std::uint32_t characterGroup);

  /// `data`: a PES data field from its data_identifier on (EN 300 472, 4.2).
  void parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
             bool discontinuity) override;

  /// Whether the page's rows differ from those last yielded.
  bool hasChanged() override;

  /// The page's rows at the time of the last `parse`; for any other time the last result again.
  Subtitle currentSubtitle(MediaTime time) override;

 private:
  void takePacket(const Packet& packet);
  void takeHeader(const Packet& packet);
  void storeRow(std::uint32_t row, std::uint32_t firstColumn, std::span<const std::uint8_t> bytes);
  CharacterSet characters() const;

  const std::uint32_t magazine_;  // 0 to 7; larger when there is none such
  const std::uint32_t page_;
  const std::uint32_t characterGroup_;

  PageHeader header_;       // the magazine's last
  bool receiving_ = false;  // the page in transmission is the selected one and a subtitle
  Enhancements enhancements_;
  PageStore store_;
  bool storeTouched_ = false;  // since hasChanged_ was found
  bool hasChanged_ = false;
  TeletextText yielded_;
  MediaTime lastParseTime_ = 0;
};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
