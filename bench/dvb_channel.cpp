// SPDX-License-Identifier: MIT
#include "bench/dvb_channel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <stdexcept>

#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "testkit/encoders/dvb_encoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace korr::bench {

namespace {

using encoders::Bytes;
using encoders::DvbEncoder;
using encoders::IndexedPicture;
using Point = std::array<double, 4>;  // premultiplied

Point pointOf(const std::uint8_t* rgba) {
  const double a = rgba[3] / 255.0;
  return {rgba[0] * a, rgba[1] * a, rgba[2] * a, double(rgba[3])};
}

double squaredDistance(const Point& a, const Point& b) {
  double sum = 0;
  for (std::size_t i = 0; i < 4; ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return sum;
}

std::uint32_t keyOf(const std::uint8_t* rgba) {
  return std::uint32_t{rgba[0]} | std::uint32_t{rgba[1]} << 8 | std::uint32_t{rgba[2]} << 16 |
         std::uint32_t{rgba[3]} << 24;
}

struct Area {
  std::uint32_t left, top, right, bottom;
};

Area visibleArea(const RenderedPicture& picture) {
  Area area{picture.width, picture.height, 0, 0};
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    for (std::uint32_t x = 0; x < picture.width; ++x) {
      if (picture.rgba[(std::size_t{y} * picture.width + x) * 4 + 3] == 0) continue;
      area.left = std::min(area.left, x);
      area.right = std::max(area.right, x + 1);
      area.top = std::min(area.top, y);
      area.bottom = std::max(area.bottom, y + 1);
    }
  }
  if (area.right == 0) return {0, 0, 8, 8};
  return area;
}

IndexedPicture indexed(const RenderedPicture& picture, const Area& area, ChannelPalette& palette) {
  IndexedPicture out{
      .width = area.right - area.left, .height = area.bottom - area.top, .codes = {}};
  for (std::uint32_t y = area.top; y < area.bottom; ++y) {
    for (std::uint32_t x = area.left; x < area.right; ++x) {
      out.codes.push_back(palette.nearest(&picture.rgba[(std::size_t{y} * picture.width + x) * 4]));
    }
  }
  return out;
}

Bytes ownField(const RenderedPicture& picture, const Area& area, const IndexedPicture& codes,
               const ChannelPalette& palette) {
  const auto count = palette.entries().size();
  const unsigned bits = count <= 4 ? 2 : count <= 16 ? 4 : 8;
  const auto tables = static_cast<std::uint8_t>(bits == 2 ? 4 : bits == 4 ? 2 : 1);
  std::vector<DvbEncoder::ClutEntry> clut;
  for (std::size_t i = 0; i < count; ++i) {
    const auto& e = palette.entries()[i];
    const double y = 16 + (65.481 * e.red + 128.553 * e.green + 24.966 * e.blue) / 255;
    const double cb = 128 + (-37.797 * e.red - 74.203 * e.green + 112.0 * e.blue) / 255;
    const double cr = 128 + (112.0 * e.red - 93.786 * e.green - 18.214 * e.blue) / 255;
    clut.push_back({.id = static_cast<std::uint8_t>(i),
                    .tables = tables,
                    .y = static_cast<std::uint8_t>(e.alpha == 0 ? 0 : std::lround(y)),
                    .cr = static_cast<std::uint8_t>(std::lround(cr)),
                    .cb = static_cast<std::uint8_t>(std::lround(cb)),
                    .t = static_cast<std::uint8_t>(255 - e.alpha)});
  }
  DvbEncoder field;
  field.display(picture.width, picture.height)
      .page(DvbEncoder::kModeChange, 30,
            {{.id = 0,
              .x = static_cast<std::uint16_t>(area.left),
              .y = static_cast<std::uint16_t>(area.top)}})
      .region({.id = 0,
               .fill = true,
               .width = static_cast<std::uint16_t>(codes.width),
               .height = static_cast<std::uint16_t>(codes.height),
               .depth = static_cast<std::uint8_t>(bits == 2   ? 1
                                                  : bits == 4 ? 2
                                                              : 3),
               .clut = 0,
               .fillCode = 0,
               .objects = {{.id = 0, .x = 0, .y = 0}}})
      .clut(0, clut)
      .pictureObject(0, bits, codes)
      .end();
  return field.bytes();
}

// The segments of FFmpeg's encoder between the bytes that its multiplexer adds.
Bytes ffmpegField(const RenderedPicture& picture, const Area& area, const IndexedPicture& codes,
                  const ChannelPalette& palette) {
  static AVCodecContext* context = nullptr;
  static std::uint32_t width = 0;
  if (!context || width != picture.width) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_DVB_SUBTITLE);
    context = avcodec_alloc_context3(codec);
    context->width = static_cast<int>(picture.width);
    context->height = static_cast<int>(picture.height);
    context->time_base = {1, 90000};
    if (avcodec_open2(context, codec, nullptr) < 0) throw std::runtime_error("no encoder");
    width = picture.width;
  }
  std::array<std::uint32_t, 256> colours{};
  for (std::size_t i = 0; i < palette.entries().size(); ++i) {
    const auto& e = palette.entries()[i];
    colours[i] = std::uint32_t{e.alpha} << 24 | std::uint32_t{e.red} << 16 |
                 std::uint32_t{e.green} << 8 | e.blue;
  }
  Bytes pixels = codes.codes;
  AVSubtitleRect rect{};
  rect.x = static_cast<int>(area.left);
  rect.y = static_cast<int>(area.top);
  rect.w = static_cast<int>(codes.width);
  rect.h = static_cast<int>(codes.height);
  rect.nb_colors = static_cast<int>(palette.entries().size());
  rect.type = SUBTITLE_BITMAP;
  rect.data[0] = pixels.data();
  rect.data[1] = reinterpret_cast<std::uint8_t*>(colours.data());
  rect.linesize[0] = rect.w;
  AVSubtitleRect* rects[] = {&rect};
  AVSubtitle subtitle{};
  subtitle.end_display_time = 30'000;
  subtitle.num_rects = 1;
  subtitle.rects = rects;
  Bytes out(1 << 20);
  const int size =
      avcodec_encode_subtitle(context, out.data(), static_cast<int>(out.size()), &subtitle);
  if (size < 0) throw std::runtime_error("the encoder failed");
  out.resize(static_cast<std::size_t>(size));
  out.insert(out.begin(), {0x20, 0x00});
  out.push_back(0xFF);
  return out;
}

}  // namespace

