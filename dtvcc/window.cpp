// SPDX-License-Identifier: MIT
#include "dtvcc/window.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace korr::encoding::subtitling::dtvcc {
namespace {

using Style = std::array<std::uint8_t, 4>;

// Predefined window styles 1 to 7 (CEA-708-E, table 26) as the parameters of SWA that give them.
constexpr std::array<Style, 7> kWindowStyles = {{
    {0b00'000000, 0b00'000000, 0b0'0'00'11'00, 0},  // 1: pop-up captions as in line 21
    {0b11'000000, 0b00'000000, 0b0'0'00'11'00, 0},  // 2: the same without black behind
    {0b00'000000, 0b00'000000, 0b0'0'00'11'10, 0},  // 3: pop-up captions, centred
    {0b00'000000, 0b00'000000, 0b0'1'00'11'00, 0},  // 4: roll-up captions as in line 21
    {0b11'000000, 0b00'000000, 0b0'1'00'11'00, 0},  // 5: the same without black behind
    {0b00'000000, 0b00'000000, 0b0'1'00'11'10, 0},  // 6: roll-up captions, centred
    {0b00'000000, 0b00'000000, 0b0'0'10'01'00, 0},  // 7: ticker tape
}};

constexpr std::uint32_t kWhiteOnBlack = 0x3F'00'00;
constexpr std::uint32_t kWhiteOnNothing = 0x3F'C0'00;

// Predefined pen styles 1 to 7 (CEA-708-E, table 27) as the parameters of SPA and SPC.
constexpr std::array<PackedPen, 7> kPenStyles = {{
    {0b0000'01'01'0'0'000'000, kWhiteOnBlack},    // 1: as in line 21
    {0b0000'01'01'0'0'000'001, kWhiteOnBlack},    // 2: monospaced with serifs
    {0b0000'01'01'0'0'000'010, kWhiteOnBlack},    // 3: proportional with serifs
    {0b0000'01'01'0'0'000'011, kWhiteOnBlack},    // 4: monospaced
    {0b0000'01'01'0'0'000'100, kWhiteOnBlack},    // 5: proportional
    {0b0000'01'01'0'0'011'011, kWhiteOnNothing},  // 6: monospaced, bordered
    {0b0000'01'01'0'0'011'100, kWhiteOnNothing},  // 7: proportional, bordered
}};

// Text with this tag is for other ends than display (CEA-708-E, 8.5.9).
constexpr unsigned kNotDisplayable = 15;

// Two bits each of red, green and blue (CEA-708-E, 8.8).
WindowText::Colour colourOf(std::uint32_t bits) {
  const auto level = [bits](unsigned shift) {
    return static_cast<std::uint8_t>((bits >> shift & 0x03) * 85);
  };
  return {level(4), level(2), level(0)};
}

WindowText::Opacity opacityOf(std::uint32_t bits) {
  return static_cast<WindowText::Opacity>(bits >> 6 & 0x03);
}

WindowText::Edge edgeOf(unsigned code) {
  return code <= 5 ? static_cast<WindowText::Edge>(code) : WindowText::Edge::None;
}

bool isBlank(CharacterCode code) {
  return code == 0 || code == ' ' || code == kTransparentSpace;
}

bool showsNothing(CharacterCode code) {
  return code == 0 || code == kTransparentSpace || code == kNonBreakingTransparentSpace;
}

}  // namespace

WindowText::Pen unpack(const PackedPen& pen) {
  const unsigned first = pen.attributes >> 8;
  const unsigned second = pen.attributes & 0xFF;
  const unsigned size = first & 0x03;
  const unsigned offset = first >> 2 & 0x03;
  const std::uint32_t foreground = pen.colours >> 16;
  const std::uint32_t background = pen.colours >> 8 & 0xFF;
  return {
      .size = size <= 2 ? static_cast<WindowText::PenSize>(size) : WindowText::PenSize::Standard,
      .font = static_cast<WindowText::Font>(second & 0x07),
      .offset = offset <= 2 ? static_cast<WindowText::Offset>(offset) : WindowText::Offset::Normal,
      .italic = (second & 0x80) != 0,
      .underline = (second & 0x40) != 0,
      .edge = edgeOf(second >> 3 & 0x07),
      .foregroundOpacity = opacityOf(foreground),
      .backgroundOpacity = opacityOf(background),
      .foreground = colourOf(foreground),
      .background = colourOf(background),
      .edgeColour = colourOf(pen.colours)};
}

void Window::define(const Definition& definition) {
  const bool isNew = !std::exchange(isDefined_, true);
  const int oldColumnCount = std::exchange(columnCount_, (definition[4] & 0x3F) + 1);
  definition_ = definition;
  rowCount_ = (definition[3] & 0x0F) + 1;
  isVisible_ = (definition[0] & 0x20) != 0;

  const unsigned windowStyle = definition[5] >> 3 & 0x07;
  const unsigned penStyle = definition[5] & 0x07;
  if (isNew || windowStyle != 0) setStyle(windowStyle);
  if (isNew || penStyle != 0) setPenStyle(penStyle);
  if (isNew) return formFeed();
  const bool isNarrower = columnCount_ < oldColumnCount || lineSpan() != kMostColumns;
  eraseFrom(rowCount_, isNarrower ? columnCount_ : kMostColumns);
}

