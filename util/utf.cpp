// SPDX-License-Identifier: MIT
#include "util/utf.h"

#include <array>
#include <cstdint>

namespace korr::util::inline v2_1 {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Takes the first code point off `text`; of a damaged sequence only its first byte.
char32_t takeCodePoint(std::string_view& text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byteAt(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  char32_t value = length == 1 ? lead : length == 0 ? kReplacement : lead & (0x7Fu >> length);
  bool isWhole = length != 0 && length <= text.size();
  for (std::size_t i = 1; isWhole && i < length; ++i) {
    isWhole = (byteAt(i) & 0xC0) == 0x80;
    value = (value << 6) | (byteAt(i) & 0x3Fu);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
  if (!isWhole || value < kSmallest[length] || isSurrogate || value > 0x10FFFF) {
    text.remove_prefix(1);
    return kReplacement;
  }
  text.remove_prefix(length);
  return value;
}

}  // namespace

std::u16string utf8ToUtf16(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  while (!text.empty()) {
    const char32_t codePoint = takeCodePoint(text);
    if (codePoint < 0x10000) {
      units += static_cast<char16_t>(codePoint);
    } else {
      units += static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
      units += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    }
  }
  return units;
}

}  // namespace korr::util::inline v2_1
