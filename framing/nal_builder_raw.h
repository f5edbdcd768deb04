// SPDX-License-Identifier: MIT

// Samples that are whole units already.
#pragma once

#include "framing/nal.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// One unit per sample, at once; samples without a byte make none.
class NALBuilderRaw final : public NALBuilder {
 public:
  static constexpr std::int32_t kCaptionType = 16;

  /// `type`: the type of the units made.
  explicit NALBuilderRaw(std::int32_t type) : type_(type) {}

  Result push(std::shared_ptr<const IMediaItem> item) override;
  void endOfStream() override { forwardEndOfStream(); }

 private:
  std::int32_t type_;
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
