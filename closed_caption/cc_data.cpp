// SPDX-License-Identifier: MIT
#include "closed_caption/cc_data.h"

#include "closed_caption/caption_codes.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {
CaptionService CaptionService::fromNumber(std::uint32_t service) {
  const auto before = static_cast<std::int32_t>(service - 1);
  return {static_cast<std::uint32_t>((before >> 1) + 1), service % 2 == 1 ? 1u : 2u};
}

std::optional<CaptionPair> CaptionPairSelector::select(std::span<const std::uint8_t, 3> triplet) {
  const auto sent = line21Pair(triplet, service_.field);
  if (!sent) return std::nullopt;

  // Parity is removed and never checked, deliberately.
  const BytePair pair{static_cast<std::uint8_t>(sent->b1 & ~kParityBit),
                      static_cast<std::uint8_t>(sent->b2 & ~kParityBit)};
  if (pair.b1 >= kFirstPrintable) {
    if (currentChannel_ != static_cast<std::int32_t>(service_.channel)) return std::nullopt;
    return CaptionPair{false, pair};
  }
  if (pair.b1 >= kFirstControl) return selectControl(pair);
  return std::nullopt;  // padding or extended data services
}

std::optional<CaptionPair> CaptionPairSelector::selectControl(BytePair pair) {
  currentChannel_ = (pair.b1 & kSecondChannel) != 0 ? 2 : 1;
  if (currentChannel_ != static_cast<std::int32_t>(service_.channel)) return std::nullopt;
  if (isRepetition(pair)) return std::nullopt;
  return CaptionPair{true, {inFirstChannelForm(pair.b1), pair.b2}};
}

// Codes are sent twice (CEA-608, 8.3). Only field 1 looks for that, and text between two equal
// codes does not part them, both deliberately; a third copy is executed again.
bool CaptionPairSelector::isRepetition(BytePair pair) {
  if (service_.field == 1 && lastControl_ == pair) {
    lastControl_.reset();
    return true;
  }
  lastControl_ = pair;
  return false;
}

// Field 2 sends the miscellaneous codes one higher (CEA-608, 8.4.1).
std::uint8_t CaptionPairSelector::inFirstChannelForm(std::uint8_t b1) const {
  auto code = static_cast<std::uint8_t>(b1 - 8 * service_.channel + 8);
  if (service_.field == 2 && (code == kMiscellaneous || code == kMiscellaneousField2)) --code;
  return code;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
