// SPDX-License-Identifier: MIT

// Digital captions in video frames.
#pragma once

#include "burn/frame_buffer.h"
#include "burn/text_drawing.h"
#include "model/window_text.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// Draws the windows of a screen with their fill and borders, and their text, one letter a cell, as
/// its pens have it. What flashes is drawn as in its bright half. Not thread-safe.
class WindowRenderer {
 public:
  /// `drawing` is not owned.
  explicit WindowRenderer(TextDrawing& drawing) : drawing_(drawing) {}

  /// Draws over what the frame holds.
  void paint(FrameBuffer& frame, const WindowText& text);

 private:
  /// Where a window's cells lie on the frame, in pixels.
  struct Grid {
    double left = 0;
    double top = 0;
    double cellWidth = 0;
    double cellHeight = 0;
    Rectangle area;
  };

  static Grid gridOf(const FrameBuffer& frame, const WindowText& text,
                     const WindowText::Window& window);
  static void paintBorder(FrameBuffer& frame, const WindowText::Window& window, const Grid& grid);
  void paintRow(FrameBuffer& frame, const WindowText::Window& window, const Grid& grid,
                const WindowText::Row& row);
  void paintRun(FrameBuffer& frame, const WindowText::Pen& pen, std::u16string_view text,
                const CellGrid& cells);
  void paintEdges(FrameBuffer& frame, const WindowText::Pen& pen, std::u16string_view text,
                  const CellGrid& cells, TextStyle style);

  TextDrawing& drawing_;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
