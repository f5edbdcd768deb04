// SPDX-License-Identifier: MIT
#include "streaming/stream_history.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "util/exception.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::fromTicks90k;
using Json = nlohmann::ordered_json;

Json toJsonValue(const PublishedSegment& segment) {
  return {{"number", segment.number},
          {"startTicks", segment.startTicks},
          {"duration", segment.duration},
          {"discontinuous", segment.isDiscontinuous},
          {"wallTime", segment.wallTime},
          {"offset", segment.offset},
          {"periodOffset", segment.periodOffset}};
}

PublishedSegment fromJsonValue(const Json& json) {
  return {.number = json.at("number").get<std::uint64_t>(),
          .startTicks = json.at("startTicks").get<StreamTicks>(),
          .duration = json.at("duration").get<StreamTicks>(),
          .isDiscontinuous = json.at("discontinuous").get<bool>(),
          .wallTime = json.at("wallTime").get<WallTime>(),
          .offset = json.at("offset").get<StreamTicks>(),
          .periodOffset = json.at("periodOffset").get<StreamTicks>()};
}

StreamTicks sumOf(std::span<const PublishedSegment> segments) {
  StreamTicks sum = 0;
  for (const auto& segment : segments) sum += segment.duration;
  return sum;
}

}  // namespace

void StreamHistory::add(const Segment& segment, WallTime wallTime) {
  StreamTicks offset = 0;
  StreamTicks periodOffset = 0;
  if (segments_.empty()) {
    beginning_ = wallTime;
  } else {
    offset = segments_.back().offset + segments_.back().duration;
    periodOffset = segment.isDiscontinuous ? offset : segments_.back().periodOffset;
  }
  segments_.push_back({.number = segment.number,
                       .startTicks = segment.startTicks,
                       .duration = segment.duration(),
                       .isDiscontinuous = segment.isDiscontinuous,
                       .wallTime = wallTime,
                       .offset = offset,
                       .periodOffset = periodOffset});
  if (!window_) return;
  // RFC 8216, 6.2.2: a live playlist never gets shorter than three target durations.
  const MediaTime least = std::max(*window_, 3 * (target_ + target_ / 2));
  while (listedDuration() - fromTicks90k(listed().front().duration) >= least) {
    if (listed().front().isDiscontinuous) ++discontinuitySequence_;
    ++unlisted_;
  }
}

// RFC 8216, 6.2.2: a segment stays for as long as the longest playlist that it was in lasts.
std::vector<std::uint64_t> StreamHistory::takeRemovable() {
  std::vector<std::uint64_t> numbers;
  if (!window_) return numbers;
  while (unlisted_ > 0) {
    const auto waiting = std::span(segments_).subspan(1, unlisted_ - 1);
    if (fromTicks90k(sumOf(waiting)) < listedDuration()) break;
    numbers.push_back(segments_.front().number);
    segments_.erase(segments_.begin());
    --unlisted_;
  }
  return numbers;
}

MediaTime StreamHistory::listedDuration() const {
  return fromTicks90k(sumOf(listed()));
}

std::string StreamHistory::toJson() const {
  Json segments = Json::array();
  for (const auto& segment : segments_) segments.push_back(toJsonValue(segment));
  const Json json{{"version", 1},
                  {"beginning", beginning_},
                  {"discontinuitySequence", discontinuitySequence_},
                  {"unlisted", unlisted_},
                  {"segments", std::move(segments)}};
  return json.dump() + '\n';
}

void StreamHistory::restore(std::string_view text) {
  try {
    const auto json = Json::parse(text);
    if (json.at("version") != 1) throw util::TessaryException("it is of another version");
    std::vector<PublishedSegment> segments;
    for (const auto& segment : json.at("segments")) segments.push_back(fromJsonValue(segment));
    const auto unlisted = json.at("unlisted").get<std::size_t>();
    if (unlisted > segments.size()) throw util::TessaryException("its counts do not fit together");
    beginning_ = json.at("beginning").get<WallTime>();
    discontinuitySequence_ = json.at("discontinuitySequence").get<std::uint64_t>();
    segments_ = std::move(segments);
    unlisted_ = unlisted;
  } catch (const nlohmann::json::exception&) {
    throw util::TessaryException("it is no list of published segments");
  }
}

}  // namespace korr::txsub
