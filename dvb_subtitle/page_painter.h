// Regions and their objects to pixels.
#pragma once

#include <cstdint>
#include <span>

#include "dvb_subtitle/canvas.h"
#include "dvb_subtitle/clut.h"
#include "dvb_subtitle/code_string.h"
#include "dvb_subtitle/pixel_data.h"
#include "dvb_subtitle/region.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Bounds the work that one payload can ask for, however its pages, regions and objects are nested:
/// about a second of it, or 128 pictures of 1920 by 1080 filled from edge to edge. Throws
/// SegmentError when it is used up.
class PaintingBudget {
 public:
  void spendOnPixels(std::uint64_t count) { spend(count); }
  void spendOnCodeStrings(std::uint64_t bytes) { spend(bytes * 8); }
  void spendOnObjects(std::uint64_t count) { spend(count * 16); }

 private:
  void spend(std::uint64_t work);

  std::uint64_t left_ = std::uint64_t{1} << 28;
};

/// Paints region after region into one picture; later ones over earlier ones.
class PagePainter {
 public:
  /// `window`: the upper left corner of the display window.
  PagePainter(Canvas& canvas, Position window, PaintingBudget& budget)
      : canvas_(canvas), window_(window), budget_(budget) {}

  /// Fills the region with its pixel code. The display window does not shift it, deliberately.
  void fillRegion(const DVBRegion& region, Position address, const DVBClutSet& cluts);

  /// Paints an object of the region at `address`. Throws SegmentError for an unknown data_type;
  /// what was painted before it stays.
  void paintObject(const DVBObject& object, Position inRegion, const DVBRegion& region,
                   Position address, const DVBClutSet& cluts);

 private:
  struct Brush;

  void paintField(std::span<const std::uint8_t> field, std::uint32_t firstLine, Brush& brush);
  template <PixelDepth Depth>
  void paintString(util::BitReader& reader, Brush& brush);
  template <PixelDepth Depth, typename ColourOf>
  void paintRuns(util::BitReader& reader, Brush& brush, ColourOf colourOf);

  Canvas& canvas_;
  Position window_;
  PaintingBudget& budget_;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
