// SPDX-License-Identifier: MIT

// Closed captions as a receiver shows them.
#pragma once

#include <cstdint>
#include <span>

#include "closed_caption/caption_receiver.h"
#include "closed_caption/cc_data.h"
#include "closed_caption/field_intake.h"
#include "log/logger.h"
#include "model/display.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Decodes one of the services CC1 to CC4 by CEA-608 and 47 CFR 79.101; docs/rules.md tells what it
/// does beside `ClosedCaptionParser`. Text services are not shown. Text is told as it grows, once
/// a unit. Not thread-safe; throws nothing but std::bad_alloc and what the listener throws.
class CaptionDisplayDecoder final : public IDisplayDecoder {
 public:
  /// A caption without any data for its service is cleared after this time (CEA-608, C.9).
  static constexpr MediaTime kErasureTime = 16 * kSecond;

  /// `service`: 1 to 4, CC1 to CC4; no other number has captions. `listener` is not owned and gets
  /// `CaptionText`. `logger` takes one line where parity is wrong, at most every ten seconds, to
  /// which it adds the time; may be null, not owned.
  CaptionDisplayDecoder(std::uint32_t service, IDisplayListener& listener, log::ILogger* logger);

  /// `unit`: triplets as in cc_data() (CEA-708, 4.4.1); bytes after the last whole one are ignored.
  void decode(std::span<const std::uint8_t> unit, MediaTime time) override;
  void finish(MediaTime end) override;

 private:
  bool execute(const FieldIntake::Taken& taken);
  void eraseIfIdle(MediaTime time);
  void tell(MediaTime time);
  void reportDamage(MediaTime time);

  const std::uint32_t number_;
  const CaptionService service_;
  IDisplayListener& listener_;
  log::ILogger* logger_;
  FieldIntake intake_;
  CaptionReceiver receiver_;
  CaptionText shown_;       // what the listener knows
  MediaTime time_ = 0;      // of the last unit
  MediaTime lastData_ = 0;  // when the service last had any
  MediaTime nextReport_ = 0;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
