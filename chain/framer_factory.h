// SPDX-License-Identifier: MIT

// Which framer cuts the samples of which input.
#pragma once

#include <memory>

#include "framing/nal.h"
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Makes the framer for an input type. Throws "Unexpected subtitle input type".
std::unique_ptr<packaging::lib_parse_es::NALBuilder> createFramer(SubtitleInputType inputType);

}  // namespace korr::encoding::subtitling::inline v2_1
