// SPDX-License-Identifier: MIT
#include "burn/window_renderer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

namespace korr::encoding::subtitling::burn {
namespace {

constexpr std::uint32_t kWidth = 1050;  // a column is 20 pixels wide
constexpr std::uint32_t kHeight = 750;  // a row is 40 high

// Every letter is a block from (4, 4) to (12, 20) of its cell.
class Blocks final : public IGlyphRasteriser {
 public:
  GlyphMask rasterise(std::u16string_view letter, const FontFace& face) override {
    faces.push_back(face);
    if (letter == u" ") return {};
    return {.left = 4,
            .top = 4,
            .width = 8,
            .height = 16,
            .coverage = std::vector<std::uint8_t>(8 * 16, 0xFF)};
  }
  static std::vector<FontFace> faces;
};
std::vector<FontFace> Blocks::faces;

class Picture {
 public:
  explicit Picture(const WindowText::Window& window) {
    Blocks::faces.clear();
    TextDrawing drawing(std::make_unique<Blocks>());
    FrameBuffer frame(pixels_, kWidth, kHeight);
    WindowRenderer(drawing).paint(frame, {.columnsAcross = 42, .windows = {window}});
  }

  std::uint32_t at(std::int64_t x, std::int64_t y) const {
    return pixels_[static_cast<std::size_t>(y * kWidth + x)];
  }

