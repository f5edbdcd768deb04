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

// Where the pen has no background of its own the window's fill is behind the text.
TextSpan styleOf(const WindowText::Window& window, const WindowText::Pen& pen) {
  const bool showsFill = pen.backgroundOpacity == WindowText::Opacity::Transparent;
  const auto& background = showsFill ? window.fill : pen.background;
  TextSpan span;
  span.foreground = textColourOf(pen.foreground.red, pen.foreground.green, pen.foreground.blue);
  span.background = textColourOf(background.red, background.green, background.blue);
  span.backgroundAlpha = alphaOf(showsFill ? window.fillOpacity : pen.backgroundOpacity);
  span.italic = pen.italic;
  span.underline = pen.underline;
  if (pen.edge != WindowText::Edge::None) {
    span.outline = textColourOf(pen.edgeColour.red, pen.edgeColour.green, pen.edgeColour.blue);
  }
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
    screen.fill =
        TextFill{textColourOf(window.fill.red, window.fill.green, window.fill.blue), alpha};
  }
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
