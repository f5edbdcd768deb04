// SPDX-License-Identifier: MIT
#include "tests/dtvcc/reference_model.h"

#include <algorithm>
#include <cstdio>

namespace korr::test_support {
namespace {

using encoding::subtitling::WindowText;
using Bytes = std::vector<std::uint8_t>;

constexpr int kMostColumns = 64;

std::string utf8(unsigned character) {
  std::string text;
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    text += static_cast<char>(0x80 | (character & 0x3F));
  } else {
    text += static_cast<char>(0xE0 | character >> 12);
    text += static_cast<char>(0x80 | (character >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (character & 0x3F));
  }
  return text;
}

std::string basicCharacter(unsigned code) {
  if (code == 0x7F) return "♪";
  if (code == 0xA0) return utf8(0x20);
  return utf8(code == 0xAD ? 0x2D : code);
}

// 7.1: how many bytes the code that begins here has; 0 when they have not all come.
std::size_t lengthOf(const Bytes& bytes) {
  const auto enough = [&bytes](std::size_t length) { return bytes.size() < length ? 0 : length; };
  const unsigned code = bytes[0];
  if (code == 0x10) {
    if (bytes.size() < 2) return 0;
    const unsigned extended = bytes[1];
    if (extended <= 0x07) return 2;
    if (extended <= 0x0F) return enough(3);
    if (extended <= 0x17) return enough(4);
    if (extended <= 0x1F) return enough(5);
    if (extended >= 0x80 && extended <= 0x87) return enough(6);
    if (extended >= 0x88 && extended <= 0x8F) return enough(7);
    if (extended >= 0x90 && extended <= 0x9F) {
      return bytes.size() < 3 ? 0 : enough(3u + bytes[2] % 32u);
    }
    return 2;
  }
  if (code >= 0x11 && code <= 0x17) return enough(2);
  if (code >= 0x18 && code <= 0x1F) return enough(3);
  if (code >= 0x88 && code <= 0x8D) return enough(2);
  if (code == 0x90 || code == 0x92) return enough(3);
  if (code == 0x91) return enough(4);
  if (code == 0x97) return enough(5);
  if (code >= 0x98 && code <= 0x9F) return enough(7);
  return 1;
}

std::string penText(unsigned spa1, unsigned spa2, unsigned fg, unsigned bg, unsigned edge) {
  const unsigned size = spa1 % 4 == 3 ? 1 : spa1 % 4;
  const unsigned offset = spa1 / 4 % 4 == 3 ? 1 : spa1 / 4 % 4;
  const unsigned edgeType = spa2 / 8 % 8 > 5 ? 0 : spa2 / 8 % 8;
  char text[96];
  std::snprintf(text, sizeof text, "size%u off%u font%u edge%u i%u u%u fg%u/%02X bg%u/%02X e%02X",
                size, offset, spa2 % 8, edgeType, spa2 / 128, spa2 / 64 % 2, fg / 64, fg % 64,
                bg / 64, bg % 64, edge % 64);
  return text;
}

unsigned bitsOf(const WindowText::Colour& colour) {
  return colour.red / 85u * 16 + colour.green / 85u * 4 + colour.blue / 85u;
}

std::string windowText(unsigned id, unsigned priority, unsigned anchor, double x, double y,
                       unsigned rows, unsigned columns, unsigned justify, unsigned print,
                       unsigned scroll, unsigned opacity, unsigned fill, unsigned border,
                       unsigned borderColour) {
  char text[160];
  std::snprintf(text, sizeof text,
                "window %u p%u a%u %.3f,%.3f %ux%u j%u print%u scroll%u fill%u/%02X b%u/%02X\n", id,
                priority, anchor, x, y, rows, columns, justify, print, scroll, opacity, fill,
                border, borderColour);
  return text;
}

std::string cellText(int row, int column, const std::string& glyph, const std::string& pen) {
  char place[32];
  std::snprintf(place, sizeof place, "%d,%d ", row, column);
  return std::string(place).append(glyph).append(" ").append(pen).append("\n");
}

}  // namespace

std::string describe(const WindowText& text) {
  std::string out;
  for (const auto& w : text.windows) {
    out += windowText(w.id, w.priority, static_cast<unsigned>(w.anchor), w.anchorX, w.anchorY,
                      w.rowCount, w.columnCount, static_cast<unsigned>(w.justify),
                      static_cast<unsigned>(w.print), static_cast<unsigned>(w.scroll),
                      static_cast<unsigned>(w.fillOpacity), bitsOf(w.fill),
                      static_cast<unsigned>(w.border), bitsOf(w.borderColour));
    for (const auto& row : w.rows) {
      for (const auto& run : row.runs) {
        const auto& p = run.pen;
        const std::string pen =
            penText(static_cast<unsigned>(p.offset) * 4 + static_cast<unsigned>(p.size),
                    static_cast<unsigned>(p.edge) * 8 + static_cast<unsigned>(p.font) +
                        (p.italic ? 128 : 0) + (p.underline ? 64 : 0),
                    static_cast<unsigned>(p.foregroundOpacity) * 64 + bitsOf(p.foreground),
                    static_cast<unsigned>(p.backgroundOpacity) * 64 + bitsOf(p.background),
                    bitsOf(p.edgeColour));
        for (std::size_t i = 0; i < run.glyphs.size(); ++i) {
          out += cellText(static_cast<int>(row.number), static_cast<int>(run.column + i),
                          std::string(run.glyphs[i].view()), pen);
        }
      }
    }
  }
  return out;
}

// 8.9: while a delay runs what comes is queued, up to 128 bytes.
void ReferenceModel::block(std::span<const std::uint8_t> bytes, std::uint64_t time) {
  queue_.insert(queue_.end(), bytes.begin(), bytes.end());
  runQueue(time);
}

void ReferenceModel::wait(std::uint64_t time) {
  while (delayEnd_ && *delayEnd_ <= time) {
    const std::uint64_t end = *delayEnd_;
    delayEnd_.reset();
    runQueue(end);
  }
}

void ReferenceModel::runQueue(std::uint64_t time) {
  while (!queue_.empty()) {
    if (delayEnd_ && !endDelayEarly()) return;
    const std::size_t length = lengthOf(queue_);
    if (length == 0) return;
    const Bytes code(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(length));
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(length));
    execute(code, time);
  }
}

