// SPDX-License-Identifier: MIT

// A caption memory as a receiver lays it out: cells in rows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/glyph_text.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// How characters are written, in four bytes: there is one to each cell. Flash is not kept: no file
/// could show it.
struct CaptionStyle {
  CaptionColour foreground : 8 = CaptionColour::White;
  CaptionColour background : 8 = CaptionColour::Black;
  CaptionOpacity backgroundOpacity : 8 = CaptionOpacity::Opaque;
  bool italic : 1 = false;
  bool underline : 1 = false;

  friend bool operator==(const CaptionStyle&, const CaptionStyle&) = default;
};

/// The displayed or the non-displayed memory: 15 rows of cells, each empty (the picture shows) or
/// with a character. A receiver ends a row at column 32; here text that is authored past it is
/// kept, deliberately, up to `kColumns`.
class CaptionScreen {
 public:
  static constexpr std::int32_t kRows = 15;
  static constexpr std::uint32_t kColumns = 128;        ///< that a row can hold
  static constexpr std::uint32_t kVisibleColumns = 32;  ///< that codes can address

  /// Rows are 1 to `kRows`, columns 0 to `kColumns` - 1. Passed by reference: the column has often
  /// just been written, and a copy of both would wait for it.
  struct Place {
    std::int32_t row = kRows;
    std::uint32_t column = 0;
  };

  /// Writes a character with the attributes of the one before it, else with those of `pen`
  /// (CEA-608, C.7), and returns which. `mode` becomes that of a row that was empty.
  CaptionStyle write(const Place& place, const GlyphText& glyph, const CaptionStyle& pen,
                     CaptionMode mode);

  /// Writes the space that a spacing attribute is shown as (CEA-608, 6.2; 47 CFR 79.101 (h)).
  void writeAttribute(const Place& place, const CaptionStyle& style, CaptionMode mode);

  void erase(const Place& place);
  void eraseToEndOfRow(const Place& place);
  void clear();

  /// Empties every row but `count` of them that end at `base`.
  void keepWindow(std::int32_t base, std::int32_t count);

  /// Moves the `count` rows that end at `base` up by one; the top one is gone, the lowest empty.
  void rollUp(std::int32_t base, std::int32_t count);

  /// Moves the `count` rows that end at `from` so that they end at `to`. The others are empty.
  void moveWindow(std::int32_t from, std::int32_t to, std::int32_t count);

  /// The style of the character just before `place`, or null when that cell is empty.
  const CaptionStyle* styleBefore(const Place& place) const {
    const auto& cells = row(place.row).cells;
    if (place.column == 0 || place.column > cells.size()) return nullptr;
    const Cell& before = cells[place.column - 1];
    return before.isEmpty() ? nullptr : &before.style;
  }

  /// The style of the last character of the row before `place`, or null when there is none.
  const CaptionStyle* styleOnRow(const Place& place) const;

  /// Rows that hold nothing but spaces are left out. Runs part where the style changes or cells are
  /// empty, each with its true column.
  CaptionText toText() const;

 private:
  struct Cell {
    GlyphText glyph;  // empty: nothing here
    CaptionStyle style;
    bool isAttribute = false;

    bool isEmpty() const { return glyph.view().empty(); }
  };

  struct Row {
    std::vector<Cell> cells;  // the last one is not empty
    CaptionMode mode = CaptionMode::None;
  };

  Row& row(std::int32_t number) { return rows_[static_cast<std::size_t>(number - 1)]; }
  const Row& row(std::int32_t number) const { return rows_[static_cast<std::size_t>(number - 1)]; }
  void put(const Place& place, const Cell& cell, CaptionMode mode);
  static void trim(Row& row);
  static std::vector<CaptionText::TextRun> runsOf(const Row& row);

  std::array<Row, kRows> rows_;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
