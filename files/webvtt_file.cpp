#include "files/webvtt_file.h"

#include <algorithm>

#include "cues/cue_time.h"
#include "cues/text_group.h"

namespace korr::txsub {

namespace {

// W3C WebVTT, 4.2.2: what would read as a tag or a character reference.
void appendEscaped(std::string& out, const std::string& text) {
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += c;
    }
  }
}

std::string colourClasses(const TextSpan& span) {
  std::string classes;
  if (span.foreground != TextColour::White) {
    classes += std::string(".") + colourName(span.foreground);
  }
  if (span.background != TextColour::Black) {
    classes += std::string(".bg_") + colourName(span.background);
  }
  return classes;
}

void appendSpan(std::string& out, const TextSpan& span) {
  const std::string classes = colourClasses(span);
  if (!classes.empty()) out += "<c" + classes + '>';
  if (span.underline) out += "<u>";
  if (span.italic) out += "<i>";
  appendEscaped(out, span.text);
  if (span.italic) out += "</i>";
  if (span.underline) out += "</u>";
  if (!classes.empty()) out += "</c>";
}

// A row can hold more characters than the picture has columns, blanks first.
std::string settings(const TextScreen& screen, const TextGroup& group) {
  const double column = std::min(group.column, screen.columnCount);
  return "line:" + decimal(screen.topOf(group.lines.front().row)) +
         "% position:" + decimal(screen.leftOf(column)) + "% align:" + alignmentName(group);
}

}  // namespace

WebVttFile::WebVttFile(const std::string& path) : file_(path) {
  file_.write("WEBVTT\n\n");
}

void WebVttFile::write(const Cue& cue) {
  file_.write(webVttCues(cue));
}

std::vector<WebVttBlock> webVttBlocks(const encoding::subtitling::Subtitle& subtitle) {
  std::vector<WebVttBlock> blocks;
  const auto screen = layOut(subtitle);
  if (!screen) return blocks;
  for (const TextGroup& group : groupsOf(*screen, GroupHeights::Any)) {
    WebVttBlock& block = blocks.emplace_back();
    block.settings = settings(*screen, group);
    for (const auto& line : group.lines) {
      if (!block.payload.empty()) block.payload += '\n';
      for (const auto& span : line.spans) appendSpan(block.payload, span);
    }
  }
  return blocks;
}

std::string webVttCues(const Cue& cue) {
  const auto [start, stop] = cueMilliseconds(cue);
  const std::string times = cueTimeText(start, '.') + " --> " + cueTimeText(stop, '.');
  std::string out;
  for (const auto& block : webVttBlocks(*cue.subtitle)) {
    out += times + ' ' + block.settings + '\n' + block.payload + "\n\n";
  }
  return out;
}

}  // namespace korr::txsub
