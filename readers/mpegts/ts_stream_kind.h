// SPDX-License-Identifier: MIT

// What a PID holds, as tables tell it or as its content does.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "readers/media_reader.h"
#include "readers/mpegts/ts_pes.h"
#include "readers/mpegts/ts_tables.h"
#include "readers/video/video_syntax.h"

namespace korr::txsub {

/// What a stream holds for us.
struct TsStreamKind {
  SubtitleInputType type = SubtitleInputType::Teletext;
  PictureSystem pictures = PictureSystem::Dvb;  ///< of DvbSubtitle
  bool isVideo = false;
  VideoCodec codec = VideoCodec::Mpeg2;  ///< of video

  friend bool operator==(const TsStreamKind&, const TsStreamKind&) = default;
};

/// By stream_type and descriptors; nothing when they do not tell of anything for us.
std::optional<TsStreamKind> kindOf(const TsStreamEntry& entry);

/// By the first PES packet of a stream that no table describes.
std::optional<TsStreamKind> kindOf(const PesHeader& header, std::span<const std::uint8_t> payload);

/// The language that an ISO_639_language_descriptor names (ISO/IEC 13818-1, 2.6.18); empty without.
std::string languageOf(const TsStreamEntry& entry);

/// What subtitles the table says these are, where `kindOf` has none; empty where it says nothing.
std::string otherSubtitlesIn(const TsStreamEntry& entry);

/// Whether only the content tells what this is, when no descriptor does.
bool isPrivate(const TsStreamEntry& entry);

}  // namespace korr::txsub
