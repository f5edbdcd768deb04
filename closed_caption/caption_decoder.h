// SPDX-License-Identifier: MIT

// CEA-608 pairs to caption screens.
#pragma once

#include <cstddef>
#include <cstdint>

#include "closed_caption/caption_memory.h"
#include "closed_caption/cc_data.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Keeps the displayed and the non-displayed memory and follows the captioning styles. It leaves
/// CEA-608 where the comments say "deliberately": the live system is built on these rules.
class CaptionDecoder {
 public:
  /// Characters and runs that a memory takes before it is full; a screen has 480 characters.
  static constexpr std::size_t kMostCells = 65'536;

  /// With `publishEachPair` a roll-up row shows while it is being written, not only at its end.
  explicit CaptionDecoder(bool publishEachPair) : publishEachPair_(publishEachPair) {}

  CaptionDecoder(const CaptionDecoder&) = delete;
  CaptionDecoder& operator=(const CaptionDecoder&) = delete;

  /// Two characters: `b1` 0x20 to 0x7F, `b2` 0x00 to 0x7F, where 0x00 is none.
  void executePrintable(BytePair pair);

  /// A control code, `b1` 0x10 to 0x17 in the form of data channel 1 and field 1.
  void executeControl(BytePair pair);

  /// Whether the memory takes no more text because nothing has erased it for long. An erased or
  /// exchanged memory or a carriage return goes on.
  bool isFull() const { return workingCells_ == kMostCells; }

  /// Whether the displayed memory changed since `takeScreen`.
  bool hasChanged() const { return changed_; }

  /// The displayed memory.
  CaptionText takeScreen();

 private:
  using TextRow = CaptionText::TextRow;
  using TextRun = CaptionText::TextRun;

  void executeMiscellaneous(std::uint8_t b2);
  void executePreambleAddress(BytePair pair);
  void executeBackgroundAttribute(std::uint8_t b2);
  void executeMidRowOrSpecialCharacter(std::uint8_t b2);
  void executeTabOffsetOrAttribute(std::uint8_t b2);

  void carriageReturn();
  void backspace();
  void append(GlyphText glyph);
  bool takeCell();
  void changeStyle(const TextRun& style);

  const bool publishEachPair_;
  CaptionMemory workingMemory_;  // all text is written here, in every style
  CaptionMemory displayedMemory_;
  std::size_t workingCells_ = 0;  // taken by each memory since it was erased or rolled up
  std::size_t displayedCells_ = 0;
  CaptionMode mode_ = CaptionMode::None;
  TextRow* currentRow_ = nullptr;  // of workingMemory_, with one run at least; null when none
  bool changed_ = false;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
