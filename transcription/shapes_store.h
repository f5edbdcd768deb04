// SPDX-License-Identifier: MIT

// The file in which the learnt shapes of a channel are kept.
#pragma once

#include <string>

#include "log/logger.h"
#include "recognition/shape_book.h"

namespace korr::txsub {

/// A book of shapes that may live in a file. Not thread-safe.
class ShapesStore {
 public:
  /// `path` in UTF-8; empty: the book is forgotten at the end. A file that is not there yet is an
  /// empty one. What is damaged in it is told with line and column, and kept. Throws
  /// util::TessaryException for a file that cannot be read.
  ShapesStore(std::string path, log::ILogger& logger);

  recognition::ShapeBook& book() { return book_; }
  const recognition::ShapeBook& book() const { return book_; }

  /// Between words, in heights of a tall letter; 0 when not known.
  double wordGap() const { return gap_; }

  /// Whether the file taught any letter.
  bool isKnown() const { return letters_ != 0; }

  /// Writes the file, with what has been learnt. Throws OutputError.
  void save(double wordGap);

 private:
  void read(log::ILogger& logger);

  std::string path_;
  recognition::ShapeBook book_;
  double gap_ = 0;
  std::size_t letters_ = 0;
  std::string damaged_;
};

}  // namespace korr::txsub
