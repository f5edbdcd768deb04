// SPDX-License-Identifier: MIT
#include "disc_subtitle/pgs_segments.h"

#include "util/bit_reader.h"

namespace korr::encoding::subtitling::disc::inline v2_1 {

using util::BitReader;
using Bytes = std::span<const std::uint8_t>;

std::optional<PgsSegment> takeSegment(Bytes& unit) {
  constexpr std::size_t kHeaderBytes = 3;
  BitReader reader(unit);
  const auto type = static_cast<PgsSegmentType>(reader.read(8));
  const std::size_t size = reader.read(16);
  if (reader.failed() || unit.size() - kHeaderBytes < size) {
    unit = {};
    return std::nullopt;
  }
  const PgsSegment segment{.type = type, .body = unit.subspan(kHeaderBytes, size)};
  unit = unit.subspan(kHeaderBytes + size);
  return segment;
}

std::optional<PgsComposition> parseComposition(Bytes body) {
  BitReader reader(body);
  PgsComposition composition;
  composition.width = reader.read(16);
  composition.height = reader.read(16);
  reader.skip(8);   // frame_rate
  reader.skip(16);  // composition_number
  composition.startsEpoch = reader.read(2) == 2;
  reader.skip(6);
  reader.skip(8);  // palette_update_flag: what it leaves out is kept anyway
  composition.palette = static_cast<std::uint8_t>(reader.read(8));
  const std::uint32_t count = reader.read(8);
  for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
    PgsPlace place;
    place.object = static_cast<std::uint16_t>(reader.read(16));
    reader.skip(8);  // window_id
    const bool isCropped = reader.readFlag();
    reader.skip(7);  // forced_on_flag and reserved
    place.x = reader.read(16);
    place.y = reader.read(16);
    if (isCropped) {
      auto& crop = place.crop.emplace();
      crop.x = reader.read(16);
      crop.y = reader.read(16);
      crop.width = reader.read(16);
      crop.height = reader.read(16);
    }
    composition.places.push_back(place);
  }
  if (reader.failed()) return std::nullopt;
  return composition;
}

std::optional<PgsPalette> parsePalette(Bytes body) {
  constexpr std::size_t kEntryBits = 40;
  BitReader reader(body);
  PgsPalette palette;
  palette.id = static_cast<std::uint8_t>(reader.read(8));
  reader.skip(8);  // palette_version
  if (reader.failed()) return std::nullopt;
  while (reader.bitsLeft() >= kEntryBits) {
    auto& colour = palette.colours.emplace_back();
    for (auto* field : {&colour.entry, &colour.y, &colour.cr, &colour.cb, &colour.alpha}) {
      *field = static_cast<std::uint8_t>(reader.read(8));
    }
  }
  return palette;
}

std::optional<PgsObjectPiece> parseObject(Bytes body) {
  constexpr std::uint32_t kSizeFieldBytes = 4;  // object_data_length counts width and height
  BitReader reader(body);
  PgsObjectPiece piece;
  piece.id = static_cast<std::uint16_t>(reader.read(16));
  reader.skip(8);  // object_version
  piece.isFirst = reader.readFlag();
  piece.isLast = reader.readFlag();
  reader.skip(6);
  if (piece.isFirst) {
    piece.size = reader.read(24);
    piece.width = reader.read(16);
    piece.height = reader.read(16);
    piece.size = piece.size > kSizeFieldBytes ? piece.size - kSizeFieldBytes : 0;
  }
  if (reader.failed()) return std::nullopt;
  piece.data = reader.readBytes(reader.bitsLeft() / 8);
  return piece;
}

std::optional<PgsRun> takeRun(Bytes& data) {
  BitReader reader(data);
  reader.allowZeros();
  if (data.empty()) return std::nullopt;
  PgsRun run{.count = 1, .entry = static_cast<std::uint8_t>(reader.read(8))};
  if (run.entry == 0) {
    const bool hasColour = reader.readFlag();
    const bool isLong = reader.readFlag();
    run.count = reader.read(isLong ? 14 : 6);
    if (hasColour) run.entry = static_cast<std::uint8_t>(reader.read(8));
  }
  data = data.subspan(reader.position() / 8);
  return run;
}

}  // namespace korr::encoding::subtitling::disc::inline v2_1
