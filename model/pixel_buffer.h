// SPDX-License-Identifier: MIT

// The pixels of a bitmap subtitle.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace korr::encoding::subtitling::inline v2_1 {

/// RGBA pixels, rows top to bottom, four bytes R, G, B, A each (A = 255 opaque). A new buffer is
/// all zero: transparent black. Shared by reference count between subtitles and never copied.
///
/// The memory comes zeroed from the system, so the rows that nobody paints are never touched;
/// `paintedRows` lets an encoder skip them too.
class PixelBuffer {
 public:
  /// A half-open range of rows.
  struct RowRange {
    std::uint32_t first = 0;
    std::uint32_t end = 0;

    friend bool operator==(const RowRange&, const RowRange&) = default;
  };

  /// `width` times `height` pixels. Throws std::bad_alloc.
  PixelBuffer(std::uint32_t width, std::uint32_t height);

  PixelBuffer() = default;

  std::size_t size() const { return size_; }
  std::uint8_t* data() { return bytes_.get(); }
  const std::uint8_t* data() const { return bytes_.get(); }
  std::span<const std::uint8_t> bytes() const { return {bytes_.get(), size_}; }

  /// Rows outside this range are known to be transparent black.
  RowRange paintedRows() const { return painted_; }

  /// Widens `paintedRows` to take in `rows`; the painter's duty before it writes there.
  void addPaintedRows(RowRange rows) {
    if (rows.first >= rows.end) return;
    if (painted_.first == painted_.end) {
      painted_ = rows;
      return;
    }
    painted_.first = std::min(painted_.first, rows.first);
    painted_.end = std::max(painted_.end, rows.end);
  }

  /// Makes it transparent black again, at the cost of the painted rows.
  void clear();

 private:
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };

  std::size_t size_ = 0;
  std::size_t rowBytes_ = 0;
  std::unique_ptr<std::uint8_t[], Free> bytes_;
  RowRange painted_;
};

}  // namespace korr::encoding::subtitling::inline v2_1
