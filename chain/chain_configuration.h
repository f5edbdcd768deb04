// SPDX-License-Identifier: MIT

// What hosts of the chain let their users set.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "chain/conversion_chain.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// The settings of the filter's configuration interface, with its defaults.
struct ChainConfiguration {
  ConversionMode mode = ConversionMode::Ttml;
  std::uint32_t page = 0;           ///< as in ConversionChain::Settings
  std::uint32_t durationMs = 2000;  ///< segment duration
  std::string language = "";        ///< teletext: the page of this language rather than `page`
  bool hearingImpaired = false;     ///< with `language`
  std::uint32_t pageOption = 0;
  bool ttmlOption = false;
};

/// The settings of a chain for one input. The teletext page of the language is looked up in
/// `format`, the format block of the input's media type; without one, `page` stays. `logger` may be
/// null.
ConversionChain::Settings chainSettings(const ChainConfiguration& configuration,
                                        SubtitleInputType inputType,
                                        std::optional<std::span<const std::uint8_t>> format,
                                        log::ILogger* logger);

}  // namespace korr::encoding::subtitling::inline v2_1
