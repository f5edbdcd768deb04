// SPDX-License-Identifier: MIT
#include "timed_text/ttml_styles.h"

#include <tuple>

namespace korr::encoding::subtitling::ttml::inline v2_1 {

namespace {

// The alpha digits that the format gives a caption background: the opacity code's name and the
// digits disagree, deliberately.
const char* alphaOf(CaptionOpacity opacity) {
  switch (opacity) {
    case CaptionOpacity::Opaque:
      return "00";
    case CaptionOpacity::SemiTransparent:
      return "7F";
    case CaptionOpacity::Transparent:
      return "FF";
  }
  return "00";
}

const char* fontSizeOf(TeletextSize size, bool ebuTt) {
  if (ebuTt) return size == TeletextSize::Double ? "200%" : "100%";
  switch (size) {
    case TeletextSize::Normal:
      return "1c";
    case TeletextSize::DoubleHeight:
      return "1c 2c";
    case TeletextSize::DoubleWidth:
      return "2c 1c";
    case TeletextSize::Double:
      return "2c";
  }
  return "1c";
}

void writeStyle(const TtmlStyle& style, bool ebuTt, ElementStack& styling) {
  const auto element = styling.open("style");
  styling.setAttribute("xml:id", style.id);
  styling.setAttribute("tts:fontFamily", "proportionalSansSerif");
  styling.setAttribute("tts:backgroundColor", style.backgroundColor);
  styling.setAttribute("tts:color", style.color);
  styling.setAttribute("tts:fontSize", style.fontSize);
  if (ebuTt) {
    styling.setAttribute("tts:lineHeight", "normal");
    styling.setAttribute("ebutts:linePadding", "0.5c");
  }
  // The capital T is the format's, deliberately.
  if (!style.textDecoration.empty()) {
    styling.setAttribute("tts:TextDecoration", style.textDecoration);
  }
  if (!style.fontStyle.empty()) styling.setAttribute("tts:fontStyle", style.fontStyle);
}

}  // namespace

const char* colourOf(TeletextColour colour) {
  switch (colour) {
    case TeletextColour::Red:
      return "#FF0000";
    case TeletextColour::Green:
      return "#00FF00";
    case TeletextColour::Yellow:
      return "#FFFF00";
    case TeletextColour::Blue:
      return "#0000FF";
    case TeletextColour::Magenta:
      return "#FF00FF";
    case TeletextColour::Cyan:
      return "#00FFFF";
    case TeletextColour::Black:
    case TeletextColour::White:
      break;
  }
  return "#FFFFFF";
}

const char* colourOf(CaptionColour colour) {
  switch (colour) {
    case CaptionColour::White:
      return "#FFFFFF";
    case CaptionColour::Green:
      return "#00FF00";
    case CaptionColour::Blue:
      return "#0000FF";
    case CaptionColour::Cyan:
      return "#00FFFF";
    case CaptionColour::Red:
      return "#FF0000";
    case CaptionColour::Yellow:
      return "#FFFF00";
    case CaptionColour::Magenta:
      return "#FF00FF";
    case CaptionColour::Black:
      return "#000000";
  }
  return "#FFFFFF";
}

TtmlStyle styleOf(const TeletextText::Run& run, bool ebuTt) {
  TtmlStyle style;
  style.color = colourOf(run.colour);
  style.backgroundColor = "#00000099";
  style.fontSize = fontSizeOf(run.size, ebuTt);
  return style;
}

TtmlStyle styleOf(const CaptionText::TextRun& run, bool ebuTt) {
  TtmlStyle style;
  style.color = colourOf(run.foreground);
  style.backgroundColor = std::string(colourOf(run.background)) + alphaOf(run.backgroundOpacity);
  if (run.doubleSize == 1) {
    style.fontSize = ebuTt ? "200%" : "2c";
  } else {
    style.fontSize = ebuTt ? "100%" : "1c";
  }
  if (run.underline) style.textDecoration = "underline";
  if (run.italic) style.fontStyle = "italic";
  return style;
}

void TtmlStyleTable::registerStyle(TtmlStyle& style, std::size_t number, bool ebuTt,
                                   ElementStack& styling) {
  if (const auto known = ids_.find(style); known != ids_.end()) {
    style.id = known->second;
    return;
  }
  style.id = "Style" + std::to_string(number);
  writeStyle(style, ebuTt, styling);
  ids_.emplace(style, style.id);
}

bool TtmlStyleTable::ByAttributes::operator()(const TtmlStyle& left, const TtmlStyle& right) const {
  const auto attributes = [](const TtmlStyle& style) {
    return std::tie(style.color, style.backgroundColor, style.fontSize, style.textDecoration,
                    style.fontStyle);
  };
  return attributes(left) < attributes(right);
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
