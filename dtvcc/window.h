// SPDX-License-Identifier: MIT

// One window of a service.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "dtvcc/character_sets.h"
#include "model/window_text.h"

namespace korr::encoding::subtitling::dtvcc {

/// The pen as its commands carry it, so that cells stay small and compare fast.
struct PackedPen {
  std::uint16_t attributes = 0;  ///< both bytes of SPA
  std::uint32_t colours = 0;     ///< the three bytes of SPC

  friend bool operator==(const PackedPen&, const PackedPen&) = default;
};

WindowText::Pen unpack(const PackedPen& pen);

/// What an operation did to the cells.
enum class CellChange { None, Growth, Other };

/// The cells of one window and the pen that writes them (CEA-708-E, 8.4 and 8.5). Holds as many
/// cells as a definition can ask for, more than the standard's 15 rows of 42 columns: Korean
/// services use them.
class Window {
 public:
  static constexpr int kMostRows = 16;
  static constexpr int kMostColumns = 64;

  using Definition = std::array<std::uint8_t, 6>;  ///< parameters of DF0 to DF7

  bool isDefined() const { return isDefined_; }
  bool isVisible() const { return isVisible_; }
  void setVisible(bool isVisible) { isVisible_ = isVisible; }
  std::uint8_t priority() const { return definition_[0] & 0x07; }

  bool isDefinedAs(const Definition& definition) const {
    return isDefined_ && definition == definition_;
  }

  /// DefineWindow (8.10.5.2): a new window is empty and its pen at (0, 0); one that exists keeps
  /// the text that still fits, its pen, and the styles that the definition does not name.
  void define(const Definition& definition);
  void destroy() { isDefined_ = isVisible_ = false; }

  void setAttributes(std::span<const std::uint8_t, 4> parameters);     ///< SWA, 8.10.5.8
  void setPenAttributes(std::span<const std::uint8_t, 2> parameters);  ///< SPA, 8.10.5.9
  void setPenColour(std::span<const std::uint8_t, 3> parameters);      ///< SPC, 8.10.5.10
  void setPenLocation(int row, int column);                            ///< SPL, 8.10.5.11

  bool hasAttributes(std::span<const std::uint8_t, 4> parameters) const {
    return std::ranges::equal(parameters, attributes_);
  }

  /// What `put` will do: `Growth` where it writes an empty cell without moving others.
  CellChange changeOfPut() const;

  void put(CharacterCode code);
  void backspace();
  void carriageReturn();
  void horizontalCarriageReturn();
  void formFeed();
  void clear();

  bool isEmpty() const;       ///< whether no cell is written
  bool isOnLastLine() const;  ///< whether a carriage return scrolls
  /// The row that the pen writes, or the column in a window that prints up or down.
  int penLine() const { return isHorizontal() ? row_ : column_; }

  /// As it looks. `charset` is not `Automatic`.
  WindowText::Window show(std::uint8_t id, std::uint32_t columnsAcross, Charset charset) const;

 private:
  struct Cell {
    CharacterCode code = 0;
    PackedPen pen;
  };
  struct Position {
    int row = 0;
    int column = 0;
  };

  WindowText::Direction print() const { return static_cast<WindowText::Direction>(print_); }
  bool isHorizontal() const {
    return print() == WindowText::Direction::LeftToRight ||
           print() == WindowText::Direction::RightToLeft;
  }
  // A line is what is printed without a carriage return: a row, or a column.
  int lineCount() const { return isHorizontal() ? rowCount_ : columnCount_; }
  int lineLength() const { return isHorizontal() ? columnCount_ : rowCount_; }
  int lineSpan() const;
  Position position(int line, int cell) const;
  int penCell() const;
  void movePen(int line, int cell);
  Cell* cellAt(int line, int cell);
  const Cell* cellAt(int line, int cell) const;
  Cell& at(int row, int column) {
    return cells_[static_cast<std::size_t>(row * kMostColumns + column)];
  }
  const Cell& at(int row, int column) const {
    return cells_[static_cast<std::size_t>(row * kMostColumns + column)];
  }
  bool advancesForward() const;
  void wrapWord();
  void copyLine(int to, int from);
  void clearLine(int line);
  void eraseFrom(int endRow, int endColumn);
  void apply(std::span<const std::uint8_t, 4> attributes);
  void setStyle(unsigned style);
  void setPenStyle(unsigned style);
  WindowText::Row showRow(int row, Charset charset) const;

  bool isDefined_ = false;
  bool isVisible_ = false;
  bool wrapsWords_ = false;
  std::uint8_t print_ = 0;
  std::uint8_t scroll_ = 0;
  Definition definition_{};
  std::array<std::uint8_t, 4> attributes_{};  // of SWA
  int rowCount_ = 0;
  int columnCount_ = 0;
  PackedPen pen_;
  int row_ = 0;
  int column_ = 0;
  std::array<Cell, std::size_t{kMostRows} * kMostColumns> cells_{};
};

}  // namespace korr::encoding::subtitling::dtvcc
