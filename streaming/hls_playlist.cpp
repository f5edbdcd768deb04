// SPDX-License-Identifier: MIT
#include "streaming/hls_playlist.h"

#include <chrono>
#include <cstdio>
#include <sstream>

namespace korr::txsub {

namespace {

constexpr std::string_view kVariant = "#EXT-X-STREAM-INF:";

// Four decimals would be off by a millisecond a minute; five are not off by a tick.
std::string secondsText(StreamTicks ticks) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", static_cast<double>(ticks) / kStreamTicksPerSecond);
  return text;
}

// RFC 8216, 4.2: a quoted-string has no line feed and no quotation mark.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"') {
      result += '\'';
    } else if (static_cast<unsigned char>(c) >= 0x20) {
      result += c;
    }
  }
  return result + '"';
}

bool isRelative(std::string_view uri) {
  return uri.find("://") == uri.npos && !uri.starts_with('/') && !uri.starts_with("data:");
}

// The variant with the group, and its codecs with the subtitles' where they are told
// (RFC 8216, 4.3.4.2).
std::string withSubtitles(std::string line, const SubtitleRendition& rendition) {
  constexpr std::string_view kCodecs = "CODECS=\"";
  const auto codecs = line.find(kCodecs);
  if (codecs != line.npos) line.insert(codecs + kCodecs.size(), rendition.codecs + ',');
  return line + ",SUBTITLES=" + quoted(rendition.group);
}

// A tag whose URI attribute is relative, from where the new playlist lies.
std::string moveUri(std::string line, const std::string& prefix) {
  constexpr std::string_view kUri = "URI=\"";
  const auto at = line.find(kUri);
  if (at == line.npos) return line;
  const auto from = at + kUri.size();
  if (isRelative(std::string_view(line).substr(from))) line.insert(from, prefix);
  return line;
}

}  // namespace

MediaPlaylist playlistOf(const StreamHistory& history, const SegmentNames& names, bool isEnded) {
  const MediaTime longest = history.target() + history.target() / 2;
  MediaPlaylist playlist{
      .targetDuration = static_cast<unsigned>((longest + encoding::subtitling::kSecond / 2) /
                                              encoding::subtitling::kSecond),
      // Players line renditions up by it where there is no better, and packagers begin with 0.
      .mediaSequence = history.listed().empty() ? 0 : history.listed().front().number - 1,
      .discontinuitySequence = history.discontinuitySequence(),
      .isEvent = !history.window(),
      .map = names.map,
      .entries = {},
      .isEnded = isEnded};
  for (const auto& segment : history.listed()) {
    playlist.entries.push_back({.uri = names.nameOf(segment.number),
                                .duration = segment.duration,
                                .isDiscontinuous = segment.isDiscontinuous,
                                .wallTime = segment.wallTime});
  }
  return playlist;
}

std::string toText(const MediaPlaylist& playlist) {
  std::string text = "#EXTM3U\n";
  // 7: EXT-X-MAP without I-frames only asks for 6; 3: durations with decimals.
  text += playlist.map.empty() ? "#EXT-X-VERSION:3\n" : "#EXT-X-VERSION:6\n";
  text += "#EXT-X-TARGETDURATION:" + std::to_string(playlist.targetDuration) + '\n';
  text += "#EXT-X-MEDIA-SEQUENCE:" + std::to_string(playlist.mediaSequence) + '\n';
  if (playlist.discontinuitySequence != 0) {
    text +=
        "#EXT-X-DISCONTINUITY-SEQUENCE:" + std::to_string(playlist.discontinuitySequence) + '\n';
  }
  // 4.3.3.5; at the end it stays an event, as 6.2.1 lets nothing but EXT-X-ENDLIST be added.
  if (playlist.isEvent) text += "#EXT-X-PLAYLIST-TYPE:EVENT\n";
  if (!playlist.map.empty()) text += "#EXT-X-MAP:URI=" + quoted(playlist.map) + '\n';
  for (const auto& entry : playlist.entries) {
    if (entry.isDiscontinuous) text += "#EXT-X-DISCONTINUITY\n";
    text += "#EXT-X-PROGRAM-DATE-TIME:" + dateTimeText(entry.wallTime) + '\n';
    text += "#EXTINF:" + secondsText(entry.duration) + ",\n" + entry.uri + '\n';
  }
  if (playlist.isEnded) text += "#EXT-X-ENDLIST\n";
  return text;
}

std::string mediaLine(const SubtitleRendition& rendition) {
  std::string line = "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=" + quoted(rendition.group) +
                     ",NAME=" + quoted(rendition.name);
  if (rendition.language != "und") line += ",LANGUAGE=" + quoted(rendition.language);
  line += rendition.isDefault ? ",DEFAULT=YES" : ",DEFAULT=NO";
  line += ",AUTOSELECT=YES,FORCED=NO";
  if (rendition.forHardOfHearing) {
    line +=
        ",CHARACTERISTICS=\"public.accessibility.transcribes-spoken-dialog,"
        "public.accessibility.describes-music-and-sound\"";
  }
  return line + ",URI=" + quoted(rendition.uri) + '\n';
}

std::string masterPlaylist(const VideoPlaylist& video,
                           const std::vector<SubtitleRendition>& renditions) {
  std::string media;
  for (const auto& rendition : renditions) media += mediaLine(rendition);
  if (video.text.find(kVariant) == std::string::npos) {
    const std::string variant =
        std::string(kVariant) + "BANDWIDTH=" + std::to_string(video.bandwidth);
    return "#EXTM3U\n#EXT-X-VERSION:6\n" + media +
           (renditions.empty() ? variant : withSubtitles(variant, renditions.front())) + '\n' +
           video.uri + '\n';
  }
  std::string text;
  std::istringstream lines(video.text);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.starts_with(kVariant) && !renditions.empty()) {
      line = withSubtitles(line, renditions.front());
    }
    const bool isUri = !line.empty() && line.front() != '#';
    if (isUri && isRelative(line)) line.insert(0, video.prefix);
    text += (isUri ? line : moveUri(line, video.prefix)) + '\n';
    if (line == "#EXTM3U") text += media;
  }
  return text;
}

std::string dateTimeText(WallTime time) {
  using namespace std::chrono;
  const auto moment = sys_time<milliseconds>(milliseconds(time));
  const auto day = floor<days>(moment);
  const year_month_day date(day);
  const hh_mm_ss clock(moment - day);
  char text[64];
  std::snprintf(
      text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text;
}

}  // namespace korr::txsub
