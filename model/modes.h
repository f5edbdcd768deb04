// SPDX-License-Identifier: MIT

// What goes into the chain and what comes out, by number.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::inline v2_1 {

enum class ConversionMode : std::uint32_t {
  Disable = 0,
  PassThrough = 1,
  Ttml = 2,
  BurnIntoVideo = 3,
  WebVtt = 4,
  Amf = 5,
  YoutubeSrt = 6,
};

/// The display name, "????" for a value without one. Used in log texts and counter names.
const char* displayName(ConversionMode mode);

/// The subtitle system of the input, as the media type of the connection selects it.
enum class SubtitleInputType : std::uint32_t {
  Teletext = 6,
  DvbSubtitle = 11,
  ClosedCaption = 16,
};

}  // namespace korr::encoding::subtitling::inline v2_1
