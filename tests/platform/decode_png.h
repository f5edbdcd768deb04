// Reads back what a PNG encoder wrote, by the platform's own decoder.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "core/byte_buffer.h"

namespace korr::test {

struct DecodedPng {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgba;
};

std::optional<DecodedPng> decodePng(const encoding::subtitling::ByteBuffer& png);

}  // namespace korr::test
