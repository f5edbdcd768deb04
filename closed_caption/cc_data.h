// SPDX-License-Identifier: MIT

// cc_data triplets to the byte pairs of one caption service.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// One of the services CC1 to CC4: a line-21 field and a data channel in it.
struct CaptionService {
  std::uint32_t field = 1;
  std::uint32_t channel = 1;

  /// Services 1 to 4 are CC1 to CC4; other numbers name fields that no triplet has.
  static CaptionService fromNumber(std::uint32_t service);
};

/// Two bytes of line 21; without their parity bits, 0x00 to 0x7F each, unless something else is
/// said.
struct BytePair {
  std::uint8_t b1 = 0;
  std::uint8_t b2 = 0;

  friend bool operator==(const BytePair&, const BytePair&) = default;
};

/// Bit 7 of each byte of line 21, which makes its number of ones odd (CEA-608, 5.3).
inline constexpr std::uint8_t kParityBit = 0x80;

inline constexpr std::uint8_t kFirstPrintable = 0x20;  ///< the lowest code of a character
inline constexpr std::uint8_t kFirstControl = 0x10;    ///< the lowest first byte of a control code
inline constexpr std::uint8_t kSecondChannel = 0x08;   ///< in it: the code is for data channel 2

/// The pair of `field` (1 or 2) in a triplet (3 bytes; CEA-708, 4.4.1), with its parity bits;
/// nothing when the triplet is not valid or holds something else.
inline std::optional<BytePair> line21Pair(std::span<const std::uint8_t, 3> triplet,
                                          std::uint32_t field) {
  const bool isValid = (triplet[0] & 0x04) != 0;
  const std::uint32_t type = triplet[0] & 0x03;  // 0, 1: the fields; 2, 3: DTVCC
  if (!isValid || type > 1 || type != field - 1) return std::nullopt;
  return BytePair{triplet[1], triplet[2]};
}

/// What a pair asks of the decoder.
struct CaptionPair {
  bool isControl = false;  ///< else two printable characters
  BytePair bytes;          ///< a control code in the form of data channel 1 and field 1
};

/// Picks the pairs of one service and drops repeated control codes.
class CaptionPairSelector {
 public:
  explicit CaptionPairSelector(CaptionService service) : service_(service) {}

  /// What to execute for one triplet (3 bytes; CEA-708, 4.4.1), or nothing.
  std::optional<CaptionPair> select(std::span<const std::uint8_t, 3> triplet);

 private:
  std::optional<CaptionPair> selectControl(BytePair pair);
  bool isRepetition(BytePair pair);
  std::uint8_t inFirstChannelForm(std::uint8_t b1) const;

  const CaptionService service_;
  std::int32_t currentChannel_ = -1;     // -1 until the first control code
  std::optional<BytePair> lastControl_;  // the last one executed
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
