#include "readers/mpegts/ts_reader.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>
#include <set>
#include <utility>

#include "util/exception.h"

namespace korr::txsub {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Clock = std::chrono::steady_clock;

// Small enough to stay in the cache between the kernel and us.
constexpr std::size_t kChunk = 128 * 1024;
constexpr std::size_t kChunksAtOnce = 8;
// How much of the beginning is kept while the tables are looked for, which are due every half
// second (TR 101 290, 5.2.1), at 40 Mbit/s or so at most.
constexpr std::size_t kOpening = 2 * 1024 * 1024;
constexpr std::size_t kMostStreams = 512;
constexpr std::uint16_t kFirstFreePid = 0x20;
constexpr std::uint16_t kNullPid = 0x1FFF;

constexpr std::uint8_t kPrivateData = 0x06;  // stream_type
constexpr std::uint8_t kFirstUserPrivate = 0x80;
constexpr std::uint8_t kVbiTeletextDescriptor = 0x46;
constexpr std::uint8_t kTeletextDescriptor = 0x56;
constexpr std::uint8_t kSubtitlingDescriptor = 0x59;

using Kind = TsStreamKind;

bool hasDescriptor(const TsStreamEntry& entry, std::uint8_t tag) {
  Bytes rest = entry.descriptors;
  while (rest.size() >= 2) {
    if (rest[0] == tag) return true;
    rest = rest.subspan(std::min<std::size_t>(rest.size(), 2U + rest[1]));
  }
  return false;
}

/// Whether only the content tells what this is, when no descriptor does.
bool isPrivate(const TsStreamEntry& entry) {
  return entry.streamType == kPrivateData || entry.streamType >= kFirstUserPrivate;
}

std::optional<Kind> kindOf(const TsStreamEntry& entry) {
  const auto video = [](VideoCodec codec) {
    return Kind{.type = SubtitleInputType::ClosedCaption, .isVideo = true, .codec = codec};
  };
  switch (entry.streamType) {
    case 0x01:
    case 0x02:
      return video(VideoCodec::Mpeg2);
    case 0x1B:
      return video(VideoCodec::H264);
    case 0x24:
      return video(VideoCodec::Hevc);
    case kPrivateData:
      if (hasDescriptor(entry, kTeletextDescriptor) ||
          hasDescriptor(entry, kVbiTeletextDescriptor)) {
        return Kind{.type = SubtitleInputType::Teletext};
      }
      if (hasDescriptor(entry, kSubtitlingDescriptor)) {
        return Kind{.type = SubtitleInputType::DvbSubtitle};
      }
      return {};
    default:
      return {};
  }
}

/// By content, of a stream that no table describes.
std::optional<Kind> kindOf(const PesHeader& header, Bytes payload) {
  if (isVideoStreamId(header.streamId)) {
    const auto codec = videoCodecOf(payload);
    if (codec) {
      return Kind{.type = SubtitleInputType::ClosedCaption, .isVideo = true, .codec = *codec};
    }
  }
  if (header.streamId != kPrivateStream1) return {};
  if (looksLikeTeletext(payload)) return Kind{.type = SubtitleInputType::Teletext};
  if (looksLikeDvbSubtitle(payload)) return Kind{.type = SubtitleInputType::DvbSubtitle};
  return {};
}

}  // namespace

struct TsReader::Stream {
  StreamInfo info;
  Kind kind;
  std::unique_ptr<ITsStream> decoder{};
  TsContinuity continuity{};
  bool isWanted = true;
  bool isScramblingReported = false;
};

TsReader::TsReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : source_(std::move(source)), options_(options), report_(options.logger) {
  buffer_.resize(kOpening + kChunk);
  streams_.resize(kPids);
}

TsReader::~TsReader() = default;

bool TsReader::read(IReaderListener& listener) {
  listener_ = &listener;
  if (!isOpen_) open();
  for (std::size_t i = 0; i < kChunksAtOnce && !isAtEnd_; ++i) {
    const bool hasMoreWaiting = fill() == kChunk;
    process();
    if (!hasMoreWaiting) break;  // a slow pipe: do not hold back what came
  }
  if (isAtEnd_) finish();
  return !isAtEnd_;
}

// Tells by the tables what there is before the first packet is used, so that nothing of the
// beginning is lost.
void TsReader::open() {
  isOpen_ = true;
  TsFraming scout;
  std::size_t at = 0;
  std::optional<Clock::time_point> due;
  while (!isAtEnd_ && !tables_.areComplete() && end_ < kOpening) {
    if (due && Clock::now() >= *due) break;  // a slow pipe that may never have any
    fill();
    if (!due) due = Clock::now() + options_.tablesDue;
    const Bytes bytes(buffer_.data(), end_);
    while (const std::uint8_t* const packet = scout.next(bytes, at, isAtEnd_, 0)) {
      const TsPacket view(packet);
      if (tables_.wants(view.pid()) && !view.isDamaged()) tables_.take(view);
    }
  }
  applyTables();
  process();
}

