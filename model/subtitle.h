// SPDX-License-Identifier: MIT

// The neutral subtitle value between the parsers and everything that consumes subtitles.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "model/glyph_text.h"
#include "model/media_time.h"
#include "model/pixel_buffer.h"
#include "model/placed_text.h"
#include "model/window_text.h"

namespace korr::encoding::subtitling::inline v2_1 {

enum class SubtitleKind : std::uint32_t {
  TeletextText = 0,
  CaptionText = 1,
  Bitmap = 2,
  WindowText = 32,  ///< of digital captions; the chain neither makes nor converts it
  PlacedText = 64,  ///< that pictures were read as; the chain neither makes nor converts it
};

/// Teletext alpha colour codes as spacing attributes set them (EN 300 706, 12.2).
enum class TeletextColour : std::uint32_t {
  Black = 0,
  Red = 1,
  Green = 2,
  Yellow = 3,
  Blue = 4,
  Magenta = 5,
  Cyan = 6,
  White = 7,
};

/// Teletext size codes as spacing attributes set them (EN 300 706, 12.2).
enum class TeletextSize : std::uint32_t {
  Normal = 12,
  DoubleHeight = 13,
  DoubleWidth = 14,
  Double = 15,
};

/// A teletext page: the boxed text of its rows.
struct TeletextText {
  /// Cells of one colour and size. The first cell is that of the code that opened the run, a space,
  /// where a code did. An empty glyph is a cell that the wide letter before it covers.
  struct Run {
    std::uint32_t column = 0;  ///< 0 to 39: where the first cell stands
    TeletextColour colour = TeletextColour::White;
    TeletextSize size = TeletextSize::Normal;
    std::vector<GlyphText> glyphs;

    friend bool operator==(const Run&, const Run&) = default;
  };

  struct TextRow {
    std::int32_t number = 0;  ///< 0 to 24
    std::vector<Run> runs;    ///< left to right

    friend bool operator==(const TextRow&, const TextRow&) = default;
  };

  std::vector<TextRow> rows;  ///< ascending row number

  friend bool operator==(const TeletextText&, const TeletextText&) = default;
};

/// The captioning style in force (CEA-608, 6.4.1 to 6.4.3 and 7); none before the first command.
enum class CaptionMode : std::uint32_t {
  None = 0,
  PopOn = 1,
  PaintOn = 2,
  RollUp2 = 3,
  RollUp3 = 4,
  RollUp4 = 5,
  Text = 6,
};

enum class CaptionColour : std::uint32_t {
  White = 1,
  Green = 2,
  Blue = 3,
  Cyan = 4,
  Red = 5,
  Yellow = 6,
  Magenta = 7,
  Black = 8,
};

enum class CaptionOpacity : std::uint32_t {
  Opaque = 1,
  SemiTransparent = 2,
  Transparent = 3,
};

/// A closed-caption screen.
struct CaptionText {
  /// Characters of one style.
  struct TextRun {
    std::vector<GlyphText> glyphs;
    std::uint32_t column = 0;  ///< 0 to 31: where the run starts
    CaptionColour foreground = CaptionColour::White;
    CaptionColour background = CaptionColour::Black;
    CaptionOpacity backgroundOpacity = CaptionOpacity::Opaque;
    std::uint32_t doubleSize = 0;  ///< 0 or 1
    bool underline = false;
    bool italic = false;

    friend bool operator==(const TextRun&, const TextRun&) = default;
  };

  struct TextRow {
    std::vector<TextRun> runs;             ///< in the order in which they were opened
    CaptionMode mode = CaptionMode::None;  ///< the mode current when the row was created
    std::int32_t number = 0;               ///< 1 to 15 from top to bottom

    friend bool operator==(const TextRow&, const TextRow&) = default;
  };

  std::vector<TextRow> rows;  ///< ascending row number

  friend bool operator==(const CaptionText&, const CaptionText&) = default;
};

/// A picture of the whole display. The default value is the empty bitmap: nothing on screen.
struct SubtitleBitmap {
  std::uint8_t visible = 0;  ///< 0 in the empty bitmap
  std::uint32_t width = 0;   ///< pixels
  std::uint32_t height = 0;  ///< pixels
  std::uint32_t aspectNumerator = 1;
  std::uint32_t aspectDenominator = 1;
  /// width * height * 4 bytes; never null.
  std::shared_ptr<const PixelBuffer> pixels = std::make_shared<const PixelBuffer>();
  MediaTime start = 0;
  MediaTime end = 0;
  /// Sequence number of the page, -1 in the empty bitmap; equal values mean equal pictures.
  std::int32_t pageState = -1;
};

/// One subtitle: a kind and the payload of that kind. Movable, not copyable: what a container
/// yields belongs to whoever asked.
class Subtitle {
 public:
  explicit Subtitle(TeletextText text);
  explicit Subtitle(CaptionText text);
  explicit Subtitle(SubtitleBitmap bitmap);
  explicit Subtitle(WindowText text);
  explicit Subtitle(PlacedText text);

  /// A subtitle of `kind` with an empty payload, or with none when `kind` is unknown.
  explicit Subtitle(SubtitleKind kind);

  SubtitleKind kind() const { return kind_; }

  /// The payloads: exactly the one that matches the kind is there, the others are null.
  const TeletextText* teletextText() const { return teletextText_.get(); }
  const CaptionText* captionText() const { return captionText_.get(); }
  const SubtitleBitmap* bitmap() const { return bitmap_.get(); }
  const WindowText* windowText() const { return windowText_.get(); }
  const PlacedText* placedText() const { return placedText_.get(); }

 private:
  SubtitleKind kind_;
  std::unique_ptr<const TeletextText> teletextText_;
  std::unique_ptr<const CaptionText> captionText_;
  std::unique_ptr<const SubtitleBitmap> bitmap_;
  std::unique_ptr<const WindowText> windowText_;
  std::unique_ptr<const PlacedText> placedText_;
};

/// Whether both show the same: equal rows, or the same picture (by `pageState`).
bool operator==(const Subtitle& left, const Subtitle& right);

/// Whether there is nothing to see: no row with text, or a bitmap that is not visible.
bool isEmpty(const Subtitle& subtitle);

}  // namespace korr::encoding::subtitling::inline v2_1
