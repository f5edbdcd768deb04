// SPDX-License-Identifier: MIT
#include "files/preview/preview_document.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "cues/cue_time.h"
#include "cues/text_layout.h"
#include "files/preview/preview_template.h"
#include "readers/record_format.h"
#include "util/base64.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::SubtitleBitmap;
using Json = nlohmann::ordered_json;

double seconds(MediaTime time) {
  return static_cast<double>(toMilliseconds(time)) / 1000;
}

// By its name where it has one.
std::string colourOf(TextColour colour) {
  return colour <= TextColour::Black ? colourName(colour) : colourHex(colour);
}

// A colour as style sheets have it; "color-mix(...)" where the picture shows through.
std::string cssColour(TextColour colour, std::uint8_t alpha) {
  if (alpha == 0) return "transparent";
  const std::string name = colourOf(colour);
  if (alpha == 0xFF) return name;
  const int percent = alpha * 100 / 0xFF;
  return "color-mix(in srgb, " + name + " " + std::to_string(percent) + "%, transparent)";
}

const char* edgeName(TextEdge edge) {
  switch (edge) {
    case TextEdge::Raised:
      return "raised";
    case TextEdge::Depressed:
      return "depressed";
    case TextEdge::Uniform:
      break;
    case TextEdge::LeftDropShadow:
      return "left";
    case TextEdge::RightDropShadow:
      return "right";
  }
  return "uniform";
}

Json jsonOf(const TextOutline& outline) {
  return {{"colour", colourOf(outline.colour)}, {"edge", edgeName(outline.edge)}};
}

Json jsonOf(const TextSpan& span) {
  Json json{{"text", span.text},
            {"colour", cssColour(span.foreground, span.foregroundAlpha)},
            {"background",
             span.showsFill ? "transparent" : cssColour(span.background, span.backgroundAlpha)}};
  if (span.italic) json["italic"] = true;
  if (span.underline) json["underline"] = true;
  if (span.outline) json["outline"] = jsonOf(*span.outline);
  if (span.size != 1) json["size"] = span.size;
  if (span.offset == TextOffset::Subscript) json["offset"] = "sub";
  if (span.offset == TextOffset::Superscript) json["offset"] = "super";
  return json;
}

// Where a window's justification puts a line.
double columnOf(const TextScreen& screen, const TextLine& line) {
  const double free = std::max(0.0, screen.columnCount - line.columnCount);
  if (screen.align == TextAlign::End) return free;
  if (screen.align == TextAlign::Center) return free / 2;
  return line.column;
}

// Nothing to see where a window has neither fill nor border.
void addWindow(Json& windows, const TextScreen& screen) {
  if (!screen.fill && !screen.border) return;
  windows.push_back({{"left", screen.firstColumnLeft},
                     {"top", screen.firstRowTop},
                     {"width", screen.columnCount * screen.columnWidth},
                     {"height", screen.rowCount * screen.rowHeight},
                     {"row", screen.rowHeight}});
  if (screen.fill) windows.back()["fill"] = cssColour(screen.fill->colour, screen.fill->alpha);
  if (screen.border) windows.back()["border"] = jsonOf(*screen.border);
}

void addLines(Json& lines, const TextScreen& screen) {
  for (const TextLine& line : screen.lines) {
    Json spans = Json::array();
    for (const TextSpan& span : line.spans) spans.push_back(jsonOf(span));
    const double column = columnOf(screen, line);
    lines.push_back({{"left", screen.leftOf(column)},
                     {"top", screen.topOf(line.row)},
                     {"row", screen.rowHeight},
                     {"cell", screen.columnWidth},
                     {"height", line.height},
                     {"spans", std::move(spans)}});
    if (line.direction == TextDirection::RightToLeft) {
      lines.back()["right"] = screen.leftOf(column + line.columnCount);
    }
  }
}

