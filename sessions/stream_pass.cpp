// SPDX-License-Identifier: MIT

#include "sessions/stream_pass.h"

#include <algorithm>
#include <cstdlib>
#include <thread>
#include <utility>

namespace korr::txsub {

namespace {

using encoding::subtitling::kMillisecond;
using encoding::subtitling::kSecond;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

// What a live input's time of day may be off: more is a recording's.
constexpr WallTime kDayTolerance = 5 * 60 * 1000;
// A programme that stood still for longer goes on later than it was expected to.
constexpr WallTime kStall = 2000;
constexpr unsigned kMostJumpReports = 10;

WallTime now() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

WallTime inMilliseconds(MediaTime time) {
  return static_cast<WallTime>(time / kMillisecond);
}

}  // namespace

StreamPass::StreamPass(const StreamPassSettings& settings, StreamPublisher& publisher,
                       MakeFinder makeFinder, ISessionMonitor& monitor)
    : settings_(settings),
      publisher_(publisher),
      makeFinder_(std::move(makeFinder)),
      monitor_(monitor),
      segmenter_(
          settings.segmenter, *this,
          [&monitor](const std::string& line) { monitor.report(log::Level::Warning, {}, line); }),
      program_(settings.program) {
}

void StreamPass::run(IMediaReader& reader) {
  reader_ = &reader;
  ServicePass pass(
      reader, ServicePass::Wanted::All,
      [this](const StreamInfo& stream) { return finderOf(stream); },
      [this](const Service& service, const StreamInfo&) {
        CueSession::Settings settings;
        settings.configuration.page = service.page;
        settings.configuration.pageOption = service.pageOption;
        auto session = createStreamSession(service, settings, monitor_);
        sessions_.push_back(session.get());
        return session;
      },
      monitor_);
  pass.run();
  settleProgram();
  segmenter_.finish(std::max(lastTime_.value_or(0), lastPicture_.value_or(0)));
  if (segments_ != 0 && !settings_.isLeftOpen) publisher_.end();
  reportServices();
  sessions_.clear();
}

std::unique_ptr<IServiceFinder> StreamPass::finderOf(const StreamInfo& stream) {
  ++streams_;
  programs_[stream.program] = stream.serviceName;
  if (!program_) program_ = stream.program;
  return stream.program == *program_ ? makeFinder_(stream) : nullptr;
}

// A stream without a table belongs to no programme until its table comes.
bool StreamPass::isFollowed(std::uint32_t program) {
  if (!isProgramSettled_) settleProgram();
  const bool hasTableCome = program_ == 0U && program != 0 && !settings_.program;
  if (hasTableCome) program_ = program;
  return program_ == program;
}

// The first tables have come before any clock.
void StreamPass::settleProgram() {
  if (std::exchange(isProgramSettled_, true) || programs_.empty()) return;
  if (settings_.program && !programs_.contains(*settings_.program)) {
    throw ProgrammeError("there is no programme " + std::to_string(*settings_.program) +
                         " with subtitles or video; there is " + programList());
  }
  if (settings_.program || programs_.size() == 1) return;
  throw ProgrammeError(
      "there are several programmes, and a stream is of one; choose it "
      "with --program: " +
      programList());
}

std::string StreamPass::programList() const {
  std::string list;
  for (const auto& [program, name] : programs_) {
    if (!list.empty()) list += ", ";
    list += std::to_string(program) + (name.empty() ? "" : " (" + name + ')');
  }
  return list;
}

void StreamPass::onPicture(std::uint32_t program, const ClockStamp& stamp, bool isRandomAccess) {
  if (!isFollowed(program)) return;
  lastPicture_ = std::max(lastPicture_.value_or(0), stamp.time);
  if (!hasPcr_) noteTime(stamp.time);
  segmenter_.onPicture({.time = stamp.time, .stamp = stamp.ticks}, isRandomAccess);
}

void StreamPass::onClock(std::uint32_t program, const ClockStamp& stamp) {
  if (!isFollowed(program)) return;
  hasPcr_ = true;
  noteTime(stamp.time);
  segmenter_.onClock({.time = stamp.time, .stamp = stamp.ticks});
}

void StreamPass::onTimeOfDay(std::int64_t utc) {
  if (!lastTime_) return;
  if (settings_.isLive && std::abs(utc - now()) > kDayTolerance) {
    if (std::exchange(isDayReported_, true)) return;
    monitor_.report(log::Level::Warning, {},
                    "the input's time of day (TDT) is " +
                        std::to_string(std::abs(utc - now()) / 60'000) +
                        " minutes off this machine's; this machine's is used");
    return;
  }
  segmenter_.onWallTime(*lastTime_, utc);
}

// Waits until the programme would have come to `time`, where that is asked for.
void StreamPass::noteTime(MediaTime time) {
  lastTime_ = std::max(lastTime_.value_or(0), time);
  if (!firstTime_) {
    firstTime_ = time;
    started_ = steady_clock::now();
  }
  if (!settings_.isPaced || time <= *firstTime_) return;
  const auto due = started_ + milliseconds(inMilliseconds(time - *firstTime_));
  constexpr milliseconds kAtOnce{100};
  for (auto at = steady_clock::now(); at < due && !monitor_.isStopWanted();
       at = steady_clock::now()) {
    std::this_thread::sleep_for(std::min<steady_clock::duration>(due - at, kAtOnce));
  }
}

void StreamPass::onSegment(const Segment& segment) {
  std::map<std::string, std::vector<SegmentCue>> cues;
  for (auto* session : sessions_) {
    auto shown = session->cut(segment);
    auto& all = cues[fileName(session->service())];
    std::ranges::move(shown, std::back_inserter(all));
  }
  if (segment.isDiscontinuous && segments_ != 0 && jumps_++ < kMostJumpReports) {
    monitor_.report(log::Level::Warning, {.pid = 0, .time = segment.start},
                    std::string("the clock jumps; a discontinuity is published") +
                        (jumps_ == kMostJumpReports ? " (further ones are not reported)" : ""));
  }
  offerServices();
  publisher_.publish(segment, wallTimeOf(segment), [&](const StreamService& service) {
    return std::exchange(cues[service.folder], {});
  });
  ++segments_;
}

// What nothing but the samples tells of is offered once it has shown something.
void StreamPass::offerServices() {
  for (const auto* session : sessions_) {
    const Service& service = session->service();
    if (!service.isDeclared && !session->hasShown()) continue;
    if (offered_.contains(fileName(service))) continue;
    const StreamService offer = descriptionOf(service);
    monitor_.detail("streaming " + describe(service) + " as " + offer.folder);
    publisher_.offer(offer);
    offered_[offer.folder] = offer;
  }
}

StreamService StreamPass::descriptionOf(const Service& service) const {
  StreamService description{.folder = fileName(service),
                            .name = service.language,
                            .language = service.language,
                            .forHardOfHearing = service.hearingImpaired,
                            .hasPictures = service.type == SubtitleInputType::DvbSubtitle};
  if (description.name.empty()) {
    description.name = displayName(service);
  } else if (service.hearingImpaired) {
    description.name += " (hard of hearing)";
  }
  const bool isTaken = std::ranges::any_of(
      offered_, [&](const auto& other) { return other.second.name == description.name; });
  if (isTaken) description.name += ", " + displayName(service);
  return description;
}

// By the input's own time of day, else by this machine's at the first segment, from where it goes
// on with the programme.
WallTime StreamPass::wallTimeOf(const Segment& segment) {
  const WallTime duration = inMilliseconds(segment.stop - segment.start);
  const WallTime here = now() - duration;
  WallTime time = nextWallTime_.value_or(here);
  if (settings_.isLive && here > time + kStall) time = here;
  if (segment.wallTime) time = *segment.wallTime;
  nextWallTime_ = time + duration;
  return time;
}

void StreamPass::reportServices() {
  for (const auto* session : sessions_) {
    const auto offered = offered_.find(fileName(session->service()));
    if (offered == offered_.end()) continue;
    reports_.push_back({.folder = offered->first,
                        .name = describe(session->service()),
                        .cues = session->cueCount()});
  }
}

std::optional<std::uint64_t> StreamPass::bitsPerSecond() const {
  if (!reader_ || !firstTime_ || *lastTime_ < *firstTime_ + kSecond) return {};
  const double seconds = static_cast<double>(*lastTime_ - *firstTime_) / kSecond;
  return static_cast<std::uint64_t>(static_cast<double>(reader_->progress().bytesRead) * 8 /
                                    seconds);
}

}  // namespace korr::txsub
