// SPDX-License-Identifier: MIT
#include "closed_caption/character_sets.h"

#include <array>

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

constexpr auto kBasic = [] {
  std::array<GlyphText, 0x80> set{};
  for (std::size_t code = 1; code < set.size(); ++code)
    set[code] = GlyphText(static_cast<char>(code));
  set[0x2A] = GlyphText("á");
  set[0x5C] = GlyphText("é");
  set[0x5E] = GlyphText("í");
  set[0x5F] = GlyphText("ó");
  set[0x60] = GlyphText("ú");
  set[0x7B] = GlyphText("ç");
  set[0x7C] = GlyphText("÷");
  set[0x7D] = GlyphText("Ñ");
  set[0x7E] = GlyphText("ñ");
  set[0x7F] = GlyphText("█");
  return set;
}();

template <std::size_t N>
constexpr std::array<GlyphText, N> makeSet(const char* const (&characters)[N]) {
  std::array<GlyphText, N> set{};
  for (std::size_t i = 0; i < N; ++i) set[i] = GlyphText(characters[i]);
  return set;
}

// The transparent space, 0x39, is an ordinary one.
constexpr auto kSpecial = makeSet<16>({
    "®", "°", "½", "¿", "™", "¢", "£", "♪",  // 0x30
    "à", " ", "è", "â", "ê", "î", "ô", "û",  // 0x38
});

constexpr auto kSpanishFrench = makeSet<32>({
    "Á", "É", "Ó", "Ú", "Ü", "ü", "\u2018", "¡",  // 0x20
    "*", "'", "—", "©", "℠", "•", "“",      "”",  // 0x28
    "À", "Â", "Ç", "È", "Ê", "Ë", "ë",      "Î",  // 0x30
    "Ï", "ï", "Ô", "Ù", "ù", "Û", "«",      "»",  // 0x38
});

// The caret (0x2C), the broken bar (0x2E) and the bar (0x37) are look-alikes, deliberately.
constexpr auto kPortugueseGermanDanish = makeSet<32>({
    "Ã", "ã", "Í", "Ì",  "ì",      "Ò", "ò",      "Õ",  // 0x20
    "õ", "{", "}", "\\", "\u2038", "_", "\u01C0", "~",  // 0x28
    "Ä", "ä", "Ö", "ö",  "ß",      "¥", "¤",      "|",  // 0x30
    "Å", "å", "Ø", "ø",  "⌜",      "⌝", "⌞",      "⌟",  // 0x38
});

}  // namespace

const GlyphText& basicCharacter(std::uint8_t code) {
  return kBasic[code & 0x7F];
}

const GlyphText& specialCharacter(std::uint8_t code) {
  return kSpecial[code & 0x0F];
}

const GlyphText& extendedSpanishFrench(std::uint8_t code) {
  return kSpanishFrench[code & 0x1F];
}

const GlyphText& extendedPortugueseGermanDanish(std::uint8_t code) {
  return kPortugueseGermanDanish[code & 0x1F];
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
