#include "txsub/input/av_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/module_loader.h"
#include "samples/encoders/video_builder.h"
#include "tests/support/reader_support.h"
#include "txsub/input/av_module.h"

extern "C" {
#include <libavcodec/avcodec.h>
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
using test_support::RecordingLogger;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
  check(avformat_write_header(format, nullptr));
  for (const Packet& packet : recording.packets) {
    AVPacket* out = av_packet_alloc();
    check(av_new_packet(out, static_cast<int>(packet.data.size())));
    std::ranges::copy(packet.data, out->data);
    out->pts = packet.pts;
    out->dts = packet.dts;
    out->duration = 40;
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

class AvReaderTest : public testing::Test {
 protected:
  void readAll(AvReader& reader) {
    while (reader.read(listener_)) {
    }
  }

  void read(const Recording& recording) {
    write(recording, path_);
    AvReader reader(path_, {.pid = {}, .logger = &logger_});
    readAll(reader);
    end_ = reader.endTime(0);
  }

  /// Overwrites the file from the first place that holds `old` on.
  void overwrite(const std::string& old, const std::string& bytes) {
    std::fstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
    const std::string whole(std::istreambuf_iterator<char>(file), {});
    const auto at = whole.find(old);
    ASSERT_NE(at, whole.npos);
    file.clear();
    file.seekp(static_cast<std::streamoff>(at));
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  /// The samples as "milliseconds:text".
  std::vector<std::string> captions() const {
    std::vector<std::string> captions;
    for (const auto& [stream, sample] : listener_.samples) {
      std::string line = std::to_string(sample.times->start / kMillisecond) + ":";
      for (std::size_t i = 0; i + 2 < sample.data.size(); i += 3) {
        line += static_cast<char>(sample.data[i + 1] & 0x7F);
        line += static_cast<char>(sample.data[i + 2] & 0x7F);
      }
      captions.push_back(line);
    }
    return captions;
  }

  void TearDown() override { std::filesystem::remove(path_); }

  const std::string path_ =
      testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".av";
  RecordingLogger logger_;
  RecordingListener listener_;
  std::optional<MediaTime> end_;
};

const std::vector<Packet> kThreePictures{picture("I0", 80, 0), picture("P2", 160, 40),
                                         picture("B1", 120, 80)};

TEST_F(AvReaderTest, TakesCaptionsOfEveryContainerInPresentationOrder) {
  for (const char* format : {"mp4", "mov", "matroska", "flv"}) {
    SCOPED_TRACE(format);
    listener_ = {};
    read({.format = format, .extradata = h264ParameterSets(), .packets = kThreePictures});
    ASSERT_EQ(listener_.streams.size(), 1U);
    EXPECT_TRUE(listener_.streams[0].isVideo);
    EXPECT_EQ(listener_.samples.size(), 3U);
    std::string text;
    for (const auto& caption : captions()) text += caption.substr(caption.find(':') + 1);
    EXPECT_EQ(text, "I0B1P2");
  }
  EXPECT_THAT(logger_.lines, IsEmpty());
}

TEST_F(AvReaderTest, KeepsTheTimesOfTheContainer) {
  read({.format = "matroska", .extradata = h264ParameterSets(), .packets = kThreePictures});
  EXPECT_THAT(captions(), ElementsAre("80:I0", "120:B1", "160:P2"));
  EXPECT_GT(end_, 160 * kMillisecond);
  EXPECT_LE(end_, 200 * kMillisecond);
}

TEST_F(AvReaderTest, ReadsCaptionTracks) {
  // The writer makes one cdat atom of each packet's triplets.
  Packet packet{{}, 0, 0};
  for (int i = 0; i < 6; ++i) packet.data.insert(packet.data.end(), {0xFC, '-', '-'});
  write({.format = "mov",
         .codec = AV_CODEC_ID_EIA_608,
         .type = AVMEDIA_TYPE_SUBTITLE,
         .packets = {packet, {{0xFC, 'o', 'k'}, 1000, 1000}}},
        path_);
  overwrite(std::string("\0\0\0\x14"
                        "cdat",
                        8),
            std::string("\0\0\0\x0A"
                        "cdatHi"
                        "\0\0\0\x0A"
                        "cdt2yo",
                        20));
  AvReader reader(path_, {.pid = {}, .logger = &logger_});
  readAll(reader);
  ASSERT_EQ(listener_.streams.size(), 1U);
  EXPECT_FALSE(listener_.streams[0].isVideo);
  EXPECT_EQ(listener_.streams[0].language, "eng");
  ASSERT_THAT(captions(), ElementsAre("0:Hiyo", "1000:ok"));
  EXPECT_EQ(listener_.samples[0].second.data, (Bytes{0xFC, 'H', 'i', 0xFD, 'y', 'o'}));
}

TEST_F(AvReaderTest, HandsDvbSubtitlesOverAsPesDataFields) {
  const Bytes segments{0x0F, 0x10, 0x00, 0x01, 0x00, 0x02, 0x05, 0x00};
  read({.format = "matroska",
        .codec = AV_CODEC_ID_DVB_SUBTITLE,
        .type = AVMEDIA_TYPE_SUBTITLE,
        .extradata = {0, 1, 0, 2, 0x10},
        .language = "ger",
        .packets = {{segments, 500, 500}}});
  ASSERT_EQ(listener_.streams.size(), 1U);
  EXPECT_EQ(listener_.streams[0].type, SubtitleInputType::DvbSubtitle);
  EXPECT_EQ(listener_.streams[0].descriptors, (Bytes{0x59, 8, 'g', 'e', 'r', 0x10, 0, 1, 0, 2}));
  ASSERT_EQ(listener_.samples.size(), 1U);
  const InputSample& sample = listener_.samples[0].second;
  EXPECT_EQ(sample.data, encoders::join({Bytes{0x20, 0x00}, segments, Bytes{0xFF}}));
  EXPECT_EQ(sample.times->start, kSecond / 2);
}

TEST_F(AvReaderTest, ReadsWhatIsThereOfATornFile) {
  std::vector<Packet> packets;
  for (int i = 0; i < 500; ++i) packets.push_back(picture("ab", i * 40, i * 40));
  write({.format = "matroska", .extradata = h264ParameterSets(), .packets = packets}, path_);
  std::filesystem::resize_file(path_, std::filesystem::file_size(path_) / 2);
  AvReader reader(path_, {.pid = {}, .logger = &logger_});
  readAll(reader);
  EXPECT_GT(listener_.samples.size(), 150U);
}

TEST_F(AvReaderTest, ReadsPipes) {
  write({.format = "matroska", .extradata = h264ParameterSets(), .packets = kThreePictures}, path_);
  std::ifstream file(path_, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  AvReader pipe(std::make_unique<MemorySource>(bytes), {.pid = {}, .logger = &logger_});
  readAll(pipe);
  EXPECT_EQ(listener_.samples.size(), 3U);
  EXPECT_GT(pipe.progress().bytesRead, 0U);
}

TEST_F(AvReaderTest, IsFoundAsAModule) {
  write({.format = "matroska", .extradata = h264ParameterSets(), .packets = kThreePictures}, path_);
  auto* const open =
      reinterpret_cast<OpenWithAvformat*>(platform::moduleFunction(kAvModule, kAvModuleFunction));
  const std::unique_ptr<IMediaReader> reader(open(path_, nullptr, {}));
  while (reader->read(listener_)) {
  }
  EXPECT_EQ(listener_.samples.size(), 3U);
  EXPECT_THROW(open(path_ + ".missing", nullptr, {}), util::TessaryException);
  EXPECT_THROW(platform::moduleFunction("no-such.so", ""), util::TessaryException);
}

TEST_F(AvReaderTest, RefusesWhatIsNoRecording) {
  std::ofstream(path_) << "not a recording";
  EXPECT_THROW(AvReader(path_, {}), util::TessaryException);
  EXPECT_THROW(AvReader(path_ + ".missing", {}), util::TessaryException);
  EXPECT_THROW(AvReader(testing::TempDir(), {}), util::TessaryException);
  EXPECT_THROW(AvReader(std::make_unique<MemorySource>(std::string_view{}), {}),
               util::TessaryException);
}

TEST_F(AvReaderTest, ReadsARealCapture) {
  const char* const captures = std::getenv("TESSARY_CAPTURES");
  if (!captures) GTEST_SKIP() << "TESSARY_CAPTURES names no folder of real captures";
  AvReader reader(std::string(captures) + "/sintel-captions.ts", {.pid = {}, .logger = &logger_});
  readAll(reader);
  std::string text;
  for (const auto& caption : captions()) text += caption.substr(caption.find(':') + 1, 2);
  EXPECT_THAT(text, HasSubstr("Japanese"));
  EXPECT_EQ(listener_.samples.size(), 240U);  // one a picture
  EXPECT_TRUE(std::ranges::is_sorted(listener_.samples, {},
                                     [](const auto& entry) { return entry.second.times->start; }));
}

/// Decodes `picture` and gives its luma, all of one value, or -1.
int lumaOf(AVCodecID codec, Bytes picture) {
  AVCodecContext* context = avcodec_alloc_context3(avcodec_find_decoder(codec));
  context->err_recognition = AV_EF_EXPLODE;
  check(avcodec_open2(context, nullptr, nullptr));
  AVPacket* packet = av_packet_alloc();
  check(av_new_packet(packet, static_cast<int>(picture.size())));
  std::ranges::copy(picture, packet->data);
  check(avcodec_send_packet(context, packet));
  check(avcodec_send_packet(context, nullptr));
  AVFrame* frame = av_frame_alloc();
  check(avcodec_receive_frame(context, frame));
  int luma = frame->width == 64 && frame->height == 48 ? frame->data[0][0] : -1;
  for (int row = 0; row < frame->height; ++row) {
    for (int column = 0; column < frame->width; ++column) {
      if (frame->data[0][row * frame->linesize[0] + column] != luma) luma = -1;
    }
  }
  av_frame_free(&frame);
  av_packet_free(&packet);
  avcodec_free_context(&context);
  return luma;
}

TEST(StillPicture, IsGreyToAnotherDecoder) {
  EXPECT_EQ(lumaOf(AV_CODEC_ID_H264, encode({.beginsGroup = true, .still = true})), 128);
  EXPECT_EQ(lumaOf(AV_CODEC_ID_MPEG2VIDEO,
                   encode({.codec = VideoCodec::Mpeg2, .beginsGroup = true, .still = true})),
            128);
}

}  // namespace
}  // namespace korr::txsub
