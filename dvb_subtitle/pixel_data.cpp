#include "dvb_subtitle/pixel_data.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;
using NextRun = std::optional<PixelRun>;

// A length and the code that comes after it, in this order.
PixelRun readLengthAndCode(BitReader& reader, unsigned lengthBits, std::uint32_t base,
                           unsigned codeBits) {
  const std::uint32_t length = reader.read(lengthBits) + base;
  return {reader.read(codeBits), length};
}

// EN 300 743, table 22.
NextRun read2BitRun(BitReader& reader) {
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
NextRun read4BitRun(BitReader& reader) {
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
NextRun read8BitRun(BitReader& reader) {
  if (const std::uint32_t code = reader.read(8); code != 0) return PixelRun{code, 1};
  if (reader.readFlag()) return readLengthAndCode(reader, 7, 0, 8);  // switch_1
  if (const std::uint32_t length = reader.read(7); length != 0) return PixelRun{0, length};
  return {};
}

// The rule for a 4-bit code in a 2-bit region (EN 300 743, 10.3): bit 0, or bit 1 in its place.
std::uint32_t fourToTwoBit(std::uint32_t code) {
  return code >> 2 | (code >> 1 & 1) | (code & 1);
}

}  // namespace

std::optional<PixelRun> readRun(BitReader& reader, PixelDepth depth) {
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

Colour lookUp(const DVBClutSet& cluts, const MapTables& maps, PixelDepth regionDepth,
              PixelDepth stringDepth, std::uint32_t code) {
  switch (regionDepth) {
    case PixelDepth::TwoBit:
      if (stringDepth == PixelDepth::EightBit) code >>= 4;
      if (stringDepth != PixelDepth::TwoBit) code = fourToTwoBit(code);
      return cluts.twoBit[code];
    case PixelDepth::FourBit:
      if (stringDepth == PixelDepth::TwoBit) code = maps.twoToFourBit[code];
      if (stringDepth == PixelDepth::EightBit) code >>= 4;
      return cluts.fourBit[code];
    case PixelDepth::EightBit:
      if (stringDepth == PixelDepth::TwoBit) code = maps.twoToEightBit[code];
      if (stringDepth == PixelDepth::FourBit) code = maps.fourToEightBit[code];
      return cluts.eightBit[code];
  }
  return {};
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
