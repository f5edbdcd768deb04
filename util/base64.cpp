// SPDX-License-Identifier: MIT
#include "util/base64.h"

#include <algorithm>
#include <array>

namespace korr::util::inline v2_1 {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';
constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kGroupCharacters = 4;
constexpr std::size_t kGroupsPerLine = 64;
constexpr std::size_t kLineBytes = kGroupsPerLine * kGroupBytes;
constexpr std::uint8_t kNotInAlphabet = 0xFF;

using CharacterPair = std::array<char, 2>;

// Twelve bits at a time: the two characters of every value.
constexpr auto kPairs = [] {
  std::array<CharacterPair, 1 << 12> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
  return pairs;
}();

constexpr auto kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNotInAlphabet);
  for (std::uint8_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = i;
  }
  return values;
}();

char* put(char* out, CharacterPair pair) {
  return std::copy(pair.begin(), pair.end(), out);
}

// One line without its separator.
char* encodeLine(char* out, std::span<const std::uint8_t> bytes) {
  const std::size_t whole = bytes.size() - bytes.size() % kGroupBytes;
  for (std::size_t i = 0; i < whole; i += kGroupBytes) {
    out = put(out, kPairs[static_cast<std::size_t>(bytes[i] << 4 | bytes[i + 1] >> 4)]);
    out = put(out, kPairs[static_cast<std::size_t>((bytes[i + 1] & 15) << 8 | bytes[i + 2])]);
  }
  const auto rest = bytes.subspan(whole);
  if (rest.size() == 1) {
    out = put(out, kPairs[static_cast<std::size_t>(rest[0] << 4)]);
    out = put(out, {kPadding, kPadding});
  } else if (rest.size() == 2) {
    out = put(out, kPairs[static_cast<std::size_t>(rest[0] << 4 | rest[1] >> 4)]);
    out = put(out, {kAlphabet[static_cast<std::size_t>((rest[1] & 15) << 2)], kPadding});
  }
  return out;
}

}  // namespace

std::string encodeBase64(std::span<const std::uint8_t> bytes, std::string_view separator) {
  std::string text;
  text.reserve((4 * bytes.size() + 8) / 3 + separator.size() * bytes.size() / 256);
  std::array<char, kGroupsPerLine * kGroupCharacters> line;
  while (!bytes.empty()) {
    const auto lineBytes = bytes.first(std::min(bytes.size(), kLineBytes));
    const char* end = encodeLine(line.data(), lineBytes);
    text.append(line.data(), static_cast<std::size_t>(end - line.data()));
    if (end == line.data() + line.size()) text += separator;
    bytes = bytes.subspan(lineBytes.size());
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
  if (text.size() % kGroupCharacters != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == kPadding) {
    ++padding;
  }
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / kGroupCharacters * kGroupBytes);
  for (std::size_t i = 0; i < text.size(); i += kGroupCharacters) {
    const std::size_t present =
        i + kGroupCharacters == text.size() ? kGroupCharacters - padding : kGroupCharacters;
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < kGroupCharacters; ++k) {
      const std::uint8_t value = k < present ? kValues[static_cast<unsigned char>(text[i + k])] : 0;
      if (value == kNotInAlphabet) return std::nullopt;
      group = group << 6 | value;
    }
    bytes.push_back(static_cast<std::uint8_t>(group >> 16));
    if (present > 2) bytes.push_back(static_cast<std::uint8_t>(group >> 8));
    if (present > 3) bytes.push_back(static_cast<std::uint8_t>(group));
  }
  return bytes;
}

}  // namespace korr::util::inline v2_1
