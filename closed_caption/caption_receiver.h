// SPDX-License-Identifier: MIT

// What a receiver does with the codes of one caption service.
#pragma once

#include <cstddef>
#include <cstdint>

#include "closed_caption/caption_memory.h"
#include "closed_caption/caption_screen.h"
#include "closed_caption/cc_data.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Keeps both memories, the pen and the captioning style as CEA-608 and 47 CFR 79.101 have them.
/// Beside the filter's `CaptionDecoder`, which follows rules of its own.
class CaptionReceiver {
 public:
  CaptionReceiver() = default;
  CaptionReceiver(const CaptionReceiver&) = delete;
  CaptionReceiver& operator=(const CaptionReceiver&) = delete;

  /// Two characters, 0x20 to 0x7F, or 0x00 for none. True when they were for captions, false when
  /// for the text service in the same channel.
  bool executeText(BytePair pair);

  /// A control code in the form of data channel 1 and field 1; answers the same.
  bool executeControl(BytePair pair);

  /// Clears the screen, as automatic erasure does.
  void eraseDisplayed();

  /// What is on the screen.
  const CaptionScreen& displayed() const { return screens_[displayedScreen_]; }

  /// Whether the screen may have changed since `clearChanged`.
  bool hasChanged() const { return changed_; }
  void clearChanged() { changed_ = false; }

 private:
  bool isForCaptions() const { return !isText_ && style_ != CaptionMode::None; }
  bool executeMiscellaneous(std::uint8_t b2);
  void executeEdit(std::uint8_t b2);
  void executeInRow(BytePair pair);
  void executePreambleAddress(BytePair pair);
  void executeMidRow(std::uint8_t b2);
  void executeSpecialCharacter(std::uint8_t b2);
  void executeExtendedCharacter(BytePair pair);
  void executeBackgroundAttribute(std::uint8_t b2);
  void executeTabOffsetOrAttribute(std::uint8_t b2);

  void resume(CaptionMode style);
  void startRollUp(CaptionMode style);
  void endCaption();
  void carriageReturn();
  void moveBaseRow(std::int32_t row);

  void print(const GlyphText& glyph);
  void printAttribute(const CaptionStyle& style);
  void replaceWithAttribute(const CaptionStyle& style);
  CaptionStyle styleHere() const;
  void advance();
  bool backUp();
  void erase(CaptionScreen& screen);
  void noteWriting();
  std::size_t writtenScreen() const;
  CaptionScreen& written() { return screens_[writtenScreen()]; }
  std::int32_t depth() const { return static_cast<std::int32_t>(rollUpDepth(style_)); }

  CaptionScreen screens_[2];
  std::size_t displayedScreen_ = 0;
  CaptionMode style_ = CaptionMode::None;  // never Text: that is a mode beside the styles
  bool isText_ = false;                    // data are for the text service of the channel
  CaptionScreen::Place cursor_;
  CaptionStyle pen_;
  std::int32_t baseRow_ = kBottomRow;  // of roll-up captions
  bool isWindowGone_ = true;           // nothing placed the roll-up window since it was erased
  bool changed_ = false;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
