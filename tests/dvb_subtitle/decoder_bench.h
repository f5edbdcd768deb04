// SPDX-License-Identifier: MIT

// A parser under test, its log and its pictures as text.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "testkit/encoders/dvb_encoder.h"
#include "testkit/reader_support.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {

using encoders::Bytes;
using encoders::DvbEncoder;
using encoders::IndexedPicture;

inline constexpr auto kNormalCase = DvbEncoder::kNormalCase;
inline constexpr auto kAcquisitionPoint = DvbEncoder::kAcquisitionPoint;
inline constexpr auto kModeChange = DvbEncoder::kModeChange;

/// A picture from rows of hexadecimal codes, parted by slashes.
inline IndexedPicture picture(std::string_view rows) {
  IndexedPicture picture{.height = 1, .codes = {}};
  for (const char digit : rows) {
    if (digit == '/') {
      ++picture.height;
    } else {
      const int code = digit <= '9' ? digit - '0' : digit - 'A' + 10;
      picture.codes.push_back(static_cast<std::uint8_t>(code));
    }
  }
  picture.width = static_cast<std::uint32_t>(picture.codes.size()) / picture.height;
  return picture;
}

/// A letter for each colour that the tests use; w and k are those of Y = 235 and 16.
inline char letterOf(const std::uint8_t* pixel) {
  constexpr std::pair<unsigned, char> kLetters[] = {
      {0x00000000, '.'}, {0x000000FF, 'K'}, {0xFF0000FF, 'R'}, {0x00FF00FF, 'G'},
      {0xFFFF00FF, 'Y'}, {0x0000FFFF, 'B'}, {0xFFFFFFFF, 'W'}, {0x7F7F7FFF, 'g'},
      {0xFFFEFFFF, 'w'}, {0x010001FF, 'k'}};
  const unsigned rgba =
      unsigned{pixel[0]} << 24 | unsigned{pixel[1]} << 16 | unsigned{pixel[2]} << 8 | pixel[3];
  for (const auto& [colour, letter] : kLetters) {
    if (colour == rgba) return letter;
  }
  return '?';
}

/// The rows of a display, parted by slashes.
inline std::string textOf(const SubtitleBitmap& bitmap) {
  std::string rows;
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    if (y > 0) rows += '/';
    for (std::uint32_t x = 0; x < bitmap.width; ++x)
      rows += letterOf(bitmap.pixels->data() + (std::size_t{y} * bitmap.width + x) * 4);
  }
  return rows;
}

class DecoderBench {
 public:
  /// Times in seconds.
  void feed(const Bytes& field, std::uint64_t time, bool discontinuity = true) {
    parser_.parse(field.data(), static_cast<std::int64_t>(field.size()), time * kSecond,
                  discontinuity);
  }
  void feed(const DvbEncoder& field, std::uint64_t time) { feed(field.bytes(), time); }

  SubtitleBitmap at(std::uint64_t time) { return atTicks(time * kSecond); }
  SubtitleBitmap atTicks(MediaTime time) { return *parser_.currentSubtitle(time).bitmap(); }
  std::string shownAt(std::uint64_t time) { return textOf(at(time)); }

  DVBSubtitleParser& parser() { return parser_; }
  std::uint64_t droppedPages() const { return droppedPages_; }
  std::vector<std::string>& log() { return logger_.lines; }

 private:
  test_support::RecordingLogger logger_;
  std::uint64_t droppedPages_ = 0;
  DVBSubtitleParser parser_{&logger_, &droppedPages_};
};

/// What a field shows on its own.
inline std::string shown(const DvbEncoder& field) {
  DecoderBench bench;
  bench.feed(field, 10);
  return bench.shownAt(10);
}

/// A page of one region that covers a small display.
inline DvbEncoder smallPage(std::uint32_t width, std::uint32_t height, DvbEncoder::Region region) {
  region.width = static_cast<std::uint16_t>(width);
  region.height = static_cast<std::uint16_t>(height);
  return DvbEncoder()
      .display(width, height)
      .page(kAcquisitionPoint, 5, {{region.id, 0, 0}})
      .region(region);
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
