// SPDX-License-Identifier: MIT

// The lines of a text input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "readers/input_buffer.h"

namespace korr::txsub {

/// Cuts an input into lines as they come, so that those of a slow pipe do not wait for the next.
/// Not thread-safe.
class LineReader {
 public:
  struct Line {
    std::uint64_t number = 0;  ///< counts from 1
    std::string_view text;     ///< without its line feed; valid up to the next `fill`
    bool isTooLong = false;    ///< `text` is only how it begins
  };

  /// A line of more than `longest` bytes is not read into memory whole.
  LineReader(std::unique_ptr<IByteSource> source, std::size_t longest, log::ILogger* logger)
      : input_(std::move(source), logger), longest_(longest) {}

  /// Reads on a little; false at the end of the input. Throws util::TessaryException when nothing
  /// can be read at all.
  bool fill();

  /// The next line that has come whole; nothing until `fill` has read more of it.
  [[nodiscard]] std::optional<Line> take();

  ReadProgress progress() const {
    return {.bytesRead = input_.offset() + input_.bytes().size(), .bytesTotal = input_.size()};
  }

 private:
  std::string_view text() const;
  bool skipRest();

  InputBuffer input_;
  std::size_t longest_;
  std::size_t searched_ = 0;  // bytes at hand that hold no line feed
  bool isSkipping_ = false;   // the rest of a line too long
  std::uint64_t lines_ = 0;   // taken so far
};

}  // namespace korr::txsub
