// SPDX-License-Identifier: MIT
#include "disc_subtitle/dvd_setup.h"

#include <charconv>

namespace korr::encoding::subtitling::disc::inline v2_1 {

namespace {

constexpr std::uint32_t kMostPixels = 4096;  // of a side

// What stands behind "name:" at the start of a line; nothing where no line has it.
std::optional<std::string_view> valueOf(std::string_view text, std::string_view name) {
  for (std::size_t first = 0; first < text.size();) {
    const auto end = std::min(text.find_first_of("\r\n", first), text.size());
    const auto line = text.substr(first, end - first);
    if (line.starts_with(name) && line.substr(name.size()).starts_with(':')) {
      return line.substr(name.size() + 1);
    }
    first = end + 1;
  }
  return std::nullopt;
}

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

std::optional<std::uint32_t> takeNumber(std::string_view& text, int base) {
  skipBlanks(text);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc{}) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

std::optional<DvdPalette> parsePalette(std::string_view text) {
  DvdPalette palette{};
  for (auto& colour : palette) {
    const auto number = takeNumber(text, 16);
    if (!number) return std::nullopt;
    for (const unsigned i : {0U, 1U, 2U}) {
      colour[i] = static_cast<std::uint8_t>(*number >> (16 - 8 * i));
    }
    skipBlanks(text);
    if (text.starts_with(',')) text.remove_prefix(1);
  }
  return palette;
}

}  // namespace

DvdSetup parseDvdSetup(std::string_view text) {
  DvdSetup setup;
  if (auto size = valueOf(text, "size")) {
    const auto width = takeNumber(*size, 10);
    if (size->starts_with('x')) size->remove_prefix(1);
    const auto height = takeNumber(*size, 10);
    const auto isSize = [](const auto& number) {
      return number && *number > 0 && *number <= kMostPixels;
    };
    if (isSize(width) && isSize(height)) {
      setup.width = *width;
      setup.height = *height;
    }
  }
  if (const auto palette = valueOf(text, "palette")) setup.palette = parsePalette(*palette);
  return setup;
}

}  // namespace korr::encoding::subtitling::disc::inline v2_1