Json contentOf(const std::vector<TextScreen>& screens) {
  Json lines = Json::array();
  Json windows = Json::array();
  for (const TextScreen& screen : screens) {
    addLines(lines, screen);
    addWindow(windows, screen);
  }
  Json content{{"lines", std::move(lines)}};
  if (!windows.empty()) content["windows"] = std::move(windows);
  return content;
}

// Where an area lies on the display, in percent.
Json contentOf(const SubtitleBitmap& bitmap, const PictureArea& area, std::size_t picture) {
  const auto percent = [](std::uint32_t part, std::uint32_t whole) { return part * 100.0 / whole; };
  return {{"picture", picture},
          {"left", percent(area.x, bitmap.width)},
          {"top", percent(area.y, bitmap.height)},
          {"width", percent(area.width, bitmap.width)},
          {"height", percent(area.height, bitmap.height)}};
}

// Within a script element no '<' may stand as it is.
std::string scriptText(const Json& json) {
  const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    if (c == '<') {
      escaped += "\\u003c";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

}  // namespace

struct PreviewTrack::TimedContent {
  MediaTime start = 0;
  MediaTime stop = 0;
  Json content;
};

PreviewTrack::PreviewTrack(std::vector<std::string>& pictures, PictureSet& pictureSet)
    : pictures_(pictures), pictureSet_(pictureSet) {
}

PreviewTrack::~PreviewTrack() = default;

bool PreviewTrack::isEmpty() const {
  return cues_.empty();
}

void PreviewTrack::onCue(const Cue& cue) {
  TimedContent timed{.start = cue.start, .stop = cue.stop, .content = {}};
  if (const auto* bitmap = cue.subtitle->bitmap()) {
    const auto area = visibleArea(*bitmap);
    if (!area) return;
    const auto picture = pictureSet_.add(*bitmap, *area);
    if (picture.isNew) pictures_.push_back(util::encodeBase64(picture.png));
    timed.content = contentOf(*bitmap, *area, picture.number - 1);
  } else {
    timed.content = contentOf(layOut(*cue.subtitle));
    if (timed.content["lines"].empty()) return;
  }
  cues_.push_back(std::move(timed));
}

void PreviewTrack::addText(MediaTime start, MediaTime stop, const Subtitle& text,
                           double confidence) {
  auto cue = std::ranges::lower_bound(cues_, start, {}, &TimedContent::start);
  for (; cue != cues_.end() && cue->start < stop; ++cue) {
    cue->content.update(contentOf(layOut(text)));
    cue->content["sure"] = confidence;
  }
}

Json PreviewTrack::takeCues(MediaTime origin) {
  const auto since = [origin](MediaTime time) { return time > origin ? time - origin : 0; };
  Json cues = Json::array();
  for (TimedContent& cue : cues_) {
    Json json{{"start", seconds(since(cue.start))}, {"stop", seconds(since(cue.stop))}};
    json.update(cue.content);
    cues.push_back(std::move(json));
  }
  cues_.clear();
  return cues;
}

std::string pageTitle(const std::string& input) {
  return input == "-" ? "standard input" : utf8FromPath(pathFromUtf8(input).filename());
}

PreviewDocument::PreviewDocument() = default;
PreviewDocument::~PreviewDocument() = default;

std::unique_ptr<PreviewTrack> PreviewDocument::makeTrack() {
  return std::make_unique<PreviewTrack>(pictures_, pictureSet_);
}

void PreviewDocument::add(const Service& service, PreviewTrack& track, MediaTime origin) {
  services_.push_back(
      {{"name", displayName(service)},
       {"pid", pidText(service.pid)},
       {"kind", kindOf(service)},
       {"language", service.language + (service.hearingImpaired ? " (hearing impaired)" : "")},
       {"cues", track.takeCues(origin)}});
}

void PreviewDocument::write(OutputFile& file, const std::string& title, MediaTime duration) const {
  const Json data{{"input", title},
                  {"duration", seconds(duration)},
                  {"services", services_},
                  {"pictures", pictures_}};
  file.write(kPreviewBeforeData);
  file.write(scriptText(data));
  file.write(kPreviewAfterData);
}

}  // namespace korr::txsub
