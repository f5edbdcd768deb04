// SPDX-License-Identifier: MIT

// One sub-picture unit of a DVD: its control sequences and its run-length codes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korr::encoding::subtitling::disc::inline v2_1 {

/// How the four codes of its pixels look; they come in the order background, pattern, emphasis 1,
/// emphasis 2.
struct SubPictureStyle {
  std::array<std::uint8_t, 4> colours{};  ///< of the title's palette, 0 to 15
  std::array<std::uint8_t, 4> alphas{};   ///< 0 to 15, opaque

  friend bool operator==(const SubPictureStyle&, const SubPictureStyle&) = default;
};

/// Pixels of the display, the first and the last one inside.
struct SubPictureArea {
  std::uint32_t left = 0;
  std::uint32_t right = 0;
  std::uint32_t top = 0;
  std::uint32_t bottom = 0;
};

/// What one control sequence comes to.
struct SubPictureStep {
  std::uint32_t delay = 0;  ///< 1024 / 90000 s each, from the unit's time on
  bool isShown = false;
  SubPictureStyle style;
};

struct SubPicture {
  SubPictureArea area;
  std::array<std::size_t, 2> fields{};  ///< bytes from the unit's start: even rows, odd rows
  std::vector<SubPictureStep> steps;    ///< in the order of time
};

/// Bytes of a unit by its first two; nothing when it has fewer.
std::optional<std::size_t> sizeOfSubPicture(std::span<const std::uint8_t> unit);

/// Reads the control sequences of a whole unit; nothing when it has none that shows a picture or
/// ends one.
std::optional<SubPicture> parseSubPicture(std::span<const std::uint8_t> unit);

/// The codes of the picture's pixels, 0 to 3, row by row; what the unit does not hold is 0.
std::vector<std::uint8_t> pixelsOf(const SubPicture& picture, std::span<const std::uint8_t> unit);

}  // namespace korr::encoding::subtitling::disc::inline v2_1
