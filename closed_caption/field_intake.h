// SPDX-License-Identifier: MIT

// One field of line 21 as a receiver reads it.
#pragma once

#include <cstdint>
#include <optional>

#include "closed_caption/cc_data.h"
#include "closed_caption/parity_check.h"
#include "model/media_time.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Picks the pairs of one service out of its field, both fields alike: checks parity, drops the
/// repetition of control codes, and passes over text services' and extended data's channels.
class FieldIntake {
 public:
  explicit FieldIntake(CaptionService service) : service_(service) {}

  enum class Content { Nothing, Text, Control };

  struct Taken {
    Content content = Content::Nothing;
    /// A control code in the form of data channel 1 and field 1, or two characters: 0x00 is none,
    /// and one of wrong parity is a solid block.
    BytePair pair;
    bool wasDamaged = false;  ///< had wrong parity
  };

  /// What `sent`, a pair of the field with its parity bits, shown at `time` (100 ns), holds for the
  /// service.
  Taken take(BytePair sent, MediaTime time);

 private:
  struct SentControl {
    BytePair pair;
    MediaTime time = 0;
  };

  Taken takeControl(BytePair pair, MediaTime time);
  Taken takeDamagedOrText(BytePair pair, bool isFirstRight, bool isSecondRight);
  bool isForService() const { return !isExtendedData_ && channel_ == service_.channel; }
  void takeExtendedData(std::uint8_t b1);
  bool isDamagedControl(BytePair pair, bool isSecondRight) const;
  bool isRepetition(BytePair pair, MediaTime time);
  BytePair inFirstChannelForm(BytePair pair) const;

  const CaptionService service_;
  ParityCheck parity_;
  std::uint32_t channel_ = 0;               // of the last control code; 0 before the first
  std::optional<SentControl> lastControl_;  // the last pair, if its repetition may follow
  bool isExtendedData_ = false;             // characters belong to XDS
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
