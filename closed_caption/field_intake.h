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

  /// What to execute for `sent`, a pair of the field with its parity bits shown at `time` (100 ns),
  /// or nothing. A character of wrong parity comes as a solid block; 0x00 is none.
  std::optional<CaptionPair> take(BytePair sent, MediaTime time);

  /// Whether the last pair had wrong parity.
  bool wasDamaged() const { return wasDamaged_; }

 private:
  struct SentControl {
    BytePair pair;
    MediaTime time = 0;
  };

  std::optional<CaptionPair> takeControl(BytePair pair, bool isSecondRight, MediaTime time);
  std::optional<CaptionPair> takeText(BytePair pair, bool isFirstRight, bool isSecondRight);
  void takeExtendedData(std::uint8_t b1);
  bool isRepetition(BytePair pair, MediaTime time);
  BytePair inFirstChannelForm(BytePair pair) const;

  const CaptionService service_;
  ParityCheck parity_;
  std::uint32_t channel_ = 0;               // of the last control code; 0 before the first
  std::optional<SentControl> lastControl_;  // the last pair, if its repetition may follow
  bool isExtendedData_ = false;             // characters belong to XDS
  bool wasDamaged_ = false;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
