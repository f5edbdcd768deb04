// SPDX-License-Identifier: MIT

// The pixels of a region.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "dvb_subtitle/code_string.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// The pixel codes of a region, which stay from one display set to the next. What is painted
/// outside is cut off.
class RegionMemory {
 public:
  RegionMemory() = default;

  /// In pixels. Throws std::bad_alloc.
  RegionMemory(std::uint32_t width, std::uint32_t height)
      : width_(width),
        height_(height),
        codes_(std::size_t{width} * height),
        runs_(std::size_t{width} + kStep) {}

  /// One row, to paint runs on. Runs that adjoin are put together before they are painted, so that
  /// short ones, which most are, take a store of fixed size each.
  class Row {
   public:
    /// Paints `length` pixels to the right from `x` on.
    void paintRun(std::uint32_t x, std::uint32_t length, std::uint32_t code) {
      if (!moveTo(x)) return;
      length = std::min(length, width_ - x);
      if (length <= kStep) {
        std::memset(runs_ + x, static_cast<int>(code), kStep);
      } else {
        std::memset(runs_ + x, static_cast<int>(code), length);
      }
      end_ += length;
    }

    /// Paints up to eight different pixels.
    void paintPixels(std::uint32_t x, const SinglePixels& pixels) {
      if (!moveTo(x)) return;
      for (unsigned i = 0; i < 8; ++i)
        runs_[x + i] = static_cast<std::uint8_t>(pixels.codes >> (56 - 8 * i));
      end_ += std::min(pixels.count, width_ - x);
    }

    ~Row() { paint(); }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

   private:
    friend RegionMemory;

    Row(RegionMemory& memory, std::uint32_t y) : memory_(memory) {
      if (y >= memory.height_) return;  // cut off: no pixels
      width_ = memory.width_;
      codes_ = memory.codes_.data() + std::size_t{y} * width_;
      runs_ = memory.runs_.data();
    }

    // Whether `x` is on the row.
    bool moveTo(std::uint32_t x) {
      if (x >= width_) return false;
      if (x != end_) {
        paint();
        first_ = end_ = x;
      }
      return true;
    }

    void paint() {
      if (first_ == end_) return;
      std::memcpy(codes_ + first_, runs_ + first_, end_ - first_);
      memory_.pixelsWritten_ += end_ - first_;
      first_ = end_;
    }

    RegionMemory& memory_;
    std::uint32_t width_ = 0;
    std::uint8_t* codes_ = nullptr;
    std::uint8_t* runs_ = nullptr;
    std::uint32_t first_ = 0;  // of the runs that are not painted yet
    std::uint32_t end_ = 0;
  };

  /// Row `y`, which others must not paint on meanwhile; one at a time.
  Row row(std::uint32_t y) { return {*this, y}; }

  void fill(std::uint32_t code) {
    std::fill(codes_.begin(), codes_.end(), static_cast<std::uint8_t>(code));
    pixelsWritten_ += codes_.size();
  }

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  std::uint64_t pixels() const { return codes_.size(); }
  const std::uint8_t* codesOfRow(std::uint32_t y) const {
    return codes_.data() + std::size_t{y} * width_;
  }

  /// How many pixels were written, those written again counted again.
  std::uint64_t pixelsWritten() const { return pixelsWritten_; }

 private:
  static constexpr std::size_t kStep = 16;

  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::vector<std::uint8_t> codes_;
  std::vector<std::uint8_t> runs_;  // of the row that is being painted
  std::uint64_t pixelsWritten_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
