// SPDX-License-Identifier: MIT
#include "cues/text_layout.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>
#include <string_view>
#include <utility>

#include "cues/line_builder.h"
#include "cues/placed_layout.h"
#include "cues/reading_order.h"
#include "cues/window_layout.h"

namespace korr::txsub {

namespace {

namespace model = encoding::subtitling;

// The geometry of CEA-608, 15 rows of 32 columns in the safe area of 80 % (CEA-608, annex on
// display), and of teletext, 25 rows of 40 columns (EN 300 706, 4.1) in the same width.
constexpr std::int32_t kCaptionFirstRow = 1;
constexpr double kSafeAreaStart = 10;
constexpr double kSafeArea = 80;
constexpr double kCaptionRows = 15;
constexpr double kCaptionColumns = 32;
constexpr std::int32_t kTeletextFirstRow = 0;
constexpr double kTeletextRows = 25;
constexpr double kTeletextColumns = 40;

// The eight colours by the bits of red, green and blue.
constexpr std::array kByComponents = {
    TextColour::Black, TextColour::Blue,    TextColour::Lime,   TextColour::Cyan,
    TextColour::Red,   TextColour::Magenta, TextColour::Yellow, TextColour::White,
};

// Further colours are this with eight bits each of red, green and blue.
constexpr unsigned kFurtherColours = 0x1000000;

// What full and no share of a component become between narrow and full range, and by rounding.
constexpr int kPaintedTolerance = 24;

std::array<unsigned, 3> componentsOf(TextColour colour) {
  const auto code = static_cast<unsigned>(colour);
  return {code >> 16 & 0xFF, code >> 8 & 0xFF, code & 0xFF};
}

TextColour furtherColour(const std::array<unsigned, 3>& components) {
  return static_cast<TextColour>(kFurtherColours | components[0] << 16 | components[1] << 8 |
                                 components[2]);
}

// Boxes are dimmed rather than blacked out, as the converter's own documents have them.
constexpr std::uint8_t kTeletextBackgroundAlpha = 0x99;

// Control characters have no glyph, and some would break the file that the text is written to.
bool isVisible(std::string_view glyph) {
  return !glyph.empty() && static_cast<unsigned char>(glyph.front()) >= 0x20 && glyph != "\x7F";
}

template <class Glyphs>
void addGlyphs(LineBuilder& builder, const Glyphs& glyphs, const TextSpan& style) {
  for (const auto& glyph : glyphs) {
    if (isVisible(glyph.view())) builder.add(glyph.view(), style);
  }
}

TextColour colourOf(model::CaptionColour colour) {
  switch (colour) {
    case model::CaptionColour::White:
      return TextColour::White;
    case model::CaptionColour::Green:
      return TextColour::Lime;
    case model::CaptionColour::Blue:
      return TextColour::Blue;
    case model::CaptionColour::Cyan:
      return TextColour::Cyan;
    case model::CaptionColour::Red:
      return TextColour::Red;
    case model::CaptionColour::Yellow:
      return TextColour::Yellow;
    case model::CaptionColour::Magenta:
      return TextColour::Magenta;
    case model::CaptionColour::Black:
      return TextColour::Black;
  }
  return TextColour::White;
}

TextColour colourOf(model::TeletextColour colour) {
  switch (colour) {
    case model::TeletextColour::Black:
      return TextColour::Black;
    case model::TeletextColour::Red:
      return TextColour::Red;
    case model::TeletextColour::Green:
      return TextColour::Lime;
    case model::TeletextColour::Yellow:
      return TextColour::Yellow;
    case model::TeletextColour::Blue:
      return TextColour::Blue;
    case model::TeletextColour::Magenta:
      return TextColour::Magenta;
    case model::TeletextColour::Cyan:
      return TextColour::Cyan;
    case model::TeletextColour::White:
      break;
  }
  return TextColour::White;
}

std::uint8_t alphaOf(model::CaptionOpacity opacity) {
  switch (opacity) {
    case model::CaptionOpacity::Opaque:
      return 0xFF;
    case model::CaptionOpacity::SemiTransparent:
      return 0x7F;
    case model::CaptionOpacity::Transparent:
      return 0;
  }
  return 0xFF;
}

TextSpan styleOf(const model::CaptionText::TextRun& run) {
  return {.text = {},
          .foreground = colourOf(run.foreground),
          .background = colourOf(run.background),
          .backgroundAlpha = alphaOf(run.backgroundOpacity),
          .italic = run.italic,
          .underline = run.underline};
}

TextLine lineOf(const model::CaptionText::TextRow& row) {
  const auto isFilled = [](const auto& run) { return !run.glyphs.empty(); };
  const auto first = std::find_if(row.runs.begin(), row.runs.end(), isFilled);
  LineBuilder builder(row.number, first == row.runs.end() ? 0 : first->column, Blanks::AsTheyAre);
  for (auto run = first; run != row.runs.end(); ++run) {
    if (!isFilled(*run)) continue;
    // A preamble or a tab further right leaves a gap. Where the filter's rules put runs over each
    // other, the code that opened a run takes up a cell at least: its text is a word of its own.
    const TextSpan style = styleOf(*run);
    builder.skipTo(run->column);
    if (!builder.isEmpty() && !builder.endsBlank() && run->glyphs.front().view() != " ") {
      builder.addBlank();
    }
    addGlyphs(builder, run->glyphs, style);
  }
  return builder.take();
}

// Every code takes a cell, and so do the edges of boxes: several blanks mean no more than one.
TextLine lineOf(const model::TeletextText::TextRow& row) {
  LineBuilder builder(row.number, 0, Blanks::AsOne);
  for (const auto& run : row.runs) {
    if (run.glyphs.empty()) continue;
    const TextSpan style{.text = {},
                         .foreground = colourOf(run.colour),
                         .backgroundAlpha = kTeletextBackgroundAlpha};
    builder.skipTo(run.column);
    for (const auto& glyph : run.glyphs) {
      if (glyph.view().empty()) builder.addCovered();
      if (isVisible(glyph.view())) builder.add(glyph.view(), style);
    }
    if (run.size == model::TeletextSize::DoubleHeight || run.size == model::TeletextSize::Double) {
      builder.setHeight(2);
    }
  }
  auto line = builder.take();
  // Teletext sends Hebrew and Arabic as they stand on the screen.
  line.direction = toReadingOrder(line.spans);
  return line;
}

// Captions that keep rolling up leave the picture at its top.
template <class Text>
std::vector<TextLine> linesOf(const Text& text, std::int32_t firstRow) {
  std::vector<TextLine> lines;
  for (const auto& row : text.rows) {
    if (row.number < firstRow) continue;
    auto line = lineOf(row);
    if (!line.spans.empty()) lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace

TextColour textColourOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  constexpr unsigned kLevel = 85;
  const std::array<unsigned, 3> levels = {red / kLevel, green / kLevel, blue / kLevel};
  const bool isFurther = std::any_of(levels.begin(), levels.end(),
                                     [](unsigned level) { return level == 1 || level == 2; });
  if (isFurther) return furtherColour({levels[0] * kLevel, levels[1] * kLevel, levels[2] * kLevel});
  return kByComponents[(levels[0] & 1) << 2 | (levels[1] & 1) << 1 | (levels[2] & 1)];
}

TextColour paintedColourOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  unsigned bits = 0;
  for (const int component : {red, green, blue}) {
    const bool isFull = component >= 0xFF - kPaintedTolerance;
    if (!isFull && component > kPaintedTolerance) return furtherColour({red, green, blue});
    bits = bits << 1 | (isFull ? 1 : 0);
  }
  return kByComponents[bits];
}

const char* colourName(TextColour colour) {
  constexpr std::array kNames = {"white", "lime",   "blue",    "cyan",
                                 "red",   "yellow", "magenta", "black"};
  if ((static_cast<unsigned>(colour) & kFurtherColours) == 0) {
    return kNames[static_cast<unsigned>(colour)];
  }
  unsigned bits = 0;
  for (const unsigned component : componentsOf(colour)) bits = bits << 1 | component >> 7;
  return colourName(kByComponents[bits]);
}

std::string colourHex(TextColour colour) {
  auto components = componentsOf(colour);
  if ((static_cast<unsigned>(colour) & kFurtherColours) == 0) {
    const auto place = std::find(kByComponents.begin(), kByComponents.end(), colour);
    const auto bits = static_cast<unsigned>(place - kByComponents.begin());
    components = {(bits >> 2 & 1) * 255, (bits >> 1 & 1) * 255, (bits & 1) * 255};
  }
  char text[16];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", components[0], components[1], components[2]);
  return text;
}

std::vector<TextScreen> layOut(const model::Subtitle& subtitle) {
  if (const auto* text = subtitle.captionText()) {
    return {TextScreen{.lines = linesOf(*text, kCaptionFirstRow),
                       .firstRow = kCaptionFirstRow,
                       .firstRowTop = kSafeAreaStart,
                       .rowHeight = kSafeArea / kCaptionRows,
                       .firstColumnLeft = kSafeAreaStart,
                       .columnWidth = kSafeArea / kCaptionColumns,
                       .columnCount = kCaptionColumns}};
  }
  if (const auto* text = subtitle.teletextText()) {
    return {TextScreen{.lines = linesOf(*text, kTeletextFirstRow),
                       .firstRow = kTeletextFirstRow,
                       .firstRowTop = 0,
                       .rowHeight = 100 / kTeletextRows,
                       .firstColumnLeft = kSafeAreaStart,
                       .columnWidth = kSafeArea / kTeletextColumns,
                       .columnCount = kTeletextColumns}};
  }
  if (const auto* text = subtitle.windowText()) return layOutWindows(*text);
  if (const auto* text = subtitle.placedText()) return layOutPlaced(*text);
  return {};
}

}  // namespace korr::txsub
