// SPDX-License-Identifier: MIT
#include "files/webvtt_file.h"

#include <algorithm>
#include <utility>

#include "cues/cue_time.h"
#include "cues/text_group.h"

namespace korr::txsub {

namespace {

const std::string kBackground = "bg_";

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

std::vector<std::string> colourClasses(const TextSpan& span) {
  std::vector<std::string> classes;
  const std::string foreground = colourName(span.foreground);
  const std::string background = colourName(span.background);
  if (foreground != "white") classes.push_back(foreground);
  if (background != "black") classes.push_back(kBackground + background);
  return classes;
}

void appendSpan(WebVttBlock& block, const TextSpan& span) {
  std::string& out = block.payload;
  const auto classes = colourClasses(span);
  block.classes.insert(classes.begin(), classes.end());
  if (!classes.empty()) {
    out += "<c";
    for (const auto& name : classes) out += '.' + name;
    out += '>';
  }
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

void WebVttFile::write(const Cue& cue) {
  if (isBegun_) return file_.write(webVttCues(cue));
  held_ += webVttCues(cue, &classes_);
  if (held_.size() > kMostHeld) writeHeld(allColourClasses());
}

void WebVttFile::flush() {
  if (!isPipe_) return;
  if (!isBegun_ && !held_.empty()) writeHeld(allColourClasses());
  file_.flush();
}

void WebVttFile::finish() {
  if (!isBegun_) writeHeld(classes_);
  file_.commit();
}

void WebVttFile::writeHeld(const ColourClasses& classes) {
  isBegun_ = true;
  file_.write(webVttHeader(classes) + std::exchange(held_, {}));
}

std::string webVttHeader(const ColourClasses& classes) {
  std::string header = "WEBVTT\n\n";
  if (classes.empty()) return header;
  header += "STYLE\n";
  for (const auto& name : classes) {
    const bool isBackground = name.starts_with(kBackground);
    const std::string colour = isBackground ? name.substr(kBackground.size()) : name;
    header += "::cue(." + name + ") { " + (isBackground ? "background-color" : "color") + ": " +
              colour + " }\n";
  }
  return header + '\n';
}

const ColourClasses& allColourClasses() {
  static const ColourClasses classes = [] {
    ColourClasses all;
    for (int i = 0; i <= static_cast<int>(TextColour::Black); ++i) {
      const std::string name = colourName(static_cast<TextColour>(i));
      all.insert(name);
      all.insert(kBackground + name);
    }
    return all;
  }();
  return classes;
}

std::vector<WebVttBlock> webVttBlocks(const encoding::subtitling::Subtitle& subtitle) {
  std::vector<WebVttBlock> blocks;
  for (const TextScreen& screen : layOut(subtitle)) {
    for (const TextGroup& group : groupsOf(screen, GroupHeights::Any)) {
      WebVttBlock& block = blocks.emplace_back();
      block.settings = settings(screen, group);
      for (const auto& line : group.lines) {
        if (!block.payload.empty()) block.payload += '\n';
        for (const auto& span : line.spans) appendSpan(block, span);
      }
    }
  }
  return blocks;
}

std::string webVttCues(const Cue& cue, ColourClasses* classes) {
  const auto [start, stop] = cueMilliseconds(cue);
  const std::string times = cueTimeText(start, '.') + " --> " + cueTimeText(stop, '.');
  std::string out;
  for (const auto& block : webVttBlocks(*cue.subtitle)) {
    if (classes) classes->insert(block.classes.begin(), block.classes.end());
    out += times + ' ' + block.settings + '\n' + block.payload + "\n\n";
  }
  return out;
}

}  // namespace korr::txsub
