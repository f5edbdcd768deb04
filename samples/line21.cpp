// SPDX-License-Identifier: MIT
#include "samples/line21.h"

#include <algorithm>
#include <iterator>

namespace korr::samples {
namespace {

constexpr std::size_t kTripletBytes = 3;
constexpr std::uint8_t kNull = 0x80;  // with its parity bit

}  // namespace

Line21& Line21::at(std::size_t frame, encoders::CaptionBuilder& caption) {
  const Bytes triplets = caption.take();
  if (triplets.empty()) return *this;
  auto& field = fields_[triplets.front() & 1];
  field.resize(std::max(field.size(), frame));
  for (std::size_t i = 0; i < triplets.size(); i += kTripletBytes) {
    field.emplace_back(triplets.begin() + static_cast<std::ptrdiff_t>(i),
                       triplets.begin() + static_cast<std::ptrdiff_t>(i + kTripletBytes));
  }
  return *this;
}

Bytes Line21::triplets(std::size_t frame) const {
  Bytes triplets;
  for (std::uint8_t index = 0; index < 2; ++index) {
    const auto& field = fields_[index];
    const bool sent = frame < field.size() && !field[frame].empty();
    const Bytes null{static_cast<std::uint8_t>(0xFC | index), kNull, kNull};
    std::ranges::copy(sent ? field[frame] : null, std::back_inserter(triplets));
  }
  return triplets;
}

}  // namespace korr::samples
