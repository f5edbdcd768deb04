// SPDX-License-Identifier: MIT

// What a decoder of presentation graphics keeps during an epoch.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "disc_subtitle/pgs_segments.h"

namespace korr::encoding::subtitling::disc::inline v2_1 {

struct PgsObject {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t size = 0;          ///< bytes that are to come, all pieces
  std::vector<std::uint8_t> data;  ///< run-length codes
  bool isComplete = false;
};

/// R, G, B and A of each entry; entries that nothing sets are transparent.
using PgsColours = std::array<std::array<std::uint8_t, 4>, 256>;

/// The objects and palettes of an epoch. Limits are those of memory, far above what discs hold.
class PgsMemory {
 public:
  static constexpr std::size_t kMostObjects = 256;
  static constexpr std::size_t kMostBytes = 16 * 1024 * 1024;  ///< of all objects

  void clear();

  /// Takes a piece of an object; what is wrong with it, empty when nothing is.
  std::string take(const PgsObjectPiece& piece);
  void take(const PgsPalette& palette);

  /// Null when it has not come, or not as a whole.
  const PgsObject* object(std::uint16_t id) const;

  /// The colours of a palette for video of this height: BT.601 up to 576 lines, BT.709 above.
  PgsColours colours(std::uint8_t id, std::uint32_t height) const;

 private:
  std::map<std::uint16_t, PgsObject> objects_;
  std::map<std::uint8_t, std::map<std::uint8_t, PgsColour>> palettes_;
  std::size_t bytes_ = 0;  // of all objects
};

}  // namespace korr::encoding::subtitling::disc::inline v2_1
