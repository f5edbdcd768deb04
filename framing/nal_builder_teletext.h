// SPDX-License-Identifier: MIT

// PES payloads of teletext.
#pragma once

#include "framing/nal_builder_queued.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// One unit per teletext PES data field (EN 300 472, 4.3).
class NALBuilderTeletext final : public NALBuilderQueued {
 public:
  static constexpr std::int32_t kType = 6;

  NALBuilderTeletext() : NALBuilderQueued(kType) {}
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
