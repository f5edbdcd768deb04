// SPDX-License-Identifier: MIT

// What the writers fill.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace korr::encoding::subtitling::inline v2_1 {

/// A growable buffer of bytes. Writers fill it from empty with UTF-8 text without a terminating
/// zero; empty means that there is nothing to show.
using ByteBuffer = std::vector<std::uint8_t>;

inline void append(ByteBuffer& buffer, std::string_view text) {
  buffer.insert(buffer.end(), text.begin(), text.end());
}

inline std::string_view asText(const ByteBuffer& buffer) {
  return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

}  // namespace korr::encoding::subtitling::inline v2_1
