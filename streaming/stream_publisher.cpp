// SPDX-License-Identifier: MIT
#include "streaming/stream_publisher.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "cues/language_tag.h"
#include "files/output_file.h"
#include "model/byte_buffer.h"
#include "streaming/segment_writers.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::asText;
using Json = nlohmann::ordered_json;

constexpr const char* kState = "stream.json";
constexpr const char* kTextGroup = "subtitles";
constexpr const char* kImscGroup = "subtitles-imsc";

Json toJsonValue(const StreamService& service) {
  return {{"folder", service.folder},
          {"name", service.name},
          {"language", service.language},
          {"hardOfHearing", service.forHardOfHearing},
          {"pictures", service.hasPictures}};
}

StreamService fromJsonValue(const Json& json) {
  return {.folder = json.at("folder").get<std::string>(),
          .name = json.at("name").get<std::string>(),
          .language = json.at("language").get<std::string>(),
          .forHardOfHearing = json.at("hardOfHearing").get<bool>(),
          .hasPictures = json.at("pictures").get<bool>()};
}

// A segment of which nothing but its place is left.
Segment emptySegment(const PublishedSegment& published) {
  return {.number = published.number,
          .start = 0,
          .stop = encoding::subtitling::fromTicks90k(published.duration),
          .startTicks = published.startTicks,
          .stopTicks = published.startTicks + published.duration};
}

}  // namespace

StreamPublisher::StreamPublisher(IStreamStore& store, PublisherSettings settings)
    : store_(store), settings_(std::move(settings)), history_(settings_.window, settings_.target) {
  restore();
}

// Manifests are written anew from the list: a run may have been killed between the two.
void StreamPublisher::restore() {
  const auto state = store_.get(kState);
  if (!state) return;
  hasState_ = true;
  try {
    const auto json = Json::parse(*state);
    history_.restore(json.at("history").dump());
    for (const auto& service : json.at("services")) services_.push_back(fromJsonValue(service));
  } catch (const std::exception& error) {
    throw OutputError(std::string("the output has a '") + kState +
                      "' that cannot be gone on with: " + error.what() +
                      "; name another output or remove it");
  }
  putManifests();
}

void StreamPublisher::offer(const StreamService& service) {
  const auto known = std::ranges::find(services_, service.folder, &StreamService::folder);
  if (known != services_.end()) {
    *known = service;
    putInitialisation(service);
    return;
  }
  putInitialisation(service);
  for (const auto& published : history_.kept()) putSegment(service, emptySegment(published), {});
  services_.push_back(service);
}

void StreamPublisher::publish(const Segment& segment, WallTime wallTime, const CuesOf& cuesOf) {
  checkState();
  for (const auto& service : services_) putSegment(service, segment, cuesOf(service));
  history_.add(segment, wallTime);
  checkState();
  putState();
  putManifests();
  removeOld();
}

void StreamPublisher::end() {
  isEnded_ = true;
  checkState();
  putManifests();
}

StreamPublisher::Track StreamPublisher::mp4Track(Mp4Codec codec, const char* name, bool isHls) {
  const std::string prefix = std::string(name) + '-';
  return {.codec = codec,
          .isHls = isHls,
          .names = {.prefix = prefix, .extension = ".m4s", .map = prefix + "init.mp4"}};
}

// The text of IMSC 1 serves HLS and DASH with the same files.
std::vector<StreamPublisher::Track> StreamPublisher::tracksOf(const StreamService& service) {
  if (service.hasPictures) return {mp4Track(Mp4Codec::StppImage, "im1i", false)};
  return {{.codec = {}, .isHls = true, .names = {.prefix = "webvtt-", .extension = ".vtt"}},
          mp4Track(Mp4Codec::StppText, "im1t", true),
          mp4Track(Mp4Codec::Wvtt, "wvtt", false)};
}

void StreamPublisher::putInitialisation(const StreamService& service) {
  for (const auto& track : tracksOf(service)) {
    if (!track.codec) continue;
    const auto bytes = mp4Initialisation({.codec = *track.codec, .language = service.language});
    store_.put(service.folder + '/' + track.names.map, asText(bytes));
  }
}