 private:
  std::vector<std::uint32_t> pixels_ = std::vector<std::uint32_t>(kWidth * kHeight);
};

// From (105, 75) on, ten cells of 20 by two of 40 pixels.
WindowText::Window windowOf(const WindowText::Pen& pen, std::size_t letters = 2,
                            std::uint32_t column = 0) {
  WindowText::Window window;
  window.rowCount = 2;
  window.columnCount = 10;
  window.fill = {0, 0, 255};
  window.rows = {{.number = 1,
                  .runs = {{.column = column,
                            .pen = pen,
                            .glyphs = std::vector<GlyphText>(letters, GlyphText('x'))}}}};
  return window;
}

constexpr std::uint32_t kBlue = 0xFF0000FF;
constexpr std::uint32_t kBlack = 0xFF000000;
constexpr std::uint32_t kWhite = 0xFFFFFFFF;
constexpr std::uint32_t kRed = 0xFFFF0000;

TEST(WindowRenderer, FillsTheWindowAndPutsLettersIntoTheirCells) {
  const Picture picture(windowOf({}));
  EXPECT_EQ(picture.at(104, 80), 0u);
  EXPECT_EQ(picture.at(105, 75), kBlue);
  EXPECT_EQ(picture.at(304, 154), kBlue);
  EXPECT_EQ(picture.at(305, 154), 0u);
  EXPECT_EQ(picture.at(304, 155), 0u);
  EXPECT_EQ(picture.at(105, 115), kBlack) << "the pen's background";
  EXPECT_EQ(picture.at(144, 154), kBlack);
  EXPECT_EQ(picture.at(145, 154), kBlue);
  EXPECT_EQ(picture.at(110, 122), kWhite);
  EXPECT_EQ(picture.at(130, 122), kWhite);
  EXPECT_EQ(picture.at(150, 122), kBlue);
}

TEST(WindowRenderer, JustifiesRowsAndHidesWhatLeavesTheWindow) {
  auto window = windowOf({});
  window.justify = WindowText::Justify::Right;
  EXPECT_EQ(Picture(window).at(265, 115), kBlack);
  EXPECT_EQ(Picture(window).at(264, 115), kBlue);
  window.justify = WindowText::Justify::Centre;
  EXPECT_EQ(Picture(window).at(185, 115), kBlack);
  EXPECT_EQ(Picture(window).at(225, 115), kBlue);
  auto indented = windowOf({}, 2, 3);
  indented.justify = WindowText::Justify::Centre;
  EXPECT_EQ(Picture(indented).at(185, 115), kBlack);
  EXPECT_EQ(Picture(indented).at(225, 115), kBlue);
  EXPECT_EQ(Picture(windowOf({}, 20)).at(306, 115), 0u);
}

TEST(WindowRenderer, DrawsOpacitiesEdgesAndUnderline) {
  auto window = windowOf({.underline = true,
                          .edge = WindowText::Edge::Uniform,
                          .backgroundOpacity = WindowText::Opacity::Transparent,
                          .edgeColour = {255, 0, 0}});
  window.fillOpacity = WindowText::Opacity::Translucent;
  const Picture edged(window);
  EXPECT_EQ(edged.at(120, 117), 0x80000080u) << "the fill shows through the pen's background";
  EXPECT_EQ(edged.at(110, 120), kWhite) << "letters lie over their edges";
  for (const auto& [x, y] : {std::pair{107, 122}, {118, 122}, {112, 118}, {112, 136}}) {
    EXPECT_EQ(edged.at(x, y), kRed) << x << ',' << y;
  }
  EXPECT_EQ(edged.at(122, 151), kWhite) << "the underline";

  window = windowOf({.edge = WindowText::Edge::RightDropShadow, .edgeColour = {255, 0, 0}});
  EXPECT_EQ(Picture(window).at(119, 137), kRed);
  EXPECT_EQ(Picture(window).at(107, 122), kBlack);
  const auto edge = [](WindowText::Edge kind) {
    return Picture(windowOf({.edge = kind, .edgeColour = {255, 0, 0}}));
  };
  EXPECT_EQ(edge(WindowText::Edge::LeftDropShadow).at(106, 137), kRed);
  EXPECT_EQ(edge(WindowText::Edge::Raised).at(118, 136), kRed);
  EXPECT_EQ(edge(WindowText::Edge::Raised).at(107, 118), kBlack);
  EXPECT_EQ(edge(WindowText::Edge::Depressed).at(107, 118), kRed);
  EXPECT_EQ(edge(WindowText::Edge::Depressed).at(118, 136), kBlack);

  window = windowOf({.foregroundOpacity = WindowText::Opacity::Transparent});
  EXPECT_EQ(Picture(window).at(110, 122), kBlack);
}

TEST(WindowRenderer, DrawsBordersAroundTheWindow) {
  auto window = windowOf({});
  window.borderColour = {255, 0, 0};
  window.border = WindowText::Edge::Uniform;
  const Picture framed(window);
  for (const auto& [x, y] : {std::pair{104, 74}, {200, 74}, {306, 100}, {200, 156}}) {
    EXPECT_EQ(framed.at(x, y), kRed) << x << ',' << y;
  }
  EXPECT_EQ(framed.at(105, 75), kBlue);
  constexpr std::uint32_t kDarkRed = 0xFF7F0000;
  window.border = WindowText::Edge::Raised;
  EXPECT_EQ(Picture(window).at(200, 74), kRed);
  EXPECT_EQ(Picture(window).at(200, 156), kDarkRed);
  window.border = WindowText::Edge::Depressed;
  EXPECT_EQ(Picture(window).at(200, 74), kDarkRed);
  EXPECT_EQ(Picture(window).at(200, 156), kRed);
  window.border = WindowText::Edge::LeftDropShadow;
  EXPECT_EQ(Picture(window).at(102, 156), kRed);
  EXPECT_EQ(Picture(window).at(306, 100), 0u);
}

TEST(WindowRenderer, ChoosesFontsSizesAndNarrowsWideLetters) {
  (void)Picture(windowOf({.size = WindowText::PenSize::Large,
                          .font = WindowText::Font::ProportionalSerif,
                          .italic = true}));
  const FontFace large = Blocks::faces.at(0);
  EXPECT_EQ(large.family, "Times New Roman");
  EXPECT_TRUE(large.isItalic);
  (void)Picture(windowOf({}));
  const FontFace standard = Blocks::faces.at(0);
  EXPECT_GT(large.size, standard.size);
  auto korean = windowOf({});
  korean.rows[0].runs[0].glyphs = {GlyphText("가")};
  (void)Picture(korean);
  EXPECT_LT(Blocks::faces.at(0).widthScale, standard.widthScale * 0.6);
}

}  // namespace
}  // namespace korr::encoding::subtitling::burn
