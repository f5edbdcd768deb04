// SPDX-License-Identifier: MIT

// The elementary streams of a transport stream that the reader follows.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "readers/media_reader.h"
#include "readers/mpegts/ts_clock.h"
#include "readers/mpegts/ts_packet.h"
#include "readers/mpegts/ts_pes.h"
#include "readers/mpegts/ts_program_clock.h"
#include "readers/mpegts/ts_program_times.h"
#include "readers/mpegts/ts_report.h"
#include "readers/mpegts/ts_stream_kind.h"
#include "readers/video/video_captions.h"

namespace korr::txsub {

/// What a stream has around it.
struct TsStreamContext {
  std::uint16_t pid = 0;
  TsProgramTime* time = nullptr;  ///< of its program; never null
  TsReport& report;
  log::ILogger* logger = nullptr;
  std::function<void(const InputSample&)> onSample;
  /// Told each picture of video that begins with a PTS; empty: nobody wants to know.
  std::function<void(const TsPicture&)> onPicture = {};
};

/// Makes samples of the packets of one PID.
class ITsStream {
 public:
  virtual ~ITsStream() = default;

  /// The next packet, after `lost` others that are missing.
  virtual void take(const TsPacket& packet, unsigned lost) = 0;

  /// The program's clock has come to `now`: hands out what is held back and shown until then.
  virtual void release(MediaTime now) = 0;

  /// The stream ends: hands out what is held back.
  virtual void flush() = 0;

  /// The stream belongs to another program from now on, as tables that came late tell.
  virtual void setTime(TsProgramTime& time) = 0;
};

/// Teletext and DVB subtitles: a PES payload is a sample.
class TsSubtitleStream final : public ITsStream {
 public:
  TsSubtitleStream(const TsStreamKind& kind, TsStreamContext context)
      : type_(kind.type),
        hasEndMarker_(kind.type == SubtitleInputType::DvbSubtitle &&
                      kind.pictures == PictureSystem::Dvb),
        context_(std::move(context)) {}

  void take(const TsPacket& packet, unsigned lost) override;
  void release(MediaTime) override {}
  void flush() override { finish(); }
  void setTime(TsProgramTime& time) override { context_.time = &time; }

 private:
  void onLoss(unsigned lost);
  void finish();
  void deliver(std::span<const std::uint8_t> payload, std::optional<std::uint64_t> pts);
  TsTicks timeOf(std::optional<std::uint64_t> pts);
  void warn(const std::string& what);

  SubtitleInputType type_;
  bool hasEndMarker_;
  TsStreamContext context_;
  PesAssembler pes_;
  TsStreamClock clock_;
  std::optional<TsTicks> lastTime_;
  InputSample sample_;            // kept, so that its memory is
  bool hasLost_ = false;          // something since the last sample
  bool isDoubtReported_ = false;  // that times are not the stream's own
};

/// Video with captions in its pictures: the triplets of a picture are a sample.
class TsVideoStream final : public ITsStream {
 public:
  TsVideoStream(VideoCodec codec, TsStreamContext context);

  void take(const TsPacket& packet, unsigned lost) override;
  void release(MediaTime now) override { captions_.release(now); }
  void flush() override { captions_.flush(); }
  void setTime(TsProgramTime& time) override { context_.time = &time; }

 private:
  void beginPes(const PesHeader& header, std::span<const std::uint8_t> payload);

  VideoCodec codec_;
  TsStreamContext context_;
  TsStreamClock clock_;
  VideoCaptionExtractor captions_;
  std::vector<std::uint8_t> header_;  // of a PES packet, as far as it has come
  bool isMarked_ = false;             // as a random access point
  bool inHeader_ = false;
  bool inPes_ = false;
};

}  // namespace korr::txsub
