// SPDX-License-Identifier: MIT
#include "files/srt_file.h"

#include <algorithm>

#include <string_view>

#include "cues/cue_time.h"
#include "cues/text_layout.h"

namespace korr::txsub {

namespace {

// Six hexadecimal digits, red first.
std::string fontColour(TextColour colour) {
  std::string text = colourHex(colour);
  for (char& c : text) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
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
  if (screen.lines.empty()) return false;
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
  const auto screens = layOut(subtitle);
  std::string out;
  const bool isUpper = !screens.empty() && std::ranges::all_of(screens, isInUpperHalf);
  if (markup == SrtMarkup::Full && isUpper) out += "{\\an8}";
  for (const auto& screen : screens) {
    for (const auto& line : screen.lines) out += lineText(line, markup) + '\n';
  }
  return out;
}

}  // namespace korr::txsub
