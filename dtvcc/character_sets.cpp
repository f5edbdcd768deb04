// SPDX-License-Identifier: MIT
#include "dtvcc/character_sets.h"

#include <array>

#include "dtvcc/ks_x_1001.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

constexpr GlyphText kUndefined("_");

constexpr GlyphText utf8(char32_t character) {
  const auto part = [character](unsigned shift, unsigned mark) {
    return static_cast<char>((character >> shift & 0x3F) | mark);
  };
  if (character < 0x80) return GlyphText(static_cast<char>(character));
  if (character < 0x800) {
    const char bytes[] = {static_cast<char>(character >> 6 | 0xC0), part(0, 0x80)};
    return GlyphText(std::string_view(bytes, 2));
  }
  if (character < 0x10000) {
    const char bytes[] = {static_cast<char>(character >> 12 | 0xE0), part(6, 0x80), part(0, 0x80)};
    return GlyphText(std::string_view(bytes, 3));
  }
  const char bytes[] = {static_cast<char>(character >> 18 | 0xF0), part(12, 0x80), part(6, 0x80),
                        part(0, 0x80)};
  return GlyphText(std::string_view(bytes, 4));
}

// G0 is ASCII but for the note (CEA-708-E, 7.1.6), G1 the upper half of ISO 8859-1 (7.1.7).
constexpr auto kBasic = [] {
  std::array<GlyphText, 0x100> set{};
  set.fill(kUndefined);
  for (char32_t code = 0x20; code < 0x7F; ++code) set[code] = utf8(code);
  for (char32_t code = 0xA1; code < 0x100; ++code) set[code] = utf8(code);
  set[0x7F] = GlyphText("♪");
  set[0xA0] = GlyphText(" ");  // does not break
  set[0xAD] = GlyphText("-");  // is not hidden
  return set;
}();

// G2 (CEA-708-E, 7.1.8).
constexpr auto kG2 = [] {
  std::array<GlyphText, 0x80> set{};
  set.fill(kUndefined);
  set[0x20] = GlyphText(" ");
  set[0x21] = GlyphText(" ");
  set[0x25] = GlyphText("…");
  set[0x2A] = GlyphText("Š");
  set[0x2C] = GlyphText("Œ");
  set[0x30] = GlyphText("█");
  set[0x31] = GlyphText("\u2018");
  set[0x32] = GlyphText("\u2019");
  set[0x33] = GlyphText("“");
  set[0x34] = GlyphText("”");
  set[0x35] = GlyphText("•");
  set[0x39] = GlyphText("™");
  set[0x3A] = GlyphText("š");
  set[0x3C] = GlyphText("œ");
  set[0x3D] = GlyphText("℠");
  set[0x3F] = GlyphText("Ÿ");
  set[0x76] = GlyphText("⅛");
  set[0x77] = GlyphText("⅜");
  set[0x78] = GlyphText("⅝");
  set[0x79] = GlyphText("⅞");
  set[0x7A] = GlyphText("│");
  set[0x7B] = GlyphText("┐");
  set[0x7C] = GlyphText("└");
  set[0x7D] = GlyphText("─");
  set[0x7E] = GlyphText("┘");
  set[0x7F] = GlyphText("┌");
  return set;
}();

// G3 (CEA-708-E, 7.1.9) holds but the sign for closed captions, of which this is the nearest.
constexpr std::uint32_t kCaptionIcon = 0xA0;
constexpr GlyphText kCaptionIconGlyph("㏄");

GlyphText extendedCharacter(std::uint32_t code) {
  if (code < kG2.size()) return kG2[code];
  return code == kCaptionIcon ? kCaptionIconGlyph : kUndefined;
}

bool isSurrogate(std::uint32_t unit) {
  return unit >= 0xD800 && unit < 0xE000;
}

}  // namespace

GlyphText characterOf(CharacterCode code, Charset charset) {
  if (code < kBasic.size()) return kBasic[code];
  if (code < kTwoBytes) return extendedCharacter(code & 0xFF);
  const std::uint32_t unit = code & 0xFFFF;
  if (charset == Charset::EucKr) {
    // Some encoders send the Latin letters between Korean ones as two bytes too.
    if (unit >= 0x20 && unit < 0x7F) return utf8(unit);
    const char16_t character =
        ksX1001Character(static_cast<std::uint8_t>(unit >> 8), static_cast<std::uint8_t>(unit));
    return character ? utf8(character) : kUndefined;
  }
  if (isSurrogate(unit)) return {};
  const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
  return isControl || unit >= 0xFFFE ? kUndefined : utf8(unit);
}

GlyphText surrogatePair(CharacterCode high, CharacterCode low) {
  const std::uint32_t first = high - kTwoBytes - 0xD800;
  const std::uint32_t second = low - kTwoBytes - 0xDC00;
  if (first >= 0x400 || second >= 0x400) return {};
  return utf8(0x10000 + (first << 10) + second);
}

bool isEucKr(std::uint8_t first, std::uint8_t second) {
  return ksX1001Character(first, second) != 0;
}

}  // namespace korr::encoding::subtitling::dtvcc
