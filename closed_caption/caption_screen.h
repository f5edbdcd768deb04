// A caption memory as a receiver lays it out: cells in rows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/glyph_text.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// How characters are written. Flash is not kept: no file could show it.
struct CaptionStyle {
  CaptionColour foreground = CaptionColour::White;
  CaptionColour background = CaptionColour::Black;
  CaptionOpacity backgroundOpacity = CaptionOpacity::Opaque;
  bool italic = false;
  bool underline = false;

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

  /// Rows are 1 to `kRows`, columns 0 to `kColumns` - 1.
  struct Place {
    std::int32_t row = kRows;
    std::uint32_t column = 0;

    friend bool operator==(const Place&, const Place&) = default;
  };

  /// Writes a character. `mode` becomes that of a row that was empty.
  void write(Place place, GlyphText glyph, const CaptionStyle& style, CaptionMode mode);

  /// Writes the space that a spacing attribute is shown as (CEA-608, 6.2; 47 CFR 79.101 (h)).
  void writeAttribute(Place place, const CaptionStyle& style, CaptionMode mode);

  void erase(Place place);
  void eraseToEndOfRow(Place place);
  void clear();

  /// Empties every row but `count` of them that end at `base`.
  void keepWindow(std::int32_t base, std::int32_t count);

  /// Moves each row up by `rows`, or down where that is negative; what leaves the screen is gone.
  void shift(std::int32_t rows);

  /// The style of the character just before `place`, or null when that cell is empty.
  const CaptionStyle* styleBefore(Place place) const;

  /// The style of the last character of the row before `place`, or null when there is none.
  const CaptionStyle* styleOnRow(Place place) const;

  /// Whether no cell holds anything.
  bool isEmpty() const;

  /// Rows that hold nothing but spaces are left out. Runs part where the style changes or cells are
  /// empty, each with its true column.
  CaptionText toText() const;

  friend bool operator==(const CaptionScreen&, const CaptionScreen&) = default;

 private:
  struct Cell {
    GlyphText glyph;  // empty: nothing here
    CaptionStyle style;
    bool isAttribute = false;

    bool isEmpty() const { return glyph.view().empty(); }
    friend bool operator==(const Cell&, const Cell&) = default;
  };

  struct Row {
    std::vector<Cell> cells;  // the last one is not empty
    CaptionMode mode = CaptionMode::None;

    friend bool operator==(const Row&, const Row&) = default;
  };

  Row& row(std::int32_t number) { return rows_[static_cast<std::size_t>(number - 1)]; }
  const Row& row(std::int32_t number) const { return rows_[static_cast<std::size_t>(number - 1)]; }
  void put(Place place, const Cell& cell, CaptionMode mode);
  static void trim(Row& row);
  static std::vector<CaptionText::TextRun> runsOf(const Row& row);

  std::array<Row, kRows> rows_;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
