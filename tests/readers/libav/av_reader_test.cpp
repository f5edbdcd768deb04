// SPDX-License-Identifier: MIT
#include "readers/libav/av_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/module_loader.h"
#include "readers/libav/av_module.h"
#include "testkit/encoders/av1_builder.h"
#include "testkit/encoders/video_builder.h"
#include "testkit/reader_support.h"
#include "testkit/temporary_directory.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::encode;
using encoders::h264ParameterSets;
using encoders::textTriplets;
using encoding::subtitling::kMillisecond;
using encoding::subtitling::kSecond;
using test_support::MemorySource;
using test_support::RecordingListener;
using test_support::TemporaryDirectory;
using test_support::textOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::string_literals;

struct Packet {
  Bytes data;
  std::int64_t pts = 0;  // ms
  std::int64_t dts = 0;  // ms
};

/// One stream in a container that libavformat writes.
struct Recording {
  const char* format = "mp4";
  AVCodecID codec = AV_CODEC_ID_H264;
  AVMediaType type = AVMEDIA_TYPE_VIDEO;
  Bytes extradata{};
  const char* language = "eng";
  std::vector<Packet> packets{};
};

void check(int result) {
  if (result < 0) throw std::runtime_error("libavformat: " + std::to_string(result));
}

void write(const Recording& recording, const std::string& path) {
  AVFormatContext* format = nullptr;
  check(avformat_alloc_output_context2(&format, nullptr, recording.format, path.c_str()));
  AVStream* const stream = avformat_new_stream(format, nullptr);
  AVCodecParameters& parameters = *stream->codecpar;
  parameters.codec_type = recording.type;
  parameters.codec_id = recording.codec;
  parameters.width = 64;
  parameters.height = 48;
  parameters.extradata = static_cast<std::uint8_t*>(
      av_mallocz(recording.extradata.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  std::ranges::copy(recording.extradata, parameters.extradata);
  parameters.extradata_size = static_cast<int>(recording.extradata.size());
  stream->time_base = {1, 1000};
  av_dict_set(&stream->metadata, "language", recording.language, 0);
  check(avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE));
  format->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
  check(avformat_write_header(format, nullptr));
  for (const Packet& packet : recording.packets) {
    AVPacket* out = av_packet_alloc();
    check(av_new_packet(out, static_cast<int>(packet.data.size())));
    std::ranges::copy(packet.data, out->data);
    out->pts = packet.pts;
    out->dts = packet.dts;
    out->duration = 40;
    if (&packet == &recording.packets.front()) out->flags |= AV_PKT_FLAG_KEY;
    av_packet_rescale_ts(out, {1, 1000}, stream->time_base);
    check(av_interleaved_write_frame(format, out));
    av_packet_free(&out);
  }
  check(av_write_trailer(format));
  avio_closep(&format->pb);
  avformat_free_context(format);
}

Packet picture(std::string_view text, std::int64_t pts, std::int64_t dts) {
  return {encode({.triplets = textTriplets(text), .beginsGroup = dts == 0, .still = true}), pts,
          dts};
}

struct AvReading : test_support::Reading<AvReader> {
  using Reading::Reading;

  /// The samples as "milliseconds:text".
  std::vector<std::string> captions() const {
    std::vector<std::string> captions;
    for (const auto& [stream, sample] : listener.samples) {
      captions.push_back(std::to_string(sample.times->start / kMillisecond) + ":" +
                         textOf(sample.data));
    }
    return captions;
  }
};

/// A port that nobody should come to. Whoever does is counted and sent away.
class LocalServer {
 public:
  LocalServer() {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    auto* const address = reinterpret_cast<sockaddr*>(&address_);
    EXPECT_EQ(::bind(socket_, address, size), 0);
    EXPECT_EQ(::listen(socket_, 5), 0);
    EXPECT_EQ(::getsockname(socket_, address, &size), 0);
    thread_ = std::thread([this] {
      for (int visitor = 0; (visitor = ::accept(socket_, nullptr, nullptr)) >= 0; ++visitors_) {
        ::close(visitor);
      }
    });
  }
  ~LocalServer() {
    ::shutdown(socket_, SHUT_RDWR);
    thread_.join();
    ::close(socket_);
  }
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

  int port() const { return ntohs(address_.sin_port); }
  int visitors() const { return visitors_; }

 private:
  const int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address_{};
  std::atomic<int> visitors_ = 0;
  std::thread thread_;
};

class AvReaderTest : public testing::Test {
 protected:
  std::string record(const Recording& recording) const {
    write(recording, path_);
    return path_;
  }

  const TemporaryDirectory directory_;
  const std::string path_ = directory_.file("recording");
};

const Recording kThreePictures{
    .format = "matroska",
    .extradata = h264ParameterSets(),
    .packets = {picture("I0", 80, 0), picture("P2", 160, 40), picture("B1", 120, 80)}};

TEST_F(AvReaderTest, TakesCaptionsOfEveryContainerInPresentationOrder) {
  for (const char* format : {"mp4", "mov", "matroska", "flv"}) {
    SCOPED_TRACE(format);
    Recording recording = kThreePictures;
    recording.format = format;
    const AvReading reading(record(recording));
    ASSERT_THAT(reading.listener.streams, SizeIs(1));
    EXPECT_TRUE(reading.listener.streams[0].isVideo);
    EXPECT_THAT(reading.captions(), ElementsAre(EndsWith(":I0"), EndsWith(":B1"), EndsWith(":P2")));
    EXPECT_THAT(reading.logger.lines, IsEmpty());
  }
}

TEST_F(AvReaderTest, TakesCaptionsOfAv1) {
  for (const char* format : {"mp4", "matroska"}) {
    SCOPED_TRACE(format);
    const auto frame = [](std::string_view text, std::int64_t time) {
      return Packet{encoders::av1TemporalUnit(textTriplets(text)), time, time};
    };
    const AvReading reading(record({.format = format,
                                    .codec = AV_CODEC_ID_AV1,
                                    .extradata = encoders::av1SequenceHeader(),
                                    .packets = {frame("ab", 0), frame("", 40), frame("cd", 80)}}));
    ASSERT_THAT(reading.listener.streams, SizeIs(1));
    EXPECT_TRUE(reading.listener.streams[0].isVideo);
    EXPECT_THAT(reading.captions(), ElementsAre("0:ab", "80:cd"));
    EXPECT_THAT(reading.logger.lines, IsEmpty());
  }
}

TEST_F(AvReaderTest, KeepsTheTimesOfTheContainer) {
  const AvReading reading(record(kThreePictures));
  EXPECT_THAT(reading.captions(), ElementsAre("80:I0", "120:B1", "160:P2"));
  EXPECT_GT(reading.reader.endTime(0), 160 * kMillisecond);
  EXPECT_LE(reading.reader.endTime(0), 200 * kMillisecond);
}

TEST_F(AvReaderTest, TimesBeforeZeroCountAsZero) {
  Recording recording{.format = "mov", .extradata = h264ParameterSets()};
  for (int i = -2; i < 3; ++i) recording.packets.push_back(picture("ab", i * 40, i * 40));
  recording.packets[0].data = picture("ab", 0, 0).data;
  const AvReading reading(record(recording));
  EXPECT_THAT(reading.captions(), ElementsAre("0:ababab", "40:ab", "80:ab"));
  EXPECT_EQ(reading.reader.startTime(0), 0U);
}

TEST_F(AvReaderTest, FetchesNothingThatAFileNames) {
  LocalServer server;
  const std::string manifest =
      "<MPD profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\" type=\"static\" "
      "mediaPresentationDuration=\"PT1S\"><Period><AdaptationSet contentType=\"video\">"
      "<Representation id=\"1\" bandwidth=\"1\"><BaseURL>http://127.0.0.1:" +
      std::to_string(server.port()) +
      "/film.mp4</BaseURL></Representation></AdaptationSet></Period></MPD>\n";
  const auto open = [](auto input) { AvReading{std::move(input)}; };
  EXPECT_THROW(open(directory_.write("film.mpd", manifest)), util::TessaryException);
  EXPECT_THROW(open(std::make_unique<MemorySource>(manifest)), util::TessaryException);
  EXPECT_EQ(server.visitors(), 0);
}

TEST_F(AvReaderTest, ReadsCaptionTracks) {
  // The writer makes one cdat atom of each packet's triplets.
  Packet packet{{}, 0, 0};
  for (int i = 0; i < 6; ++i) packet.data.insert(packet.data.end(), {0xFC, '-', '-'});
  record({.format = "mov",
          .codec = AV_CODEC_ID_EIA_608,
          .type = AVMEDIA_TYPE_SUBTITLE,
          .packets = {packet, {{0xFC, 'o', 'k'}, 1000, 1000}}});
  std::string file = directory_.read("recording");
  const auto atom = file.find(
      "\0\0\0\x14"
      "cdat"s);
  ASSERT_NE(atom, file.npos);
  file.replace(atom, 20,
               "\0\0\0\x0A"
               "cdatHi"
               "\0\0\0\x0A"
               "cdt2yo"s);
  const AvReading reading(directory_.write("recording", file));
  ASSERT_THAT(reading.listener.streams, SizeIs(1));
  EXPECT_FALSE(reading.listener.streams[0].isVideo);
  EXPECT_EQ(reading.listener.streams[0].language, "eng");
  ASSERT_THAT(reading.captions(), ElementsAre("0:Hiyo", "1000:ok"));
  EXPECT_EQ(reading.listener.samples[0].second.data, (Bytes{0xFC, 'H', 'i', 0xFD, 'y', 'o'}));
}

TEST_F(AvReaderTest, HandsDvbSubtitlesOverAsPesDataFields) {
  const Bytes segments{0x0F, 0x10, 0x00, 0x01, 0x00, 0x02, 0x05, 0x00};
  const AvReading reading(record({.format = "matroska",
                                  .codec = AV_CODEC_ID_DVB_SUBTITLE,
                                  .type = AVMEDIA_TYPE_SUBTITLE,
                                  .extradata = {0, 1, 0, 2, 0x10},
                                  .language = "ger",
                                  .packets = {{segments, 500, 500}}}));
  ASSERT_THAT(reading.listener.streams, SizeIs(1));
  const StreamInfo& stream = reading.listener.streams[0];
  EXPECT_EQ(stream.type, SubtitleInputType::DvbSubtitle);
  EXPECT_EQ(stream.descriptors, (Bytes{0x59, 8, 'g', 'e', 'r', 0x10, 0, 1, 0, 2}));
  ASSERT_THAT(reading.listener.samples, SizeIs(1));
  const InputSample& sample = reading.listener.samples[0].second;
  EXPECT_EQ(sample.data, encoders::join({Bytes{0x20, 0x00}, segments, Bytes{0xFF}}));
  EXPECT_EQ(sample.times->start, kSecond / 2);
}

TEST_F(AvReaderTest, ReadsWhatIsThereOfATornFile) {
  Recording recording = kThreePictures;
  for (int i = 3; i < 500; ++i) recording.packets.push_back(picture("ab", i * 40, i * 40));
  record(recording);
  const std::string file = directory_.read("recording");
  const AvReading reading(directory_.write("torn", file.substr(0, file.size() / 2)));
  EXPECT_GT(reading.listener.samples.size(), 150U);
}

TEST_F(AvReaderTest, TellsOfSubtitlesInOtherForms) {
  record({.format = "matroska",
          .codec = AV_CODEC_ID_SUBRIP,
          .type = AVMEDIA_TYPE_SUBTITLE,
          .language = "fre",
          .packets = {{{'H', 'i'}, 0, 0}}});
  const AvReading reading(path_);
  EXPECT_THAT(reading.listener.streams, IsEmpty());
  EXPECT_THAT(reading.reader.findings().otherSubtitles,
              ElementsAre("track 1 (SubRip subtitle, fre)"));
  EXPECT_TRUE(reading.reader.findings().hasAskedPid);
  EXPECT_FALSE(AvReading(path_, {.pid = 7}).reader.findings().hasAskedPid);
}

TEST_F(AvReaderTest, ReadsPipes) {
  record(kThreePictures);
  const AvReading reading(std::make_unique<MemorySource>(directory_.read("recording")));
  EXPECT_THAT(reading.listener.samples, SizeIs(3));
  EXPECT_GT(reading.reader.progress().bytesRead, 0U);
}

TEST_F(AvReaderTest, IsFoundAsAModule) {
  auto* const open =
      reinterpret_cast<OpenWithAvformat*>(platform::moduleFunction(kAvModule, kAvModuleFunction));
  const std::unique_ptr<IMediaReader> reader(open(record(kThreePictures), nullptr, {}));
  RecordingListener listener;
  while (reader->read(listener)) {
  }
  EXPECT_THAT(listener.samples, SizeIs(3));
  EXPECT_THROW(open(path_ + ".missing", nullptr, {}), util::TessaryException);
  EXPECT_THROW(platform::moduleFunction("no-such.so", ""), util::TessaryException);
}

TEST_F(AvReaderTest, RefusesWhatIsNoRecording) {
  for (const std::string& path : {directory_.write("text", "not a recording"),
                                  directory_.file("missing"), directory_.file("")}) {
    EXPECT_THROW(AvReader(path, {}), util::TessaryException) << path;
  }
  EXPECT_THROW(AvReader(std::make_unique<MemorySource>(std::string_view{}), {}),
               util::TessaryException);
}

TEST_F(AvReaderTest, ReadsARealCapture) {
  const char* const captures = std::getenv("TESSARY_CAPTURES");
  if (!captures) GTEST_SKIP() << "TESSARY_CAPTURES names no folder of real captures";
  const AvReading reading(std::string(captures) + "/sintel-captions.ts");
  std::string text;
  for (const auto& [stream, sample] : reading.listener.samples) {
    text += textOf(sample.data).substr(0, 2);
  }
  EXPECT_THAT(text, HasSubstr("Japanese"));
  EXPECT_THAT(reading.listener.samples, SizeIs(240));  // one a picture
  EXPECT_TRUE(std::ranges::is_sorted(reading.listener.samples, {},
                                     [](const auto& entry) { return entry.second.times->start; }));
}

}  // namespace
}  // namespace korr::txsub
