// SPDX-License-Identifier: MIT
#include "timed_text/converter_to_ttml.h"

#include <tinyxml.h>

#include <algorithm>
#include <string>
#include <vector>

#include "timed_text/element_stack.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

namespace {

constexpr const char* kAlignmentStyleId = "textAlignment";

[[noreturn]] void throwUnknownKind() {
  throw util::TessaryException("internal assertion failure");
}

// The document of one root, or of none, as UTF-8 text.
void print(std::unique_ptr<TiXmlElement> root, ByteBuffer& out) {
  TiXmlDocument document;
  document.LinkEndChild(new TiXmlDeclaration("1.0", "UTF-8", ""));
  if (root) document.LinkEndChild(root.release());
  TiXmlPrinter printer;
  printer.SetIndent("  ");
  printer.SetLineBreak("\n");
  document.Accept(&printer);
  const std::string& text = printer.Str();
  out.assign(text.begin(), text.end());
}

void writeNamespaces(ElementStack& stack, SubtitleKind kind, bool ebuTt) {
  stack.setAttribute("xmlns", "http://www.w3.org/ns/ttml");
  stack.setAttribute("xmlns:tt", "http://www.w3.org/ns/ttml");
  stack.setAttribute("xmlns:tts", "http://www.w3.org/ns/ttml#styling");
  stack.setAttribute("xmlns:ttp", "http://www.w3.org/ns/ttml#parameter");
  if (ebuTt) {
    stack.setAttribute("xmlns:ebutts", "urn:ebu:tt:style");
    stack.setAttribute("xmlns:ebuttm", "urn:ebu:tt:metadata");
  } else {
    stack.setAttribute("xmlns:ttm", "http://www.w3.org/ns/ttml#metadata");
  }
  switch (kind) {
    case SubtitleKind::TeletextText:
    case SubtitleKind::CaptionText:
      return;
    case SubtitleKind::Bitmap:
      stack.setAttribute("xmlns:smpte", "http://www.smpte-ra.org/schemas/2052-1/2013/smpte-tt");
      return;
    case SubtitleKind::WindowText:  // no chain makes these
    case SubtitleKind::PlacedText:
      break;
  }
  throwUnknownKind();
}

void writeAlignmentStyle(ElementStack& styling) {
  const auto style = styling.open("style");
  styling.setAttribute("xml:id", kAlignmentStyleId);
  styling.setAttribute("tts:textAlign", "center");
}

// One paragraph: a run with its style, below the previous row.
void writeParagraph(ElementStack& body, const std::string& styleId, std::int32_t lineBreaks,
                    const std::string& text) {
  const auto paragraph = body.open("p");
  body.setAttribute("region", "Region");
  body.setAttribute("style", kAlignmentStyleId);
  for (std::int32_t i = 0; i < lineBreaks; ++i) const auto lineBreak = body.open("br");
  const auto span = body.open("span");
  body.setAttribute("style", styleId);
  body.addText(text);
}

// `blanks`, then the glyphs.
std::string textOf(const std::vector<GlyphText>& glyphs, std::size_t blanks = 0) {
  std::string text(blanks, ' ');
  for (const GlyphText& glyph : glyphs) text += glyph.view();
  return text;
}

// How many rows `row` lies below the one before it in the page, if there is one.
template <class TextRow>
std::int32_t rowsBelow(const std::vector<TextRow>& rows, std::size_t row) {
  return row == 0 ? 0 : std::max(rows[row].number - rows[row - 1].number, 0);
}

}  // namespace

ConverterToTtml::ConverterToTtml(ISubtitleContainer& container, bool ttmlOption,
                                 std::unique_ptr<IPngEncoder> pngEncoder)
    : container_(container), isEbuTt_(ttmlOption), pngCache_(std::move(pngEncoder)) {
}

void ConverterToTtml::convert(ByteBuffer& out, MediaTime time) {
  const Subtitle subtitle = container_.currentSubtitle(time);
  styles_.clear();
  print(buildHead(subtitle), out);
}

void ConverterToTtml::initialDocument(ByteBuffer& out) {
  const Subtitle subtitle = container_.currentSubtitle(0);
  ElementStack stack;
  {
    const auto tt = stack.open("tt");
    writeNamespaces(stack, subtitle.kind(), isEbuTt_);
  }
  print(stack.takeRoot(), out);
}

std::unique_ptr<TiXmlElement> ConverterToTtml::buildHead(const Subtitle& subtitle) {
  if (const auto* text = subtitle.teletextText()) return buildTextHead(*text);
  if (const auto* text = subtitle.captionText()) return buildTextHead(*text);
  if (const auto* bitmap = subtitle.bitmap()) return buildHead(*bitmap);
  throwUnknownKind();
}

// No head when the picture cannot be encoded.
std::unique_ptr<TiXmlElement> ConverterToTtml::buildHead(const SubtitleBitmap& bitmap) {
  if (bitmap.visible == 0) return buildImageHead(bitmap, nullptr);
  const ByteBuffer* png = pngCache_.pngOf(bitmap);
  return png ? buildImageHead(bitmap, png) : nullptr;
}

template <class Text>
std::unique_ptr<TiXmlElement> ConverterToTtml::buildTextHead(const Text& text) {
  // Styles turn up while the body is written, so the two grow side by side.
  ElementStack styling;
  ElementStack body;
  {
    const auto stylingScope = styling.open("styling");
    writeAlignmentStyle(styling);
    const auto bodyScope = body.open("body");
    const auto divScope = body.open("div");
    writeRows(text, styling, body);
  }
  ElementStack stack;
  {
    const auto head = stack.open("head");
    stack.add(*styling.takeRoot());
    stack.add(*body.takeRoot());
  }
  return stack.takeRoot();
}

// Style ids count segments, whether or not a segment brings a new style.
void ConverterToTtml::writeRows(const TeletextText& text, ElementStack& styling,
                                ElementStack& body) {
  std::size_t segment = 0;
  for (std::size_t row = 0; row < text.rows.size(); ++row) {
    const std::int32_t lineBreaks = std::min(rowsBelow(text.rows, row), 1);
    for (const auto& run : text.rows[row].runs) {
      TtmlStyle style = styleOf(run, isEbuTt_);
      styles_.registerStyle(style, segment++, isEbuTt_, styling);
      writeParagraph(body, style.id, lineBreaks, textOf(run.glyphs));
    }
  }
}

// Style ids are row positions: two new styles of one row share an id, deliberately. Blanks keep
// each run's column.
void ConverterToTtml::writeRows(const CaptionText& text, ElementStack& styling,
                                ElementStack& body) {
  // Rows can roll up without end, and every run of the next row repeats the breaks.
  std::int32_t lineBreaksLeft = kMostLineBreaks;
  for (std::size_t row = 0; row < text.rows.size(); ++row) {
    std::size_t column = 0;
    for (const auto& run : text.rows[row].runs) {
      const std::int32_t lineBreaks = std::min(rowsBelow(text.rows, row), lineBreaksLeft);
      lineBreaksLeft -= lineBreaks;
      TtmlStyle style = styleOf(run, isEbuTt_);
      styles_.registerStyle(style, row, isEbuTt_, styling);
      const std::size_t blanks = run.column > column ? run.column - column : 0;
      writeParagraph(body, style.id, lineBreaks, textOf(run.glyphs, blanks));
      if (!run.glyphs.empty()) column = run.column + run.glyphs.size();
    }
  }
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
