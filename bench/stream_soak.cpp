// SPDX-License-Identifier: MIT

// Streams a made programme for hours of its time, with all that goes wrong on the air, and holds
// everything that is published to the rules, at every moment: stream_soak [HOURS [SEED]]
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>

#include "bench/made_programme.h"
#include "readers/mpegts/ts_reader.h"
#include "services/service.h"
#include "sessions/stream_pass.h"
#include "tests/streaming/checked_store.h"

namespace korr::bench {
namespace {

using encoding::subtitling::MediaTime;
using namespace txsub;

constexpr std::uint64_t kSecond = MadeProgramme::kSecond;
constexpr std::uint64_t kWrap = MadeProgramme::kWrap;
constexpr MediaTime kSegment = 6 * encoding::subtitling::kSecond;
constexpr std::uint64_t kTolerance = kSecond * 40 / 1000;

std::uint64_t distance(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t ahead = (a - b) % kWrap;
  return std::min(ahead, kWrap - ahead);
}

// Moments by their stamps, of which one may come again on another day's clock.
using Moments = std::multimap<std::uint64_t, std::uint64_t>;

// Whether there is a moment of this stamp at about this time. Segments tell their starts in
// milliseconds.
bool isAmong(const Moments& moments, std::uint64_t stamp, std::uint64_t time) {
  const auto from = moments.lower_bound(stamp - std::min<std::uint64_t>(stamp, 90));
  const auto to = moments.upper_bound(stamp + 90);
  return std::any_of(from, to, [&](const auto& moment) {
    return std::max(moment.second, time) - std::min(moment.second, time) < 30 * kSecond;
  });
}

/// What a cue's parts say together, in stamps.
struct Published {
  std::uint64_t start = 0;
  std::uint64_t stop = 0;
  bool isTorn = false;  // there is a gap between its parts
};

/// Holds segments to each other, and keeps their cues.
class SoakStore final : public IStreamStore {
 public:
  explicit SoakStore(const MadeProgramme& programme) : programme_(programme) {}

  void put(const std::string& name, std::string_view content) override {
    checked.put(name, content);
    const std::string text(content);
    if (name.ends_with(".vtt")) takeSegment(name, text);
    if (name == std::string(kMadeFolder) + "/webvtt.m3u8") takePlaylist(readPlaylist(text));
  }
  std::optional<std::string> get(const std::string& name) override { return checked.get(name); }
  bool has(const std::string& name) override { return checked.has(name); }
  void remove(const std::string& name) override {
    checked.remove(name);
    stamps_.erase(name);
  }

  CheckedStore checked;
  std::map<std::string, Published> cues;  // by text
  Moments starts;                         // of segments, and when they were listed
  std::uint64_t jumps = 0;

 private:
  void fault(const std::string& what) {
    if (checked.faults.size() < 20) checked.faults.push_back(what);
  }

  void takeSegment(const std::string& name, const std::string& text) {
    std::uint64_t stamp = 0;
    unsigned hour = 0, minute = 0;
    double second = 0;
    if (std::sscanf(text.c_str(), "WEBVTT\nX-TIMESTAMP-MAP=MPEGTS:%lu,LOCAL:%u:%u:%lf", &stamp,
                    &hour, &minute, &second) != 4) {
      return fault(name + " has no X-TIMESTAMP-MAP");
    }
    stamps_[name] = stamp;
    const double local = hour * 3600.0 + minute * 60.0 + second;
    std::istringstream lines(text);
    for (std::string line, payload; std::getline(lines, line);) {
      unsigned h[2], m[2];
      double s[2];
      if (std::sscanf(line.c_str(), "%u:%u:%lf --> %u:%u:%lf", &h[0], &m[0], &s[0], &h[1], &m[1],
                      &s[1]) != 6) {
        continue;
      }
      std::getline(lines, payload);
      const auto stampAt = [&](int i) {
        const double since = h[i] * 3600.0 + m[i] * 60.0 + s[i] - local;
        return (stamp + kWrap + static_cast<std::uint64_t>(std::llround(since * kSecond))) % kWrap;
      };
      const auto [cue, isNew] =
          cues.try_emplace(payload, Published{.start = stampAt(0), .stop = stampAt(1)});
      const bool adjoins = distance(stampAt(0), cue->second.stop) < 900 ||
                           distance(stampAt(0), cue->second.start) < 900;
      if (isNew) continue;
      cue->second.isTorn = cue->second.isTorn || !adjoins;
      cue->second.stop = stampAt(1);
    }
  }

  void takePlaylist(const ReadPlaylist& playlist) {
    const std::uint64_t last = playlist.mediaSequence + playlist.entries.size();
    if (last == lastNumber_) return;
    if (lastNumber_ != 0 && last != lastNumber_ + 1) fault("a number is left out");
    lastNumber_ = last;
    const auto& entry = playlist.entries.back();
    const std::uint64_t stamp = stamps_.at(std::string(kMadeFolder) + '/' + entry.uri);
    if (entry.isDiscontinuous) {
      ++jumps;
    } else if (lastNumber_ != 1 && distance(expected_, stamp) > 90) {
      fault(entry.uri + " does not begin where the last one ended");
    }
    expected_ =
        (stamp + static_cast<std::uint64_t>(std::llround(entry.duration * kSecond))) % kWrap;
    starts.emplace(stamp, programme_.time());
  }

