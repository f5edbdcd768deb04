// SPDX-License-Identifier: MIT

// Pixel code strings to runs. In a header, because most of a page's time is spent here.
#pragma once

#include <cstdint>
#include <optional>

#include "dvb_subtitle/region.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Pixels of one code, left to right.
struct PixelRun {
  std::uint32_t code = 0;
  std::uint32_t length = 0;  ///< 0 to 284

  friend bool operator==(const PixelRun&, const PixelRun&) = default;
};

// A length and the code that comes after it, in this order.
inline PixelRun readLengthAndCode(util::BitReader& reader, unsigned lengthBits, std::uint32_t base,
                                  unsigned codeBits) {
  const std::uint32_t length = reader.read(lengthBits) + base;
  return {reader.read(codeBits), length};
}

// EN 300 743, table 22.
inline std::optional<PixelRun> read2BitRun(util::BitReader& reader) {
  if (const std::uint32_t code = reader.read(2); code != 0) return PixelRun{code, 1};
  if (reader.readFlag()) return readLengthAndCode(reader, 3, 3, 2);  // switch_1
  if (reader.readFlag()) return PixelRun{0, 1};                      // switch_2
  switch (reader.read(2)) {                                          // switch_3
    case 1:
      return PixelRun{0, 2};
    case 2:
      return readLengthAndCode(reader, 4, 12, 2);
    case 3:
      return readLengthAndCode(reader, 8, 29, 2);
  }
  while (!reader.isByteAligned()) reader.skip(2);  // 2_stuff_bits
  return {};
}

// EN 300 743, table 24.
inline std::optional<PixelRun> read4BitRun(util::BitReader& reader) {
  if (const std::uint32_t code = reader.read(4); code != 0) return PixelRun{code, 1};
  if (!reader.readFlag()) {  // switch_1
    if (const std::uint32_t length = reader.read(3); length != 0) return PixelRun{0, length + 2};
    if (!reader.isByteAligned()) reader.skip(4);  // 4_stuff_bits
    return {};
  }
  if (!reader.readFlag()) return readLengthAndCode(reader, 2, 4, 4);  // switch_2
  switch (reader.read(2)) {                                           // switch_3
    case 0:
      return PixelRun{0, 1};
    case 1:
      return PixelRun{0, 2};
    case 2:
      return readLengthAndCode(reader, 4, 9, 4);
    default:
      return readLengthAndCode(reader, 8, 25, 4);
  }
}

// EN 300 743, table 26.
inline std::optional<PixelRun> read8BitRun(util::BitReader& reader) {
  if (const std::uint32_t code = reader.read(8); code != 0) return PixelRun{code, 1};
  if (reader.readFlag()) return readLengthAndCode(reader, 7, 0, 8);  // switch_1
  if (const std::uint32_t length = reader.read(7); length != 0) return PixelRun{0, length};
  return {};
}

/// The next run of a pixel code string of `depth`; none at its end, where the reader then stands on
/// the byte after it (EN 300 743, 7.2.5.2). A string that is cut off ends where it stops.
inline std::optional<PixelRun> readRun(util::BitReader& reader, PixelDepth depth) {
  switch (depth) {
    case PixelDepth::TwoBit:
      return read2BitRun(reader);
    case PixelDepth::FourBit:
      return read4BitRun(reader);
    case PixelDepth::EightBit:
      return read8BitRun(reader);
  }
  return {};
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
