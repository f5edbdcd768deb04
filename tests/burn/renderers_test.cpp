// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "burn/bitmap_renderer.h"
#include "burn/closed_captions_renderer.h"
#include "burn/teletext_renderer.h"
#include "burn/text_drawing.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::burn {
namespace {

using closed_caption::ClosedCaptionsRenderer;
using teletext::lib_teletext::TeletextRenderer;
using ::testing::Contains;
using ::testing::Not;

constexpr std::uint32_t kPaper = 0xFF102030;

// Every letter but the blank is one dot at its pen; says how often it was asked.
class DotRasteriser final : public IGlyphRasteriser {
 public:
  explicit DotRasteriser(int& calls) : calls_(calls) {}

  GlyphMask rasterise(std::u16string_view letter, const FontFace&) override {
    ++calls_;
    if (letter == u" ") return {};
    return {0, 0, 1, 1, {255}};
  }

 private:
  int& calls_;
};

// Shows what `next` makes.
class FakeContainer final : public ISubtitleContainer {
 public:
  Subtitle currentSubtitle(MediaTime) override { return next(); }

  std::function<Subtitle()> next = [] { return Subtitle(SubtitleKind::CaptionText); };
};

class Renderers : public ::testing::Test {
 protected:
  static std::vector<GlyphText> glyphs(std::string_view ascii) {
    std::vector<GlyphText> result;
    for (const char& letter : ascii) result.emplace_back(std::string_view(&letter, 1));
    return result;
  }

  void showCaption(const CaptionText::TextRun& run, std::int32_t row) {
    container_.next = [=] { return Subtitle(CaptionText{{{{run}, CaptionMode::PopOn, row}}}); };
  }

  void drawCaption(const CaptionText::TextRun& run, std::int32_t row) {
    showCaption(run, row);
    ClosedCaptionsRenderer(container_, drawing_).draw(frame_, 1);
  }

  std::uint32_t pixelAt(std::int64_t x, std::int64_t y) const {
    return memory_[static_cast<std::size_t>(y * 720 + x)];
  }

  // The smallest rectangle of what is no longer paper.
  Rectangle drawnArea() const {
    Rectangle area{720, 576, 0, 0};
    for (std::int64_t y = 0; y < 576; ++y) {
      for (std::int64_t x = 0; x < 720; ++x) {
        if (pixelAt(x, y) == kPaper) continue;
        area = {std::min(area.left, x), std::min(area.top, y), std::max(area.right, x + 1),
                std::max(area.bottom, y + 1)};
      }
    }
    return area;
  }

