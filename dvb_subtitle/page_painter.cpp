// SPDX-License-Identifier: MIT
#include "dvb_subtitle/page_painter.h"

#include "dvb_subtitle/object_painter.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

void PagePainter::fillRegion(const DVBRegion& region, Position address, const DVBClutSet& cluts) {
  const std::uint64_t before = canvas_.pixelsWritten();
  canvas_.fill(address.horizontal, address.vertical, region.width, region.height,
               cluts.ofDepth(region.depth)[region.fillCode()]);
  budget_.spendOnPixels(canvas_.pixelsWritten() - before);
}

void PagePainter::paintObject(const DVBObject& object, Position inRegion, const DVBRegion& region,
                              Position address, const DVBClutSet& cluts) {
  const auto colours = cluts.ofDepth(region.depth);
  const auto colourOf = [colours](std::uint32_t code) { return colours[code]; };
  ObjectPainter(canvas_, region.depth, colourOf, kFilter, budget_)
      .paint(object, {inRegion.horizontal + address.horizontal + window_.horizontal,
                      inRegion.vertical + address.vertical + window_.vertical});
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
