// SPDX-License-Identifier: MIT

// Which decoder reads which input as a receiver does.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "log/logger.h"
#include "model/display.h"
#include "model/dvb_pages.h"
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// What the decoder factory is given.
struct DecoderRequest {
  SubtitleInputType inputType = SubtitleInputType::Teletext;
  /// Teletext: magazine * 256 + page number. Captions: service 1 to 4. DVB: not used.
  std::uint32_t page = 0;
  std::uint32_t pageOption = 0;  ///< teletext: the character-set group that nothing else names
  /// Teletext: a viewer or a descriptor named the page, which need not say that it has subtitles.
  bool isAskedFor = false;
  /// DVB: the service's pages; without them the first page that comes is followed.
  std::optional<DvbPages> dvbPages = {};
  /// Is told what is shown; not owned.
  IDisplayListener& listener;
  /// Takes the decoder's warnings; may be null, not owned.
  log::ILogger* logger = nullptr;
};

/// Makes the decoder for an input type. Throws "Unexpected subtitle input type".
std::unique_ptr<IDisplayDecoder> createDisplayDecoder(const DecoderRequest& request);

}  // namespace korr::encoding::subtitling::inline v2_1