  int rasterisations_ = 0;
  FakeContainer container_;
  TextDrawing drawing_{std::make_unique<DotRasteriser>(rasterisations_)};
  std::vector<std::uint32_t> memory_ = std::vector<std::uint32_t>(720 * 576, kPaper);
  FrameBuffer frame_{memory_, 720, 576};
};

TEST_F(Renderers, LayCaptionsOutOnThirtyFourByFifteenCells) {
  const auto standard = ClosedCaptionsRenderer::layoutOf(720, 576);
  EXPECT_EQ(standard, (ClosedCaptionsRenderer::Layout{17, 31, 72, 26, 24}));
  EXPECT_EQ(standard.top + 15 * standard.cellHeight, 491);
  const auto high = ClosedCaptionsRenderer::layoutOf(1920, 1080);
  EXPECT_EQ(high.left + 28 * high.cellWidth, 1452);

  drawCaption({.glyphs = glyphs("AB"), .column = 3}, 15);
  EXPECT_EQ(drawnArea(), (Rectangle{72 + 3 * 17, 491, 72 + 5 * 17, 491 + 31}));
  EXPECT_EQ(pixelAt(72 + 3 * 17, 491), 0xFFFFFFFF) << "the first letter's dot";
  EXPECT_EQ(pixelAt(72 + 4 * 17, 491), 0xFFFFFFFF) << "the second letter's, one cell on";
  EXPECT_EQ(pixelAt(72 + 4 * 17 + 1, 491), 0xFF000000) << "the box around it";
}

TEST_F(Renderers, MixTheCaptionsBackgroundByItsOpacity) {
  drawCaption({.glyphs = glyphs(" "),
               .background = CaptionColour::Blue,
               .backgroundOpacity = CaptionOpacity::SemiTransparent},
              1);
  EXPECT_EQ(pixelAt(80, 60), 0xFF081098) << "0x800000FF over the paper";

  drawCaption({.glyphs = glyphs(" "), .backgroundOpacity = CaptionOpacity::Transparent}, 3);
  EXPECT_EQ(drawnArea().bottom, 57 + 31) << "a transparent box leaves no trace";
}

TEST_F(Renderers, DrawAnItalicRunWithoutItsUnderline) {
  drawCaption({.glyphs = glyphs(" "), .underline = true}, 1);
  EXPECT_THAT(memory_, Contains(0xFFFFFFFF));
  drawCaption({.glyphs = glyphs(" "), .underline = true, .italic = true}, 1);
  EXPECT_THAT(memory_, Not(Contains(0xFFFFFFFF)));
}

TEST_F(Renderers, LeaveAnUnchangedFrameAlone) {
  showCaption({.glyphs = glyphs("A")}, 1);
  ClosedCaptionsRenderer renderer(container_, drawing_);
  renderer.draw(frame_, 1);
  std::fill(memory_.begin(), memory_.end(), kPaper);
  frame_.isUntouched = true;
  renderer.draw(frame_, 2);
  EXPECT_TRUE(drawnArea().isEmpty()) << "same memory and caption, untouched: nothing to draw";
  frame_.isUntouched = false;
  renderer.draw(frame_, 3);
  EXPECT_FALSE(drawnArea().isEmpty()) << "a new picture needs the caption again";
  EXPECT_EQ(rasterisations_, 1) << "letters are drawn from memory";
}

TEST_F(Renderers, NeverWriteOutsideTheFrame) {
  // A margin of paper around a small view, and captions across its edges and far outside of it.
  const std::span<std::uint32_t> inner(memory_.data() + 720 * 100 + 100, 720 * 20);
  for (const std::uint32_t size : {0u, 1u, 2u, 17u}) {
    FrameBuffer view(inner, size, size, 720, {-91, -40, 649, 500});
    for (const std::int32_t row : {-2147483647, -3, 0, 1, 15, 2147483647}) {
      for (const std::uint32_t column : {0u, 31u, 4294967295u}) {
        showCaption({.glyphs = glyphs("ABCDEFGHIJKLMNOPQRSTUVWXYZ"), .column = column}, row);
        ClosedCaptionsRenderer(container_, drawing_).draw(view, 1);
      }
    }
  }
  const auto area = drawnArea();
  EXPECT_TRUE(area.isEmpty() ||
              (area.left >= 100 && area.top >= 100 && area.right <= 117 && area.bottom <= 117));
  EXPECT_THROW(FrameBuffer(inner, 720, 21, 720, {}), std::invalid_argument);
  EXPECT_THROW(FrameBuffer(inner, 720, 2, 719, {}), std::invalid_argument);
}

TEST_F(Renderers, StretchTeletextOfDoubleSizeOverItsNeighbours) {
  const auto show = [&](TeletextSize size, std::vector<GlyphText> cells = glyphs(" ABC")) {
    container_.next = [=] {
      return Subtitle(TeletextText{.rows = {{20, {{5, TeletextColour::Yellow, size, cells}}}}});
    };
    std::fill(memory_.begin(), memory_.end(), kPaper);
    TeletextRenderer(container_, drawing_).draw(frame_, 1);
  };
  // Cells of 14 by 18 pixels from (72, 57).
  show(TeletextSize::Normal);
  EXPECT_EQ(drawnArea(), (Rectangle{142, 417, 142 + 4 * 14, 417 + 18}));
  EXPECT_EQ(pixelAt(142 + 14, 417), 0xFFFFFF00);
  EXPECT_EQ(pixelAt(142, 417), 0xFF000000) << "the cell of the code that opened the run";
  show(TeletextSize::Double);
  EXPECT_EQ(drawnArea(), (Rectangle{142, 417, 142 + 4 * 14, 417 + 36}));
  EXPECT_EQ(pixelAt(142 + 28, 417), 0xFFFFFF00) << "B covers two cells; A and C lie under it";

  const GlyphText covered;
  show(TeletextSize::Double, {GlyphText(' '), GlyphText('A'), covered, GlyphText('B'), covered});
  EXPECT_EQ(drawnArea(), (Rectangle{156, 417, 156 + 4 * 14, 417 + 36}));
  EXPECT_EQ(pixelAt(156 + 28, 417), 0xFFFFFF00) << "covered cells are not left out again";
}

TEST_F(Renderers, StretchBitmapsOverThePicture) {
  auto pixels = std::make_shared<PixelBuffer>(2, 2);
  pixels->addPaintedRows({0, 1});
  const std::uint8_t row[] = {255, 0, 0, 255, 0, 0, 255, 128};
  std::copy(std::begin(row), std::end(row), pixels->data());
  container_.next = [=] {
    return Subtitle(SubtitleBitmap{.visible = 1, .width = 2, .height = 2, .pixels = pixels});
  };
  BitmapRenderer(container_).draw(frame_, 1);
  EXPECT_EQ(pixelAt(0, 0), 0xFFFF0000) << "red";
  EXPECT_EQ(pixelAt(719, 0), 0xFF081098) << "half of blue over the paper";
  EXPECT_EQ(pixelAt(0, 575), kPaper);

  container_.next = [] { return Subtitle(SubtitleKind::TeletextText); };
  EXPECT_THROW(BitmapRenderer(container_).draw(frame_, 2), util::TessaryException);
}

TEST(TextDrawing, KeepsCombiningMarksWithTheirLetter) {
  EXPECT_THAT(lettersOf(u"ae\u0301\u0302\U0001F600b"),
              ::testing::ElementsAre(u"a", u"e\u0301\u0302", u"\U0001F600", u"b"));
}

TEST(GlyphRasteriser, FillsTheCellOfACaption) {
  const auto rasteriser = createGlyphRasteriser();
  const auto layout = ClosedCaptionsRenderer::layoutOf(1920, 1080);
  const FontFace face{
      "Lucida Console", layout.fontSize,
      1.485 * static_cast<double>(layout.cellWidth) / static_cast<double>(layout.cellHeight), 0.8,
      false};
  const auto capital = rasteriser->rasterise(u"M", face);
  ASSERT_EQ(capital.coverage.size(), std::size_t{capital.width} * capital.height);
  EXPECT_GT(capital.width, layout.cellWidth / 2) << "the letter M fills most of its cell";
  EXPECT_GE(capital.left, -3);
  EXPECT_LE(capital.left + std::int64_t{capital.width}, layout.cellWidth + 3);
  EXPECT_GE(capital.top, -3);
  EXPECT_LE(capital.top + std::int64_t{capital.height}, layout.cellHeight + 3);
  EXPECT_EQ(*std::max_element(capital.coverage.begin(), capital.coverage.end()), 255);
  EXPECT_TRUE(rasteriser->rasterise(u" ", face).coverage.empty());
  EXPECT_TRUE(rasteriser->rasterise(u"M", {"Lucida Console", 1e9, 1, 1, false}).coverage.empty());
  const char16_t half[] = {0xD83D, 0};
  rasteriser->rasterise(half, face);
}

}  // namespace
}  // namespace korr::encoding::subtitling::burn
