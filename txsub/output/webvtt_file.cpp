#include "txsub/output/webvtt_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <span>

#include "txsub/output/cue_time.h"

namespace korr::txsub {

namespace {

using Lines = std::span<const TextLine>;

// A gap of one row still belongs together: double-spaced lines are one utterance.
constexpr std::int32_t kWidestGap = 1;

// The lines at the front that stand together.
Lines firstGroup(Lines lines) {
  std::size_t size = 1;
  while (size < lines.size() &&
         lines[size].row <= lines[size - 1].row + lines[size - 1].height + kWidestGap) {
    ++size;
  }
  return lines.first(size);
}

// "84.67", "50"
std::string percent(double value) {
  char text[16];
  std::snprintf(text, sizeof text, "%.2f", std::clamp(value, 0.0, 100.0));
  std::string number = text;
  number.erase(number.find_last_not_of('0') + 1);
  if (number.back() == '.') number.pop_back();
  return number;
}

struct Anchor {
  const char* align;
  double column;
};

// Lines that end, or are centred, together keep that; all others start at the leftmost one.
Anchor anchorOf(Lines group) {
  const auto start = [](const TextLine& line) { return double(line.column); };
  const auto end = [](const TextLine& line) { return double(line.column + line.columnCount); };
  const auto centre = [&](const TextLine& line) { return (start(line) + end(line)) / 2; };
  const auto spread = [&](auto edge) {
    const auto [least, most] = std::minmax_element(
        group.begin(), group.end(),
        [&](const TextLine& a, const TextLine& b) { return edge(a) < edge(b); });
    return edge(*most) - edge(*least);
  };
  const auto& widest = *std::max_element(
      group.begin(), group.end(),
      [](const TextLine& a, const TextLine& b) { return a.columnCount < b.columnCount; });
  if (group.size() > 1 && spread(start) > 0) {
    if (spread(end) == 0) return {"end", end(widest)};
    if (spread(centre) <= 2) return {"center", centre(widest)};
  }
  return {"start", start(*std::min_element(
                       group.begin(), group.end(),
                       [&](const TextLine& a, const TextLine& b) { return start(a) < start(b); }))};
}

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

std::string settings(const TextScreen& screen, Lines group) {
  const Anchor anchor = anchorOf(group);
  return "line:" + percent(screen.topOf(group.front().row)) +
         "% position:" + percent(screen.leftOf(anchor.column)) + "% align:" + anchor.align;
}

}  // namespace

WebVttFile::WebVttFile(const std::string& path) : file_(path) {
  file_.write("WEBVTT\n\n");
}

void WebVttFile::write(const Cue& cue) {
  file_.write(webVttCues(cue));
}

std::string webVttCues(const Cue& cue) {
  const auto screen = layOut(*cue.subtitle);
  if (!screen) return {};
  const auto [start, stop] = cueMilliseconds(cue);
  const std::string times = cueTimeText(start, '.') + " --> " + cueTimeText(stop, '.');
  std::string out;
  for (Lines rest = screen->lines; !rest.empty();) {
    const Lines group = firstGroup(rest);
    out += times + ' ' + settings(*screen, group) + '\n';
    for (const auto& line : group) {
      for (const auto& span : line.spans) appendSpan(out, span);
      out += '\n';
    }
    out += '\n';
    rest = rest.subspan(group.size());
  }
  return out;
}

}  // namespace korr::txsub
