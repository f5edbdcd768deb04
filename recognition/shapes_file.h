// SPDX-License-Identifier: MIT

// The shapes of a channel as text that people can read and correct.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "recognition/shape_book.h"

namespace korr::recognition {

/// What could not be read, and where: lines and columns count from 1.
struct ShapesProblem {
  std::size_t line = 0;
  std::size_t column = 0;
  std::string what;
};

struct ShapesReport {
  std::vector<ShapesProblem> problems;  ///< at most one an entry, the first hundred
  std::string damaged;                  ///< the lines of the entries that have one, as they were
  double gap = 0;                       ///< between words, in heights of a tall letter; 0: not told
  std::size_t letters = 0;              ///< entries that were read
};

/// Adds the entries of a file to a book that may hold others. A damaged entry costs itself only.
ShapesReport readShapes(std::string_view text, ShapeBook& book);

/// The whole file. `damaged`: what an earlier reading could not understand, kept at the end.
std::string writeShapes(const ShapeBook& book, double gap, std::string_view damaged);

}  // namespace korr::recognition
