// SPDX-License-Identifier: MIT
#include "cues/window_layout.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "cues/line_builder.h"
#include "cues/reading_order.h"

namespace korr::txsub {
namespace {

namespace model = encoding::subtitling;
using model::WindowText;

constexpr std::uint8_t kTranslucentAlpha = 0x80;

struct Cell {
  std::string_view glyph;
  const WindowText::Pen* pen;
};

// The cells of one line by their places in the direction of print.
using Line = std::map<std::int32_t, Cell>;

std::uint8_t alphaOf(WindowText::Opacity opacity) {
  switch (opacity) {
    case WindowText::Opacity::Solid:
    case WindowText::Opacity::Flash:
      break;
    case WindowText::Opacity::Translucent:
      return kTranslucentAlpha;
    case WindowText::Opacity::Transparent:
      return 0;
  }
  return 0xFF;
}

TextColour colourOf(const WindowText::Colour& colour) {
  return textColourOf(colour.red, colour.green, colour.blue);
}

std::optional<TextOutline> outlineOf(WindowText::Edge edge, const WindowText::Colour& colour) {
  switch (edge) {
    case WindowText::Edge::None:
      break;
    case WindowText::Edge::Raised:
      return TextOutline{colourOf(colour), TextEdge::Raised};
    case WindowText::Edge::Depressed:
      return TextOutline{colourOf(colour), TextEdge::Depressed};
    case WindowText::Edge::Uniform:
      return TextOutline{colourOf(colour), TextEdge::Uniform};
    case WindowText::Edge::LeftDropShadow:
      return TextOutline{colourOf(colour), TextEdge::LeftDropShadow};
    case WindowText::Edge::RightDropShadow:
      return TextOutline{colourOf(colour), TextEdge::RightDropShadow};
  }
  return {};
}

// Where the pen has no background of its own the window's fill is behind the text.
TextSpan styleOf(const WindowText::Window& window, const WindowText::Pen& pen) {
  const bool showsFill = pen.backgroundOpacity == WindowText::Opacity::Transparent;
  const auto& background = showsFill ? window.fill : pen.background;
  TextSpan span;
  span.foreground = colourOf(pen.foreground);
  span.background = colourOf(background);
  span.backgroundAlpha = alphaOf(showsFill ? window.fillOpacity : pen.backgroundOpacity);
  span.showsFill = showsFill;
  span.italic = pen.italic;
  span.underline = pen.underline;
  span.outline = outlineOf(pen.edge, pen.edgeColour);
  span.foregroundAlpha = alphaOf(pen.foregroundOpacity);
  span.size = letterSize(pen);
  if (pen.offset == WindowText::Offset::Subscript) span.offset = TextOffset::Subscript;
  if (pen.offset == WindowText::Offset::Superscript) span.offset = TextOffset::Superscript;
  return span;
}

bool isVertical(const WindowText::Window& window) {
  return window.print == WindowText::Direction::TopToBottom ||
         window.print == WindowText::Direction::BottomToTop;
}

// Whether the letters themselves can be seen.
bool isSeen(const WindowText::Pen& pen) {
  return pen.foregroundOpacity != WindowText::Opacity::Transparent;
}

std::map<std::int32_t, Line> linesOf(const WindowText::Window& window) {
  const bool isReversed = window.print == WindowText::Direction::RightToLeft ||
                          window.print == WindowText::Direction::BottomToTop;
  const bool isDown = isVertical(window);
  const auto length = static_cast<std::int32_t>(isDown ? window.rowCount : window.columnCount);
  std::map<std::int32_t, Line> lines;
  for (const auto& row : window.rows) {
    for (const auto& run : row.runs) {
      auto column = static_cast<std::int32_t>(run.column);
      for (const auto& glyph : run.glyphs) {
        const auto number = static_cast<std::int32_t>(row.number);
        const std::int32_t line = isDown ? column : number;
        const std::int32_t cell = isDown ? number : column;
        ++column;
        if (!isSeen(run.pen)) continue;
        lines[line][isReversed ? length - 1 - cell : cell] = {glyph.view(), &run.pen};
      }
    }
  }
  return lines;
}

// `row` is the line's own number, or where it comes among columns that become lines.
TextLine lineOf(const WindowText::Window& window, std::int32_t row, const Line& cells) {
  LineBuilder builder(row, 0, Blanks::AsTheyAre);
  for (const auto& [place, cell] : cells) {
    builder.skipTo(static_cast<std::uint32_t>(std::max(place, 0)));
    builder.add(cell.glyph, styleOf(window, *cell.pen));
  }
  TextLine line = builder.take();
  if (window.print == WindowText::Direction::LeftToRight) {
    line.direction = toReadingOrder(line.spans);
  } else if (window.print == WindowText::Direction::RightToLeft) {
    line.direction = TextDirection::RightToLeft;
    const std::uint32_t end = line.column + line.columnCount;
    line.column = window.columnCount > end ? window.columnCount - end : 0;
  }
  return line;
}

std::optional<TextAlign> alignOf(WindowText::Justify justify) {
  switch (justify) {
    case WindowText::Justify::Left:
    case WindowText::Justify::Full:
      break;
    case WindowText::Justify::Right:
      return TextAlign::End;
    case WindowText::Justify::Centre:
      return TextAlign::Center;
  }
  return {};
}

TextScreen screenOf(const WindowText& text, const WindowText::Window& window) {
  const auto area = areaOf(text, window);
  TextScreen screen;
  screen.firstRowTop = area.top;
  screen.rowHeight = area.height / window.rowCount;
  screen.firstColumnLeft = area.left;
  screen.columnWidth = area.width / window.columnCount;
  screen.columnCount = window.columnCount;
  screen.align = isVertical(window) ? TextAlign::Start : alignOf(window.justify);
  const auto alpha = alphaOf(window.fillOpacity);
  if (alpha != 0) {
    screen.fill = TextFill{colourOf(window.fill), alpha};
  }
  screen.border = outlineOf(window.border, window.borderColour);
  screen.rowCount = window.rowCount;
  const auto lines = linesOf(window);
  std::int32_t count = 0;
  for (const auto& [number, cells] : lines) {
    TextLine line = lineOf(window, isVertical(window) ? count : number, cells);
    if (line.spans.empty()) continue;
    ++count;
    screen.lines.push_back(std::move(line));
  }
  return screen;
}

}  // namespace

std::vector<TextScreen> layOutWindows(const WindowText& text) {
  std::vector<TextScreen> screens;
  for (const auto& window : text.windows) {
    auto screen = screenOf(text, window);
    if (!screen.lines.empty()) screens.push_back(std::move(screen));
  }
  std::ranges::stable_sort(screens, {}, [](const TextScreen& screen) {
    return std::pair(screen.topOf(screen.lines.front().row), screen.firstColumnLeft);
  });
  return screens;
}

}  // namespace korr::txsub
