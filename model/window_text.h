// SPDX-License-Identifier: MIT

// Text in windows: what a service of digital captions shows (CEA-708).
#pragma once

#include <cstdint>
#include <vector>

#include "model/glyph_text.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// A screen of digital captions: the windows that are displayed, as a receiver paints them.
struct WindowText {
  /// CEA-708-E, 8.8; `Flash` blinks between solid and transparent.
  enum class Opacity : std::uint8_t { Solid = 0, Flash = 1, Translucent = 2, Transparent = 3 };

  /// 0 to 255 each; the commands give four levels.
  struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(const Colour&, const Colour&) = default;
  };

  /// Of characters (CEA-708-E, 8.10.5.9) and of windows (8.10.5.8); shadows fall to the side named.
  enum class Edge : std::uint8_t {
    None = 0,
    Raised = 1,
    Depressed = 2,
    Uniform = 3,
    LeftDropShadow = 4,
    RightDropShadow = 5,
  };

  enum class PenSize : std::uint8_t { Small = 0, Standard = 1, Large = 2 };

  enum class Offset : std::uint8_t { Subscript = 0, Normal = 1, Superscript = 2 };

  /// CEA-708-E, 8.5.3.
  enum class Font : std::uint8_t {
    Default = 0,
    MonospacedSerif = 1,
    ProportionalSerif = 2,
    MonospacedSansSerif = 3,
    ProportionalSansSerif = 4,
    Casual = 5,
    Cursive = 6,
    SmallCapitals = 7,
  };

  /// How characters look (CEA-708-E, 8.5).
  struct Pen {
    PenSize size = PenSize::Standard;
    Font font = Font::Default;
    Offset offset = Offset::Normal;
    bool italic = false;
    bool underline = false;
    Edge edge = Edge::None;
    Opacity foregroundOpacity = Opacity::Solid;
    Opacity backgroundOpacity = Opacity::Solid;
    Colour foreground{255, 255, 255};
    Colour background{};
    Colour edgeColour{};

    friend bool operator==(const Pen&, const Pen&) = default;
  };

  /// Neighbouring cells of one pen.
  struct Run {
    std::uint32_t column = 0;  ///< of the first cell, 0 at the window's left edge
    Pen pen;
    std::vector<GlyphText> glyphs;  ///< as they stand on the screen, left to right

    friend bool operator==(const Run&, const Run&) = default;
  };

  struct Row {
    std::uint32_t number = 0;  ///< 0 at the window's upper edge
    std::vector<Run> runs;     ///< left to right; cells between them are empty

    friend bool operator==(const Row&, const Row&) = default;
  };

  /// Which point of a window lies at its place (CEA-708-E, 8.4.4), by rows of three.
  enum class Anchor : std::uint8_t {
    UpperLeft = 0,
    UpperCentre = 1,
    UpperRight = 2,
    MiddleLeft = 3,
    Centre = 4,
    MiddleRight = 5,
    LowerLeft = 6,
    LowerCentre = 7,
    LowerRight = 8,
  };

  enum class Justify : std::uint8_t { Left = 0, Right = 1, Centre = 2, Full = 3 };

  /// Where characters follow one another, and where rows move.
  enum class Direction : std::uint8_t {
    LeftToRight = 0,
    RightToLeft = 1,
    TopToBottom = 2,
    BottomToTop = 3,
  };

  struct Window {
    std::uint8_t id = 0;        ///< 0 to 7
    std::uint8_t priority = 0;  ///< 0 to 7; 0 lies above all
    Anchor anchor = Anchor::UpperLeft;
    double anchorX = 0;             ///< percent of the safe title area from its left edge
    double anchorY = 0;             ///< and from its upper edge
    std::uint32_t rowCount = 0;     ///< 1 to 16
    std::uint32_t columnCount = 0;  ///< 1 to 64
    Justify justify = Justify::Left;
    Direction print = Direction::LeftToRight;
    Direction scroll = Direction::BottomToTop;
    Opacity fillOpacity = Opacity::Solid;
    Colour fill{};
    Edge border = Edge::None;
    Colour borderColour{};
    std::vector<Row> rows;  ///< ascending number, none without runs

    friend bool operator==(const Window&, const Window&) = default;
  };

  /// Cells of the standard pen size across the safe title area: 42 on 16:9 pictures, 32 on 4:3.
  std::uint32_t columnsAcross = 42;
  std::vector<Window> windows;  ///< in the order of painting, the uppermost last

  friend bool operator==(const WindowText&, const WindowText&) = default;
};

/// How large a pen's letters are beside those of the standard size and offset.
double letterSize(const WindowText::Pen& pen);

/// A rectangle in percent of the picture.
struct WindowArea {
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;
};

/// Where a window lies: its cells from its anchor on, moved onto the picture where it would leave
/// it. The safe title area is the inner 80 % of the picture and 15 rows high (CEA-708-E, 8.2).
WindowArea areaOf(const WindowText& text, const WindowText::Window& window);

}  // namespace korr::encoding::subtitling::inline v2_1
