// SPDX-License-Identifier: MIT

// Teletext pages as a receiver shows them.
#pragma once

#include "log/logger.h"
#include "model/display.h"
#include "teletext/page_memory.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// Follows one page (ETSI EN 300 706). It is whole, and shown from its header's time, when the next
/// header of its magazine comes, or of any magazine where they are sent in series (C11), however
/// packets are spread over units. What is sent again unchanged is not told again.
class TeletextDisplayDecoder final : public IDisplayDecoder {
 public:
  /// `page`: magazine * 256 + page number, such as 0x888; magazine 0 is 8. `characterGroup`: the
  /// character-set group (15.2, table 32) where no packet designates sets. `isAskedFor`: a viewer
  /// or a descriptor named the page, which then shows without C6 (subtitle) too: what is in boxes,
  /// or all of it where there is no box. `listener` and `logger`, which may be null, are not owned.
  TeletextDisplayDecoder(std::uint32_t page, std::uint32_t characterGroup, bool isAskedFor,
                         IDisplayListener& listener, log::ILogger* logger);

  void decode(std::span<const std::uint8_t> unit, MediaTime time) override;
  void settle(MediaTime until) override;
  void finish(MediaTime end) override;

 private:
  void take(const Packet& packet, MediaTime time);
  void takeHeader(const Packet& packet, MediaTime time);
  void takeMagazineSets(const Packet& packet);
  void begin(const PageHeader& header, const Packet& packet);
  void complete();
  void show();
  void tellDamage(const char* what) const;

  const std::uint32_t magazine_;  // 0 to 7; larger when there is none such
  const std::uint32_t page_;
  IDisplayListener& listener_;
  log::ILogger* const logger_;

  PageDisplay display_;
  std::uint32_t wantedMagazines_;  // a bit each
  bool receiving_ = false;         // the page's header has come and no other since
  MediaTime headerTime_ = 0;       // of the page's last header
  PageMemory memory_;              // of the page in transmission
  PageMemory composed_;            // what `shown_` was made from
  TeletextText shown_;
};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
