// SPDX-License-Identifier: MIT

// The video's playlist, for a master playlist that names it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "streaming/hls_playlist.h"

namespace korr::txsub {

/// The playlist at `path` as a master playlist in `directory` names it, both in UTF-8; nothing when
/// it cannot be read now. `bandwidth`: of media playlists, bits a second; nothing when unknown.
std::optional<VideoPlaylist> readVideoPlaylist(const std::string& path,
                                               const std::string& directory,
                                               std::optional<std::uint64_t> bandwidth);

}  // namespace korr::txsub
