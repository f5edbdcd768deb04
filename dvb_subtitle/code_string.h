// SPDX-License-Identifier: MIT

// Pixel code strings to runs. In a header, because most of a page's time is spent here.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
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
constexpr PixelRun readLengthAndCode(util::BitReader& reader, unsigned lengthBits,
                                     std::uint32_t base, unsigned codeBits) {
  const std::uint32_t length = reader.read(lengthBits) + base;
  return {reader.read(codeBits), length};
}

// EN 300 743, table 22.
constexpr std::optional<PixelRun> read2BitRun(util::BitReader& reader) {
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
constexpr std::optional<PixelRun> read4BitRun(util::BitReader& reader) {
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
constexpr std::optional<PixelRun> read8BitRun(util::BitReader& reader) {
  if (const std::uint32_t code = reader.read(8); code != 0) return PixelRun{code, 1};
  if (reader.readFlag()) return readLengthAndCode(reader, 7, 0, 8);  // switch_1
  if (const std::uint32_t length = reader.read(7); length != 0) return PixelRun{0, length};
  return {};
}

template <PixelDepth Depth>
constexpr std::optional<PixelRun> readRunByFields(util::BitReader& reader) {
  if constexpr (Depth == PixelDepth::TwoBit) return read2BitRun(reader);
  if constexpr (Depth == PixelDepth::FourBit) return read4BitRun(reader);
  return read8BitRun(reader);
}

/// The runs of a depth that are written in few bits, as most are, by these and the bits behind
/// them.
template <PixelDepth Depth>
class ShortRuns {
 public:
  static constexpr unsigned kBits = 12;

  struct Entry {
    std::uint8_t bits = 0;  ///< 0: it takes more, or the string ends
    std::uint8_t length = 0;
    std::uint8_t code = 0;
  };

  consteval ShortRuns() {
    for (std::size_t index = 0; index < entries_.size();) {
      const std::array bytes{static_cast<std::uint8_t>(index >> 4),
                             static_cast<std::uint8_t>(index << 4 & 0xF0)};
      util::BitReader reader(bytes);
      reader.allowZeros();
      const auto run = readRunByFields<Depth>(reader);
      const bool isShort = run && run->length != 0 && reader.position() <= kBits;
      const auto bits = static_cast<unsigned>(isShort ? reader.position() : kBits);
      for (const std::size_t end = index + (std::size_t{1} << (kBits - bits)); index < end;
           ++index) {
        if (!isShort) continue;
        entries_[index] = {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(run->length),
                           static_cast<std::uint8_t>(run->code)};
      }
    }
  }

  /// For the bits that come next, the first highest.
  constexpr const Entry& operator[](std::uint64_t bits) const {
    return entries_[bits >> (64 - kBits)];
  }

 private:
  std::array<Entry, std::size_t{1} << kBits> entries_{};
};

template <PixelDepth Depth>
inline constexpr ShortRuns<Depth> kShortRuns;

/// The next run of a pixel code string of `Depth`; none at its end, where the reader then stands on
/// the byte after it (EN 300 743, 7.2.5.2). A string that is cut off ends where it stops.
template <PixelDepth Depth>
inline std::optional<PixelRun> readRun(util::BitReader& reader) {
  if (reader.canPeek()) {
    const auto& entry = kShortRuns<Depth>[reader.peek()];
    if (entry.bits != 0) {
      reader.skip(entry.bits);
      return PixelRun{entry.code, entry.length};
    }
  }
  return readRunByFields<Depth>(reader);
}

inline constexpr std::uint32_t kMostSinglePixels = 8;

/// Pixels that are written one by one, as those of soft edges are.
struct SinglePixels {
  std::uint64_t codes = 0;  ///< a byte each, the first highest
  std::uint32_t count = 0;  ///< of those that count, 0 to kMostSinglePixels
};

/// Puts eight fields of `Bits` bits, the lowest of `fields`, into a byte each.
template <unsigned Bits>
constexpr std::uint64_t spread(std::uint64_t fields) {
  for (unsigned group = 4; group >= 1; group /= 2) {  // fields that stay side by side
    const std::uint64_t mask = ~std::uint64_t{0} / ((std::uint64_t{1} << group * 8 % 64) - 1) *
                               ((std::uint64_t{1} << group * Bits) - 1);
    fields = (fields | fields << group * (8 - Bits)) & mask;
  }
  return fields;
}

/// The pixels that come before the next run or end of a string, as far as they can be had at once.
template <PixelDepth Depth>
inline SinglePixels readSinglePixels(util::BitReader& reader) {
  constexpr unsigned kBits = Depth == PixelDepth::TwoBit ? 2 : Depth == PixelDepth::FourBit ? 4 : 8;
  if (!reader.canPeek()) return {};
  SinglePixels pixels{.codes = reader.peek() >> (64 - 8 * kBits)};
  if constexpr (kBits < 8) pixels.codes = spread<kBits>(pixels.codes);
  constexpr std::uint64_t kLow = 0x7F7F7F7F7F7F7F7F;
  const std::uint64_t others = ((pixels.codes & kLow) + kLow) | pixels.codes;  // in their high bit
  pixels.count = static_cast<std::uint32_t>(std::countl_zero(~others & ~kLow)) / 8;
  reader.skip(pixels.count * kBits);
  return pixels;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
