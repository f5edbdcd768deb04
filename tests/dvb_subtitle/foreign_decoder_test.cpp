// SPDX-License-Identifier: MIT

// Real recordings, decoded here and by libavcodec, picture by picture: equal, colours too. What is
// fully transparent has no colour to compare.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "dvb_subtitle/dvb_display_decoder.h"
#include "readers/mpegts/ts_reader.h"
#include "testkit/reader_support.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

constexpr int kTicks = 90'000;

/// What is on the screen from a time on, in ticks of 90 kHz. Without pixels: nothing.
struct Display {
  std::int64_t time = 0;
  std::vector<std::uint8_t> rgba{};
};

bool isVisible(const std::vector<std::uint8_t>& rgba) {
  for (std::size_t alpha = 3; alpha < rgba.size(); alpha += 4)
    if (rgba[alpha] != 0) return true;
  return false;
}

bool looksAlike(const std::vector<std::uint8_t>& left, const std::vector<std::uint8_t>& right) {
  if (left.size() != right.size()) return false;
  for (std::size_t pixel = 0; pixel < left.size(); pixel += 4) {
    if (left[pixel + 3] == 0 && right[pixel + 3] == 0) continue;
    if (!std::equal(&left[pixel], &left[pixel] + 4, &right[pixel])) return false;
  }
  return true;
}

/// Takes displays in the order of time and keeps the changes.
class Screen {
 public:
  void show(std::int64_t time, std::vector<std::uint8_t> rgba) {
    if (!isVisible(rgba)) rgba.clear();
    if (!displays.empty() && displays.back().time == time) displays.pop_back();
    const bool isSame = displays.empty() ? rgba.empty() : looksAlike(displays.back().rgba, rgba);
    if (!isSame) displays.push_back({time, std::move(rgba)});
  }

  std::vector<Display> displays;
};

/// Ours.
class OurScreen final : public IDisplayListener {
 public:
  explicit OurScreen(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
    const test_support::Reading<txsub::TsReader> reading(
        std::make_unique<test_support::MemorySource>(bytes));
    std::vector<std::uint8_t> unit;
    MediaTime time = 0;
    for (const auto& [streamId, sample] : reading.listener.samples) {
      const auto stream =
          std::find_if(reading.listener.streams.begin(), reading.listener.streams.end(),
                       [id = streamId](const auto& s) { return s.id == id; });
      if (stream->type != SubtitleInputType::DvbSubtitle) continue;
      if (sample.sync && !unit.empty()) decoder_.decode(std::exchange(unit, {}), time);
      unit.insert(unit.end(), sample.data.begin(), sample.data.end());
      if (sample.times) time = sample.times->start;
    }
    decoder_.decode(unit, time);
    decoder_.finish(time);
  }

  void onDisplay(MediaTime time, Subtitle subtitle) override {
    const auto bytes = subtitle.bitmap()->pixels->bytes();
    pictures.emplace_back(bytes.begin(), bytes.end());
    screen.show(static_cast<std::int64_t>((time * 9 + 500) / 1000), pictures.back());
  }

  Screen screen;
  std::vector<std::vector<std::uint8_t>> pictures;  // all that was told
  test_support::RecordingLogger logger;

 private:
  DvbDisplayDecoder decoder_{{}, *this, &logger};
};

/// Theirs.
class ForeignScreen {
 public:
  explicit ForeignScreen(const std::string& path) {
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return;
    avformat_find_stream_info(format, nullptr);
    const int index = findStream(*format);
    if (index >= 0) decodeAll(*format, index);
    avformat_close_input(&format);
  }

  Screen screen;

 private:
  static int findStream(const AVFormatContext& format) {
    for (unsigned i = 0; i < format.nb_streams; ++i)
      if (format.streams[i]->codecpar->codec_id == AV_CODEC_ID_DVB_SUBTITLE)
        return static_cast<int>(i);
    return -1;
  }

