// SPDX-License-Identifier: MIT

// How much painting a stream can ask for.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Bounds the work that one payload can ask for, however its pages, regions and objects are nested:
/// about a second of it, or 128 pictures of 1920 by 1080 filled from edge to edge. Throws
/// SegmentError when it is used up.
class PaintingBudget {
 public:
  void spendOnPixels(std::uint64_t count) { spend(count); }
  void spendOnCodeStrings(std::uint64_t bytes) { spend(bytes * 8); }
  void spendOnObjects(std::uint64_t count) { spend(count * 16); }

  /// Whether it has been asked for more than it had.
  bool isUsedUp() const { return isUsedUp_; }

 private:
  void spend(std::uint64_t work);

  std::uint64_t left_ = std::uint64_t{1} << 28;
  bool isUsedUp_ = false;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