  const MadeProgramme& programme_;
  std::map<std::string, std::uint64_t> stamps_;
  std::uint64_t lastNumber_ = 0;
  std::uint64_t expected_ = 0;
};

struct Killed : std::runtime_error {
  Killed() : std::runtime_error("killed") {}
};

/// The plan of what goes wrong, and the programme that follows it.
class Broadcast {
 public:
  Broadcast(unsigned hours, unsigned seed)
      : programme({.picturesPerSecond = 10, .pictureBytes = 100, .seed = seed}),
        seconds_(hours * std::uint64_t{3600}),
        random_(seed) {
    planAll(hours);
  }

  /// Empty at the end. Throws Killed.
  Bytes next() {
    const std::uint64_t second = programme.time() / kSecond;
    if (second >= seconds_) return {};
    const auto event = plan_.find(second);
    if (event != plan_.end()) {
      const auto action = event->second;
      plan_.erase(event);
      action();
    }
    return programme.second();
  }

  /// Whether something happened around a time, so that cues may be cut or come late.
  bool isDisturbed(std::uint64_t time, std::uint64_t before, std::uint64_t after) const {
    const auto near = disturbances_.lower_bound(time - std::min(time, before * kSecond));
    return near != disturbances_.end() && *near <= time + after * kSecond;
  }

  /// What multiples of the target count from.
  struct Origin {
    std::uint64_t time = 0;
    bool isAtAccessPoint = false;  // that comes next
  };

  MadeProgramme programme;
  std::vector<Origin> origins{{.isAtAccessPoint = true}};
  unsigned kills = 0;

 private:
  using Action = std::function<void()>;

  void at(std::uint64_t second, Action action) {
    while (plan_.contains(second)) ++second;
    plan_[second] = std::move(action);
  }
  void disturb() { disturbances_.insert(programme.time()); }

  void planAll(unsigned hours) {
    for (std::uint64_t hour = 0; hour < hours; ++hour) {
      const std::uint64_t start = hour * 3600;
      const auto later = [&] { return start + 60 + random_() % 3480; };
      // Three times a day the clock is ten minutes before its wrap. No stamp comes twice.
      at(later(), [this, hour] {
        disturb();
        origins.push_back(
            {.time = programme.time() + (programme.hasVideo ? MadeProgramme::kLead : 0)});
        programme.jumpTo(hour % 8 == 0 ? kWrap - 600 * kSecond - hour * 1234 - 617
                                       : random_() * std::uint64_t{2});
      });
      at(later(), [this] {
        disturb();
        origins.push_back(
            {.time = programme.time() + MadeProgramme::kLead, .isAtAccessPoint = true});
        ++kills;
        throw Killed();
      });
      at(later(), [this] {
        disturb();
        programme.hasSecondPage = !programme.hasSecondPage;
      });
      if (hour % 3 == 1) {  // nothing is said for twenty minutes
        at(start + 600, [this] { programme.hasCues = false; });
        at(start + 1800, [this] { programme.hasCues = true; });
      }
      if (hour % 4 == 2) {  // the picture is lost
        at(start + 2400, [this] { disturb(), programme.hasVideo = false; });
        at(start + 2490, [this] { disturb(), programme.hasVideo = true; });
      }
    }
  }

  std::uint64_t seconds_;
  std::mt19937 random_;
  std::map<std::uint64_t, Action> plan_;
  std::set<std::uint64_t> disturbances_;
};

/// What a reader gets of it.
class BroadcastSource final : public IByteSource {
 public:
  explicit BroadcastSource(Broadcast& broadcast) : broadcast_(broadcast) {}

  std::size_t read(std::uint8_t* buffer, std::size_t size) override {
    if (at_ == bytes_.size()) {
      bytes_ = broadcast_.next();
      at_ = 0;
    }
    const std::size_t count = std::min(size, bytes_.size() - at_);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(at_), count, buffer);
    at_ += count;
    return count;
  }
  std::optional<std::uint64_t> size() const override { return {}; }

 private:
  Broadcast& broadcast_;
  Bytes bytes_;
  std::size_t at_ = 0;
};

/// Nothing that is made here may be called damaged.
class SoakMonitor final : public ISessionMonitor {
 public:
  explicit SoakMonitor(std::vector<std::string>& faults) : faults_(faults) {}

  void report(log::Level level, const Place&, const std::string& message) override {
    const bool isJump = message.find("clock jumps") != message.npos;
    if (level != log::Level::Information && !isJump) faults_.push_back(message);
  }
  void chainError(const Place&, const char* message) override { faults_.emplace_back(message); }
  void detail(const std::string&) override {}
  void showProgress(const ReadProgress&) override {}
  void endProgress() override {}
  bool isStopWanted() const override { return false; }
  void logV(log::Level, const char*, std::va_list) override {}
  void nameBufferCounters(const char*) override {}