void Window::setStyle(unsigned style) {
  apply(kWindowStyles[style == 0 ? 0 : style - 1]);
}

void Window::setPenStyle(unsigned style) {
  pen_ = kPenStyles[style == 0 ? 0 : style - 1];
}

// The pen of a window that nothing was written in yet goes to where its lines now begin,
// deliberately: (0, 0) would be the last cell of those that print to the left or up.
void Window::setAttributes(std::span<const std::uint8_t, 4> parameters) {
  const Position home = position(0, 0);
  const bool isUnused = row_ == home.row && column_ == home.column && isEmpty();
  apply(parameters);
  if (isUnused) movePen(0, 0);
  if (lineSpan() != kMostColumns) eraseFrom(rowCount_, columnCount_);
}

void Window::apply(std::span<const std::uint8_t, 4> attributes) {
  std::copy(attributes.begin(), attributes.end(), attributes_.begin());
  wrapsWords_ = (attributes[2] & 0x40) != 0;
  print_ = attributes[2] >> 4 & 0x03;
  scroll_ = attributes[2] >> 2 & 0x03;
}

// Erases the cells below and to the right of a corner.
void Window::eraseFrom(int endRow, int endColumn) {
  for (int row = 0; row < kMostRows; ++row) {
    for (int column = row < endRow ? endColumn : 0; column < kMostColumns; ++column) {
      at(row, column) = {};
    }
  }
}

void Window::setPenAttributes(std::span<const std::uint8_t, 2> parameters) {
  pen_.attributes = static_cast<std::uint16_t>(parameters[0] << 8 | parameters[1]);
}

void Window::setPenColour(std::span<const std::uint8_t, 3> parameters) {
  pen_.colours =
      static_cast<std::uint32_t>(parameters[0] << 16 | parameters[1] << 8 | (parameters[2] & 0x3F));
}

void Window::setPenLocation(int row, int column) {
  row_ = row;
  column_ = column;
}

// Where cell `cell` of a line lies, counted in the direction of print.
Window::Position Window::position(int line, int cell) const {
  switch (print()) {
    case WindowText::Direction::LeftToRight:
      break;
    case WindowText::Direction::RightToLeft:
      return {line, columnCount_ - 1 - cell};
    case WindowText::Direction::TopToBottom:
      return {cell, line};
    case WindowText::Direction::BottomToTop:
      return {rowCount_ - 1 - cell, line};
  }
  return {line, cell};
}

int Window::penCell() const {
  switch (print()) {
    case WindowText::Direction::LeftToRight:
      break;
    case WindowText::Direction::RightToLeft:
      return columnCount_ - 1 - column_;
    case WindowText::Direction::TopToBottom:
      return row_;
    case WindowText::Direction::BottomToTop:
      return rowCount_ - 1 - row_;
  }
  return column_;
}

void Window::movePen(int line, int cell) {
  const Position position = this->position(line, cell);
  row_ = position.row;
  column_ = position.column;
}

// Text beyond the last column is hidden by receivers; it is kept, deliberately, so that files lose
// no letter of services that define their windows too narrow.
Window::Cell* Window::cellAt(int line, int cell) {
  const Position place = position(line, cell);
  const int columns = print() == WindowText::Direction::LeftToRight ? kMostColumns : columnCount_;
  const bool isInside =
      place.row >= 0 && place.row < rowCount_ && place.column >= 0 && place.column < columns;
  return isInside ? &at(place.row, place.column) : nullptr;
}

const Window::Cell* Window::cellAt(int line, int cell) const {
  return const_cast<Window*>(this)->cellAt(line, cell);
}

CellChange Window::changeOfPut() const {
  if (wrapsWords_ && penCell() >= lineLength()) return CellChange::Other;
  const Cell* cell = cellAt(penLine(), penCell());
  if (!cell) return CellChange::None;
  return cell->code == 0 ? CellChange::Growth : CellChange::Other;
}

// Word wrap (CEA-708-E, 8.4.8) moves the word that does not fit; the blank before it, and one that
// would begin the next line, only part them.
void Window::put(CharacterCode code) {
  if (wrapsWords_ && penCell() >= lineLength()) {
    if (isBlank(code)) return carriageReturn();
    wrapWord();
  }
  if (Cell* cell = cellAt(penLine(), penCell())) *cell = {code, pen_};
  const int next = penCell() + 1;
  if (next <= kMostColumns) movePen(penLine(), next);
}

void Window::wrapWord() {
  const int line = penLine();
  int first = lineLength();
  while (first > 0) {
    const Cell* cell = cellAt(line, first - 1);
    if (!cell || isBlank(cell->code)) break;
    --first;
  }
  std::vector<Cell> word;
  for (int i = first; first > 0 && i < lineLength(); ++i) {
    word.push_back(std::exchange(*cellAt(line, i), {}));
  }
  carriageReturn();
  for (const Cell& cell : word) {
    if (Cell* target = cellAt(penLine(), penCell())) *target = cell;
    movePen(penLine(), penCell() + 1);
  }
}

