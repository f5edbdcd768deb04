// SPDX-License-Identifier: MIT
#include "chain/chain_configuration.h"

#include "teletext/teletext_descriptor.h"

namespace korr::encoding::subtitling::inline v2_1 {

ConversionChain::Settings chainSettings(const ChainConfiguration& configuration,
                                        SubtitleInputType inputType,
                                        std::optional<std::span<const std::uint8_t>> format,
                                        log::ILogger* logger) {
  std::uint32_t page = configuration.page;
  if (inputType == SubtitleInputType::Teletext && format) {
    page = teletext::lib_teletext::choosePage(*format, configuration.language,
                                              configuration.hearingImpaired, page, logger);
  }
  return {.inputType = inputType,
          .page = page,
          .durationMs = configuration.durationMs,
          .mode = configuration.mode,
          .pageOption = configuration.pageOption,
          .ttmlOption = configuration.ttmlOption};
}

}  // namespace korr::encoding::subtitling::inline v2_1