 private:
  std::vector<std::string>& faults_;
};

/// One run; false when it was killed.
bool runOnce(Broadcast& broadcast, SoakStore& store) {
  SoakMonitor monitor(store.checked.faults);
  StreamPublisher publisher(store, {.target = kSegment,
                                    .window = 60 * encoding::subtitling::kSecond,
                                    .video = {},
                                    .now = [] { return WallTime{1'800'000'000'000}; }});
  const std::uint64_t number = publisher.history().nextNumber();
  StreamPass pass(
      {.program = {},
       .segmenter = {.target = kSegment,
                     .firstNumber = number,
                     .isFirstDiscontinuous = number != 1}},
      publisher, [](const StreamInfo& stream) { return createServiceFinder(stream, {}, nullptr); },
      monitor);
  TsReader reader(std::make_unique<BroadcastSource>(broadcast), {.pid = {}, .clock = &pass});
  try {
    pass.run(reader);
    return true;
  } catch (const Killed&) {
    return false;
  }
}

/// How many access points begin a segment and should not, or should and do not. A packager cuts the
/// video at the first one at or after each multiple of the target.
std::size_t misplacedCuts(const Broadcast& broadcast, const Moments& starts) {
  constexpr std::uint64_t kTarget = 6 * kSecond;
  std::size_t misplaced = 0;
  std::uint64_t before = 0;  // the access point before
  auto restart = broadcast.origins.begin();
  std::uint64_t origin = 0;
  for (const auto& point : broadcast.programme.accessPoints) {
    for (; restart != broadcast.origins.end() && restart->time <= point.time; ++restart) {
      origin = restart->isAtAccessPoint ? point.time : restart->time;
    }
    const bool isCut = (point.time - origin) / kTarget != (before - origin) / kTarget;
    before = point.time;
    if (broadcast.isDisturbed(point.time, 30, 15)) continue;
    if (isCut != isAmong(starts, point.stamp, point.time)) ++misplaced;
  }
  return misplaced;
}

int report(const Broadcast& broadcast, SoakStore& store, unsigned hours) {
  std::size_t compared = 0;
  std::size_t disturbed = 0;
  std::vector<std::string> faults = store.checked.faults;
  const auto fault = [&](const std::string& what) {
    if (faults.size() < 20) faults.push_back(what);
  };
  for (const auto& cue : broadcast.programme.cues) {
    if (broadcast.isDisturbed(cue.time, 8, 12)) {
      ++disturbed;
      continue;
    }
    ++compared;
    const auto found = store.cues.find(cue.text);
    if (found == store.cues.end()) {
      fault("the cue " + cue.text + " at " + std::to_string(cue.time / kSecond) + " s is missing");
    } else if (found->second.isTorn) {
      fault("the cue " + cue.text + " at " + std::to_string(cue.time / kSecond) + " s is torn");
    } else if (distance(found->second.start, cue.stamp) > kTolerance ||
               distance(found->second.stop, cue.stopStamp) > kTolerance) {
      fault("the cue " + cue.text + " at " + std::to_string(cue.time / kSecond) +
            " s is shown from " + std::to_string(found->second.start) + " to " +
            std::to_string(found->second.stop) + ", not from " + std::to_string(cue.stamp) +
            " to " + std::to_string(cue.stopStamp));
    }
  }
  Moments points;
  for (const auto& point : broadcast.programme.accessPoints) {
    points.emplace(point.stamp, point.time);
  }
  const auto aligned = std::ranges::count_if(
      store.starts, [&](const auto& start) { return isAmong(points, start.first, start.second); });
  if (const auto misplaced = misplacedCuts(broadcast, store.starts)) {
    fault(std::to_string(misplaced) + " segments are not cut where the video is");
  }
  std::printf(
      "%u hours: %zu segments, %ld of them at access points, %lu discontinuities, %u kills\n"
      "%zu cues within 40 ms, %zu near a disturbance, which are not compared\n",
      hours, store.starts.size(), static_cast<long>(aligned),
      static_cast<unsigned long>(store.jumps), broadcast.kills, compared, disturbed);
  for (const auto& line : faults) std::printf("fault: %s\n", line.c_str());
  return faults.empty() && compared > hours * 200 ? 0 : 1;
}

}  // namespace
}  // namespace korr::bench

int main(int argc, char** argv) {
  using namespace korr::bench;
  const auto hours = static_cast<unsigned>(argc > 1 ? std::atoi(argv[1]) : 24);
  const auto seed = static_cast<unsigned>(argc > 2 ? std::atoi(argv[2]) : 1);
  Broadcast broadcast(hours, seed);
  SoakStore store(broadcast.programme);
  while (!runOnce(broadcast, store)) store.checked.beginRun();
  return report(broadcast, store, hours);
}
