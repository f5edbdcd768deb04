#include "files/srt_file.h"

#include <string_view>

#include "cues/cue_time.h"
#include "cues/text_layout.h"

namespace korr::txsub {

namespace {

// Six hexadecimal digits, red first.
const char* fontColour(TextColour colour) {
  switch (colour) {
    case TextColour::White:
      break;
    case TextColour::Lime:
      return "#00ff00";
    case TextColour::Blue:
      return "#0000ff";
    case TextColour::Cyan:
      return "#00ffff";
    case TextColour::Red:
      return "#ff0000";
    case TextColour::Yellow:
      return "#ffff00";
    case TextColour::Magenta:
      return "#ff00ff";
    case TextColour::Black:
      return "#000000";
  }
  return "#ffffff";
}

std::string lineText(const TextLine& line, SrtMarkup markup) {
  std::string out;
  for (const auto& span : line.spans) {
    if (markup == SrtMarkup::Plain) {
      out += span.text;
      continue;
    }
    const bool isColoured = span.foreground != TextColour::White;
    if (isColoured) out += std::string("<font color=\"") + fontColour(span.foreground) + "\">";
    if (span.underline) out += "<u>";
    if (span.italic) out += "<i>";
    out += span.text;
    if (span.italic) out += "</i>";
    if (span.underline) out += "</u>";
    if (isColoured) out += "</font>";
  }
  constexpr std::string_view kArrow = "-->";
  for (auto at = out.find(kArrow); at != out.npos; at = out.find(kArrow, at)) {
    out.replace(at, kArrow.size(), "-- >");
  }
  return out;
}

// Players put entries at the bottom unless they are told otherwise.
bool isInUpperHalf(const TextScreen& screen) {
  return screen.topOf(screen.lines.back().row + screen.lines.back().height) <= 50;
}

}  // namespace

void SrtFile::write(const Cue& cue) {
  const std::string text = srtText(*cue.subtitle, markup_);
  if (text.empty()) return;
  const auto [start, stop] = cueMilliseconds(cue);
  file_.write(std::to_string(++entries_) + '\n' + cueTimeText(start, ',') + " --> " +
              cueTimeText(stop, ',') + '\n' + text + '\n');
}

std::string srtText(const encoding::subtitling::Subtitle& subtitle, SrtMarkup markup) {
  const auto screen = layOut(subtitle);
  if (!screen || screen->lines.empty()) return {};
  std::string out;
  if (markup == SrtMarkup::Full && isInUpperHalf(*screen)) out += "{\\an8}";
  for (const auto& line : screen->lines) out += lineText(line, markup) + '\n';
  return out;
}

}  // namespace korr::txsub
