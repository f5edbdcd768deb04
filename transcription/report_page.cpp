// SPDX-License-Identifier: MIT
#include "transcription/report_page.h"

#include <cmath>
#include <cstdio>

#include "cues/cue_time.h"
#include "files/output_file.h"
#include "files/picture.h"
#include "recognition/writing_order.h"
#include "util/base64.h"

namespace korr::txsub {

namespace {

constexpr const char* kHead = R"(<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Doubtful cues</title>
<style>
  body { font: 16px/1.5 system-ui, sans-serif; max-width: 960px; margin: 2em auto; padding: 0 1em;
         background: #f4f5f7; color: #1a1d21; }
  h1 { font-size: 1.5em; margin-bottom: 0; } h2 { font-size: 1.1em; margin: 2em 0 .5em; }
  p { margin: .3em 0; }
  article { background: #fff; border: 1px solid #d5d9df; border-radius: 6px; margin: 1em 0;
            padding: .7em 1em 1em; }
  header { display: flex; justify-content: space-between; color: #5a6270; font-size: .9em; }
  .pair { display: grid; grid-template-columns: 1fr 1fr; gap: 12px; margin: .6em 0; }
  .pair > div { background: #101214; border-radius: 4px; padding: 10px; text-align: center;
                display: flex; flex-direction: column; justify-content: center; min-width: 0; }
  img { max-width: 100%; height: auto; margin: auto; }
  .text { font-size: 1.25em; overflow-wrap: anywhere; }
  ul { margin: .3em 0 0; padding-left: 1.2em; }
  meter { width: 8em; vertical-align: middle; }
</style>
)";

std::string escaped(const std::string& text) {
  std::string out;
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
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string timeText(MediaTime time) {
  return cueTimeText(toMilliseconds(time), '.');
}

std::string lineText(const recognition::RecognisedLine& line) {
  std::string out;
  for (const auto& run : line.runs) {
    char colour[8];
    std::snprintf(colour, sizeof colour, "#%02x%02x%02x", run.colour.red, run.colour.green,
                  run.colour.blue);
    out += std::string("<span style=\"color:") + colour + (run.italic ? ";font-style:italic" : "") +
           "\">" + escaped(run.text) + "</span>";
  }
  return out;
}

std::string pictureText(const encoding::subtitling::SubtitleBitmap& bitmap) {
  if (bitmap.visible == 0) return "<p style=\"color:#889\">no letters</p>";
  const PictureArea whole{.x = 0, .y = 0, .width = bitmap.width, .height = bitmap.height};
  return "<img alt=\"the picture\" src=\"data:image/png;base64," +
         util::encodeBase64(PictureSet().add(bitmap, whole).png) + "\">";
}

}  // namespace

void ReportPage::add(const DoubtfulCue& cue) {
  if (++cues_ > kMostCues) return;
  if (cue.service != service_) body_ += "<h2>" + escaped(cue.service) + "</h2>\n";
  service_ = cue.service;
  const auto percent = std::to_string(std::lround(cue.text.confidence * 100));
  body_ += "<article>\n<header><span>" + timeText(cue.start) + " to " + timeText(cue.stop) +
           "</span><span><meter max=\"100\" value=\"" + percent + "\"></meter> " + percent +
           " % sure</span></header>\n<div class=\"pair\"><div>" + pictureText(cue.picture) +
           "</div><div class=\"text\">";
  for (const auto& line : cue.text.lines) body_ += "<div dir=\"auto\">" + lineText(line) + "</div>";
  body_ += "</div></div>\n<ul>\n";
  for (const auto& doubt : cue.text.doubts) body_ += "<li>" + escaped(doubt) + "</li>\n";
  body_ += "</ul>\n</article>\n";
}

void ReportPage::write(const std::string& path, const std::string& title) const {
  OutputFile file(path);
  file.write(kHead);
  file.write("<h1>" + escaped(title) + "</h1>\n<p>" + std::to_string(cues_) +
             (cues_ == 1 ? " cue is" : " cues are") + " worth a look.");
  if (cues_ > kMostCues) file.write(" The first " + std::to_string(kMostCues) + " are shown.");
  file.write("</p>\n");
  file.write(body_);
  file.write("</html>\n");
  file.commit();
}

}  // namespace korr::txsub
