// SPDX-License-Identifier: MIT

// The teletext pages that a stream's descriptors name, and which of them to follow.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "log/logger.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// One entry of a teletext descriptor (EN 300 468, 6.2.43).
struct TeletextPage {
  static constexpr std::uint32_t kSubtitle = 2;
  static constexpr std::uint32_t kHearingImpaired = 5;

  std::string language;        ///< ISO 639-2, three bytes
  std::uint32_t type = 0;      ///< teletext_type
  std::uint32_t magazine = 0;  ///< 1 to 8
  std::uint32_t page = 0;      ///< two hexadecimal digits
};

/// Reads the teletext descriptors among a stream's descriptors. Damage ends the list; a descriptor
/// that is cut keeps its whole entries.
std::vector<TeletextPage> readTeletextPages(std::span<const std::uint8_t> descriptors);

/// Which page to show.
struct FollowedPage {
  std::uint32_t page = 0;  ///< magazine * 256 + page number
  std::string list;        ///< all subtitle pages, for the log; empty when there is none
  std::string follow;      ///< why it is another page than the configured one; else empty
};

/// The page of `language`, or else the configured one.
FollowedPage followLanguage(std::span<const TeletextPage> pages, std::string_view language,
                            bool hearingImpaired, std::uint32_t configuredPage);

/// The page to show of a stream with these descriptors; tells `logger`, which may be null, what the
/// descriptors name and why another page than the configured one is shown.
std::uint32_t choosePage(std::span<const std::uint8_t> descriptors, std::string_view language,
                         bool hearingImpaired, std::uint32_t configuredPage, log::ILogger* logger);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
