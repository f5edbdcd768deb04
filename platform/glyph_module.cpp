// SPDX-License-Identifier: MIT

// The module that letters are drawn in: its one function, called by glyph_rasteriser_module.cpp.
#include "burn/glyph_rasteriser.h"

using korr::encoding::subtitling::burn::IGlyphRasteriser;

extern "C" __attribute__((visibility("default"))) IGlyphRasteriser* tessaryCreateGlyphRasteriser() {
  return korr::encoding::subtitling::burn::createGlyphRasteriser().release();
}
