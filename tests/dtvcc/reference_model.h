// SPDX-License-Identifier: MIT

// A second receiver of digital captions, slow and simple, for comparison.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "model/media_time.h"
#include "model/window_text.h"

namespace korr::test_support {

/// What is seen, one line a window and one a cell, in the order of painting.
std::string describe(const encoding::subtitling::WindowText& text);

/// Follows CEA-708-E, 7 and 8, for one service, step by step: every cell is an entry of a map, and
/// every command is written out by itself. Two-byte characters are UTF-16.
class ReferenceModel {
 public:
  /// One service block.
  void block(std::span<const std::uint8_t> bytes, std::uint64_t time);

  /// Lets pass the time until `time`.
  void wait(std::uint64_t time);

  std::string screen() const;

 private:
  using Bytes = std::vector<std::uint8_t>;
  struct Cell {
    std::string glyph;   // empty: a transparent space
    bool parts = false;  // words
    std::array<unsigned, 5> pen{};
  };
  struct Window {
    Bytes definition;
    Bytes attributes;
    std::array<unsigned, 5> pen{};
    bool visible = false;
    int rows = 0, columns = 0, row = 0, column = 0;
    std::map<std::pair<int, int>, Cell> cells;
  };

  void runQueue(std::uint64_t time);
  bool endDelayEarly();
  void execute(const Bytes& code, std::uint64_t time);
  void define(unsigned id, const Bytes& code);
  void print(const std::string& glyph, bool parts);
  void carriageReturn(Window& window);
  void home(Window& window);
  void eraseOutside(Window& window);
  void step(Window& window, int cells);
  void toLineStart(Window& window);
  bool isInside(const Window& window) const;
  int cellOfPen(const Window& window) const;
  void wrap(Window& window);
  static std::string describe(unsigned id, const Window& window);

  std::map<unsigned, Window> windows_;
  std::optional<unsigned> current_;
  Bytes queue_;
  std::optional<std::uint64_t> delayEnd_;
};

}  // namespace korr::test_support
