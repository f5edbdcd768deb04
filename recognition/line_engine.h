// SPDX-License-Identifier: MIT

// Who reads what nobody has read yet.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korr::recognition {

/// One line, dark on white, with a margin.
struct LineImage {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<std::uint8_t> grey;  ///< width * height, 255 white
};

struct EngineSymbol {
  std::string text;       ///< UTF-8, one character with its marks
  double left = 0;        ///< pixels of the image
  double right = 0;       ///< pixels of the image
  double confidence = 0;  ///< 0 to 1
  bool startsWord = false;
  bool isOfDictionary = false;  ///< of a word that the engine knows
};

/// An engine that reads lines. Not thread-safe.
class ILineEngine {
 public:
  virtual ~ILineEngine() = default;

  /// The symbols in the order in which they are read. Empty when it makes nothing of the line.
  virtual std::vector<EngineSymbol> read(const LineImage& line) = 0;
};

/// Words of a language. Not thread-safe.
class IWordList {
 public:
  virtual ~IWordList() = default;

  virtual bool contains(const std::string& word) = 0;
};

}  // namespace korr::recognition
