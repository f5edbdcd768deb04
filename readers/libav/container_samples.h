// SPDX-License-Identifier: MIT

// How containers other than MPEG-TS wrap what the chain takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "readers/video/video_syntax.h"

namespace korr::txsub {

/// Bytes of the length in front of each NAL unit, 1 to 4, as the decoder configuration record tells
/// (avcC, hvcC: ISO/IEC 14496-15, 5.3.3.1 and 8.3.3.1). Nothing for streams with start codes.
std::optional<std::size_t> nalLengthBytes(VideoCodec codec,
                                          std::span<const std::uint8_t> configuration);

/// Takes the next NAL unit off `rest`; the last may be shorter than its length says. Nothing at the
/// end.
std::optional<std::span<const std::uint8_t>> takeLengthPrefixedUnit(
    std::span<const std::uint8_t>& rest, std::size_t lengthBytes);

/// A PES data field (EN 300 743, 7.1) out of a sample that may hold the bare segments, without what
/// follows its end.
std::vector<std::uint8_t> dvbSubtitleDataField(std::span<const std::uint8_t> sample);

/// A PES data field (EN 300 472, 4.3) out of a sample that may hold the bare data units.
std::vector<std::uint8_t> teletextDataField(std::span<const std::uint8_t> sample);

/// A subtitling_descriptor (EN 300 468, 6.2.41) out of a track's private data: composition and
/// ancillary page, and the subtitling type where it follows. Empty when there is none.
std::vector<std::uint8_t> subtitlingDescriptor(std::string_view language,
                                               std::span<const std::uint8_t> pages);

/// A teletext_descriptor (EN 300 468, 6.2.43) out of a track's private data: two bytes a page as
/// the descriptor has them. `languages` are separated by commas. Empty when there is none.
std::vector<std::uint8_t> teletextDescriptor(std::string_view languages,
                                             std::span<const std::uint8_t> pages);

}  // namespace korr::txsub