  void decodeAll(AVFormatContext& format, int index) {
    const AVStream& stream = *format.streams[index];
    codec_ = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_DVB_SUBTITLE));
    avcodec_parameters_to_context(codec_, stream.codecpar);
    codec_->pkt_timebase = stream.time_base;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "compute_clut", "0", 0);  // colours are the stream's, or the default ones
    avcodec_open2(codec_, nullptr, &options);
    av_dict_free(&options);
    AVPacket* packet = av_packet_alloc();
    while (av_read_frame(&format, packet) >= 0) {
      if (packet->stream_index == index) decode(*packet);
      av_packet_unref(packet);
    }
    if (goesAt_ >= 0) screen.show(goesAt_, {});
    av_packet_free(&packet);
    avcodec_free_context(&codec_);
  }

  void decode(AVPacket& packet) {
    const std::int64_t time = av_rescale_q(packet.pts, codec_->pkt_timebase, AVRational{1, kTicks});
    AVSubtitle subtitle{};
    int isThere = 0;
    if (avcodec_decode_subtitle2(codec_, &subtitle, &isThere, &packet) < 0 || !isThere) return;
    if (goesAt_ >= 0 && goesAt_ <= time) screen.show(goesAt_, {});
    goesAt_ = time + subtitle.end_display_time * (kTicks / 1000);
    screen.show(time, paint(subtitle));
    avsubtitle_free(&subtitle);
  }

  std::vector<std::uint8_t> paint(const AVSubtitle& subtitle) const {
    const auto width = static_cast<std::size_t>(codec_->width > 0 ? codec_->width : 720);
    const auto height = static_cast<std::size_t>(codec_->height > 0 ? codec_->height : 576);
    std::vector<std::uint8_t> rgba(width * height * 4);
    for (unsigned i = 0; i < subtitle.num_rects; ++i) {
      const AVSubtitleRect& rect = *subtitle.rects[i];
      const auto* palette = reinterpret_cast<const std::uint32_t*>(rect.data[1]);
      for (int row = 0; row < rect.h; ++row) {
        for (int column = 0; column < rect.w; ++column) {
          const auto x = static_cast<std::size_t>(rect.x + column);
          const auto y = static_cast<std::size_t>(rect.y + row);
          if (x >= width || y >= height) continue;
          const std::uint32_t argb = palette[rect.data[0][row * rect.linesize[0] + column]];
          std::uint8_t* pixel = &rgba[(y * width + x) * 4];
          pixel[0] = static_cast<std::uint8_t>(argb >> 16);
          pixel[1] = static_cast<std::uint8_t>(argb >> 8);
          pixel[2] = static_cast<std::uint8_t>(argb);
          pixel[3] = static_cast<std::uint8_t>(argb >> 24);
        }
      }
    }
    return rgba;
  }

  AVCodecContext* codec_ = nullptr;
  std::int64_t goesAt_ = -1;
};

// "time shown|gone" for every change.
std::vector<std::string> changes(const std::vector<Display>& displays) {
  std::vector<std::string> texts;
  for (const Display& display : displays)
    texts.push_back(std::to_string(display.time - displays.front().time) +
                    (display.rgba.empty() ? " gone" : " shown"));
  return texts;
}

class ForeignDecoder : public testing::Test {
 protected:
  static std::string capture(const std::string& name) {
    const char* folder = std::getenv("TESSARY_CAPTURES");
    const std::string path = std::string(folder ? folder : "") + "/" + name;
    return folder && std::filesystem::exists(path) ? path : "";
  }
};

TEST_F(ForeignDecoder, ShowsTheSameAtTheSameTimes) {
  for (const char* name : {"dvb-live-words.ts", "sample_TS_with_graphics.ts"}) {
    SCOPED_TRACE(name);
    const std::string path = capture(name);
    if (path.empty()) GTEST_SKIP() << "no recordings here";
    const OurScreen our(path);
    const ForeignScreen foreign(path);
    const auto& ours = our.screen.displays;
    const auto& theirs = foreign.screen.displays;
    ASSERT_FALSE(theirs.empty());
    EXPECT_EQ(changes(ours), changes(theirs));
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i)
      EXPECT_TRUE(looksAlike(ours[i].rgba, theirs[i].rgba)) << "display " << i;
    EXPECT_THAT(our.logger.lines, testing::IsEmpty());
  }
}

// Strings of 8 bits that end with half an end code, and times that go back by a millisecond, which
// the two treat in their own ways.
TEST_F(ForeignDecoder, ShowsTheSamePicturesOfADamagedStream) {
  const std::string path = capture("sample_TS_dvbsub_at_video_start.ts");
  if (path.empty()) GTEST_SKIP() << "no recordings here";
  const OurScreen our(path);
  const ForeignScreen foreign(path);
  ASSERT_FALSE(foreign.screen.displays.empty());
  for (const Display& display : foreign.screen.displays) {
    if (display.rgba.empty()) continue;
    EXPECT_TRUE(std::any_of(our.pictures.begin(), our.pictures.end(), [&](const auto& picture) {
      return looksAlike(picture, display.rgba);
    }));
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
