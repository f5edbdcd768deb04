// SPDX-License-Identifier: MIT
#include "burn/window_renderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "util/utf.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {
namespace {

using Offset = std::pair<std::int64_t, std::int64_t>;

Argb argbOf(const WindowText::Colour& colour, WindowText::Opacity opacity) {
  const Argb rgb = static_cast<Argb>(colour.red << 16 | colour.green << 8 | colour.blue);
  switch (opacity) {
    case WindowText::Opacity::Solid:
    case WindowText::Opacity::Flash:
      break;
    case WindowText::Opacity::Translucent:
      return 0x80000000 | rgb;
    case WindowText::Opacity::Transparent:
      return rgb;
  }
  return 0xFF000000 | rgb;
}

Argb darker(Argb colour) {
  return (colour & 0xFF000000) | (colour >> 1 & 0x007F7F7F);
}

const char* familyOf(WindowText::Font font) {
  switch (font) {
    case WindowText::Font::Default:
    case WindowText::Font::MonospacedSansSerif:
      break;
    case WindowText::Font::MonospacedSerif:
      return "Courier New";
    case WindowText::Font::ProportionalSerif:
      return "Times New Roman";
    case WindowText::Font::ProportionalSansSerif:
    case WindowText::Font::SmallCapitals:
      return "Arial";
    case WindowText::Font::Casual:
    case WindowText::Font::Cursive:
      return "Comic Sans MS";
  }
  return "Lucida Console";
}

// Korean, Chinese and Japanese letters are as wide as they are high; a cell is not.
bool isWide(char16_t unit) {
  return (unit >= 0x1100 && unit <= 0x115F) || (unit >= 0x2E80 && unit <= 0xA4CF) ||
         (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0xF900 && unit <= 0xFAFF) ||
         (unit >= 0xFF01 && unit <= 0xFF60);
}

// Columns by which justification moves a row (CEA-708-E, 8.10.5.8).
double shiftOf(const WindowText::Window& window, const WindowText::Row& row) {
  const auto& last = row.runs.back();
  const double begin = row.runs.front().column;
  const double end = static_cast<double>(last.column) + static_cast<double>(last.glyphs.size());
  if (window.print != WindowText::Direction::LeftToRight) return 0;
  if (window.justify == WindowText::Justify::Right) return window.columnCount - end;
  if (window.justify == WindowText::Justify::Centre) {
    return (window.columnCount - (end - begin)) / 2 - begin;
  }
  return 0;
}

// Where copies of the letters in the edge's colour stand (CEA-708-E, 8.10.5.9).
std::vector<Offset> edgeOffsets(WindowText::Edge edge, std::int64_t width) {
  switch (edge) {
    case WindowText::Edge::None:
      break;
    case WindowText::Edge::Raised:
      return {{width, width}};
    case WindowText::Edge::Depressed:
      return {{-width, -width}};
    case WindowText::Edge::Uniform:
      return {{-width, -width}, {0, -width},     {width, -width}, {-width, 0},
              {width, 0},       {-width, width}, {0, width},      {width, width}};
    case WindowText::Edge::LeftDropShadow:
      return {{-width, width}, {-2 * width, 2 * width}};
    case WindowText::Edge::RightDropShadow:
      return {{width, width}, {2 * width, 2 * width}};
  }
  return {};
}

std::int64_t rounded(double value) {
  return static_cast<std::int64_t>(std::lround(value));
}

std::int64_t edgeWidth(double cellHeight) {
  return std::max<std::int64_t>(1, rounded(cellHeight / 24));
}

}  // namespace

void WindowRenderer::paint(FrameBuffer& frame, const WindowText& text) {
  for (const auto& window : text.windows) {
    const Grid grid = gridOf(frame, text, window);
    if (grid.cellWidth < 1 || grid.cellHeight < 1) continue;
    paintBorder(frame, window, grid);
    frame.fill(grid.area, argbOf(window.fill, window.fillOpacity));
    for (const auto& row : window.rows) paintRow(frame, window, grid, row);
  }
}

WindowRenderer::Grid WindowRenderer::gridOf(const FrameBuffer& frame, const WindowText& text,
                                            const WindowText::Window& window) {
  const Rectangle& picture = frame.picture();
  const double width = static_cast<double>(picture.right - picture.left) / 100;
  const double height = static_cast<double>(picture.bottom - picture.top) / 100;
  const WindowArea area = areaOf(text, window);
  Grid grid;
  grid.left = static_cast<double>(picture.left) + area.left * width;
  grid.top = static_cast<double>(picture.top) + area.top * height;
  grid.cellWidth = area.width * width / window.columnCount;
  grid.cellHeight = area.height * height / window.rowCount;
  grid.area = {rounded(grid.left), rounded(grid.top), rounded(grid.left + area.width * width),
               rounded(grid.top + area.height * height)};
  return grid;
}

