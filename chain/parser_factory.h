// SPDX-License-Identifier: MIT

// Which parser reads which input.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "log/logger.h"
#include "model/dvb_pages.h"
#include "model/interfaces.h"
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// What the parser factory is given.
struct ParserRequest {
  SubtitleInputType inputType = SubtitleInputType::Teletext;
  /// Teletext: magazine * 256 + page number. Captions: service 1 to 4. DVB: not used.
  std::uint32_t page = 0;
  /// Receives the parser's second face; owned by the parser.
  ISubtitleContainer** container = nullptr;
  /// Teletext only: the default character-set group.
  std::uint32_t pageOption = 0;
  /// DVB only: the service's pages; without them the first page that comes is followed.
  std::optional<DvbPages> dvbPages = {};
  /// Takes the parser's warnings; may be null, not owned.
  log::ILogger* logger = nullptr;
  /// DVB only: counts the pages that never became whole; may be null, not owned.
  std::uint64_t* droppedPages = nullptr;
};

/// Makes the parser for an input type and stores its container. Throws "Unexpected subtitle input
/// type".
std::unique_ptr<ISubtitleParser> createParser(const ParserRequest& request);

}  // namespace korr::encoding::subtitling::inline v2_1
