// SPDX-License-Identifier: MIT
#include "recognition/letter_parts.h"

#include <algorithm>

namespace korr::recognition {

namespace {

// Labels that turned out to be of one part.
class UnionFind {
 public:
  std::uint32_t add() {
    parents_.push_back(static_cast<std::uint32_t>(parents_.size()));
    return parents_.back();
  }
  std::uint32_t rootOf(std::uint32_t label) {
    while (parents_[label] != label) label = parents_[label] = parents_[parents_[label]];
    return label;
  }
  std::uint32_t join(std::uint32_t left, std::uint32_t right) {
    left = rootOf(left);
    right = rootOf(right);
    parents_[std::max(left, right)] = std::min(left, right);
    return std::min(left, right);
  }
  std::size_t size() const { return parents_.size(); }

 private:
  std::vector<std::uint32_t> parents_;
};

}  // namespace

LetterMask maskOf(const IndexedPicture& picture, const PaletteRoles& roles) {
  LetterMask mask;
  mask.width = picture.width;
  mask.height = picture.height;
  mask.coverage.resize(picture.pixels.size());
  for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
    mask.coverage[i] = roles.coverage[picture.pixels[i]];
  }
  return mask;
}

LetterParts findParts(const LetterMask& mask) {
  LetterParts out;
  out.labels.assign(mask.coverage.size(), 0);
  UnionFind found;
  found.add();  // 0 is no part
  const auto width = static_cast<std::size_t>(mask.width);
  for (std::size_t i = 0; i < mask.coverage.size(); ++i) {
    if (mask.coverage[i] < kLeastCoverage) continue;
    const std::size_t x = i % width;
    std::uint32_t label = 0;
    const auto touch = [&](std::size_t neighbour) {
      const auto other = out.labels[neighbour];
      if (other != 0) label = label == 0 ? other : found.join(label, other);
    };
    if (x > 0) touch(i - 1);
    if (i >= width) {
      touch(i - width);
      if (x > 0) touch(i - width - 1);
      if (x + 1 < width) touch(i - width + 1);
    }
    out.labels[i] = label != 0 ? label : found.add();
  }

  std::vector<std::uint32_t> numbers(found.size(), 0);
  for (std::size_t i = 0; i < out.labels.size(); ++i) {
    if (out.labels[i] == 0) continue;
    auto& number = numbers[found.rootOf(out.labels[i])];
    const auto x = static_cast<std::int32_t>(i % width);
    const auto y = static_cast<std::int32_t>(i / width);
    const Box pixel{.left = x, .top = y, .right = x + 1, .bottom = y + 1};
    if (number == 0) {
      if (out.parts.size() == kMostParts) return {.parts = {}, .labels = {}, .isTooMany = true};
      out.parts.push_back({.box = pixel, .pixels = 0});
      number = static_cast<std::uint32_t>(out.parts.size());
    }
    auto& part = out.parts[number - 1];
    part.box.include(pixel);
    ++part.pixels;
    out.labels[i] = number;
  }
  return out;
}

}  // namespace korr::recognition
