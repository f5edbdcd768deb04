// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_demultiplexer.h"

#include <algorithm>
#include <utility>

namespace korr::txsub {
namespace {

constexpr std::size_t kMostStreams = 512;
constexpr std::uint16_t kFirstFreePid = 0x20;
constexpr std::uint16_t kNullPid = 0x1FFF;

}  // namespace

TsDemultiplexer::TsDemultiplexer(const ReaderOptions& options, TsReport& report)
    : options_(options), report_(report), tables_(report) {
  if (options_.clock) clock_.emplace(*options_.clock, times_);
}

TsDemultiplexer::~TsDemultiplexer() = default;

void TsDemultiplexer::scout(const TsPacket& packet) {
  if (tables_.wants(packet.pid()) && !packet.isDamaged()) tables_.take(packet);
}

void TsDemultiplexer::flush() {
  for (const Pid& pid : pids_) {
    if (pid.stream && pid.stream->isWanted) pid.stream->decoder->flush();
  }
}

void TsDemultiplexer::route(const TsPacket& packet, Pid& pid) {
  if (packet.isDamaged()) return;  // counts as lost
  pid.isSeen = true;
  const unsigned roles = pid.roles;
  if ((roles & kTable) && tables_.take(packet)) apply();
  if (roles & kClock) {
    const auto pcr = packet.pcr();
    if (pcr) {
      times_.takePcr(packet.pid(), *pcr, packet.hasDiscontinuity());
      if (clock_) tellClock(packet.pid(), *pcr);
    }
  }
  if ((roles & kTimeOfDay) && clock_) clock_->takeTimeOfDay(packet);
  if (roles & kStream) {
    if (pid.stream) takeStream(packet, *pid.stream);
  } else if ((roles & (kUnknown | kTiming)) && packet.hasUnitStart()) {
    takePesStart(packet, pid);
  }
}

void TsDemultiplexer::takeStream(const TsPacket& packet, Stream& stream) {
  const auto step = stream.continuity.next(packet);
  if (step.isDuplicate || !packet.hasPayload()) return;
  if (packet.isScrambled()) {
    if (!std::exchange(stream.isScramblingReported, true)) {
      report_.warn("%s: scrambled; left out", pidName(packet.pid()).c_str());
    }
    return;
  }
  stream.decoder->take(packet, step.lost);
}

void TsDemultiplexer::takePesStart(const TsPacket& packet, Pid& pid) {
  const auto header = parsePesHeader(packet.payload());
  if (!header || packet.isScrambled()) return;
  if ((pid.roles & kUnknown) && detect(packet, *header)) return;
  noteTiming(packet, pid, *header);
}

// Finds a stream by its content.
bool TsDemultiplexer::detect(const TsPacket& packet, const PesHeader& header) {
  const auto kind = kindOf(header, packet.payload().subspan(header.size));
  if (!kind) return false;
  StreamInfo info;
  info.pid = packet.pid();
  info.program = programOf(packet.pid());
  info.serviceName = tables_.serviceName(programOf(packet.pid()));
  addStream(std::move(info), *kind);
  updateRoles();
  const Pid& pid = pids_[packet.pid()];
  if (pid.roles & kStream) takeStream(packet, *pid.stream);
  return true;
}

void TsDemultiplexer::noteTiming(const TsPacket& packet, Pid& pid, const PesHeader& header) {
  const bool isPictureOrSound =
      isVideoStreamId(header.streamId) || isAudioStreamId(header.streamId);
  if (!isPictureOrSound || !header.pts) return;
  const std::uint16_t program = programOf(packet.pid());
  TsProgramTime& time = times_[program];
  const TsTicks ticks = pid.timing.place(*header.pts, time.clock);
  time.notePicture(ticks);
  if (!clock_ || !isVideoStreamId(header.streamId)) return;
  clock_->takePicture(packet.pid(), program,
                      {.pts = *header.pts,
                       .time = ticks,
                       .isMarked = packet.hasRandomAccess(),
                       .codec = pid.stream ? std::optional(pid.stream->kind.codec) : std::nullopt,
                       .start = packet.payload().subspan(header.size)});
}

// Captions that are due come before the clock says so.
void TsDemultiplexer::tellClock(std::uint16_t pid, std::uint64_t pcr) {
  for (const std::uint32_t program : times_.programsOf(pid)) {
    const auto now = times_[program].clock.now();
    for (const std::uint16_t videoPid : videoPids_) {
      const auto& stream = pids_[videoPid].stream;
      const bool isDue = now && stream && stream->info.program == program;
      if (isDue) stream->decoder->release(toMediaTime(*now));
    }
    clock_->takePcr(program, pcr);
  }
}

void TsDemultiplexer::apply() {
  times_.follow(tables_.programs());
  if (clock_) clock_->follow(tables_.programs());
  for (Pid& pid : pids_) pid.program.reset();
  for (const auto& [program, map] : tables_.programs()) {
    for (const TsStreamEntry& entry : map.streams) {
      auto& owner = pids_[entry.pid].program;
      if (owner) continue;  // the first program that names it
      owner = program;
      if (isAskedFor(entry.pid)) applyEntry(program, entry);
    }
  }
  updateRoles();
}

void TsDemultiplexer::applyEntry(std::uint16_t program, const TsStreamEntry& entry) {
  Pid& pid = pids_[entry.pid];
  const auto kind = kindOf(entry);
  if (!kind) {
    if (!isPrivate(entry)) removeStream(pid);
    return;
  }
  StreamInfo info;
  info.pid = entry.pid;
  info.program = program;
  info.descriptors = entry.descriptors;
  if (kind->pictures == PictureSystem::Pgs) info.language = languageOf(entry);
  info.serviceName = tables_.serviceName(program);
  if (!pid.stream || pid.stream->kind != *kind) return addStream(std::move(info), *kind);
  updateStream(*pid.stream, std::move(info));
}

void TsDemultiplexer::updateStream(Stream& stream, StreamInfo info) {
  StreamInfo& known = stream.info;
  if (known.program != info.program) {
    known.program = info.program;
    stream.decoder->setTime(times_[info.program]);
  } else if (known.descriptors == info.descriptors && known.serviceName == info.serviceName) {
    return;
  }
  known.descriptors = std::move(info.descriptors);
  known.language = std::move(info.language);
  known.serviceName = std::move(info.serviceName);
  announce(stream);
}

void TsDemultiplexer::addStream(StreamInfo info, const TsStreamKind& kind) {
  Pid& pid = pids_[info.pid];
  if (!pid.stream && streams_ >= kMostStreams) return;
  removeStream(pid);
  info.id = idOf(static_cast<std::uint16_t>(info.pid), kind);
  info.type = kind.type;
  info.pictures = kind.pictures;
  info.isVideo = kind.isVideo;
  pid.stream = std::make_unique<Stream>(Stream{.info = std::move(info), .kind = kind});
  ++streams_;
  pid.stream->decoder = makeDecoder(*pid.stream);
  announce(*pid.stream);
}

std::unique_ptr<ITsStream> TsDemultiplexer::makeDecoder(Stream& stream) {
  TsStreamContext context{.pid = static_cast<std::uint16_t>(stream.info.pid),
                          .time = &times_[stream.info.program],
                          .report = report_,
                          .logger = options_.logger,
                          .onSample = [this, &stream](const InputSample& sample) {
                            if (stream.isWanted) listener_->onSample(stream.info, sample);
                          }};
  if (stream.kind.isVideo) {
    if (clock_) {
      context.onPicture = [this, &stream](const TsPicture& picture) {
        clock_->takePicture(static_cast<std::uint16_t>(stream.info.pid), stream.info.program,
                            picture);
      };
    }
    return std::make_unique<TsVideoStream>(stream.kind.codec, std::move(context));
  }
  return std::make_unique<TsSubtitleStream>(stream.kind, std::move(context));
}

// Streams keep their names when they come back, but not as something else.
std::uint32_t TsDemultiplexer::idOf(std::uint16_t pid, const TsStreamKind& kind) {
  std::vector<TsStreamKind>& kinds = pids_[pid].kinds;
  const auto found = std::ranges::find(kinds, kind);
  const auto index = static_cast<std::uint32_t>(found - kinds.begin());
  if (found == kinds.end()) kinds.push_back(kind);
  return index << 16 | pid;
}

void TsDemultiplexer::removeStream(Pid& pid) {
  const auto stream = std::move(pid.stream);
  if (!stream) return;
  --streams_;
  if (stream->isWanted) stream->decoder->flush();
}

void TsDemultiplexer::announce(Stream& stream) {
  stream.isWanted = true;
  const bool isWanted = listener_->onStream(stream.info);
  stream.isWanted = stream.isWanted && isWanted;
}

void TsDemultiplexer::unselect(std::uint32_t streamId) {
  for (const Pid& pid : pids_) {
    if (pid.stream && pid.stream->info.id == streamId) pid.stream->isWanted = false;
  }
  updateRoles();
}

std::vector<std::string> TsDemultiplexer::otherSubtitles() const {
  std::vector<std::string> found;
  for (const auto& [program, map] : tables_.programs()) {
    for (const TsStreamEntry& entry : map.streams) {
      std::string name = otherSubtitlesIn(entry);
      if (!name.empty() && !pids_[entry.pid].stream) found.push_back(std::move(name));
    }
  }
  return found;
}

void TsDemultiplexer::updateRoles() {
  for (Pid& pid : pids_) pid.roles = kNone;
  const auto add = [this](std::uint16_t pid, unsigned role) {
    pids_[pid].roles = static_cast<std::uint8_t>(pids_[pid].roles | role);
  };
  if (!tables_.areComplete()) lookEverywhere();
  if (options_.pid && *options_.pid < kPids) {
    add(static_cast<std::uint16_t>(*options_.pid), kUnknown);
  }
  for (const auto& [program, map] : tables_.programs()) {
    for (const TsStreamEntry& entry : map.streams) {
      pids_[entry.pid].roles = isPrivate(entry) && isAskedFor(entry.pid) ? kUnknown : kTiming;
    }
  }
  for (Pid& pid : pids_) {
    if (pid.stream) pid.roles = pid.stream->isWanted ? kStream : kTiming;
  }
  if (clock_) {
    videoPids_.clear();
    for (std::uint16_t pid = 0; pid < kPids; ++pid) {
      const auto& stream = pids_[pid].stream;
      if (stream && stream->kind.isVideo && stream->isWanted) videoPids_.push_back(pid);
    }
    add(kTimeOfDayPid, kTimeOfDay);
  }
  for (const std::uint16_t pid : times_.pids()) add(pid, kClock);
  for (const std::uint16_t pid : tables_.pids()) add(pid, kTable);
}

// As long as tables may be missing, anything may be anywhere.
void TsDemultiplexer::lookEverywhere() {
  for (std::uint16_t pid = kFirstFreePid; pid < kNullPid; ++pid) {
    pids_[pid].roles = kClock | (isAskedFor(pid) ? kUnknown : kTiming);
  }
}

// A PID that no table names belongs to the only program, if there is only one.
std::uint16_t TsDemultiplexer::programOf(std::uint16_t pid) const {
  if (const auto& program = pids_[pid].program) return *program;
  const auto& maps = tables_.programs();
  return maps.size() == 1 ? maps.begin()->first : std::uint16_t{0};
}

}  // namespace korr::txsub
