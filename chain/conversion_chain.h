// SPDX-License-Identifier: MIT

// One conversion from input samples to delivered documents.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "chain/chain.h"
#include "chain/timed_text_builder.h"
#include "framing/nal.h"
#include "log/logger.h"
#include "model/modes.h"
#include "model/output_sink.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// The framer and the builder of one input: push samples into `framer()`, documents come out of the
/// sink. Not thread-safe.
class ConversionChain final : public IChain {
 public:
  struct Settings {
    SubtitleInputType inputType = SubtitleInputType::Teletext;
    /// Teletext: magazine * 256 + page number. Captions: service 1 to 4.
    std::uint32_t page = 0;
    std::uint32_t durationMs = 2000;  ///< segment duration; 0: every interval is one segment
    ConversionMode mode = ConversionMode::Ttml;
    std::uint32_t pageOption = 0;  ///< teletext: the default character-set group
    bool ttmlOption = false;       ///< TTML: write EBU-TT
  };

  using WriterFactory =
      std::function<std::unique_ptr<ISubtitleConverter>(ISubtitleContainer& container)>;

  /// `sink` and `logger` (which may be null) are not owned. Throws "Unexpected subtitle input type"
  /// or "Unexpected subtitle conversion mode".
  ConversionChain(IOutputSink& sink, const Settings& settings, log::ILogger* logger);

  /// The same chain with a writer of the caller's instead of the mode's.
  ConversionChain(IOutputSink& sink, const Settings& settings, log::ILogger* logger,
                  const WriterFactory& makeWriter);

  ConversionChain(const ConversionChain&) = delete;
  ConversionChain& operator=(const ConversionChain&) = delete;

  packaging::lib_parse_es::NALBuilder& framer() override { return *framer_; }

  /// Does nothing: the document that is still pending is not delivered.
  void finish(MediaTime) override {}

  ChainCounters counters() const override;

 private:
  std::uint64_t droppedPages_ = 0;  // counted by the parser
  // The builder (parser, then writer) is made before the framer, which is why it comes first.
  std::unique_ptr<TimedTextBuilder> builder_;
  std::unique_ptr<packaging::lib_parse_es::NALBuilder> framer_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
