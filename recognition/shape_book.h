// SPDX-License-Identifier: MIT

// All shapes that have been seen, and what they have been read as.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "recognition/shape.h"

namespace korr::recognition {

using ShapeId = std::uint32_t;
using KindId = std::uint32_t;  ///< of shapes that are alike

inline constexpr ShapeId kNoShape = UINT32_MAX;

/// Further shapes are not learnt: so many are no alphabet but noise. About 40 MB at HD.
inline constexpr std::size_t kMostShapes = 40'000;

/// What a kind of shapes was read as, and how often.
struct Vote {
  std::string text;
  double weight = 0;
};

/// Alike shapes, which are one letter. Votes are sorted, the heaviest first.
struct ShapeKind {
  std::vector<ShapeId> shapes;
  std::vector<Vote> votes;
  double weight = 0;             ///< sum of the votes
  std::uint32_t seen = 0;        ///< times on pictures
  std::uint32_t seenItalic = 0;  ///< of these in lines that lean
  std::string corrected;         ///< by hand; wins for ever
  bool isCorrected = false;

  /// The share of the heaviest vote, 0 without any.
  double share() const { return votes.empty() ? 0 : votes.front().weight / weight; }

  /// -1 for a kind of upright lines only, 1 for one of italic lines only, nearer to 0 when it has
  /// been seen seldom.
  double leaning() const {
    return seen == 0 ? 0 : (2.0 * seenItalic - seen) / seen * (seen < 4 ? seen / 4.0 : 1.0);
  }
};

/// Not thread-safe.
class ShapeBook {
 public:
  /// The number of a shape, a new one for one that has not been seen. kNoShape when it is full.
  ShapeId add(Shape shape);

  /// A kind of exactly these shapes, as a file lists them; shapes that are known already stay where
  /// they are. Nothing when none is new.
  std::optional<KindId> addKind(const std::vector<Shape>& shapes);

  /// By hand: from now on nothing else counts for this kind.
  void correct(KindId kind, const std::string& text);

  /// What a file remembers of a kind.
  void remember(KindId kind, std::uint32_t seen, bool isItalic);

  KindId kindOf(ShapeId shape) const { return kindOf_[shape]; }
  const Shape& shape(ShapeId id) const { return shapes_[id]; }
  const ShapeKind& kind(KindId id) const { return kinds_[id]; }
  std::size_t shapeCount() const { return shapes_.size(); }
  std::size_t kindCount() const { return kinds_.size(); }

  void countSeen(KindId kind, bool isItalic) {
    ++kinds_[kind].seen;
    if (isItalic) ++kinds_[kind].seenItalic;
  }
  void vote(KindId kind, const std::string& text, double weight);

  /// Neighbours that were read as one letter, such as the two parts of a Cyrillic yeru.
  void voteTogether(KindId first, KindId second, const std::string& text, double weight);
  void voteApart(KindId first, KindId second, double weight);

  struct Together {
    KindId first = 0;
    KindId second = 0;
    Vote vote;
  };
  /// All neighbours that are one letter, in the order of their kinds.
  std::vector<Together> allTogether() const;

  /// What two neighbours are together; nothing when they are letters of their own.
  std::optional<Vote> together(KindId first, KindId second) const;

 private:
  struct Pair {
    std::vector<Vote> votes;
    double apart = 0;
  };

  std::optional<ShapeId> find(const Shape& shape) const;
  ShapeId store(Shape shape, KindId kind);
  std::optional<KindId> findKind(const Shape& shape) const;
  KindId newKind(const Shape& shape);

  std::vector<Shape> shapes_;
  std::vector<KindId> kindOf_;
  std::vector<ShapeKind> kinds_;
  std::unordered_multimap<std::size_t, ShapeId> exact_;            // by hash
  std::unordered_map<std::uint32_t, std::vector<KindId>> bySize_;  // width and height
  std::unordered_map<std::uint64_t, Pair> pairs_;
};

}  // namespace korr::recognition
