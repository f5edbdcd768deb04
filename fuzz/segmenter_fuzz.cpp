// SPDX-License-Identifier: MIT

// Any bytes as a picture of up to eight colours: it is read without an engine, and whatever is
// found lies on the picture.
#include <cstdlib>

#include "recognition/picture_reader.h"

using namespace korr::recognition;
using korr::encoding::subtitling::PixelBuffer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  constexpr std::uint8_t kPalette[8][4] = {
      {0, 0, 0, 0},       {0, 0, 0, 255}, {255, 255, 255, 255}, {128, 128, 128, 255},
      {255, 255, 0, 255}, {0, 0, 0, 128}, {255, 255, 255, 100}, {0, 255, 255, 255}};
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = 1 + data[0] % 96u;
  bitmap.height = 1 + data[1] % 64u;
  auto pixels = std::make_shared<PixelBuffer>(bitmap.width, bitmap.height);
  pixels->addPaintedRows({0, bitmap.height});
  // Runs: three bits of colour, five of length.
  std::size_t place = 0;
  for (std::size_t i = 2; i < size; ++i) {
    for (unsigned n = 0; n <= data[i] >> 3 && place < pixels->size(); ++n, place += 4) {
      for (unsigned c = 0; c < 4; ++c) pixels->data()[place + c] = kPalette[data[i] & 7][c];
    }
  }
  bitmap.pixels = std::move(pixels);
  ShapeBook book;
  PictureReader reader({.engine = nullptr, .words = nullptr, .book = &book});
  reader.add(bitmap);
  for (const auto& line : reader.text(0).lines) {
    if (line.box.left < 0 || line.box.top < 0 || line.box.right > reader.text(0).displayWidth ||
        line.box.bottom > reader.text(0).displayHeight) {
      std::abort();
    }
  }
  return 0;
}
