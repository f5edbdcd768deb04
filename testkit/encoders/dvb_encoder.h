// SPDX-License-Identifier: MIT

// DVB subtitles, segment by segment (EN 300 743).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "testkit/encoders/ts_builder.h"

namespace korr::encoders {

/// A picture in pixel codes, rows top to bottom.
struct IndexedPicture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  Bytes codes;

  std::uint8_t at(std::uint32_t x, std::uint32_t y) const {
    return codes[std::size_t{y} * width + x];
  }
};

/// One row of pixels as a pixel code string of 2, 4 or 8 bits, from its data_type on, in the
/// shortest runs that the table allows.
Bytes codeString(unsigned bits, const std::uint8_t* codes, std::size_t count);

/// The pixel-data sub-blocks of every other row from `firstRow` on, an end of line after each.
Bytes fieldData(unsigned bits, const IndexedPicture& picture, std::uint32_t firstRow);

/// One PES data field in the making. The builder can lie: `segment` takes any bytes.
class DvbEncoder {
 public:
  static constexpr std::uint8_t kNormalCase = 0;
  static constexpr std::uint8_t kAcquisitionPoint = 1;
  static constexpr std::uint8_t kModeChange = 2;

  struct Place {
    std::uint16_t id = 0;  ///< region_id or object_id
    std::uint16_t x = 0;
    std::uint16_t y = 0;
  };

  struct Region {
    std::uint8_t id = 0;
    bool fill = false;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t depth = 2;  ///< 1: 2 bits, 2: 4 bits, 3: 8 bits
    std::uint8_t clut = 0;
    std::uint8_t fillCode = 0;  ///< for all three depths
    std::vector<Place> objects{};
  };

  struct ClutEntry {
    std::uint8_t id = 0;
    std::uint8_t tables = 2;  ///< flags: 4 for the 2-bit, 2 for the 4-bit, 1 for the 8-bit table
    std::uint8_t y = 0;
    std::uint8_t cr = 128;
    std::uint8_t cb = 128;
    std::uint8_t t = 0;
    bool fullRange = true;
  };

  struct Window {
    std::uint16_t left = 0;
    std::uint16_t right = 0;
    std::uint16_t top = 0;
    std::uint16_t bottom = 0;
  };

  explicit DvbEncoder(std::uint16_t pageId = 1) : pageId_(pageId) {}

  /// Sizes in pixels, 1 to 65536.
  DvbEncoder& display(std::uint32_t width, std::uint32_t height,
                      const std::optional<Window>& window = {});
  DvbEncoder& page(std::uint8_t state, std::uint8_t timeOut, const std::vector<Place>& regions);
  DvbEncoder& region(const Region& region);
  DvbEncoder& clut(std::uint8_t id, const std::vector<ClutEntry>& entries);
  DvbEncoder& object(std::uint16_t id, const Bytes& topField, const Bytes& bottomField,
                     bool nonModifyingColour = false);
  DvbEncoder& pictureObject(std::uint16_t id, unsigned bits, const IndexedPicture& picture);
  DvbEncoder& characters(std::uint16_t id, std::u16string_view codes);
  DvbEncoder& end() { return segment(0x80, {}); }

  DvbEncoder& segment(std::uint8_t type, const Bytes& body);

  /// The version that segments from now on carry, 0 to 15: receivers may ignore one that they have.
  DvbEncoder& version(std::uint8_t version) {
    version_ = version;
    return *this;
  }

  /// Segments from now on are of another page.
  DvbEncoder& ofPage(std::uint16_t pageId) {
    pageId_ = pageId;
    return *this;
  }

  /// The field, from its data_identifier to its end marker.
  Bytes bytes() const;

  /// What `bytes` has before the segments, and behind them.
  static constexpr std::size_t kBeforeSegments = 2;
  static constexpr std::size_t kBehindSegments = 1;

 private:
  std::uint16_t pageId_;
  std::uint8_t version_ = 0;
  Bytes segments_;
};

}  // namespace korr::encoders