// 8.10.5.12: DLC and RST are seen from behind what waits; RST takes that back.
bool ReferenceModel::endDelayEarly() {
  Bytes rest = queue_;
  while (!rest.empty()) {
    const std::size_t length = lengthOf(rest);
    if (length == 0) break;
    if (rest[0] == 0x8F) queue_ = rest;
    if (rest[0] == 0x8E || rest[0] == 0x8F) {
      delayEnd_.reset();
      return true;
    }
    rest.erase(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length));
  }
  if (queue_.size() >= 128) delayEnd_.reset();
  return !delayEnd_;
}

void ReferenceModel::execute(const Bytes& code, std::uint64_t time) {
  const unsigned first = code[0];
  const auto named = [&code](unsigned id) { return code[1] >> id & 1; };

  // 7.1.6 and 7.1.7: G0, G1.
  if ((first >= 0x20 && first <= 0x7F) || first >= 0xA0) {
    return print(basicCharacter(first), first == 0x20);
  }
  if (first == 0x18) {
    const unsigned unit = code[1] * 256u + code[2];
    const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit >= 0xFFFE;
    return print(isControl ? "_" : utf8(unit), false);
  }
  if (first == 0x10) {
    if ((code[1] & 0x60) == 0) return;  // C2 and C3 define nothing
    static const std::map<unsigned, std::string> kKnown = {
        {0x20, ""},       {0x21, ""},       {0x25, "…"}, {0x2A, "Š"}, {0x2C, "Œ"}, {0x30, "█"},
        {0x31, "\u2018"}, {0x32, "\u2019"}, {0x33, "“"}, {0x34, "”"}, {0x35, "•"}, {0x39, "™"},
        {0x3A, "š"},      {0x3C, "œ"},      {0x3D, "℠"}, {0x3F, "Ÿ"}, {0x76, "⅛"}, {0x77, "⅜"},
        {0x78, "⅝"},      {0x79, "⅞"},      {0x7A, "│"}, {0x7B, "┐"}, {0x7C, "└"}, {0x7D, "─"},
        {0x7E, "┘"},      {0x7F, "┌"},      {0xA0, "㏄"}};
    const auto known = kKnown.find(code[1]);
    return print(known == kKnown.end() ? "_" : known->second, code[1] == 0x20);
  }

  // 8.10.5.12: DLY.
  if (first == 0x8D && code[1] != 0) delayEnd_ = time + code[1] * std::uint64_t{1'000'000};
  if (first == 0x8F) {
    windows_.clear();
    current_.reset();
  }
  if (first >= 0x98 && first <= 0x9F) return define(first - 0x98, code);
  if (first >= 0x80 && first <= 0x87) {
    if (windows_.count(first - 0x80) != 0) current_ = first - 0x80;
    return;
  }
  if (first == 0x8C) {
    for (unsigned id = 0; id < 8; ++id) {
      if (!named(id)) continue;
      windows_.erase(id);
      if (current_ == id) current_.reset();
    }
    return;
  }
  for (auto& [id, window] : windows_) {
    if (first == 0x88 && named(id)) window.cells.clear();
    if (first == 0x89 && named(id)) window.visible = true;
    if (first == 0x8A && named(id)) window.visible = false;
    if (first == 0x8B && named(id)) window.visible = !window.visible;
  }

  if (!current_) return;
  Window& window = windows_[*current_];
  if (first == 0x0D) carriageReturn(window);
  if (first == 0x08 && cellOfPen(window) > 0) {
    step(window, -1);
    window.cells.erase({window.row, window.column});
  }
  if (first == 0x0C) {
    window.cells.clear();
    home(window);
  }
  if (first == 0x0E) {
    const bool horizontal = window.attributes[2] / 16 % 4 < 2;
    std::erase_if(window.cells, [&](const auto& cell) {
      return horizontal ? cell.first.first == window.row : cell.first.second == window.column;
    });
    toLineStart(window);
  }
  if (first == 0x90) {
    window.pen[0] = code[1];
    window.pen[1] = code[2];
  }
  if (first == 0x91) {
    for (unsigned i = 0; i < 3; ++i) window.pen[2 + i] = code[1 + i];
  }
  if (first == 0x92) {
    window.row = code[1] % 16;
    window.column = code[2] % 64;
  }
  if (first == 0x97) {
    Window homed = window;
    home(homed);
    const bool unused =
        window.cells.empty() && homed.row == window.row && homed.column == window.column;
    window.attributes = Bytes(code.begin() + 1, code.end());
    if (unused) home(window);
    eraseOutside(window);
  }
}

