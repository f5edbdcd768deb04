#include "util/base64.h"

#include <array>

namespace korr::util::inline v2_1 {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';
constexpr std::uint8_t kNotInAlphabet = 0xFF;

constexpr auto kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNotInAlphabet);
  for (std::uint8_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = i;
  }
  return values;
}();

}  // namespace

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == kPadding) {
    ++padding;
  }
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const std::size_t present = i + 4 == text.size() ? 4 - padding : 4;
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 4; ++k) {
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
