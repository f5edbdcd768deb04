// SPDX-License-Identifier: MIT
#include "readers/libav/av_reader.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <span>
#include <utility>
#include <vector>

#include "readers/caption_sample.h"
#include "readers/libav/av_log.h"
#include "readers/libav/container_samples.h"
#include "readers/video/av1_captions.h"
#include "readers/video/video_captions.h"

extern "C" {
#include <libavcodec/codec_desc.h>
#include <libavformat/avformat.h>
}

namespace korr::txsub {
namespace {

constexpr AVRational kMediaTimeBase{1, static_cast<int>(encoding::subtitling::kSecond)};
constexpr std::size_t kReadAtOnce = 1 << 20;  // bytes of packets a call of `read` takes

std::string errorText(int error) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(error, text.data(), text.size());
  return text.data();
}

[[noreturn]] void refuse(int error) {
  throw util::TessaryException("it is in no format that can be read here: " + errorText(error));
}

struct FormatCloser {
  void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct PacketDeleter {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct IoDeleter {
  void operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
  }
};

/// Lets libavformat read from a byte source. Its errors must not pass through C code, so the first
/// is kept.
class SourceIo {
 public:
  explicit SourceIo(std::unique_ptr<IByteSource> source) : source_(std::move(source)) {
    constexpr int kBufferBytes = 64 * 1024;
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(kBufferBytes));
    io_.reset(avio_alloc_context(buffer, kBufferBytes, 0, this, readSource, nullptr, nullptr));
    if (!io_) throw std::bad_alloc();
  }

  AVIOContext* context() const { return io_.get(); }
  std::optional<std::uint64_t> size() const { return source_->size(); }

  /// Throws what the source threw, if it did.
  void rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  static int readSource(void* self, std::uint8_t* buffer, int size) noexcept {
    auto& io = *static_cast<SourceIo*>(self);
    try {
      const std::size_t count = io.source_->read(buffer, static_cast<std::size_t>(size));
      return count == 0 ? AVERROR_EOF : static_cast<int>(count);
    } catch (...) {
      io.error_ = std::current_exception();
      return AVERROR(EIO);
    }
  }

  std::unique_ptr<IByteSource> source_;
  std::unique_ptr<AVIOContext, IoDeleter> io_;
  std::exception_ptr error_;
};

std::optional<VideoCodec> videoCodec(AVCodecID codec) {
  switch (codec) {
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
      return VideoCodec::Mpeg2;
    case AV_CODEC_ID_H264:
      return VideoCodec::H264;
    case AV_CODEC_ID_HEVC:
      return VideoCodec::Hevc;
    default:
      return {};
  }
}

std::span<const std::uint8_t> privateData(const AVCodecParameters& parameters) {
  return {parameters.extradata, static_cast<std::size_t>(std::max(parameters.extradata_size, 0))};
}

std::string languageOf(const AVStream& stream) {
  const AVDictionaryEntry* const entry = av_dict_get(stream.metadata, "language", nullptr, 0);
  return entry ? entry->value : "";
}

std::uint32_t trackNumber(const AVStream& stream) {
  return static_cast<std::uint32_t>(stream.id > 0 ? stream.id : stream.index + 1);
}

/// "track 3 (SubRip subtitle, eng)"
std::string otherSubtitle(const AVStream& stream) {
  const AVCodecID codec = stream.codecpar->codec_id;
  const AVCodecDescriptor* const known = avcodec_descriptor_get(codec);
  const std::string language = languageOf(stream);
  return "track " + std::to_string(trackNumber(stream)) + " (" +
         (known && known->long_name ? known->long_name : avcodec_get_name(codec)) +
         (language.empty() ? "" : ", " + language) + ")";
}

/// What the stream holds for us; nothing when that is nothing.
std::optional<StreamInfo> describe(const AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  StreamInfo info;
  info.id = static_cast<std::uint32_t>(stream.index);
  info.pid = trackNumber(stream);
  const std::string language = languageOf(stream);
  info.language = language.substr(0, language.find(','));
  if (videoCodec(parameters.codec_id) || parameters.codec_id == AV_CODEC_ID_AV1) {
    info.type = SubtitleInputType::ClosedCaption;
    info.isVideo = true;
  } else if (parameters.codec_id == AV_CODEC_ID_EIA_608) {
    info.type = SubtitleInputType::ClosedCaption;
  } else if (parameters.codec_id == AV_CODEC_ID_DVB_SUBTITLE) {
    info.type = SubtitleInputType::DvbSubtitle;
    info.descriptors = subtitlingDescriptor(language, privateData(parameters));
  } else if (parameters.codec_id == AV_CODEC_ID_HDMV_PGS_SUBTITLE) {
    info.type = SubtitleInputType::DvbSubtitle;
    info.pictures = PictureSystem::Pgs;
  } else if (parameters.codec_id == AV_CODEC_ID_DVD_SUBTITLE) {
    info.type = SubtitleInputType::DvbSubtitle;
    info.pictures = PictureSystem::Dvd;
    const auto setup = privateData(parameters);
    info.pictureSetup.assign(setup.begin(), setup.end());
  } else if (parameters.codec_id == AV_CODEC_ID_DVB_TELETEXT) {
    info.type = SubtitleInputType::Teletext;
    info.descriptors = teletextDescriptor(language, privateData(parameters));
  } else {
    return {};
  }
  return info;
}

}  // namespace

