// SPDX-License-Identifier: MIT
#include "recognition/shape_book.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace korr::recognition {

namespace {

constexpr std::size_t kMostPairs = 100'000;

std::uint32_t sizeKey(std::int32_t width, std::int32_t height) {
  return static_cast<std::uint32_t>(width) << 16 | static_cast<std::uint32_t>(height & 0xFFFF);
}

std::uint64_t pairKey(KindId first, KindId second) {
  return std::uint64_t{first} << 32 | second;
}

std::int64_t inkOf(const Shape& shape) {
  return std::accumulate(shape.levels.begin(), shape.levels.end(), std::int64_t{0});
}

void addVote(std::vector<Vote>& votes, const std::string& text, double weight) {
  auto vote =
      std::find_if(votes.begin(), votes.end(), [&](const Vote& v) { return v.text == text; });
  if (vote == votes.end()) {
    votes.push_back({text, 0});
    vote = votes.end() - 1;
  }
  vote->weight += weight;
  while (vote != votes.begin() && (vote - 1)->weight < vote->weight) {
    std::iter_swap(vote - 1, vote);
    --vote;
  }
}

}  // namespace

ShapeId ShapeBook::add(Shape shape) {
  if (const auto known = find(shape)) return *known;
  if (shapes_.size() >= kMostShapes) return kNoShape;
  const auto kind = findKind(shape);
  const KindId number = kind ? *kind : newKind(shape);
  return store(std::move(shape), number);
}

std::optional<KindId> ShapeBook::addKind(const std::vector<Shape>& shapes) {
  std::optional<KindId> kind;
  for (const auto& shape : shapes) {
    if (find(shape) || shapes_.size() >= kMostShapes) continue;
    if (!kind) kind = newKind(shape);
    store(shape, *kind);
  }
  return kind;
}

void ShapeBook::correct(KindId kind, const std::string& text) {
  kinds_[kind].corrected = text;
  kinds_[kind].isCorrected = true;
}

void ShapeBook::remember(KindId kind, std::uint32_t seen, bool isItalic) {
  kinds_[kind].seen += seen;
  if (isItalic) kinds_[kind].seenItalic += seen;
}

std::optional<ShapeId> ShapeBook::find(const Shape& shape) const {
  const auto [first, last] = exact_.equal_range(ShapeHash{}(shape));
  for (auto it = first; it != last; ++it) {
    if (shapes_[it->second] == shape) return it->second;
  }
  return std::nullopt;
}

ShapeId ShapeBook::store(Shape shape, KindId kind) {
  const auto id = static_cast<ShapeId>(shapes_.size());
  exact_.emplace(ShapeHash{}(shape), id);
  shapes_.push_back(std::move(shape));
  kindOf_.push_back(kind);
  kinds_[kind].shapes.push_back(id);
  return id;
}

// The kind of the first shape that is alike.
std::optional<KindId> ShapeBook::findKind(const Shape& shape) const {
  const auto ink = inkOf(shape);
  const std::int32_t slack = 1 + shape.height / 40;
  for (std::int32_t h = shape.height - slack; h <= shape.height + slack; ++h) {
    for (std::int32_t w = shape.width - 2; w <= shape.width + 2; ++w) {
      const auto found = bySize_.find(sizeKey(w, h));
      if (found == bySize_.end()) continue;
      for (const KindId kind : found->second) {
        const Shape& other = shapes_[kinds_[kind].shapes.front()];
        if (std::abs(inkOf(other) - ink) * 8 > ink + 24) continue;
        if (areAlike(other, shape)) return kind;
      }
    }
  }
  return std::nullopt;
}

KindId ShapeBook::newKind(const Shape& shape) {
  const auto kind = static_cast<KindId>(kinds_.size());
  kinds_.emplace_back();
  bySize_[sizeKey(shape.width, shape.height)].push_back(kind);
  return kind;
}

void ShapeBook::vote(KindId kind, const std::string& text, double weight) {
  addVote(kinds_[kind].votes, text, weight);
  kinds_[kind].weight += weight;
}

void ShapeBook::voteTogether(KindId first, KindId second, const std::string& text, double weight) {
  if (pairs_.size() >= kMostPairs && !pairs_.contains(pairKey(first, second))) return;
  addVote(pairs_[pairKey(first, second)].votes, text, weight);
}

void ShapeBook::voteApart(KindId first, KindId second, double weight) {
  if (pairs_.size() >= kMostPairs && !pairs_.contains(pairKey(first, second))) return;
  pairs_[pairKey(first, second)].apart += weight;
}

std::vector<ShapeBook::Together> ShapeBook::allTogether() const {
  std::vector<Together> out;
  for (const auto& [key, pair] : pairs_) {
    const auto first = static_cast<KindId>(key >> 32);
    const auto second = static_cast<KindId>(key);
    if (const auto vote = together(first, second)) out.push_back({first, second, *vote});
  }
  std::sort(out.begin(), out.end(), [](const Together& a, const Together& b) {
    return pairKey(a.first, a.second) < pairKey(b.first, b.second);
  });
  return out;
}

std::optional<Vote> ShapeBook::together(KindId first, KindId second) const {
  const auto found = pairs_.find(pairKey(first, second));
  if (found == pairs_.end() || found->second.votes.empty()) return std::nullopt;
  const auto& vote = found->second.votes.front();
  if (vote.weight <= found->second.apart) return std::nullopt;
  // Two letters that are known by themselves: one of them was lost once, more likely.
  const auto isKnown = [this](KindId kind) {
    return kinds_[kind].weight >= 2 && kinds_[kind].share() > 0.7;
  };
  if (isKnown(first) && isKnown(second) && vote.weight < 3 + 3 * found->second.apart)
    return std::nullopt;
  return vote;
}

}  // namespace korr::recognition
