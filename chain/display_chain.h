// From input samples to what is shown over time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "chain/chain.h"
#include "chain/parser_display.h"
#include "log/logger.h"
#include "model/display.h"
#include "model/dvb_pages.h"
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// The chain of files for people: one service of one input, told to a listener.
class DisplayChain final : public IChain {
 public:
  struct Settings {
    SubtitleInputType inputType = SubtitleInputType::Teletext;
    /// Teletext: magazine * 256 + page number. Captions: service 1 to 4.
    std::uint32_t page = 0;
    std::uint32_t pageOption = 0;           ///< teletext: the default character-set group
    std::optional<DvbPages> dvbPages = {};  ///< DVB subtitles: else the first page that comes
    std::uint32_t durationMs = 2000;        ///< how often what stays is taken anew; 0: never
  };

  /// `listener` and `logger` (which may be null) are not owned. Throws "Unexpected subtitle input
  /// type".
  DisplayChain(IDisplayListener& listener, const Settings& settings, log::ILogger* logger);

  packaging::lib_parse_es::NALBuilder& framer() override { return *framer_; }
  void finish(MediaTime) override {}
  ChainCounters counters() const override;

 private:
  std::uint64_t droppedPages_ = 0;  // counted by the parser
  std::unique_ptr<ParserDisplay> display_;
  std::unique_ptr<packaging::lib_parse_es::NALBuilder> framer_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