// CEA-708-E, 8.10.5.8: around the window, or behind it and to a side.
void WindowRenderer::paintBorder(FrameBuffer& frame, const WindowText::Window& window,
                                 const Grid& grid) {
  if (window.border == WindowText::Edge::None) return;
  const Rectangle& area = grid.area;
  const std::int64_t width = 2 * edgeWidth(grid.cellHeight);
  const Argb colour = argbOf(window.borderColour, WindowText::Opacity::Solid);
  const bool isLeft = window.border == WindowText::Edge::LeftDropShadow;
  if (isLeft || window.border == WindowText::Edge::RightDropShadow) {
    const std::int64_t side = isLeft ? -width : width;
    const std::int64_t edge = isLeft ? area.left - width : area.right;
    frame.fill({area.left + side, area.bottom, area.right + side, area.bottom + width}, colour);
    frame.fill({edge, area.top + width, edge + width, area.bottom}, colour);
    return;
  }
  const Argb upper = window.border == WindowText::Edge::Depressed ? darker(colour) : colour;
  const Argb lower = window.border == WindowText::Edge::Raised ? darker(colour) : colour;
  frame.fill({area.left - width, area.top - width, area.right + width, area.top}, upper);
  frame.fill({area.left - width, area.top, area.left, area.bottom}, upper);
  frame.fill({area.left - width, area.bottom, area.right + width, area.bottom + width}, lower);
  frame.fill({area.right, area.top, area.right + width, area.bottom}, lower);
}

void WindowRenderer::paintRow(FrameBuffer& frame, const WindowText::Window& window,
                              const Grid& grid, const WindowText::Row& row) {
  const double shift = shiftOf(window, row);
  const std::int64_t top = rounded(grid.top + row.number * grid.cellHeight);
  const std::int64_t bottom = rounded(grid.top + (row.number + 1) * grid.cellHeight);
  for (const auto& run : row.runs) {
    // Each letter has its own cell, so that columns line up over rows of any fraction.
    for (std::size_t i = 0; i < run.glyphs.size(); ++i) {
      const std::size_t column = run.column + i;
      if (column >= window.columnCount) return;  // hidden behind the window's edge
      const double left = grid.left + (static_cast<double>(column) + shift) * grid.cellWidth;
      const std::int64_t start = rounded(left);
      paintRun(frame, run.pen, util::utf8ToUtf16(run.glyphs[i].view()),
               {start, top, rounded(left + grid.cellWidth) - start, bottom - top});
    }
  }
}

void WindowRenderer::paintRun(FrameBuffer& frame, const WindowText::Pen& pen,
                              std::u16string_view text, const CellGrid& cells) {
  constexpr double kLetterWidth = 1.485;  // of the font's letters, in their own heights
  constexpr double kLetterHeight = 0.8;
  constexpr double kWideLetters = 0.55;
  const Rectangle box{cells.left, cells.top, cells.left + cells.cellWidth,
                      cells.top + cells.cellHeight};
  frame.fill(box, argbOf(pen.background, pen.backgroundOpacity));
  if (pen.foregroundOpacity == WindowText::Opacity::Transparent || text.empty()) return;

  const double size = letterSize(pen);
  const auto height = static_cast<double>(cells.cellHeight);
  TextStyle style;
  style.family = familyOf(pen.font);
  style.size = std::floor(kLetterHeight * height * size);
  style.widthScale = static_cast<double>(cells.cellWidth) / height * kLetterWidth;
  if (isWide(text.front())) style.widthScale *= kWideLetters;
  style.heightScale = kLetterHeight;
  style.textColour = argbOf(pen.foreground, pen.foregroundOpacity);
  style.fontStyle = pen.italic ? FontStyle::Italic : FontStyle::Regular;

  // Letters of other sizes keep the line that they stand on, but for those that are set off it.
  CellGrid place = cells;
  double down = height * (1 - size) * kLetterHeight;
  if (pen.offset == WindowText::Offset::Superscript) down = 0;
  if (pen.offset == WindowText::Offset::Subscript) down = height * (1 - size);
  place.top += rounded(down);
  paintEdges(frame, pen, text, place, style);
  drawing_.draw(frame, style, text, place);
  if (pen.underline) {
    const std::int64_t thickness = std::max<std::int64_t>(1, cells.cellHeight / 16);
    frame.fill({box.left, box.bottom - 2 * thickness, box.right, box.bottom - thickness},
               style.textColour);
  }
}

void WindowRenderer::paintEdges(FrameBuffer& frame, const WindowText::Pen& pen,
                                std::u16string_view text, const CellGrid& cells, TextStyle style) {
  style.textColour = argbOf(pen.edgeColour, pen.foregroundOpacity);
  const auto width = edgeWidth(static_cast<double>(cells.cellHeight));
  for (const auto& [right, down] : edgeOffsets(pen.edge, width)) {
    drawing_.draw(frame, style, text,
                  {cells.left + right, cells.top + down, cells.cellWidth, cells.cellHeight});
  }
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
