// SPDX-License-Identifier: MIT

// The caption services that a stream's descriptors announce.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace korr::txsub {

/// One service of a caption_service_descriptor (ATSC A/65, 6.9.2).
struct AnnouncedCaptions {
  std::string language;       ///< ISO 639-2, three bytes
  bool isDigital = false;     ///< digital_cc: CEA-708, else CEA-608
  unsigned service = 0;       ///< caption_service_number, 1 to 63, of CEA-708; else 0
  unsigned field = 0;         ///< of line 21, 1 or 2, of CEA-608; else 0
  bool isEasyReader = false;  ///< for the young, and whoever learns the language
  bool isWideAspect = false;  ///< made for pictures of 16:9

  friend bool operator==(const AnnouncedCaptions&, const AnnouncedCaptions&) = default;
};

/// Reads the caption service descriptors among a stream's descriptors (StreamInfo::descriptors), in
/// their order. What is cut off is left out.
std::vector<AnnouncedCaptions> readCaptionServices(std::span<const std::uint8_t> descriptors);

}  // namespace korr::txsub
