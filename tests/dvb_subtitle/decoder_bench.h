// A parser under test, its log and its pictures as text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "samples/encoders/dvb_encoder.h"
#include "tests/support/reader_support.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {

using encoders::Bytes;
using encoders::DvbEncoder;
using encoders::IndexedPicture;

/// A picture from rows of hexadecimal codes.
inline IndexedPicture picture(std::initializer_list<std::string_view> rows) {
  IndexedPicture picture;
  picture.height = static_cast<std::uint32_t>(rows.size());
  for (const std::string_view row : rows) {
    picture.width = static_cast<std::uint32_t>(row.size());
    for (const char digit : row)
      picture.codes.push_back(
          static_cast<std::uint8_t>(digit <= '9' ? digit - '0' : digit - 'A' + 10));
  }
  return picture;
}

/// A letter for each colour that the tests use.
inline char letterOf(const std::uint8_t* pixel) {
  const Colour colour{pixel[0], pixel[1], pixel[2], pixel[3]};
  if (colour == Colour{}) return '.';
  if (colour == Colour{0, 0, 0, 255}) return 'K';
  if (colour == Colour{255, 0, 0, 255}) return 'R';
  if (colour == Colour{0, 255, 0, 255}) return 'G';
  if (colour == Colour{255, 255, 0, 255}) return 'Y';
  if (colour == Colour{0, 0, 255, 255}) return 'B';
  if (colour == Colour{255, 0, 255, 255}) return 'M';
  if (colour == Colour{0, 255, 255, 255}) return 'C';
  if (colour == Colour{255, 255, 255, 255}) return 'W';
  if (colour == Colour{127, 127, 127, 255}) return 'g';
  if (colour == Colour{255, 254, 255, 255}) return 'w';  // Y = 235
  if (colour == Colour{1, 0, 1, 255}) return 'k';        // Y = 16
  return '?';
}

inline std::vector<std::string> textOf(const SubtitleBitmap& bitmap) {
  std::vector<std::string> rows;
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    rows.emplace_back();
    for (std::uint32_t x = 0; x < bitmap.width; ++x)
      rows.back() += letterOf(bitmap.pixels->data() + (std::size_t{y} * bitmap.width + x) * 4);
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

  /// What a field shows on its own.
  static std::vector<std::string> shown(const DvbEncoder& field) {
    DecoderBench bench;
    bench.feed(field, 10);
    return textOf(bench.at(10));
  }

  DVBSubtitleParser& parser() { return parser_; }
  std::uint64_t droppedPages() const { return droppedPages_; }
  std::vector<std::string>& log() { return logger_.lines; }

 private:
  test_support::RecordingLogger logger_;
  std::uint64_t droppedPages_ = 0;
  DVBSubtitleParser parser_{&logger_, &droppedPages_};
};

/// A page of one region that covers a small display.
inline DvbEncoder smallPage(std::uint32_t width, std::uint32_t height, DvbEncoder::Region region) {
  region.width = static_cast<std::uint16_t>(width);
  region.height = static_cast<std::uint16_t>(height);
  return DvbEncoder()
      .display(width, height)
      .page(DvbEncoder::kAcquisitionPoint, 5, {{region.id, 0, 0}})
      .region(region);
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
