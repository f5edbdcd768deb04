// SPDX-License-Identifier: MIT

// The pixels of a region.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// The pixel codes of a region, which stay from one display set to the next. What is painted
/// outside is cut off.
class RegionMemory {
 public:
  RegionMemory() = default;

  /// In pixels. Throws std::bad_alloc.
  RegionMemory(std::uint32_t width, std::uint32_t height)
      : width_(width), height_(height), codes_(std::size_t{width} * height) {}

  /// One row, to paint runs on.
  class Row {
   public:
    /// Paints `length` pixels to the right from `x` on.
    void paintRun(std::uint32_t x, std::uint32_t length, std::uint32_t code) {
      if (x >= width_) return;
      length = std::min(length, width_ - x);
      written_ += length;
      if (length == 1) {  // as most runs of 8-bit strings are
        codes_[x] = static_cast<std::uint8_t>(code);
      } else {
        std::fill_n(codes_ + x, length, static_cast<std::uint8_t>(code));
      }
    }

    ~Row() { memory_.pixelsWritten_ += written_; }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

   private:
    friend RegionMemory;

    Row(RegionMemory& memory, std::uint32_t y) : memory_(memory) {
      if (y >= memory.height_) return;  // cut off: no pixels
      width_ = memory.width_;
      codes_ = memory.codes_.data() + std::size_t{y} * width_;
    }

    RegionMemory& memory_;
    std::uint32_t width_ = 0;
    std::uint8_t* codes_ = nullptr;
    std::uint64_t written_ = 0;  // pixels
  };

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
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::vector<std::uint8_t> codes_;
  std::uint64_t pixelsWritten_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
