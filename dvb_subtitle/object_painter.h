// SPDX-License-Identifier: MIT

// The pixel data of an object onto whatever keeps pixels. In a header, because most of a page's
// time is spent here.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <type_traits>

#include "dvb_subtitle/code_string.h"
#include "dvb_subtitle/dvb_rules.h"
#include "dvb_subtitle/errors.h"
#include "dvb_subtitle/painting_budget.h"
#include "dvb_subtitle/pixel_data.h"
#include "dvb_subtitle/region.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// EN 300 743, table 20.
enum class DataType : std::uint32_t {
  TwoBitString = 0x10,
  FourBitString = 0x11,
  EightBitString = 0x12,
  TwoToFourBitMap = 0x20,
  TwoToEightBitMap = 0x21,
  FourToEightBitMap = 0x22,
  EndOfObjectLine = 0xF0,
};

/// Paints one object (EN 300 743, 7.2.5). A `Surface` has a `width()`, counts its `pixelsWritten()`
/// and gives out a `row(y)` on which `paintRun(x, length, pixel)` paints what lies inside;
/// `pixelOf` makes its pixels from codes of the region's depth; where these are the pixels, it is
/// std::identity, and rows `paintPixels(x, pixels)` of several codes too.
template <class Surface, class PixelOf>
class ObjectPainter {
 public:
  /// `surface` and `budget` are not owned.
  ObjectPainter(Surface& surface, PixelDepth regionDepth, PixelOf pixelOf, const DvbRules& rules,
                PaintingBudget& budget)
      : surface_(surface), depth_(regionDepth), pixelOf_(pixelOf), rules_(rules), budget_(budget) {}

  /// Once. `origin` is a place on the surface. Throws SegmentError for an unknown data_type; what
  /// was painted before it stays.
  void paint(const DVBObject& object, Position origin) {
    origin_ = origin;
    keepsCode1_ = object.nonModifyingColour;
    paintField(object.topField, 0);
    paintField(object.bottomField.empty() ? object.topField : object.bottomField, 1);
  }

 private:
  using BitReader = util::BitReader;

  // The pixel-data sub-blocks of one field, every other line of the object (EN 300 743, 7.2.5.1).
  void paintField(std::span<const std::uint8_t> field, std::uint32_t firstLine) {
    const std::uint64_t before = surface_.pixelsWritten();
    x_ = 0;
    line_ = firstLine;
    BitReader reader(field);
    reader.allowZeros();  // which end any code string and are no data_type
    while (!reader.exhausted()) paintSubBlock(reader);
    budget_.spendOnPixels(surface_.pixelsWritten() - before);
    budget_.spendOnCodeStrings(field.size());
  }

  void paintSubBlock(BitReader& reader) {
    const std::uint32_t dataType = reader.read(8);
    switch (static_cast<DataType>(dataType)) {
      case DataType::TwoBitString:
        return paintString<PixelDepth::TwoBit>(reader);
      case DataType::FourBitString:
        return paintString<PixelDepth::FourBit>(reader);
      case DataType::EightBitString:
        return paintString<PixelDepth::EightBit>(reader);
      case DataType::TwoToFourBitMap:
        return readMap(reader, 4, maps_.twoToFourBit);
      case DataType::TwoToEightBitMap:
        return readMap(reader, 8, maps_.twoToEightBit);
      case DataType::FourToEightBitMap:
        return readMap(reader, 8, maps_.fourToEightBit);
      case DataType::EndOfObjectLine:
        line_ += 2;
        x_ = 0;
        return;
    }
    if (dataType == 0 && rules_.passesOverStuffing) return;
    throw SegmentError("Unsupported data_type = %d", static_cast<int>(dataType));
  }

  template <std::size_t Size>
  static void readMap(BitReader& reader, unsigned entryBits, std::array<std::uint8_t, Size>& map) {
    for (auto& entry : map) entry = static_cast<std::uint8_t>(reader.read(entryBits));
  }

  template <PixelDepth Depth>
  void paintString(BitReader& reader) {
    if (depth_ == Depth) {  // as nearly always
      paintRuns<Depth>(reader, pixelOf_);
    } else {
      paintRuns<Depth>(reader, [this](std::uint32_t code) {
        return pixelOf_(mapCode(maps_, depth_, Depth, code));
      });
    }
  }

  // The reader and the place are copies, which the compiler can keep in registers while pixels are
  // written. One function for each depth, so that it has room to take in all that is called.
  template <PixelDepth Depth, class ToPixel>
  [[gnu::noinline]] void paintRuns(BitReader& reader, ToPixel toPixel) {
    constexpr std::uint32_t kNonModifyingCode = 1;
    BitReader runs = reader;
    auto row = surface_.row(origin_.vertical + line_);
    const bool keepsCode1 = keepsCode1_;
    const std::uint32_t longestRun = rules_.longestRun;
    const std::uint32_t fullAt = rules_.endsFullRows ? surface_.width() : ~std::uint32_t{0};
    // Before the end of a row, where a string may end without a mark.
    const std::uint32_t singleEnd = keepsCode1 ? 0 : fullAt - std::min(fullAt, kMostSinglePixels);
    std::uint32_t x = origin_.horizontal + x_;
    while (true) {
      if constexpr (std::is_same_v<ToPixel, std::identity>) {
        x = paintSinglePixels<Depth>(runs, row, x, singleEnd);
      }
      const auto run = readRun<Depth>(runs);
      if (!run) break;
      if (run->length == 0 || run->length > longestRun) continue;
      if (!keepsCode1 || run->code != kNonModifyingCode) {
        row.paintRun(x, run->length, toPixel(run->code));
      }
      x += run->length;
      if (x >= fullAt && takeBrokenEnd(runs, Depth)) break;
    }
    x_ = x - origin_.horizontal;
    reader = runs;
  }

  // Those that come before the next run and before `end`, as many at once as can be. Gives where it
  // stopped.
  template <PixelDepth Depth, class Row>
  static std::uint32_t paintSinglePixels(BitReader& reader, Row& row, std::uint32_t x,
                                         std::uint32_t end) {
    while (x < end) {
      const SinglePixels pixels = readSinglePixels<Depth>(reader);
      row.paintPixels(x, pixels);
      x += pixels.count;
      if (pixels.count < kMostSinglePixels) break;
    }
    return x;
  }

  // Whether the end of the line comes next, and so no end of the string any more: behind bits of
  // stuffing, or, of 8-bit strings, behind half an end.
  static bool takeBrokenEnd(BitReader& reader, PixelDepth depth) {
    constexpr auto kEndOfLine = static_cast<std::uint32_t>(DataType::EndOfObjectLine);
    BitReader end = reader;
    while (!end.isByteAligned()) {
      if (end.read(2) != 0) return false;
    }
    const auto isAtEndOfLine = [](BitReader at) { return at.read(8) == kEndOfLine; };
    if (!isAtEndOfLine(end) &&
        (depth != PixelDepth::EightBit || end.read(8) != 0 || !isAtEndOfLine(end))) {
      return false;
    }
    reader = end;
    return true;
  }

  Surface& surface_;
  PixelDepth depth_;
  PixelOf pixelOf_;
  const DvbRules& rules_;
  PaintingBudget& budget_;
  Position origin_;
  bool keepsCode1_ = false;  // non_modifying_colour_flag
  MapTables maps_;
  std::uint32_t x_ = 0;
  std::uint32_t line_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
