// SPDX-License-Identifier: MIT
#include "files/ttml_text_document.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "cues/language_tag.h"
#include "cues/text_group.h"

namespace korr::txsub {

namespace {

// A line is as high as the rows it covers; its glyphs take four fifths of that (EBU Tech 3380
// recommends 125 %).
constexpr double kLineHeight = 125;

// Without ttp:cellResolution a font size of 100 % is a fifteenth of the picture's height.
constexpr double kFullSize = 100.0 / 15;

std::string colourWithAlpha(TextColour colour, std::uint8_t alpha) {
  char text[4];
  std::snprintf(text, sizeof text, "%02X", static_cast<unsigned>(alpha));
  return colourHex(colour) + text;
}

Attributes spanStyle(const TextSpan& span, bool isEbuTtD) {
  // A window's fill is that of its region, which EBU-TT-D does not show; nor has it outlines.
  const bool isOnFill = span.showsFill && !isEbuTtD;
  const std::uint8_t backgroundAlpha = isOnFill ? 0 : span.backgroundAlpha;
  const bool isSolid = span.foregroundAlpha == 0xFF;
  Attributes style = {
      {"tts:color", isSolid ? colourHex(span.foreground)
                            : colourWithAlpha(span.foreground, span.foregroundAlpha)},
      {"tts:backgroundColor", colourWithAlpha(span.background, backgroundAlpha)}};
  if (span.outline && !isEbuTtD) {
    style.emplace_back("tts:textOutline", colourHex(span.outline->colour) + " 5%");
  }
  if (span.italic) style.emplace_back("tts:fontStyle", "italic");
  if (span.underline) style.emplace_back("tts:textDecoration", "underline");
  return style;
}

Attributes paragraphStyle(const TextScreen& screen, const TextGroup& group) {
  const double lineHeight = group.lines.front().height * screen.rowHeight;
  const double fontSize = lineHeight / kFullSize * 100 * 100 / kLineHeight;
  Attributes style = {{"tts:fontFamily", "proportionalSansSerif"},
                      {"tts:fontSize", decimal(fontSize) + "%"},
                      {"tts:lineHeight", decimal(kLineHeight) + "%"},
                      {"tts:textAlign", alignmentName(group)},
                      // One box behind all lines, a little wider than their text.
                      {"ebutts:linePadding", "0.5c"},
                      {"itts:fillLineGap", "true"}};
  if (group.isRightToLeft()) style.emplace_back("tts:direction", "rtl");
  return style;
}

// From one line of a group to the next, an empty line for a gap of its height included.
int lineBreaks(const TextLine& upper, const TextLine& lower) {
  return std::max(1, (lower.row - upper.row) / upper.height);
}

// The rows of the group, and as much of their width as keeps its alignment where it is.
Attributes regionOf(const TextScreen& screen, const TextGroup& group, bool isEbuTtD) {
  const double top = screen.topOf(group.lines.front().row);
  const double bottom =
      std::min(100.0, screen.topOf(group.lines.back().row + group.lines.back().height));
  const double anchor = screen.leftOf(group.column);
  double left = screen.leftOf(0);
  double right = screen.leftOf(screen.columnCount);
  if (group.align == TextAlign::Start) left = anchor;
  if (group.align == TextAlign::End) right = anchor;
  if (group.align == TextAlign::Center) {
    const double half = std::min(anchor - left, right - anchor);
    left = anchor - half;
    right = anchor + half;
  }
  Attributes region = {{"tts:origin", decimal(left) + "% " + decimal(top) + "%"},
                       {"tts:extent", decimal(right - left) + "% " + decimal(bottom - top) + "%"},
                       // A line too wide for its region wraps away from the picture's edge.
                       {"tts:displayAlign", top + bottom > 100 ? "after" : "before"},
                       {"tts:overflow", "visible"}};
  // Regions of EBU-TT-D have no background.
  if (screen.fill && !isEbuTtD) {
    region.emplace_back("tts:backgroundColor",
                        colourWithAlpha(screen.fill->colour, screen.fill->alpha));
    region.emplace_back("tts:showBackground", "whenActive");
  }
  return region;
}

}  // namespace

TtmlTextDocument::TtmlTextDocument(std::string_view language, bool isEbuTtD)
    : language_(languageTag(language)), isEbuTtD_(isEbuTtD) {
}

void TtmlTextDocument::add(const Cue& cue) {
  const Attributes times = timesOf(cue);
  for (const TextScreen& screen : layOut(*cue.subtitle)) {
    // A paragraph has one font size, which sets the height of its lines, and one direction.
    for (const TextGroup& group : groupsOf(screen, GroupHeights::Equal)) {
      writeParagraph(screen, group, times);
    }
  }
}

void TtmlTextDocument::writeParagraph(const TextScreen& screen, const TextGroup& group,
                                      const Attributes& times) {
  ElementStack stack;
  {
    const auto paragraph = stack.open("p");
    stack.setAttribute("xml:id", "Subtitle" + std::to_string(++paragraphs_));
    stack.setAttribute("region", regions_.idOf(regionOf(screen, group, isEbuTtD_)));
    stack.setAttribute("style", styles_.idOf(paragraphStyle(screen, group)));
    setAttributes(stack, times);
    writeLines(stack, group);
  }
  body_ += takeLine(stack, 3);
}

void TtmlTextDocument::writeLines(ElementStack& paragraph, const TextGroup& group) {
  const TextLine* previous = nullptr;
  for (const TextLine& line : group.lines) {
    for (int i = previous ? lineBreaks(*previous, line) : 0; i > 0; --i) {
      const auto lineBreak = paragraph.open("br");
    }
    previous = &line;
    for (const TextSpan& textSpan : line.spans) {
      const auto span = paragraph.open("span");
      paragraph.setAttribute("style", styles_.idOf(spanStyle(textSpan, isEbuTtD_)));
      paragraph.addText(textSpan.text);
    }
  }
}

std::string TtmlTextDocument::text() {
  if (body_.empty()) {
    // Even a document that shows nothing must have a style and a region.
    styles_.idOf({{"tts:textAlign", "center"}});
    regions_.idOf({{"tts:origin", "10% 10%"}, {"tts:extent", "80% 80%"}});
  }
  std::string text = kXmlDeclaration;
  text +=
      "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:tts=\"http://www.w3.org/ns/ttml#styling\""
      " xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\" xmlns:ebutts=\"urn:ebu:tt:style\""
      " xmlns:itts=\"http://www.w3.org/ns/ttml/profile/imsc1#styling\"";
  if (isEbuTtD_) {
    text += " xmlns:ebuttm=\"urn:ebu:tt:metadata\"";
  } else {
    text += " ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/text\"";
  }
  text += " ttp:timeBase=\"media\" xml:space=\"preserve\" xml:lang=\"" + language_ + "\">\n";
  text += head();
  if (!body_.empty()) {
    text += "  <body>\n    <div>\n";
    text += body_;
    text += "    </div>\n  </body>\n";
  }
  text += "</tt>\n";
  return text;
}

std::string TtmlTextDocument::head() const {
  std::string head = "  <head>\n";
  if (isEbuTtD_) {
    head +=
        "    <metadata>\n"
        "      <ebuttm:documentMetadata>\n"
        "        <ebuttm:conformsToStandard>urn:ebu:tt:distribution:2018-04"
        "</ebuttm:conformsToStandard>\n"
        "      </ebuttm:documentMetadata>\n"
        "    </metadata>\n";
  }
  head += "    <styling>\n" + styles_.lines(3) + "    </styling>\n";
  head += "    <layout>\n" + regions_.lines(3) + "    </layout>\n";
  return head + "  </head>\n";
}

}  // namespace korr::txsub
