// SPDX-License-Identifier: MIT

// For programs that seldom draw letters: pango and its forty libraries are loaded when they do.
#include "burn/glyph_rasteriser.h"
#include "platform/module_loader.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

std::unique_ptr<IGlyphRasteriser> createGlyphRasteriser() {
  using Create = IGlyphRasteriser*();
  auto* const create = reinterpret_cast<Create*>(
      korr::platform::moduleFunction("txsub-pango.so", "tessaryCreateGlyphRasteriser"));
  return std::unique_ptr<IGlyphRasteriser>(create());
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
