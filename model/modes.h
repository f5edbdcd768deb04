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

/// Whose pictures a stream of the type DvbSubtitle holds: those of DVB, or of discs, which the
/// chain does not convert.
enum class PictureSystem : std::uint32_t {
  Dvb = 0,
  Pgs = 1,  ///< presentation graphics of Blu-ray
  Dvd = 2,  ///< sub-pictures
};

}  // namespace korr::encoding::subtitling::inline v2_1