void StreamPublisher::putSegment(const StreamService& service, const Segment& segment,
                                 const std::vector<SegmentCue>& cues) {
  for (const auto& track : tracksOf(service)) {
    const std::string name = service.folder + '/' + track.names.nameOf(segment.number);
    if (track.codec) {
      store_.put(name, asText(mp4Segment(*track.codec, service.language, segment, cues)));
    } else {
      store_.put(name, webVttSegment(segment, cues));
    }
  }
}

// Playlists would go on naming what somebody has removed.
void StreamPublisher::checkState() {
  if (!hasState_ || store_.has(kState)) return;
  throw OutputError(std::string("the output has lost its '") + kState +
                    "': it was removed while the stream runs; a new run starts from the beginning");
}

void StreamPublisher::putState() {
  Json services = Json::array();
  for (const auto& service : services_) services.push_back(toJsonValue(service));
  const Json json{{"services", std::move(services)}, {"history", Json::parse(history_.toJson())}};
  store_.put(kState, json.dump() + '\n');
  hasState_ = true;
}

void StreamPublisher::putManifests() {
  if (history_.listed().empty()) return;
  for (const auto& service : services_) {
    for (const auto& track : tracksOf(service)) {
      if (!track.isHls) continue;
      const std::string format = track.names.prefix.substr(0, track.names.prefix.size() - 1);
      store_.put(service.folder + '/' + format + ".m3u8",
                 toText(playlistOf(history_, track.names, isEnded_)));
    }
  }
  putDash();
  putMediaLines();
  putMaster();
}

std::vector<SubtitleRendition> StreamPublisher::renditions() const {
  std::vector<SubtitleRendition> renditions;
  for (const auto& service : services_) {
    for (const auto& track : tracksOf(service)) {
      if (!track.isHls) continue;
      renditions.push_back({.group = track.codec ? kImscGroup : kTextGroup,
                            .name = service.name,
                            .language = languageTag(service.language),
                            .forHardOfHearing = service.forHardOfHearing,
                            .uri = service.folder + (track.codec ? "/im1t.m3u8" : "/webvtt.m3u8"),
                            .codecs = track.codec ? codecsParameter(*track.codec) : "wvtt"});
    }
  }
  return renditions;
}

void StreamPublisher::putMediaLines() {
  std::string lines;
  for (const auto& rendition : renditions()) lines += mediaLine(rendition);
  store_.put("media-lines.m3u8", lines);
}

void StreamPublisher::putMaster() {
  if (!settings_.video) return;
  const auto video = settings_.video();
  if (!video) return;
  auto wanted = renditions();
  std::erase_if(wanted, [](const auto& rendition) { return rendition.group != kTextGroup; });
  store_.put("master.m3u8", masterPlaylist(*video, wanted));
}

std::vector<DashTrack> StreamPublisher::dashTracks() const {
  std::vector<DashTrack> tracks;
  for (const auto& service : services_) {
    for (const auto& track : tracksOf(service)) {
      if (!track.codec) continue;
      SegmentNames names = track.names;
      names.prefix.insert(0, service.folder + '/');
      names.map.insert(0, service.folder + '/');
      tracks.push_back({.id = static_cast<unsigned>(tracks.size() + 1),
                        .codecs = codecsParameter(*track.codec),
                        .language = languageTag(service.language),
                        .label = service.name,
                        .forHardOfHearing = service.forHardOfHearing,
                        .names = std::move(names)});
    }
  }
  return tracks;
}

void StreamPublisher::putDash() {
  const auto manifest = manifestOf(history_, dashTracks(), isEnded_, settings_.now());
  store_.put("subtitles.mpd", toXml(manifest));
  store_.put("adaptation-sets.xml", adaptationSets(manifest));
}

void StreamPublisher::removeOld() {
  for (const auto number : history_.takeRemovable()) {
    for (const auto& service : services_) {
      for (const auto& track : tracksOf(service)) {
        store_.remove(service.folder + '/' + track.names.nameOf(number));
      }
    }
  }
}

}  // namespace korr::txsub
