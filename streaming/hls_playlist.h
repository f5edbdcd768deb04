// SPDX-License-Identifier: MIT

// Playlists of HTTP Live Streaming (RFC 8216).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "streaming/stream_history.h"

namespace korr::txsub {

/// A media playlist (RFC 8216, 4.3.3).
struct MediaPlaylist {
  struct Entry {
    std::string uri;
    StreamTicks duration = 0;
    bool isDiscontinuous = false;
    WallTime wallTime = 0;
  };

  unsigned targetDuration = 0;  ///< seconds; no entry may be longer, rounded
  std::uint64_t mediaSequence = 0;
  std::uint64_t discontinuitySequence = 0;
  bool isEvent = false;  ///< nothing ever leaves it
  std::string map = {};  ///< URI of the initialisation segment; empty: none
  std::vector<Entry> entries = {};
  bool isEnded = false;
};

/// How the URIs of a track's segments look: "webvtt/" + number + ".vtt".
struct SegmentNames {
  std::string prefix;
  std::string extension;
  std::string map = {};  ///< the initialisation segment; empty: none

  std::string nameOf(std::uint64_t number) const {
    return prefix + std::to_string(number) + extension;
  }
};

MediaPlaylist playlistOf(const StreamHistory& history, const SegmentNames& names, bool isEnded);

std::string toText(const MediaPlaylist& playlist);

/// One subtitle rendition of a master playlist (RFC 8216, 4.3.4.1).
struct SubtitleRendition {
  std::string group;
  std::string name;      ///< for viewers; unique in its group
  std::string language;  ///< BCP 47; "und" when unknown
  bool isDefault = false;
  bool forHardOfHearing = false;
  std::string uri;
  std::string codecs;  ///< RFC 6381
};

/// "#EXT-X-MEDIA:TYPE=SUBTITLES,..." with its line feed.
std::string mediaLine(const SubtitleRendition& rendition);

/// A video's master playlist with the renditions of one group in it, each variant pointed to them;
/// of a media playlist, a master playlist that names it as `videoUri` with `bandwidth` (bits a
/// second). Relative URIs of a master playlist get `prefix` before them.
struct VideoPlaylist {
  std::string text;
  std::string uri;
  std::string prefix = {};
  std::uint64_t bandwidth = 0;
};
std::string masterPlaylist(const VideoPlaylist& video,
                           const std::vector<SubtitleRendition>& renditions);

/// "2026-11-21T23:41:06.123Z"
std::string dateTimeText(WallTime time);

}  // namespace korr::txsub
