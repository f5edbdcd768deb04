// SPDX-License-Identifier: MIT

// The segments of presentation graphics, as US 2009/0185789 A1 describes them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korr::encoding::subtitling::disc::inline v2_1 {

enum class PgsSegmentType : std::uint8_t {
  Palette = 0x14,
  Object = 0x15,
  Composition = 0x16,
  Windows = 0x17,
  End = 0x80,
};

struct PgsSegment {
  PgsSegmentType type = PgsSegmentType::End;
  std::span<const std::uint8_t> body;
};

/// Takes the next segment off `unit`, with its header: segment_type, segment_length. Nothing, and
/// `unit` is empty, where it is cut short.
std::optional<PgsSegment> takeSegment(std::span<const std::uint8_t>& unit);

/// Pixels.
struct PgsArea {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// Where an object is shown.
struct PgsPlace {
  std::uint16_t object = 0;
  std::uint32_t x = 0;  ///< of the display
  std::uint32_t y = 0;
  std::optional<PgsArea> crop;  ///< of the object's pixels
};

struct PgsComposition {
  std::uint32_t width = 0;  ///< of the video, pixels
  std::uint32_t height = 0;
  bool startsEpoch = false;  ///< nothing from before is used any more
  std::uint8_t palette = 0;
  std::vector<PgsPlace> places;
};

struct PgsColour {
  std::uint8_t entry = 0;
  std::uint8_t y = 0;
  std::uint8_t cr = 0;
  std::uint8_t cb = 0;
  std::uint8_t alpha = 0;  ///< 255 opaque
};

struct PgsPalette {
  std::uint8_t id = 0;
  std::vector<PgsColour> colours;  ///< those that it sets
};

/// A piece of an object; large ones come in several.
struct PgsObjectPiece {
  std::uint16_t id = 0;
  bool isFirst = false;
  bool isLast = false;
  std::uint32_t size = 0;  ///< bytes of all pieces; of the first only
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::span<const std::uint8_t> data;  ///< of its run-length codes
};

/// Nothing for a body that is too short.
std::optional<PgsComposition> parseComposition(std::span<const std::uint8_t> body);
std::optional<PgsPalette> parsePalette(std::span<const std::uint8_t> body);
std::optional<PgsObjectPiece> parseObject(std::span<const std::uint8_t> body);

/// Pixels of one colour in a row.
struct PgsRun {
  std::uint32_t count = 0;  ///< 0: the row ends
  std::uint8_t entry = 0;   ///< of the palette
};

/// Takes the next run off `data`; nothing at its end.
std::optional<PgsRun> takeRun(std::span<const std::uint8_t>& data);

}  // namespace korr::encoding::subtitling::disc::inline v2_1
