// SPDX-License-Identifier: MIT

// Captions in AV1 video.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "log/logger.h"
#include "readers/video/presentation_order.h"

namespace korr::txsub {

/// An open bitstream unit (AOMedia AV1 bitstream, 5.3).
struct Av1Unit {
  static constexpr unsigned kMetadata = 5;  ///< OBU_METADATA

  unsigned type = 0;                      ///< obu_type
  std::size_t announced = 0;              ///< obu_size, or what is left where there is none
  std::span<const std::uint8_t> payload;  ///< shorter when the bytes end before
};

/// Takes the next unit off `rest`, the remainder of a temporal unit in the low-overhead format
/// (5.2). Nothing at the end, or where no unit can be.
[[nodiscard]] std::optional<Av1Unit> takeAv1Unit(std::span<const std::uint8_t>& rest);

/// Finds the cc_data triplets in AV1 video: ATSC A/53 user data "GA94" in metadata units of type
/// METADATA_TYPE_ITUT_T35 (5.8.2). A temporal unit shows one frame, so they come in the order in
/// which they are shown. Not thread-safe.
class Av1CaptionExtractor {
 public:
  /// `stream` is what reports of damage name, as "track 1"; `logger` may be null.
  Av1CaptionExtractor(CaptionListener listener, log::ILogger* logger, std::string stream)
      : listener_(std::move(listener)), logger_(logger), stream_(std::move(stream)) {}

  /// One temporal unit. Without a time its captions are left out, and that is reported.
  void take(std::optional<MediaTime> time, std::span<const std::uint8_t> temporalUnit);

 private:
  void takeMetadata(std::span<const std::uint8_t> payload);
  void report(const std::string& what);

  CaptionListener listener_;
  log::ILogger* logger_;
  std::string stream_;
  unsigned reports_ = 0;
  MediaTime time_ = 0;                  // of the last unit that had one
  std::vector<std::uint8_t> triplets_;  // of the temporal unit at hand
};

}  // namespace korr::txsub
