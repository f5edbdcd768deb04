// SPDX-License-Identifier: MIT

// Any bytes as a file of shapes: what was read is written again and read as the same.
#include <cstdlib>
#include <string>

#include "recognition/shapes_file.h"

using namespace korr::recognition;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  ShapeBook book;
  const auto report = readShapes(text, book);
  const auto written = writeShapes(book, report.gap, "");
  ShapeBook again;
  const auto second = readShapes(written, again);
  if (!second.problems.empty() || again.shapeCount() > book.shapeCount()) std::abort();
  return 0;
}
