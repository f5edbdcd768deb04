// SPDX-License-Identifier: MIT
#include "dvb_subtitle/clut.h"

#include <algorithm>
#include <cmath>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

// The bits of an index, from the lowest, choose red, green and blue.
constexpr Colour colourFromBits(std::size_t index, unsigned intensity, unsigned alpha) {
  const auto component = [&](unsigned bit) {
    return static_cast<std::uint8_t>(index >> bit & 1 ? intensity : 0);
  };
  return {component(0), component(1), component(2), static_cast<std::uint8_t>(alpha)};
}

// EN 300 743, 10.3.
constexpr std::array<Colour, 4> defaultTwoBit() {
  return {{{0, 0, 0, 0}, {255, 255, 255, 255}, {0, 0, 0, 255}, {127, 127, 127, 255}}};
}

// EN 300 743, 10.2.
constexpr std::array<Colour, 16> defaultFourBit() {
  std::array<Colour, 16> table{};
  for (std::size_t i = 1; i < table.size(); ++i)
    table[i] = colourFromBits(i, i < 8 ? 255 : 127, 255);
  return table;
}

// EN 300 743, 10.1: a component is 1/6 or 1/3 of full intensity for its low bit and twice that for
// its high bit, on a base of one half in the upper half of the table; rounded down.
constexpr Colour defaultEightBit(std::size_t index) {
  const bool upperHalf = (index & 0x80) != 0;
  const bool flag = (index & 0x08) != 0;
  if (!upperHalf && !flag && (index & 0x70) == 0)
    return index == 0 ? Colour{} : colourFromBits(index, 255, 64);

  const auto component = [&](std::size_t highBit, std::size_t lowBit) {
    const unsigned value = (index & highBit ? 510U : 0U) + (index & lowBit ? 255U : 0U);
    if (!upperHalf) return static_cast<std::uint8_t>((value + 1) / 3);
    return static_cast<std::uint8_t>((value + (flag ? 2U : 765U)) / 6);
  };
  const std::uint8_t alpha = !upperHalf && flag ? 128 : 255;
  return {component(0x10, 0x01), component(0x20, 0x02), component(0x40, 0x04), alpha};
}

constexpr std::array<Colour, 256> defaultEightBit() {
  std::array<Colour, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = defaultEightBit(i);
  return table;
}

std::uint8_t toComponent(float fraction) {
  return static_cast<std::uint8_t>(std::clamp(static_cast<int>(fraction * 255.0F + 0.5F), 0, 255));
}

// ITU-R BT.601 with Y from 16 to 235 and Cr, Cb from 16 to 240, its factors rounded.
Colour filterColourOf(std::uint32_t y, std::uint32_t cr, std::uint32_t cb,
                      std::uint32_t transparency) {
  const auto fraction = [](std::uint32_t value, std::uint32_t highest) {
    return static_cast<float>(std::clamp(value, 16U, highest)) / 255.0F;
  };
  const float luma = (fraction(y, 235) - 0.0625F) * 1.164F;
  const float red = fraction(cr, 240) - 0.5F;
  const float blue = fraction(cb, 240) - 0.5F;
  return {toComponent(luma + 1.596F * red), toComponent(luma - 0.392F * blue - 0.813F * red),
          toComponent(luma + 2.017F * blue), static_cast<std::uint8_t>(255 - transparency)};
}

// ITU-R BT.601, 2.5.1 to 2.5.3: E'R - E'Y and E'B - E'Y over 224 steps, E'Y over 219. What cannot
// be seen has no colour, so that pictures that look alike are alike.
Colour exactColourOf(std::uint32_t y, std::uint32_t cr, std::uint32_t cb,
                     std::uint32_t transparency) {
  constexpr double kRed = 0.299;
  constexpr double kBlue = 0.114;
  constexpr double kGreen = 1 - kRed - kBlue;
  if (transparency == 255) return {};
  const double luma = (static_cast<double>(y) - 16) * 255 / 219;
  const double red = (static_cast<double>(cr) - 128) * 255 / 224 * 2 * (1 - kRed);
  const double blue = (static_cast<double>(cb) - 128) * 255 / 224 * 2 * (1 - kBlue);
  const auto component = [](double value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
  };
  return {component(luma + red), component(luma - (kRed * red + kBlue * blue) / kGreen),
          component(luma + blue), static_cast<std::uint8_t>(255 - transparency)};
}

}  // namespace

constexpr DVBClutSet kDefaultClutSet{defaultTwoBit(), defaultFourBit(), defaultEightBit()};

Colour colourOf(std::uint32_t y, std::uint32_t cr, std::uint32_t cb, std::uint32_t transparency,
                const DvbRules& rules) {
  return rules.usesExactColours ? exactColourOf(y, cr, cb, transparency)
                                : filterColourOf(y, cr, cb, transparency);
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
