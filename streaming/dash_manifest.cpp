// SPDX-License-Identifier: MIT
#include "streaming/dash_manifest.h"

#include <tinyxml.h>

#include <cstdio>
#include <utility>

#include "timed_text/element_stack.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::fromTicks90k;
using encoding::subtitling::ttml::ElementStack;

// xs:duration
std::string durationText(StreamTicks ticks) {
  char text[32];
  std::snprintf(text, sizeof text, "PT%.6fS", static_cast<double>(ticks) / kStreamTicksPerSecond);
  return text;
}

void writeDescriptor(ElementStack& out, const char* element, const char* scheme,
                     const char* value) {
  const auto descriptor = out.open(element);
  out.setAttribute("schemeIdUri", scheme);
  out.setAttribute("value", value);
}

// 5.3.9.6: equal durations in a row are one entry.
void writeTimeline(ElementStack& out, const DashPeriod& period) {
  const auto timeline = out.open("SegmentTimeline");
  const auto& durations = period.durations;
  for (std::size_t i = 0; i < durations.size();) {
    std::size_t run = 1;
    while (i + run < durations.size() && durations[i + run] == durations[i]) ++run;
    const auto entry = out.open("S");
    if (i == 0) out.setAttribute("t", std::to_string(period.firstTicks));
    out.setAttribute("d", std::to_string(durations[i]));
    if (run > 1) out.setAttribute("r", std::to_string(run - 1));
    i += run;
  }
}

// 5.3.9.4
void writeTemplate(ElementStack& out, const DashPeriod& period, const SegmentNames& names) {
  const auto segments = out.open("SegmentTemplate");
  out.setAttribute("timescale", std::to_string(kStreamTicksPerSecond));
  out.setAttribute("presentationTimeOffset", std::to_string(period.presentationOffset));
  out.setAttribute("startNumber", std::to_string(period.firstNumber));
  out.setAttribute("initialization", names.map);
  out.setAttribute("media", names.prefix + "$Number$" + names.extension);
  writeTimeline(out, period);
}

// 5.8.4.2 and 5.8.5.5: what the track is for.
void writePurpose(ElementStack& out, const DashTrack& track) {
  constexpr const char* kRoles = "urn:mpeg:dash:role:2011";
  if (track.forHardOfHearing) {
    writeDescriptor(out, "Accessibility", kRoles, "caption");
    writeDescriptor(out, "Accessibility", "urn:tva:metadata:cs:AudioPurposeCS:2007", "2");
  }
  writeDescriptor(out, "Role", kRoles, track.forHardOfHearing ? "caption" : "subtitle");
  if (track.label.empty()) return;
  const auto label = out.open("Label");
  out.addText(track.label);
}

void writeTrack(ElementStack& out, const DashPeriod& period, const DashTrack& track) {
  const auto set = out.open("AdaptationSet");
  out.setAttribute("id", std::to_string(track.id));
  out.setAttribute("contentType", "text");
  out.setAttribute("mimeType", "application/mp4");
  out.setAttribute("codecs", track.codecs);
  out.setAttribute("lang", track.language);
  out.setAttribute("segmentAlignment", "true");
  out.setAttribute("startWithSAP", "1");
  writePurpose(out, track);
  writeTemplate(out, period, track.names);
  const auto representation = out.open("Representation");
  out.setAttribute("id", "subtitles-" + std::to_string(track.id));
  out.setAttribute("bandwidth", "8000");
}

void writePeriod(ElementStack& out, const DashPeriod& period,
                 const std::vector<DashTrack>& tracks) {
  const auto element = out.open("Period");
  out.setAttribute("id", period.id);
  out.setAttribute("start", durationText(period.start));
  for (const auto& track : tracks) writeTrack(out, period, track);
}

StreamTicks endOf(const DashPeriod& period) {
  StreamTicks end = period.start + (period.firstTicks - period.presentationOffset);
  for (const auto duration : period.durations) end += duration;
  return end;
}

void writeTimes(ElementStack& out, const DashManifest& manifest) {
  const auto longest = toStreamTicks(manifest.longestSegment);
  out.setAttribute("minBufferTime", durationText(longest));
  out.setAttribute("maxSegmentDuration", durationText(longest));
  if (!manifest.isDynamic) {
    const StreamTicks end = manifest.periods.empty() ? 0 : endOf(manifest.periods.back());
    out.setAttribute("mediaPresentationDuration", durationText(end));
    return;
  }
  out.setAttribute("availabilityStartTime", dateTimeText(manifest.beginning));
  out.setAttribute("publishTime", dateTimeText(manifest.published));
  out.setAttribute("minimumUpdatePeriod", durationText(longest / 3));
  if (manifest.window) {
    out.setAttribute("timeShiftBufferDepth", durationText(toStreamTicks(*manifest.window)));
  }
}

std::string print(ElementStack& out) {
  TiXmlPrinter printer;
  printer.SetIndent("  ");
  out.takeRoot()->Accept(&printer);
  return printer.Str();
}

}  // namespace

DashManifest manifestOf(const StreamHistory& history, std::vector<DashTrack> tracks, bool isEnded,
                        WallTime now) {
  DashManifest manifest{.isDynamic = !isEnded,
                        .beginning = history.beginning(),
                        .published = now,
                        .window = history.window(),
                        .longestSegment = history.target() + history.target() / 2,
                        .periods = {},
                        .tracks = std::move(tracks)};
  std::uint64_t jumps = history.discontinuitySequence();
  for (const auto& segment : history.listed()) {
    if (segment.isDiscontinuous) ++jumps;
    if (manifest.periods.empty() || segment.isDiscontinuous) {
      manifest.periods.push_back(
          {.id = std::to_string(jumps),
           .start = segment.periodOffset,
           .presentationOffset = segment.startTicks - (segment.offset - segment.periodOffset),
           .firstTicks = segment.startTicks,
           .firstNumber = segment.number});
    }
    manifest.periods.back().durations.push_back(segment.duration);
  }
  return manifest;
}

std::string toXml(const DashManifest& manifest) {
  ElementStack out;
  {
    const auto root = out.open("MPD");
    out.setAttribute("xmlns", "urn:mpeg:dash:schema:mpd:2011");
    out.setAttribute("profiles", "urn:mpeg:dash:profile:isoff-live:2011");
    out.setAttribute("type", manifest.isDynamic ? "dynamic" : "static");
    writeTimes(out, manifest);
    for (const auto& period : manifest.periods) writePeriod(out, period, manifest.tracks);
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + print(out);
}

std::string adaptationSets(const DashManifest& manifest) {
  std::string text;
  if (manifest.periods.empty()) return text;
  for (const auto& track : manifest.tracks) {
    ElementStack out;
    writeTrack(out, manifest.periods.back(), track);
    text += print(out);
  }
  return text;
}

}  // namespace korr::txsub
