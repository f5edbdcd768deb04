// SPDX-License-Identifier: MIT
#include "readers/mpegts/dvb_text.h"

#include "teletext/character_sets.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::GlyphText;
namespace teletext = encoding::subtitling::teletext::lib_teletext;

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::uint8_t kFirstCharacter = 0x20;

void append(std::string& utf8, char32_t codePoint) {
  const auto tail = [&](unsigned shift) {
    utf8 += static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
  };
  if (codePoint < 0x80) {
    utf8 += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    utf8 += static_cast<char>(0xC0 | codePoint >> 6);
    tail(0);
  } else {
    utf8 += static_cast<char>(0xE0 | codePoint >> 12);
    tail(6);
    tail(0);
  }
}

bool isControl(std::uint32_t code) {
  return code < kFirstCharacter || (code >= 0x7F && code < 0xA0);
}

// Figure A.1, which is ISO/IEC 6937: as in teletext, the supplementary letters stand in the upper
// half and a diacritic stands before its letter.
std::string defaultTable(std::span<const std::uint8_t> text) {
  constexpr std::uint8_t kEuro = 0xA4;
  static const auto kLatin = teletext::CharacterSet::of(0, 0);
  std::string utf8;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::uint8_t code = text[i];
    if (isControl(code)) continue;
    if (code < 0x80) {
      utf8 += static_cast<char>(code);
    } else if (code == kEuro) {
      utf8 += "€";
    } else if (code > 0xC0 && code < 0xD0 && i + 1 < text.size()) {
      const auto letter = static_cast<char>(text[++i] & 0x7F);
      utf8 += teletext::withDiacritic(GlyphText(letter), code - 0xC0u).view();
    } else if (const auto letter = kLatin.g2(code & 0x7F)) {
      utf8 += letter->view();
    } else {
      append(utf8, kReplacement);
    }
  }
  return utf8;
}

// ISO 8859-`part`.
std::string isoTable(std::span<const std::uint8_t> text, unsigned part) {
  const auto cyrillic = [](std::uint8_t code) -> char32_t {
    if (code == 0xF0) return U'№';
    if (code == 0xFD) return U'§';
    return code == 0xAD ? 0xAD : code + 0x0360u;
  };
  std::string utf8;
  for (const std::uint8_t code : text) {
    if (isControl(code)) continue;
    if (code < 0x80 || part == 1) {
      append(utf8, code);
    } else {
      append(utf8, part == 5 && code > 0xA0 ? cyrillic(code) : kReplacement);
    }
  }
  return utf8;
}

std::string utf16(std::span<const std::uint8_t> text) {
  std::string utf8;
  for (; text.size() >= 2; text = text.subspan(2)) {
    const auto unit = static_cast<char32_t>(text[0] << 8 | text[1]);
    const bool isSurrogate = unit >= 0xD800 && unit < 0xE000;
    if (!isControl(unit)) append(utf8, isSurrogate ? kReplacement : unit);
  }
  return utf8;
}

}  // namespace

std::string dvbTextToUtf8(std::span<const std::uint8_t> text) {
  if (text.empty() || text[0] >= kFirstCharacter) return defaultTable(text);
  // Table A.3: what the first byte selects.
  const std::uint8_t selector = text[0];
  text = text.subspan(1);
  if (selector >= 0x01 && selector <= 0x0B) return isoTable(text, selector + 4u);
  if (selector == 0x10 && text.size() >= 2) return isoTable(text.subspan(2), text[1]);
  if (selector == 0x11) return utf16(text);
  if (selector == 0x15) return std::string(text.begin(), text.end());
  return isoTable(text, 0);
}

}  // namespace korr::txsub
