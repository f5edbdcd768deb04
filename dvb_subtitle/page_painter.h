// SPDX-License-Identifier: MIT

// Regions and their objects to the picture of a page, as the filter paints them.
#pragma once

#include <cstdint>

#include "dvb_subtitle/canvas.h"
#include "dvb_subtitle/clut.h"
#include "dvb_subtitle/painting_budget.h"
#include "dvb_subtitle/region.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

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
  Canvas& canvas_;
  Position window_;
  PaintingBudget& budget_;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
