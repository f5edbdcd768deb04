// SPDX-License-Identifier: MIT

// Subtitle pictures of discs: presentation graphics and sub-pictures.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/ts_builder.h"

namespace korr::encoders {

/// One display set of presentation graphics in the making; `segment` takes any bytes.
class PgsEncoder {
 public:
  struct Place {
    std::uint16_t object = 0;
    std::uint16_t x = 0;
    std::uint16_t y = 0;
    std::optional<std::array<std::uint16_t, 4>> crop = {};  ///< x, y, width, height
  };
  struct Colour {
    std::uint8_t entry = 0;
    std::uint8_t y = 0;
    std::uint8_t cr = 128;
    std::uint8_t cb = 128;
    std::uint8_t alpha = 255;
  };

  static constexpr std::uint8_t kNormal = 0x00;
  static constexpr std::uint8_t kEpochStart = 0x80;

  PgsEncoder& composition(std::uint16_t width, std::uint16_t height, std::uint8_t state,
                          const std::vector<Place>& places, std::uint8_t palette = 0);
  PgsEncoder& palette(std::uint8_t id, const std::vector<Colour>& colours);
  /// In so many pieces of about equal size.
  PgsEncoder& object(std::uint16_t id, const IndexedPicture& picture, std::size_t pieces = 1);
  PgsEncoder& end() { return segment(0x80, {}); }
  PgsEncoder& segment(std::uint8_t type, const Bytes& body);

  /// With their headers, one after the other.
  Bytes bytes() const;
  const std::vector<Bytes>& segments() const { return segments_; }

  /// As a .sup file has them: "PG", PTS, DTS before each. Time in ticks of 90 kHz.
  Bytes sup(std::uint32_t pts) const;

 private:
  std::vector<Bytes> segments_;
};

/// One sub-picture unit.
struct SubPictureUnit {
  struct Step {
    std::uint16_t delay = 0;  ///< 1024 / 90000 s each
    Bytes commands;           ///< without the end
  };

  std::uint16_t x = 0;
  std::uint16_t y = 0;
  IndexedPicture picture;   ///< codes 0 to 3
  std::vector<Step> steps;  ///< the first gets the area and the fields, too

  Bytes bytes() const;
};

/// A VobSub .sub file in the making, and what its index says.
class VobSubFile {
 public:
  /// Time in milliseconds, in the first hour; units that fit in one pack.
  VobSubFile& unit(std::uint32_t milliseconds, const Bytes& unit);

  const Bytes& sub() const { return sub_; }
  std::string index(std::string_view language, std::string_view palette) const;

 private:
  Bytes sub_;
  std::string entries_;
};

}  // namespace korr::encoders