// Reads on at the end of the buffer, and answers how much.
std::size_t TsReader::fill() {
  std::size_t count = 0;
  try {
    count = source_->read(buffer_.data() + end_, kChunk);
  } catch (const util::TessaryException& error) {
    if (offset_ + end_ == 0) throw;
    report_.warn("byte %" PRIu64 ": reading ends here: %s; what came before is kept",
                 offset_ + end_, error.what());
  }
  end_ += count;
  isAtEnd_ = count == 0;
  return count;
}

void TsReader::process() {
  const Bytes bytes(buffer_.data(), end_);
  while (const std::uint8_t* const packet = framing_.next(bytes, begin_, isAtEnd_, offset_)) {
    const TsPacket view(packet);
    const unsigned role = roles_[view.pid()];
    if (role != kNone) take(view, role);
  }
  const std::size_t used = std::min(begin_, end_);
  std::memmove(buffer_.data(), buffer_.data() + used, end_ - used);
  begin_ -= used;
  end_ -= used;
  offset_ += used;
}

void TsReader::finish() {
  for (const auto& stream : streams_) {
    if (stream && stream->isWanted) stream->decoder->flush();
  }
}

void TsReader::take(const TsPacket& packet, unsigned role) {
  if (packet.isDamaged()) return;  // counts as lost
  if ((role & kTable) && tables_.take(packet)) applyTables();
  if (role & kClock) {
    const auto pcr = packet.pcr();
    if (pcr) takePcr(packet.pid(), *pcr, packet.hasDiscontinuity());
  }
  if (role & kStream) {
    takeStream(packet);
  } else if ((role & (kUnknown | kTiming)) && packet.hasUnitStart()) {
    takePesStart(packet, role);
  }
}

void TsReader::takePcr(std::uint16_t pid, std::uint64_t pcr, bool discontinuity) {
  const auto programs = clocks_.find(pid);
  if (programs != clocks_.end()) {
    for (const std::uint16_t program : programs->second) {
      times_[program].clock.onPcr(pcr, discontinuity);
    }
  } else if (!untabledClock_) {
    untabledClock_ = pid;
  }
  if (hasRivalClocks_) return;
  if (untabledClock_ == pid) {
    times_[0].clock.onPcr(pcr, discontinuity);
  } else if (programs == clocks_.end()) {
    hasRivalClocks_ = true;
    times_[0].clock = TsClock();
  }
}