ChannelPalette::ChannelPalette(const std::vector<RenderedPicture>& pictures, std::size_t count) {
  std::map<std::uint32_t, double> counts;
  for (const auto& picture : pictures) {
    for (std::size_t i = 0; i < picture.rgba.size(); i += 4) {
      if (picture.rgba[i + 3] != 0) ++counts[keyOf(&picture.rgba[i])];
    }
  }
  std::vector<Point> points;
  std::vector<double> weights;
  for (const auto& [key, weight] : counts) {
    const std::uint8_t rgba[] = {std::uint8_t(key), std::uint8_t(key >> 8), std::uint8_t(key >> 16),
                                 std::uint8_t(key >> 24)};
    points.push_back(pointOf(rgba));
    weights.push_back(weight);
  }
  // The most frequent colours far from those chosen.
  std::vector<Point> centres{{0, 0, 0, 0}};
  std::vector<double> least(points.size(), 1e18);
  while (centres.size() < count && !points.empty()) {
    std::size_t best = 0;
    double most = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
      least[i] = std::min(least[i], squaredDistance(points[i], centres.back()));
      if (least[i] * weights[i] > most) {
        most = least[i] * weights[i];
        best = i;
      }
    }
    if (most == 0) break;
    centres.push_back(points[best]);
  }
  for (const auto& centre : centres) {
    const double a = centre[3] / 255;
    const auto channel = [&](double v) {
      return static_cast<std::uint8_t>(a < 0.01 ? 0 : std::clamp(std::lround(v / a), 0l, 255l));
    };
    entries_.push_back({channel(centre[0]), channel(centre[1]), channel(centre[2]),
                        static_cast<std::uint8_t>(std::lround(centre[3]))});
  }
  entries_[0] = {0, 0, 0, 0};
  keys_.assign(1 << 14, 0);
  cached_.assign(keys_.size(), 0);
}

std::uint8_t ChannelPalette::nearest(const std::uint8_t* rgba) {
  const auto key = keyOf(rgba);
  if (rgba[3] == 0) return 0;
  const std::size_t slot = key * 2654435761u >> 18;
  if (keys_[slot] == key) return cached_[slot];
  const auto point = pointOf(rgba);
  std::size_t best = 0;
  double least = 1e18;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const std::uint8_t entry[] = {entries_[i].red, entries_[i].green, entries_[i].blue,
                                  entries_[i].alpha};
    const double miss = squaredDistance(point, pointOf(entry));
    if (miss < least) {
      least = miss;
      best = i;
    }
  }
  keys_[slot] = key;
  return cached_[slot] = static_cast<std::uint8_t>(best);
}

encoding::subtitling::SubtitleBitmap throughDvb(const RenderedPicture& picture,
                                                ChannelPalette& palette, ChannelEncoder encoder) {
  const auto area = visibleArea(picture);
  const auto codes = indexed(picture, area, palette);
  auto field = encoder == ChannelEncoder::Own ? ownField(picture, area, codes, palette)
                                              : ffmpegField(picture, area, codes, palette);
  encoding::subtitling::dvb::lib_dvb_subtitle::DVBSubtitleParser parser(nullptr);
  if (encoder == ChannelEncoder::Ffmpeg && picture.width > 720) {
    // FFmpeg tells no display; a receiver takes 720 by 576 then.
    DvbEncoder display;
    display.display(picture.width, picture.height);
    const auto head = display.bytes();
    field.erase(field.begin(), field.begin() + 2);
    field.insert(field.begin(), head.begin(), head.end() - 1);
  }
  parser.parse(field.data(), static_cast<std::int64_t>(field.size()), 1000, true);
  return *parser.currentSubtitle(1000).bitmap();
}

}  // namespace korr::bench
