// SPDX-License-Identifier: MIT

// A track of subtitles in fragmented MP4 (ISO/IEC 14496-12, -30).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/byte_buffer.h"
#include "streaming/segment.h"

namespace korr::txsub {

using encoding::subtitling::ByteBuffer;

/// What the samples of a track are.
enum class Mp4Codec {
  StppText,   ///< TTML in the text profile of IMSC 1: "stpp.ttml.im1t"
  StppImage,  ///< TTML in the image profile, its pictures as subsamples: "stpp.ttml.im1i"
  Wvtt,       ///< WebVTT: "wvtt"
};

/// As manifests name it (RFC 6381).
const char* codecsParameter(Mp4Codec codec);

struct Mp4Track {
  Mp4Codec codec = Mp4Codec::StppText;
  std::string language = {};  ///< ISO 639-2; empty when unknown
};

struct Mp4Sample {
  std::uint32_t duration = 0;  ///< ticks of 90 kHz
  ByteBuffer data;
  std::vector<std::uint32_t> subsamples = {};  ///< sizes that add up to the data; empty: none
};

/// The segment that players need once, before any other: ftyp and moov.
ByteBuffer mp4Initialisation(const Mp4Track& track);

/// One movie fragment: styp, moof, mdat. `sequence` counts fragments; `decodeTime` is where the
/// first sample lies on the track, which has 90 kHz.
ByteBuffer mp4Fragment(const Mp4Track& track, std::uint32_t sequence, StreamTicks decodeTime,
                       const std::vector<Mp4Sample>& samples);

}  // namespace korr::txsub
