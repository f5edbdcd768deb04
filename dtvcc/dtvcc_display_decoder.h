// SPDX-License-Identifier: MIT

// Digital captions as a receiver shows them.
#pragma once

#include <cstdint>
#include <optional>

#include "dtvcc/packet_assembler.h"
#include "dtvcc/service_decoder.h"
#include "dtvcc/service_input.h"
#include "log/logger.h"
#include "model/display.h"

namespace korr::encoding::subtitling::dtvcc {

/// What to decode, and how.
struct DtvccOptions {
  std::uint32_t service = 1;  ///< 1 to 63
  Charset charset = Charset::Automatic;
  bool isWide = true;  ///< coordinates are those of 16:9 pictures, else of 4:3
  /// A row that is being written shows whole from its first letter on, as in files; else as it
  /// grows.
  bool wholeRows = true;
};

/// Decodes one service of CEA-708. Its subtitles are of the kind WindowText.
class DtvccDisplayDecoder final : public IDisplayDecoder, private IScreenWatcher {
 public:
  /// Neither is owned; `logger` may be null. Throws std::invalid_argument for a service that
  /// cannot be.
  DtvccDisplayDecoder(const DtvccOptions& options, IDisplayListener& listener,
                      log::ILogger* logger);

  void decode(std::span<const std::uint8_t> unit, MediaTime time) override;
  void finish(MediaTime end) override;

 private:
  void beforeGrowth(std::uint32_t line) override;
  void beforeChange() override;
  void takePacket(std::span<const std::uint8_t> data);
  CodeResult execute(std::span<const std::uint8_t> code);
  void report(const CodeResult& result, std::uint8_t code);
  void advance(MediaTime time);
  void endUnit();
  void show();

  const DtvccOptions options_;
  IDisplayListener& listener_;
  log::ILogger* logger_;
  PacketAssembler packets_;
  ServiceDecoder decoder_;
  ServiceInput input_;
  MediaTime now_ = 0;
  // A change that the listener does not know yet: since when, and, where only one row has grown
  // since, which.
  std::optional<MediaTime> changedAt_;
  std::optional<std::uint32_t> growingLine_;
  MediaTime lastGrowth_ = 0;
  bool isUnknownReported_ = false;
  bool isLostReported_ = false;
  bool isCutReported_ = false;
};

}  // namespace korr::encoding::subtitling::dtvcc
