// SPDX-License-Identifier: MIT
#include "testkit/encoders/caption_builder.h"

#include <bit>
#include <utility>

namespace korr::encoders {
namespace {

/// `byte` with odd parity in bit 7.
std::uint8_t withOddParity(std::uint8_t byte) {
  const auto bits = static_cast<unsigned>(byte & 0x7F);
  return static_cast<std::uint8_t>(bits | (std::popcount(bits) % 2 == 0 ? 0x80u : 0u));
}

}  // namespace

CaptionBuilder& CaptionBuilder::pair(std::uint8_t b1, std::uint8_t b2) {
  triplets_.push_back(static_cast<std::uint8_t>(0xFC | (field_ - 1)));
  triplets_.push_back(withOddParity(b1));
  triplets_.push_back(withOddParity(b2));
  return *this;
}

CaptionBuilder& CaptionBuilder::control(std::uint8_t b1, std::uint8_t b2) {
  const bool isMiscellaneous = b1 == 0x14 && b2 < 0x40;  // one higher in field 2 (CEA-608, 8.4.1)
  const int inField = b1 + (field_ == 2 && isMiscellaneous ? 1 : 0);
  return pair(static_cast<std::uint8_t>(inField + 8 * (channel_ - 1)), b2);
}

CaptionBuilder& CaptionBuilder::twice() {
  const std::vector<std::uint8_t> last(triplets_.end() - 3, triplets_.end());
  triplets_.insert(triplets_.end(), last.begin(), last.end());
  return *this;
}

CaptionBuilder& CaptionBuilder::text(std::string_view ascii) {
  for (std::size_t i = 0; i < ascii.size(); i += 2) {
    const char second = i + 1 < ascii.size() ? ascii[i + 1] : '\0';
    pair(static_cast<std::uint8_t>(ascii[i]), static_cast<std::uint8_t>(second));
  }
  return *this;
}

CaptionBuilder& CaptionBuilder::preamble(int row, std::uint8_t attribute) {
  // CEA-608, table 53: the first byte of each row; the second of a pair of rows adds 0x20.
  constexpr struct {
    std::uint8_t b1, b2;
  } kRows[] = {{0x11, 0x40}, {0x11, 0x60}, {0x12, 0x40}, {0x12, 0x60}, {0x15, 0x40},
               {0x15, 0x60}, {0x16, 0x40}, {0x16, 0x60}, {0x17, 0x40}, {0x17, 0x60},
               {0x10, 0x40}, {0x13, 0x40}, {0x13, 0x60}, {0x14, 0x40}, {0x14, 0x60}};
  const auto& code = kRows[row - 1];
  return control(code.b1, static_cast<std::uint8_t>(code.b2 | attribute));
}

std::vector<std::uint8_t> CaptionBuilder::take() {
  return std::exchange(triplets_, {});
}

}  // namespace korr::encoders
