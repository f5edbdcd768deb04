// SPDX-License-Identifier: MIT

// From input samples to what is shown over time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "chain/chain.h"
#include "log/logger.h"
#include "model/display.h"
#include "model/dvb_pages.h"
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// By whose rules subtitles are shown.
enum class DisplayRules {
  Receiver,  ///< the standards', as a good receiver follows them
  Filter,    ///< those of the documents that the filter delivers
};

/// The chain of files for people: one service of one input, told to a listener.
class DisplayChain final : public IChain {
 public:
  struct Settings {
    DisplayRules rules = DisplayRules::Receiver;
    SubtitleInputType inputType = SubtitleInputType::Teletext;
    /// Teletext: magazine * 256 + page number. Captions: service 1 to 4.
    std::uint32_t page = 0;
    std::uint32_t pageOption = 0;  ///< teletext: the default character-set group
    /// Teletext: a viewer or a descriptor named the page, which need not say that it has subtitles.
    bool isAskedFor = false;
    std::optional<DvbPages> dvbPages = {};  ///< DVB subtitles: else the first page that comes
    /// By the filter's rules: how often what stays is taken anew; 0: never.
    std::uint32_t durationMs = 2000;
  };

  /// `listener` and `logger` (which may be null) are not owned. Throws "Unexpected subtitle input
  /// type".
  DisplayChain(IDisplayListener& listener, const Settings& settings, log::ILogger* logger);
  ~DisplayChain() override;

  packaging::lib_parse_es::NALBuilder& framer() override { return *framer_; }
  void settle(MediaTime until) override;
  void finish(MediaTime end) override;
  ChainCounters counters() const override;

 private:
  class Display;
  class DecoderDisplay;
  class ParserDisplay;

  std::unique_ptr<Display> display_;
  std::unique_ptr<packaging::lib_parse_es::NALBuilder> framer_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
