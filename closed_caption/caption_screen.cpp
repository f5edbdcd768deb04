// SPDX-License-Identifier: MIT
#include "closed_caption/caption_screen.h"

#include <algorithm>
#include <utility>

namespace korr::encoding::subtitling::closed_caption::inline v2 {

CaptionStyle CaptionScreen::write(const Place& place, const GlyphText& glyph,
                                  const CaptionStyle& pen, CaptionMode mode) {
  auto& cells = row(place.row).cells;
  const CaptionStyle* before = styleBefore(place);
  const CaptionStyle style = before ? *before : pen;
  if (before && place.column == cells.size()) {  // as most are: at the end of a row
    Cell& cell = cells.emplace_back();
    cell.glyph = glyph;
    cell.style = style;
  } else {
    put(place, {.glyph = glyph, .style = style, .isAttribute = false}, mode);
  }
  return style;
}

void CaptionScreen::writeAttribute(const Place& place, const CaptionStyle& style,
                                   CaptionMode mode) {
  put(place, {.glyph = GlyphText(' '), .style = style, .isAttribute = true}, mode);
}

void CaptionScreen::put(const Place& place, const Cell& cell, CaptionMode mode) {
  Row& target = row(place.row);
  auto& cells = target.cells;
  if (cells.empty()) {
    target.mode = mode;
    cells.reserve(kVisibleColumns);
  }
  if (place.column >= cells.size()) {  // nothing is overwritten
    cells.resize(place.column);
    cells.push_back(cell);
    return;
  }

  // Whoever overwrites what gave the characters to the right their attributes, a mid-row code or
  // the first character after a preamble, changes these too (CEA-608, C.7).
  const bool beginsStyle =
      cells[place.column].isAttribute || (!cells[place.column].isEmpty() && !styleBefore(place));
  cells[place.column] = cell;
  if (!beginsStyle) return;
  for (auto next = cells.begin() + place.column + 1;
       next != cells.end() && !next->isEmpty() && !next->isAttribute; ++next) {
    next->style = cell.style;
  }
}

void CaptionScreen::erase(const Place& place) {
  auto& cells = row(place.row).cells;
  if (place.column >= cells.size()) return;
  cells[place.column] = Cell{};
  trim(row(place.row));
}

void CaptionScreen::eraseToEndOfRow(const Place& place) {
  auto& cells = row(place.row).cells;
  if (place.column >= cells.size()) return;
  cells.resize(place.column);
  trim(row(place.row));
}

void CaptionScreen::trim(Row& row) {
  while (!row.cells.empty() && row.cells.back().isEmpty()) row.cells.pop_back();
}

void CaptionScreen::clear() {
  for (Row& row : rows_) row.cells.clear();
}

void CaptionScreen::keepWindow(std::int32_t base, std::int32_t count) {
  for (std::int32_t number = 1; number <= kRows; ++number) {
    if (number > base || number <= base - count) row(number).cells.clear();
  }
}

void CaptionScreen::rollUp(std::int32_t base, std::int32_t count) {
  // Rows change places, so that none gives up its memory.
  const auto end = rows_.begin() + base;
  const auto top = end - count;
  top->cells.clear();
  std::rotate(top, top + 1, end);
}

void CaptionScreen::moveWindow(std::int32_t from, std::int32_t to, std::int32_t count) {
  // The rows on the way are empty.
  const auto first = rows_.begin() + (std::min(from, to) - count);
  const auto last = rows_.begin() + std::max(from, to);
  if (from < to) {
    std::rotate(first, last - (to - from), last);
  } else {
    std::rotate(first, first + (from - to), last);
  }
}

const CaptionStyle* CaptionScreen::styleOnRow(const Place& place) const {
  const auto& cells = row(place.row).cells;
  for (auto column = std::min<std::size_t>(place.column, cells.size()); column > 0; --column) {
    if (!cells[column - 1].isEmpty()) return &cells[column - 1].style;
  }
  return nullptr;
}

CaptionText CaptionScreen::toText() const {
  CaptionText text;
  text.rows.reserve(4);  // a receiver need not show more (CEA-608, C.6)
  for (std::int32_t number = 1; number <= kRows; ++number) {
    const auto& cells = row(number).cells;
    if (cells.empty()) continue;
    const bool isBlank = std::all_of(cells.begin(), cells.end(), [](const Cell& cell) {
      return cell.isEmpty() || cell.glyph.view() == " ";
    });
    if (isBlank) continue;
    text.rows.push_back({.runs = runsOf(row(number)), .mode = row(number).mode, .number = number});
  }
  return text;
}

std::vector<CaptionText::TextRun> CaptionScreen::runsOf(const Row& row) {
  std::vector<CaptionText::TextRun> runs;
  const auto& cells = row.cells;
  runs.reserve(1);  // as most rows have
  for (std::size_t first = 0; first < cells.size();) {
    if (cells[first].isEmpty()) {
      ++first;
      continue;
    }
    std::size_t end = first + 1;
    while (end < cells.size() && !cells[end].isEmpty() && cells[end].style == cells[first].style) {
      ++end;
    }
    const CaptionStyle& style = cells[first].style;
    auto& run = runs.emplace_back();
    run.column = static_cast<std::uint32_t>(first);
    run.foreground = style.foreground;
    run.background = style.background;
    run.backgroundOpacity = style.backgroundOpacity;
    run.underline = style.underline;
    run.italic = style.italic;
    run.glyphs.resize(end - first);
    for (auto& glyph : run.glyphs) glyph = cells[first++].glyph;
  }
  return runs;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