// Text right of a window is kept only while it is printed from left to right.
void ReferenceModel::eraseOutside(Window& window) {
  const bool keeps = window.attributes[2] / 16 % 4 == 0;
  std::erase_if(window.cells,
                [&](const auto& cell) { return !keeps && cell.first.second >= window.columns; });
}

// 8.10.5.2, with the styles of tables 26 and 27 as the commands that give them.
void ReferenceModel::define(unsigned id, const Bytes& code) {
  const Bytes definition(code.begin() + 1, code.end());
  const bool isNew = windows_.count(id) == 0;
  Window& window = windows_[id];
  current_ = id;
  if (!isNew && window.definition == definition) return;
  const int oldColumns = window.columns;
  window.definition = definition;
  window.visible = (definition[0] & 0x20) != 0;
  window.rows = definition[3] % 16 + 1;
  window.columns = definition[4] % 64 + 1;
  unsigned style = definition[5] / 8 % 8;
  unsigned pen = definition[5] % 8;
  if (isNew && style == 0) style = 1;
  if (isNew && pen == 0) pen = 1;
  if (style != 0) {
    const unsigned opacity = style == 2 || style == 5 ? 3 : 0;
    const unsigned justify = style == 3 || style == 6 ? 2 : 0;
    const unsigned wrap = style >= 4 && style <= 6 ? 0x40 : 0;
    const unsigned directions = style == 7 ? 0x24 : 0x0C;
    window.attributes = {static_cast<std::uint8_t>(opacity * 64), 0,
                         static_cast<std::uint8_t>(wrap | directions | justify), 0};
  }
  if (pen != 0) {
    const unsigned fonts[] = {0, 0, 1, 2, 3, 4, 3, 4};
    window.pen = {5, fonts[pen] + (pen >= 6 ? 3 * 8 : 0), 0x3F, pen >= 6 ? 0xC0u : 0u, 0};
  }
  std::erase_if(window.cells, [&](const auto& cell) {
    const auto [row, column] = cell.first;
    return row >= window.rows || (window.columns < oldColumns && column >= window.columns);
  });
  eraseOutside(window);
  if (isNew) home(window);
}

bool ReferenceModel::isInside(const Window& window) const {
  const int columns = window.attributes[2] / 16 % 4 == 0 ? kMostColumns : window.columns;
  return window.row >= 0 && window.row < window.rows && window.column >= 0 &&
         window.column < columns;
}

void ReferenceModel::step(Window& window, int cells) {
  switch (window.attributes[2] / 16 % 4) {
    case 0:
      window.column += cells;
      break;
    case 1:
      window.column -= cells;
      break;
    case 2:
      window.row += cells;
      break;
    case 3:
      window.row -= cells;
      break;
  }
}

int ReferenceModel::cellOfPen(const Window& window) const {
  switch (window.attributes[2] / 16 % 4) {
    case 0:
      return window.column;
    case 1:
      return window.columns - 1 - window.column;
    case 2:
      return window.row;
    default:
      return window.rows - 1 - window.row;
  }
}

void ReferenceModel::toLineStart(Window& window) {
  switch (window.attributes[2] / 16 % 4) {
    case 0:
      window.column = 0;
      break;
    case 1:
      window.column = window.columns - 1;
      break;
    case 2:
      window.row = 0;
      break;
    case 3:
      window.row = window.rows - 1;
      break;
  }
}