void TsReader::takeStream(const TsPacket& packet) {
  Stream& stream = *streams_[packet.pid()];
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

void TsReader::takePesStart(const TsPacket& packet, unsigned role) {
  const auto header = parsePesHeader(packet.payload());
  if (!header || packet.isScrambled()) return;
  if ((role & kUnknown) && detect(packet, *header)) return;
  noteTiming(packet.pid(), *header);
}

// Finds a stream by its content.
bool TsReader::detect(const TsPacket& packet, const PesHeader& header) {
  const auto kind = kindOf(header, packet.payload().subspan(header.size));
  if (!kind) return false;
  const std::uint16_t pid = packet.pid();
  StreamInfo info;
  info.pid = pid;
  info.program = programOf(pid);
  info.serviceName = tables_.serviceName(programOf(pid));
  addStream(info, *kind);
  updateRoles();
  if (roles_[pid] & kStream) takeStream(packet);
  return true;
}

void TsReader::noteTiming(std::uint16_t pid, const PesHeader& header) {
  const bool isPictureOrSound =
      isVideoStreamId(header.streamId) || isAudioStreamId(header.streamId);
  if (!isPictureOrSound || !header.pts) return;
  TsProgramTime& time = timeOf(pid);
  time.notePicture(timings_[pid].place(*header.pts, time.clock));
}

void TsReader::applyTables() {
  clocks_.clear();
  programs_.clear();
  for (const auto& [program, map] : tables_.programs()) {
    if (map.pcrPid != kNullPid) clocks_[map.pcrPid].push_back(program);
    for (const TsStreamEntry& entry : map.streams) {
      const bool isFirst = programs_.emplace(entry.pid, program).second;
      if (isFirst && isAskedFor(entry.pid)) applyEntry(program, entry);
    }
  }
  updateRoles();
}

void TsReader::applyEntry(std::uint16_t program, const TsStreamEntry& entry) {
  const auto kind = kindOf(entry);
  if (!kind) {
    if (!isPrivate(entry)) removeStream(entry.pid);
    return;
  }
  StreamInfo info;
  info.pid = entry.pid;
  info.program = program;
  info.descriptors = entry.descriptors;
  info.serviceName = tables_.serviceName(program);

  const auto& stream = streams_[entry.pid];
  if (!stream || stream->kind != *kind) return addStream(std::move(info), *kind);
  const bool isSame = stream->info.program == info.program &&
                      stream->info.descriptors == info.descriptors &&
                      stream->info.serviceName == info.serviceName;
  if (isSame) return;
  stream->info.program = info.program;
  stream->info.descriptors = info.descriptors;
  stream->info.serviceName = info.serviceName;
  announce(*stream);
}

void TsReader::addStream(StreamInfo info, const Kind& kind) {
  const auto pid = static_cast<std::uint16_t>(info.pid);
  const auto count =
      std::ranges::count_if(streams_, [](const auto& one) { return one != nullptr; });
  auto& slot = streams_[pid];
  if (!slot && static_cast<std::size_t>(count) >= kMostStreams) return;
  removeStream(pid);
  info.id = idOf(pid, kind);
  info.type = kind.type;
  info.isVideo = kind.isVideo;

  slot = std::make_unique<Stream>(Stream{.info = std::move(info), .kind = kind});
  Stream& stream = *slot;
  TsStreamContext context{.pid = pid,
                          .time = timeOf(pid),
                          .report = report_,
                          .logger = options_.logger,
                          .onSample = [this, &stream](const InputSample& sample) {
                            if (stream.isWanted) listener_->onSample(stream.info, sample);
                          }};
  if (kind.isVideo) {
    stream.decoder = std::make_unique<TsVideoStream>(kind.codec, std::move(context));
  } else {
    stream.decoder = std::make_unique<TsSubtitleStream>(kind.type, std::move(context));
  }
  announce(stream);
}

// Streams keep their names when they come back, but not as something else.
std::uint32_t TsReader::idOf(std::uint16_t pid, const Kind& kind) {
  std::vector<Kind>& kinds = kinds_[pid];
  const auto found = std::ranges::find(kinds, kind);
  const auto index = static_cast<std::uint32_t>(found - kinds.begin());
  if (found == kinds.end()) kinds.push_back(kind);
  return index << 16 | pid;
}

void TsReader::removeStream(std::uint16_t pid) {
  const auto stream = std::move(streams_[pid]);
  if (stream && stream->isWanted) stream->decoder->flush();
}

void TsReader::announce(Stream& stream) {
  stream.isWanted = true;
  const bool isWanted = listener_->onStream(stream.info);
  stream.isWanted = stream.isWanted && isWanted;
}

void TsReader::unselect(std::uint32_t streamId) {
  for (const auto& stream : streams_) {
    if (stream && stream->info.id == streamId) stream->isWanted = false;
  }
  updateRoles();
}

void TsReader::updateRoles() {
  roles_.fill(kNone);
  if (!tables_.areComplete()) {
    const unsigned look = kUnknown | kClock;
    for (std::uint16_t pid = kFirstFreePid; pid < kNullPid; ++pid) {
      roles_[pid] = static_cast<std::uint8_t>(isAskedFor(pid) ? look : kTiming | kClock);
    }
  }
  const auto add = [this](std::uint16_t pid, unsigned role) {
    roles_[pid] = static_cast<std::uint8_t>(roles_[pid] | role);
  };
  if (options_.pid && *options_.pid < kPids) {
    add(static_cast<std::uint16_t>(*options_.pid), kUnknown);
  }
  for (const auto& [program, map] : tables_.programs()) {
    for (const TsStreamEntry& entry : map.streams) {
      const bool isUnknown = isPrivate(entry) && isAskedFor(entry.pid);
      roles_[entry.pid] = isUnknown ? kUnknown : kTiming;
    }
  }
  for (const auto& stream : streams_) {
    if (!stream) continue;
    const auto pid = static_cast<std::uint16_t>(stream->info.pid);
    roles_[pid] = stream->isWanted ? kStream : kTiming;
  }
  for (const auto& [pid, programs] : clocks_) add(pid, kClock);
  if (untabledClock_) add(*untabledClock_, kClock);
  for (const std::uint16_t pid : tables_.pids()) add(pid, kTable);
}

// A PID that no table names belongs to the only program, if there is only one.
std::uint16_t TsReader::programOf(std::uint16_t pid) const {
  const auto program = programs_.find(pid);
  if (program != programs_.end()) return program->second;
  const auto& maps = tables_.programs();
  return maps.size() == 1 ? maps.begin()->first : std::uint16_t{0};
}

ReadProgress TsReader::progress() const {
  return {.bytesRead = offset_ + std::min(begin_, end_), .bytesTotal = source_->size()};
}

const TsProgramTime* TsReader::timeOfProgram(std::uint32_t program) const {
  const auto time = times_.find(static_cast<std::uint16_t>(program));
  return time == times_.end() ? nullptr : &time->second;
}

std::optional<MediaTime> TsReader::startTime(std::uint32_t program) const {
  const TsProgramTime* const time = timeOfProgram(program);
  if (!time) return {};
  const auto start = time->pictureStart ? time->pictureStart : time->subtitleStart;
  if (!start) return {};
  return toMediaTime(*start);
}

std::optional<MediaTime> TsReader::endTime(std::uint32_t program) const {
  const TsProgramTime* const time = timeOfProgram(program);
  if (!time || !time->end) return {};
  return toMediaTime(*time->end);
}

}  // namespace korr::txsub
