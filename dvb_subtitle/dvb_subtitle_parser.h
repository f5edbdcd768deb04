// SPDX-License-Identifier: MIT

// DVB subtitles: the parser of PES data fields.
#pragma once

#include "dvb_subtitle/dvb_subtitle_renderer.h"
#include "dvb_subtitle/page_history.h"
#include "dvb_subtitle/pes_data_field.h"
#include "log/logger.h"
#include "model/interfaces.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Keeps the pages of the last five seconds. Not thread-safe.
class DVBSubtitleParser final : public ISubtitleParser, public ISubtitleContainer {
 public:
  /// `logger` takes a warning for each segment or page that is lost, `droppedPages` counts the
  /// pages; both may be null and are not owned.
  explicit DVBSubtitleParser(log::ILogger* logger, std::uint64_t* droppedPages = nullptr)
      : renderer_(logger, droppedPages) {}

  /// `data`: a PES data field (EN 300 743, 7.1), or, without `discontinuity`, what follows the last
  /// one. Of several pages that it completes the first is kept, deliberately. Throws DataFieldError
  /// when the field is broken; nothing of the payload is decoded then.
  void parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
             bool discontinuity) override;

  /// Always.
  bool hasChanged() override { return true; }

  Subtitle currentSubtitle(MediaTime time) override { return Subtitle(history_.at(time)); }

  /// For what a stream does not tell about itself.
  DVBSubtitleRenderer& renderer() { return renderer_; }

 private:
  DVBSubtitleRenderer renderer_;
  PageHistory history_;
  PesDataFieldSplitter splitter_;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
