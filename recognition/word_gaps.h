// SPDX-License-Identifier: MIT

// Which gaps between letters part words.
#pragma once

#include <cstdint>
#include <vector>

namespace korr::recognition {

/// Counts gaps of a service and finds the width that parts those between words from those between
/// letters: by what an engine said, or else where the fewest gaps are.
class WordGaps {
 public:
  /// `gap` in heights of a tall letter.
  void count(double gap);
  void learn(double gap, bool isSpace);

  /// The threshold of an earlier recording, until something is learnt.
  void setKnown(double threshold) { known_ = threshold; }

  /// Whether gaps of this width have been both: then the line itself must tell.
  bool isUnsure(double gap) const;

  /// Wider gaps part words. In heights of a tall letter.
  double threshold() const;

 private:
  struct Bin {
    std::uint32_t all = 0;
    std::uint32_t apart = 0;
    std::uint32_t together = 0;
  };
  static std::size_t binOf(double gap);
  double learntThreshold() const;
  double guessedThreshold() const;

  static constexpr std::size_t kBins = 200;  // percent of the height, from -20 on
  std::vector<Bin> bins_ = std::vector<Bin>(kBins);
  std::uint32_t learnt_ = 0;
  double known_ = 0;               // 0: not
  mutable double threshold_ = -1;  // as of the last change; -1: not known
};

}  // namespace korr::recognition