class AvReader::Recording {
 public:
  Recording(const std::string& path, const ReaderOptions& options)
      : options_(options), logRoute_(options.logger) {
    open("file:" + path);
  }

  Recording(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
      : options_(options), logRoute_(options.logger), source_(std::in_place, std::move(source)) {
    open("");
  }

  bool read(IReaderListener& listener);
  void unselect(std::uint32_t streamId);
  ReadProgress progress() const;
  std::optional<MediaTime> startTime() const;
  std::optional<MediaTime> endTime() const { return endTime_; }
  ReaderFindings findings() const;

 private:
  struct Track {
    StreamInfo info;
    std::optional<VideoCaptionExtractor> captions{};  // of video
    std::optional<std::size_t> nalLengthBytes{};      // start codes otherwise
    std::optional<Av1CaptionExtractor> av1{};         // of video in AV1
  };

  void open(const std::string& url);
  void announceStreams(IReaderListener& listener);
  Track makeTrack(const StreamInfo& info, const AVStream& stream);
  void readPacket(const AVPacket& packet);
  void readVideo(Track& track, std::span<const std::uint8_t> data, std::optional<MediaTime> time);
  void report(Track& track, std::vector<std::uint8_t> data, std::optional<MediaTime> start,
              MediaTime duration);
  void noteTime(std::optional<MediaTime> time, MediaTime duration);
  void finish(int error);

  ReaderOptions options_;
  AvLogRoute logRoute_;
  std::optional<SourceIo> source_;
  std::unique_ptr<AVFormatContext, FormatCloser> format_;
  std::unique_ptr<AVPacket, PacketDeleter> packet_{av_packet_alloc()};
  std::vector<std::unique_ptr<Track>> tracks_;  // by stream index; null: nothing for us
  IReaderListener* listener_ = nullptr;         // during `read`
  std::optional<MediaTime> firstTime_;
  std::optional<MediaTime> endTime_;
};

void AvReader::Recording::open(const std::string& url) {
  AVFormatContext* format = avformat_alloc_context();
  if (!format || !packet_) throw std::bad_alloc();
  if (source_) format->pb = source_->context();

  AVDictionary* settings = nullptr;
  // Nothing that a file names is fetched; what comes through a pipe or from a network names
  // nothing.
  av_dict_set(&settings, "protocol_whitelist", source_ ? "none" : "file", 0);
  av_dict_set(&settings, "fix_teletext_pts", "0", 0);  // the stream's own times
  const int error = avformat_open_input(&format, url.c_str(), nullptr, &settings);
  av_dict_free(&settings);
  if (source_) source_->rethrow();
  if (error < 0) refuse(error);  // and has freed `format`

  format_.reset(format);
  const int probed = avformat_find_stream_info(format_.get(), nullptr);
  if (source_) source_->rethrow();
  if (probed < 0) refuse(probed);
}

bool AvReader::Recording::read(IReaderListener& listener) {
  listener_ = &listener;
  for (std::size_t bytes = 0; bytes < kReadAtOnce;) {
    announceStreams(listener);
    const int error = av_read_frame(format_.get(), packet_.get());
    if (error < 0) {
      finish(error);
      return false;
    }
    bytes += static_cast<std::size_t>(packet_->size);
    readPacket(*packet_);
    av_packet_unref(packet_.get());
  }
  return true;
}

void AvReader::Recording::announceStreams(IReaderListener& listener) {
  while (tracks_.size() < format_->nb_streams) {
    AVStream& stream = *format_->streams[tracks_.size()];
    std::optional<StreamInfo> info = describe(stream);
    if (info && options_.pid && *options_.pid != info->pid) info.reset();
    tracks_.push_back(info ? std::make_unique<Track>(makeTrack(*info, stream)) : nullptr);
    if (!info || !listener.onStream(*info)) stream.discard = AVDISCARD_ALL;
  }
}

AvReader::Recording::Track AvReader::Recording::makeTrack(const StreamInfo& info,
                                                          const AVStream& stream) {
  Track track{.info = info};
  const auto index = static_cast<std::size_t>(stream.index);
  const auto listener = [this, index](MediaTime time, std::span<const std::uint8_t> triplets) {
    const bool wanted = format_->streams[index]->discard != AVDISCARD_ALL;
    if (wanted) listener_->onSample(tracks_[index]->info, captionSample(triplets, time, time));
  };
  const std::string name = "track " + std::to_string(info.pid);
  if (stream.codecpar->codec_id == AV_CODEC_ID_AV1) {
    track.av1.emplace(listener, options_.logger, name);
  } else if (const auto codec = videoCodec(stream.codecpar->codec_id)) {
    track.captions.emplace(*codec, listener, VideoCaptionExtractor::Context{options_.logger, name});
    track.nalLengthBytes = nalLengthBytes(*codec, privateData(*stream.codecpar));
  }
  return track;
}

void AvReader::Recording::readPacket(const AVPacket& packet) {
  const auto index = static_cast<std::size_t>(packet.stream_index);
  if (index >= tracks_.size()) return;
  const AVStream& stream = *format_->streams[index];
  const std::int64_t ticks = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
  std::optional<MediaTime> time;
  if (ticks != AV_NOPTS_VALUE) {
    const auto rescaled = av_rescale_q(ticks, stream.time_base, kMediaTimeBase);
    time = static_cast<MediaTime>(std::max<std::int64_t>(rescaled, 0));
  }
  const auto duration = static_cast<MediaTime>(
      std::max<std::int64_t>(av_rescale_q(packet.duration, stream.time_base, kMediaTimeBase), 0));
  noteTime(time, duration);

  if (!tracks_[index] || stream.discard == AVDISCARD_ALL) return;
  Track& track = *tracks_[index];
  const std::span<const std::uint8_t> data(packet.data, static_cast<std::size_t>(packet.size));
  if (track.captions) return readVideo(track, data, time);
  if (track.av1) return track.av1->take(time, data);
  switch (track.info.type) {
    case SubtitleInputType::ClosedCaption:  // libavformat makes triplets of the track's atoms
      return report(track, {data.begin(), data.end()}, time, duration);
    case SubtitleInputType::DvbSubtitle:
      if (track.info.pictures != PictureSystem::Dvb) {
        return report(track, {data.begin(), data.end()}, time, duration);
      }
      return report(track, dvbSubtitleDataField(data), time, duration);
    case SubtitleInputType::Teletext:
      return report(track, teletextDataField(data), time, duration);
  }
}

void AvReader::Recording::readVideo(Track& track, std::span<const std::uint8_t> data,
                                    std::optional<MediaTime> time) {
  track.captions->beginPes(time);
  if (!track.nalLengthBytes) return track.captions->feed(data);
  static constexpr std::array<std::uint8_t, 3> kStartCode{0, 0, 1};
  while (const auto unit = takeLengthPrefixedUnit(data, *track.nalLengthBytes)) {
    track.captions->feed(kStartCode);
    track.captions->feed(*unit);
  }
}

void AvReader::Recording::report(Track& track, std::vector<std::uint8_t> data,
                                 std::optional<MediaTime> start, MediaTime duration) {
  if (data.empty()) return;
  InputSample sample;
  sample.data = std::move(data);
  if (start) sample.times = InputSample::Times{*start, *start + duration};
  sample.sync = true;
  listener_->onSample(track.info, sample);
}

void AvReader::Recording::noteTime(std::optional<MediaTime> time, MediaTime duration) {
  if (!time) return;
  if (!firstTime_) firstTime_ = time;
  endTime_ = std::max(endTime_.value_or(0), *time + duration);
}

void AvReader::Recording::finish(int error) {
  for (const auto& track : tracks_) {
    if (track && track->captions) track->captions->flush();
  }
  if (source_) source_->rethrow();
  if (error == AVERROR_EOF) return;
  log::write(options_.logger, log::Level::Warning,
             "byte %" PRIu64 ": reading ends here: %s; what came before is kept",
             progress().bytesRead, errorText(error).c_str());
}

void AvReader::Recording::unselect(std::uint32_t streamId) {
  if (streamId < format_->nb_streams) format_->streams[streamId]->discard = AVDISCARD_ALL;
}

ReadProgress AvReader::Recording::progress() const {
  ReadProgress progress;
  if (!format_->pb) return progress;
  progress.bytesRead =
      static_cast<std::uint64_t>(std::max<std::int64_t>(avio_tell(format_->pb), 0));
  const std::int64_t size = source_ ? -1 : avio_size(format_->pb);
  if (size >= 0) progress.bytesTotal = static_cast<std::uint64_t>(size);
  if (source_) progress.bytesTotal = source_->size();
  return progress;
}

std::optional<MediaTime> AvReader::Recording::startTime() const {
  if (format_->start_time == AV_NOPTS_VALUE) return firstTime_;
  const auto start = av_rescale_q(format_->start_time, {1, AV_TIME_BASE}, kMediaTimeBase);
  return static_cast<MediaTime>(std::max<std::int64_t>(start, 0));
}

ReaderFindings AvReader::Recording::findings() const {
  ReaderFindings findings{.hasAskedPid = !options_.pid, .otherSubtitles = {}};
  for (unsigned i = 0; i < format_->nb_streams; ++i) {
    const AVStream& stream = *format_->streams[i];
    if (options_.pid && trackNumber(stream) == *options_.pid) findings.hasAskedPid = true;
    const bool isSubtitle = stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE;
    if (isSubtitle && !describe(stream)) findings.otherSubtitles.push_back(otherSubtitle(stream));
  }
  return findings;
}

AvReader::AvReader(const std::string& path, const ReaderOptions& options)
    : recording_(std::make_unique<Recording>(path, options)) {
}

AvReader::AvReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : recording_(std::make_unique<Recording>(std::move(source), options)) {
}

AvReader::~AvReader() = default;

bool AvReader::read(IReaderListener& listener) {
  return recording_->read(listener);
}

void AvReader::unselect(std::uint32_t streamId) {
  recording_->unselect(streamId);
}

ReadProgress AvReader::progress() const {
  return recording_->progress();
}

std::optional<MediaTime> AvReader::startTime(std::uint32_t) const {
  return recording_->startTime();
}

std::optional<MediaTime> AvReader::endTime(std::uint32_t) const {
  return recording_->endTime();
}

ReaderFindings AvReader::findings() const {
  return recording_->findings();
}

}  // namespace korr::txsub