void ReferenceModel::home(Window& window) {
  window.row = window.column = 0;
  toLineStart(window);
}

void ReferenceModel::print(const std::string& glyph, bool parts) {
  if (!current_) return;
  Window& window = windows_[*current_];
  const bool horizontal = window.attributes[2] / 16 % 4 < 2;
  const int length = horizontal ? window.columns : window.rows;
  if ((window.attributes[2] & 0x40) != 0 && cellOfPen(window) >= length) {
    if (parts) return carriageReturn(window);
    wrap(window);
  }
  if (isInside(window)) window.cells[{window.row, window.column}] = {glyph, parts, window.pen};
  if (cellOfPen(window) < kMostColumns) step(window, 1);
}

// 8.4.8: the last word of the line goes to the next one, unless the line is one word.
void ReferenceModel::wrap(Window& window) {
  const bool horizontal = window.attributes[2] / 16 % 4 < 2;
  const int length = horizontal ? window.columns : window.rows;
  step(window, length - cellOfPen(window));  // just behind the line
  std::vector<Cell> word;
  bool isWhole = true;
  for (int i = length; i > 0; --i) {
    step(window, -1);
    const auto cell = window.cells.find({window.row, window.column});
    if (!isInside(window) || cell == window.cells.end() || cell->second.parts) {
      isWhole = false;
      break;
    }
    word.insert(word.begin(), cell->second);
  }
  if (isWhole) word.clear();
  toLineStart(window);
  step(window, length - static_cast<int>(word.size()));
  for (std::size_t i = 0; i < word.size(); ++i) {
    window.cells.erase({window.row, window.column});
    step(window, 1);
  }
  carriageReturn(window);
  for (const Cell& cell : word) {
    if (isInside(window)) window.cells[{window.row, window.column}] = cell;
    step(window, 1);
  }
}

// 7.1.4 and table 24.
void ReferenceModel::carriageReturn(Window& window) {
  const bool horizontal = window.attributes[2] / 16 % 4 < 2;
  const unsigned scroll = window.attributes[2] / 4 % 4;
  const bool backward = horizontal ? scroll == 2 : scroll == 0;
  const int lines = horizontal ? window.rows : window.columns;
  int& line = horizontal ? window.row : window.column;
  if (backward ? line > 0 : line < lines - 1) {
    line = std::min(line + (backward ? -1 : 1), lines - 1);
  } else {
    std::map<std::pair<int, int>, Cell> moved;
    for (const auto& [place, cell] : window.cells) {
      auto to = place;
      (horizontal ? to.first : to.second) += backward ? 1 : -1;
      const int limit = lines;
      const int target = horizontal ? to.first : to.second;
      if (target >= 0 && target < limit) moved[to] = cell;
    }
    window.cells = moved;
    line = backward ? 0 : lines - 1;
  }
  toLineStart(window);
}

std::string ReferenceModel::describe(unsigned id, const Window& window) {
  const auto& d = window.definition;
  const auto& a = window.attributes;
  const bool relative = (d[1] & 0x80) != 0;
  const double y = relative ? d[1] % 128 : d[1] % 128 / 75.0 * 100;
  const double x = relative ? d[2] : d[2] / 210.0 * 100;
  const unsigned border = a[1] / 64u + (a[2] / 128u) * 4u;
  const unsigned shownBorder = border > 5 ? 0 : border;
  std::string cells;
  for (const auto& [place, cell] : window.cells) {
    if (cell.glyph.empty() || cell.pen[0] / 16 == 15) continue;
    cells += cellText(place.first, place.second, cell.glyph,
                      penText(cell.pen[0], cell.pen[1], cell.pen[2], cell.pen[3], cell.pen[4]));
  }
  if (cells.empty() && a[0] / 64 == 3 && shownBorder == 0) return {};
  return windowText(id, d[0] % 8u, d[3] / 16u > 8 ? 0 : d[3] / 16u, std::min(x, 100.0),
                    std::min(y, 100.0), static_cast<unsigned>(window.rows),
                    static_cast<unsigned>(window.columns), a[2] % 4u, a[2] / 16u % 4, a[2] / 4u % 4,
                    a[0] / 64u, a[0] % 64u, shownBorder, a[1] % 64u) +
         cells;
}

std::string ReferenceModel::screen() const {
  std::string out;
  for (int priority = 7; priority >= 0; --priority) {
    for (const auto& [id, window] : windows_) {
      if (window.visible && window.definition[0] % 8 == priority) out += describe(id, window);
    }
  }
  return out;
}

}  // namespace korr::test_support
