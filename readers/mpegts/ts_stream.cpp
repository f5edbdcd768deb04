// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_stream.h"

#include <algorithm>
#include <utility>

#include "readers/caption_sample.h"
#include "readers/dvb_data_field.h"

namespace korr::txsub {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kFullPayload = TS_SIZE - TS_HEADER_SIZE;
// Teletext is sent once a field or once a frame; 25 frames a second where it comes from.
constexpr TsTicks kEstimatedStep = kTicksPerSecond / 25;

double seconds(TsTicks ticks) {
  return static_cast<double>(ticks) / kTicksPerSecond;
}

}  // namespace

void TsSubtitleStream::take(const TsPacket& packet, unsigned lost) {
  if (lost != 0) onLoss(lost);
  if (packet.hasUnitStart()) {
    finish();
    pes_.begin();
  }
  if (!pes_.isOpen()) return;
  pes_.append(packet.payload());
  if (pes_.isComplete()) finish();
}

// A data unit of teletext stands for itself, and the packets of its PES are filled to the last byte
// (EN 300 472, 4.1), so those around the loss keep their places. A page of DVB subtitles is nothing
// without all of its segments.
void TsSubtitleStream::onLoss(unsigned lost) {
  hasLost_ = true;
  const std::string packets = std::to_string(lost) + (lost == 1 ? " packet is" : " packets are");
  if (type_ == SubtitleInputType::Teletext) {
    warn(packets + " missing; the rows in between are lost");
    if (pes_.isOpen()) pes_.appendStuffing(lost * kFullPayload);
    if (pes_.isOpen() && pes_.isComplete()) finish();
  } else {
    warn(packets + (pes_.isOpen() ? " missing; the picture that they tore is left out"
                                  : " missing; the picture in them is lost"));
    pes_.end();
  }
}

void TsSubtitleStream::finish() {
  if (!pes_.isOpen()) return;
  pes_.end();
  Bytes payload = pes_.bytes();
  const auto header = parsePesHeader(payload);
  if (!header) {
    if (!payload.empty()) warn("a PES packet with a damaged header; passed over");
    return;
  }
  payload = payload.subspan(header->size);
  if (payload.empty()) return;
  if (pes_.missing() != 0) {
    const bool isTeletext = type_ == SubtitleInputType::Teletext;
    warn("a PES packet ends " + std::to_string(pes_.missing()) + " bytes early; " +
         (isTeletext ? "used as far as it goes" : "left out"));
    if (!isTeletext) return;
  }
  deliver(hasEndMarker_ ? upToEndMarker(payload) : payload, header->pts);
}

void TsSubtitleStream::deliver(Bytes payload, std::optional<std::uint64_t> pts) {
  const TsTicks time = timeOf(pts);
  lastTime_ = time;
  context_.time->noteSubtitle(time);
  sample_.data.assign(payload.begin(), payload.end());
  sample_.times = InputSample::Times{toMediaTime(time), toMediaTime(time)};
  sample_.sync = true;
  sample_.discontinuity = std::exchange(hasLost_, false);
  context_.onSample(sample_);
}

TsTicks TsSubtitleStream::timeOf(std::optional<std::uint64_t> pts) {
  const TsClock& clock = context_.time->clock;
  const auto time = clock_.placeSubtitle(pts, clock);
  const bool isReplaced = clock.now() && (!pts || !clock.place(*pts));
  if ((!time || isReplaced) && !std::exchange(isDoubtReported_, true)) {
    warn(!time  ? "neither PTS nor PCR; times are estimated, 40 ms a PES packet"
         : !pts ? "no PTS; the PCR is used"
                : "a PTS more than 10 s off the PCR; the PCR is used");
  }
  if (time) return *time;
  return lastTime_ ? *lastTime_ + kEstimatedStep : 0;
}

void TsSubtitleStream::warn(const std::string& what) {
  context_.report.warn("%s, %.3f s: %s", pidName(context_.pid).c_str(),
                       seconds(lastTime_.value_or(0)), what.c_str());
}

TsVideoStream::TsVideoStream(VideoCodec codec, TsStreamContext context)
    : codec_(codec),
      context_(std::move(context)),
      captions_(codec,
                [this](MediaTime time, Bytes triplets) {
                  context_.onSample(captionSample(triplets, time, time));
                },
                {context_.logger, pidName(context_.pid)}) {
}

void TsVideoStream::take(const TsPacket& packet, unsigned lost) {
  if (lost != 0) {
    captions_.lostData();
    inHeader_ = false;
  }
  Bytes payload = packet.payload();
  if (packet.hasUnitStart()) {
    header_.clear();
    isMarked_ = packet.hasRandomAccess();
    inHeader_ = true;
  }
  if (!inHeader_) {
    if (inPes_) captions_.feed(payload);
    return;
  }

  // Nearly always all of it is in one packet.
  const std::size_t before = header_.size();
  header_.insert(header_.end(), payload.begin(), payload.end());
  if (header_.size() < pesHeaderSize(header_)) return;
  inHeader_ = false;
  const auto header = parsePesHeader(header_);
  inPes_ = header.has_value();
  if (!header) return;
  payload = payload.subspan(header->size - before);
  beginPes(*header, payload);
  captions_.feed(payload);
}

void TsVideoStream::beginPes(const PesHeader& header, Bytes payload) {
  std::optional<MediaTime> time;
  if (header.pts) {
    const TsTicks ticks = clock_.place(*header.pts, context_.time->clock);
    context_.time->notePicture(ticks);
    time = toMediaTime(ticks);
    if (context_.onPicture) {
      context_.onPicture({.pts = *header.pts,
                          .time = ticks,
                          .isMarked = isMarked_,
                          .codec = codec_,
                          .start = payload});
    }
  }
  captions_.beginPes(time);
}

}  // namespace korr::txsub
