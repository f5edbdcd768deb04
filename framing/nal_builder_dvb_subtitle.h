// SPDX-License-Identifier: MIT

// PES payloads of DVB subtitles.
#pragma once

#include "framing/nal_builder_queued.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// One unit per DVB subtitle PES data field (EN 300 743, 7.1).
class NALBuilderDVBSubtitle final : public NALBuilderQueued {
 public:
  static constexpr std::int32_t kType = 11;

  NALBuilderDVBSubtitle() : NALBuilderQueued(kType) {}
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