void Window::backspace() {
  if (penCell() <= 0) return;
  movePen(penLine(), penCell() - 1);
  if (Cell* cell = cellAt(penLine(), penCell())) *cell = {};
}

// Whether the next line lies below, or to the right in windows that print up or down; a scroll
// direction along the lines themselves, which is undefined, is taken as that.
bool Window::advancesForward() const {
  const auto scroll = static_cast<WindowText::Direction>(scroll_);
  return scroll !=
         (isHorizontal() ? WindowText::Direction::TopToBottom : WindowText::Direction::LeftToRight);
}

bool Window::isOnLastLine() const {
  return advancesForward() ? penLine() >= lineCount() - 1 : penLine() <= 0;
}

void Window::carriageReturn() {
  const int step = advancesForward() ? 1 : -1;
  if (!isOnLastLine()) return movePen(std::min(penLine() + step, lineCount() - 1), 0);
  const int last = advancesForward() ? lineCount() - 1 : 0;
  for (int line = lineCount() - 1 - last; line != last; line += step) copyLine(line, line + step);
  clearLine(last);
  movePen(last, 0);
}

void Window::horizontalCarriageReturn() {
  clearLine(penLine());
  movePen(penLine(), 0);
}

void Window::formFeed() {
  clear();
  movePen(0, 0);
}

void Window::clear() {
  cells_.fill({});
}

int Window::lineSpan() const {
  return print() == WindowText::Direction::LeftToRight ? kMostColumns : lineLength();
}

void Window::copyLine(int to, int from) {
  for (int i = 0; i < lineSpan(); ++i) *cellAt(to, i) = *cellAt(from, i);
}

void Window::clearLine(int line) {
  for (int i = 0; i < lineSpan(); ++i) {
    if (Cell* cell = cellAt(line, i)) *cell = {};
  }
}

bool Window::isEmpty() const {
  return std::ranges::all_of(cells_, [](const Cell& cell) { return cell.code == 0; });
}

WindowText::Window Window::show(std::uint8_t id, std::uint32_t columnsAcross,
                                Charset charset) const {
  constexpr double kGridRows = 75;    // of the safe title area (CEA-708-E, 8.2)
  constexpr double kGridColumns = 5;  // a cell
  const bool isRelative = (definition_[1] & 0x80) != 0;
  const double vertical = definition_[1] & 0x7F;
  const double horizontal = definition_[2];
  const unsigned anchor = definition_[3] >> 4;
  const unsigned border = static_cast<unsigned>(attributes_[1] >> 6 | (attributes_[2] >> 5 & 0x04));
  WindowText::Window window;
  window.id = id;
  window.priority = priority();
  window.anchor =
      anchor <= 8 ? static_cast<WindowText::Anchor>(anchor) : WindowText::Anchor::UpperLeft;
  window.anchorX =
      std::min(100.0, isRelative ? horizontal : horizontal * 100 / (columnsAcross * kGridColumns));
  window.anchorY = std::min(100.0, isRelative ? vertical : vertical * 100 / kGridRows);
  window.rowCount = static_cast<std::uint32_t>(rowCount_);
  window.columnCount = static_cast<std::uint32_t>(columnCount_);
  window.justify = static_cast<WindowText::Justify>(attributes_[2] & 0x03);
  window.print = print();
  window.scroll = static_cast<WindowText::Direction>(scroll_);
  window.fillOpacity = opacityOf(attributes_[0]);
  window.fill = colourOf(attributes_[0]);
  window.border = edgeOf(border);
  window.borderColour = colourOf(attributes_[1]);
  for (int row = 0; row < rowCount_; ++row) {
    auto shown = showRow(row, charset);
    if (!shown.runs.empty()) window.rows.push_back(std::move(shown));
  }
  return window;
}

WindowText::Row Window::showRow(int row, Charset charset) const {
  WindowText::Row shown{.number = static_cast<std::uint32_t>(row), .runs = {}};
  const Cell* previous = nullptr;  // in the run that goes on
  for (int column = 0; column < kMostColumns; ++column) {
    const Cell& cell = at(row, column);
    if (showsNothing(cell.code) || cell.pen.attributes >> 12 == kNotDisplayable) {
      previous = nullptr;
      continue;
    }
    GlyphText glyph = characterOf(cell.code, charset);
    int width = 1;
    if (glyph.view().empty() && column + 1 < kMostColumns) {
      glyph = surrogatePair(cell.code, at(row, column + 1).code);
      width = 2;
    }
    if (glyph.view().empty()) {
      glyph = characterOf(kExtendedSet, charset);
      width = 1;
    }
    if (!previous || previous->pen != cell.pen) {
      shown.runs.push_back(
          {.column = static_cast<std::uint32_t>(column), .pen = unpack(cell.pen), .glyphs = {}});
    }
    shown.runs.back().glyphs.push_back(glyph);
    column += width - 1;
    previous = width == 1 ? &cell : nullptr;
  }
  return shown;
}

}  // namespace korr::encoding::subtitling::dtvcc
