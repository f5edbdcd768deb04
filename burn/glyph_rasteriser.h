// SPDX-License-Identifier: MIT

// Letters to coverage masks: the only thing that text drawing needs of a platform.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korr::encoding::subtitling::burn::inline v2_1 {

struct FontFace {
  std::string family;
  double size = 12;  ///< points; one is 4/3 pixels
  double widthScale = 1;
  double heightScale = 1;
  bool isItalic = false;

  friend auto operator<=>(const FontFace&, const FontFace&) = default;
};

/// One letter's shape.
struct GlyphMask {
  std::int32_t left = 0;  ///< of its first column, in pixels from the pen
  std::int32_t top = 0;   ///< of its first row, in pixels from the top of the line
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> coverage;  ///< width * height, 0 to 255
};

/// Draws letters. Not thread-safe.
class IGlyphRasteriser {
 public:
  virtual ~IGlyphRasteriser() = default;

  /// The shape of one letter with its combining marks. A blank gives an empty mask. When the family
  /// is missing a fixed-pitch font of the system takes its place.
  virtual GlyphMask rasterise(std::u16string_view letter, const FontFace& face) = 0;
};

/// The platform's own. Throws util::TessaryException when it cannot start.
std::unique_ptr<IGlyphRasteriser> createGlyphRasteriser();

}  // namespace korr::encoding::subtitling::burn::inline v2_1
