// SPDX-License-Identifier: MIT

// Where decoding of video can begin.
#pragma once

#include <cstdint>
#include <span>

#include "readers/video/video_syntax.h"

namespace korr::txsub {

/// Whether the access unit that begins with these bytes can be decoded without those before it: it
/// is an IDR or IRAP picture, or comes with the headers that decoding starts from (ETSI TS 101 154,
/// 4.1.5.1 and 5.5.5), before its first slice.
bool beginsRandomAccess(VideoCodec codec, std::span<const std::uint8_t> start);

}  // namespace korr::txsub
