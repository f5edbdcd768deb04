// SPDX-License-Identifier: MIT
#include "closed_caption/caption_receiver.h"

#include <algorithm>
#include <optional>

#include "closed_caption/caption_codes.h"
#include "closed_caption/character_sets.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

constexpr std::uint8_t kFirstSpecialCharacter = 0x30;
constexpr std::uint8_t kTransparentSpace = 0x39;
constexpr std::uint8_t kItalics = 0x2E;

std::optional<CaptionMode> rollUpStyle(std::uint8_t b2) {
  if (b2 == kRollUp2) return CaptionMode::RollUp2;
  if (b2 == kRollUp3) return CaptionMode::RollUp3;
  if (b2 == kRollUp4) return CaptionMode::RollUp4;
  return std::nullopt;
}

// The corners of boxes fill their cells, so that they join (CEA-608, table 10), and ASCII's own
// characters are just these (table 8); the shared table has look-alikes of them.
GlyphText extendedCharacter(BytePair pair) {
  if (pair.b1 == kExtendedSpanishFrench) return extendedSpanishFrench(pair.b2);
  switch (pair.b2) {
    case 0x2C:
      return GlyphText("^");
    case 0x2E:
    case 0x37:
      return GlyphText("|");
    case 0x3C:
      return GlyphText("┌");
    case 0x3D:
      return GlyphText("┐");
    case 0x3E:
      return GlyphText("└");
    case 0x3F:
      return GlyphText("┘");
    default:
      return extendedPortugueseGermanDanish(pair.b2);
  }
}

}  // namespace

bool CaptionReceiver::executeText(BytePair pair) {
  // Before the first command nobody knows where text belongs.
  if (!isForCaptions()) return false;
  if (pair.b1 != 0) print(basicCharacter(pair.b1));
  if (pair.b2 != 0) print(basicCharacter(pair.b2));
  return true;
}

bool CaptionReceiver::executeControl(BytePair pair) {
  const bool isMiscellaneous = pair.b1 == kMiscellaneous && pair.b2 < kPreambleAddressCode;
  if (isMiscellaneous && executeMiscellaneous(pair.b2)) return true;
  if (!isForCaptions()) return false;
  executeInRow(pair);
  return true;
}

void CaptionReceiver::eraseDisplayed() {
  erase(screens_[displayedScreen_]);
  changed_ = true;
}

// The codes that say where data belong, and both erasures, which act whatever the data before them
// were for (CEA-608, 7.7 and C.16). False for the others.
bool CaptionReceiver::executeMiscellaneous(std::uint8_t b2) {
  if (const auto style = rollUpStyle(b2)) {
    startRollUp(*style);
    return true;
  }
  switch (b2) {
    case kResumeCaptionLoading:
      resume(CaptionMode::PopOn);
      return true;
    case kResumeDirectCaptioning:
      resume(CaptionMode::PaintOn);
      return true;
    case kTextRestart:
    case kResumeTextDisplay:
      isText_ = true;
      return false;
    case kEraseDisplayedMemory:
      eraseDisplayed();
      return true;
    case kEraseNonDisplayedMemory:
      erase(screens_[1 - displayedScreen_]);
      return true;
    case kEndOfCaption:
      endCaption();
      return true;
    default:
      return false;
  }
}

// Selects a style and has no other effect (CEA-608, C.10).
void CaptionReceiver::resume(CaptionMode style) {
  isText_ = false;
  style_ = style;
}

// A change to roll-up erases both memories (CEA-608, C.10); within it the depth of the window
// changes at once, and the rows that fall out of it are gone (47 CFR 79.101, roll-up). Where no
// window is, it starts at the bottom; else the pen stays, as after an interruption (CEA-608, C.15).
void CaptionReceiver::startRollUp(CaptionMode style) {
  isText_ = false;
  if (style_ == style && !isWindowGone_) return;
  if (!isRollUp(style_)) {
    for (CaptionScreen& screen : screens_) erase(screen);
  }
  changed_ = true;
  if (isWindowGone_) {
    style_ = style;
    baseRow_ = kBottomRow;
    cursor_ = {.row = baseRow_, .column = 0};
    pen_ = CaptionStyle{};
    return;
  }
  written().keepWindow(baseRow_, static_cast<std::int32_t>(rollUpDepth(style)));
  moveBaseRow(std::max(baseRow_, static_cast<std::int32_t>(rollUpDepth(style))));
  style_ = style;
}

// Exchanges the memories, in any style, and selects pop-on (CEA-608, C.10 and C.11).
void CaptionReceiver::endCaption() {
  isText_ = false;
  style_ = CaptionMode::PopOn;
  displayedScreen_ = 1 - displayedScreen_;
  changed_ = true;
}

void CaptionReceiver::executeInRow(BytePair pair) {
  if (pair.b2 >= kPreambleAddressCode) return executePreambleAddress(pair);
  if (pair.b2 < kFirstPrintable) return;
  switch (pair.b1) {
    case kBackgroundAttributes:
      if (pair.b2 < kFirstSpecialCharacter) executeBackgroundAttribute(pair.b2);
      return;
    case kMidRowAndSpecialCharacters:
      if (pair.b2 < kFirstSpecialCharacter) return executeMidRow(pair.b2);
      return executeSpecialCharacter(pair.b2);
    case kExtendedSpanishFrench:
    case kExtendedPortugueseGermanDanish:
      return executeExtendedCharacter(pair);
    case kMiscellaneous:
      return executeEdit(pair.b2);
    case kTabOffsetsAndAttributes:
      return executeTabOffsetOrAttribute(pair.b2);
    default:
      return;
  }
}

void CaptionReceiver::executeEdit(std::uint8_t b2) {
  switch (b2) {
    case kBackspace:
      if (backUp()) written().erase(cursor_);
      noteWriting();
      break;
    case kDeleteToEndOfRow:
      written().eraseToEndOfRow(cursor_);
      noteWriting();
      break;
    case kFlashOn:
      printAttribute(styleHere());
      break;
    case kCarriageReturn:
      carriageReturn();
      break;
    default:
      break;
  }
}

// Only roll-up knows lines.
void CaptionReceiver::carriageReturn() {
  if (!isRollUp(style_)) return;
  written().rollUp(baseRow_, depth());
  cursor_ = {.row = baseRow_, .column = 0};
  pen_ = CaptionStyle{};  // CEA-608, C.14
  changed_ = true;
}

// Moves the pen and nothing else, but for the window of roll-up captions (CEA-608, C.7). The
// background goes on until the end of its row (CEA-608, 6.2).
void CaptionReceiver::executePreambleAddress(BytePair pair) {
  const PreambleAddress address = preambleAddress(pair);
  cursor_.row = address.row;
  cursor_.column = address.column;
  if (isRollUp(style_)) {
    moveBaseRow(address.row);
    cursor_.row = baseRow_;
    isWindowGone_ = false;
  }
  pen_ = CaptionStyle{
      .foreground = address.foreground, .italic = address.italic, .underline = address.underline};
  if (const CaptionStyle* onRow = written().styleOnRow(cursor_)) {
    pen_.background = onRow->background;
    pen_.backgroundOpacity = onRow->backgroundOpacity;
  }
}

// Moves the whole window at once; where its depth does not fit above `row`, the depth wins
// (CEA-608, C.4).
void CaptionReceiver::moveBaseRow(std::int32_t row) {
  const std::int32_t base = std::max(row, depth());
  if (base == baseRow_) return;
  written().moveWindow(baseRow_, base, depth());
  cursor_.row = baseRow_ = base;
  changed_ = true;
}

// A colour ends italics, italics keep the colour, and both set the underline (47 CFR 79.101 (h)).
void CaptionReceiver::executeMidRow(std::uint8_t b2) {
  CaptionStyle style = styleHere();
  style.italic = b2 >= kItalics;
  if (!style.italic) style.foreground = colourOf(b2);
  style.underline = isOdd(b2);
  printAttribute(style);
}

void CaptionReceiver::executeSpecialCharacter(std::uint8_t b2) {
  if (b2 != kTransparentSpace) return print(specialCharacter(b2));
  written().erase(cursor_);
  advance();
  noteWriting();
}

// Replaces the basic character that older receivers show (CEA-608, 6.4.2).
void CaptionReceiver::executeExtendedCharacter(BytePair pair) {
  if (backUp()) written().erase(cursor_);
  print(extendedCharacter(pair));
}

void CaptionReceiver::executeBackgroundAttribute(std::uint8_t b2) {
  CaptionStyle style = styleHere();
  style.background = colourOf(b2);
  style.backgroundOpacity = isOdd(b2) ? CaptionOpacity::SemiTransparent : CaptionOpacity::Opaque;
  replaceWithAttribute(style);
}

void CaptionReceiver::executeTabOffsetOrAttribute(std::uint8_t b2) {
  CaptionStyle style = styleHere();
  switch (b2) {
    case kTabOffset1:
    case kTabOffset2:
    case kTabOffset3:
      // Never beyond column 32 (CEA-608, C.13).
      cursor_.column = std::max(cursor_.column, std::min(cursor_.column + b2 - 0x20u,
                                                         CaptionScreen::kVisibleColumns - 1));
      return;
    case kBackgroundTransparent:
      style.backgroundOpacity = CaptionOpacity::Transparent;
      return replaceWithAttribute(style);
    case kForegroundBlack:
    case kForegroundBlackUnderline:
      style.foreground = CaptionColour::Black;
      style.italic = false;
      style.underline = isOdd(b2);
      return replaceWithAttribute(style);
    default:  // sizes and character sets of closed groups (CEA-608, 6.3)
      return;
  }
}

void CaptionReceiver::print(const GlyphText& glyph) {
  pen_ = written().write(cursor_, glyph, pen_, style_);
  advance();
  isWindowGone_ = false;
  noteWriting();
}

void CaptionReceiver::printAttribute(const CaptionStyle& style) {
  pen_ = style;
  written().writeAttribute(cursor_, pen_, style_);
  advance();
  isWindowGone_ = false;
  noteWriting();
}

// Background and black foreground codes replace the space before them, which older receivers show
// alone (CEA-608, 6.2).
void CaptionReceiver::replaceWithAttribute(const CaptionStyle& style) {
  backUp();
  printAttribute(style);
}

// A character next to another takes that one's attributes, whatever a preamble said in between
// (CEA-608, C.7).
CaptionStyle CaptionReceiver::styleHere() const {
  const CaptionStyle* before = screens_[writtenScreen()].styleBefore(cursor_);
  return before ? *before : pen_;
}

void CaptionReceiver::advance() {
  cursor_.column = std::min(cursor_.column + 1, CaptionScreen::kColumns - 1);
}

bool CaptionReceiver::backUp() {
  if (cursor_.column == 0) return false;
  --cursor_.column;
  return true;
}

void CaptionReceiver::erase(CaptionScreen& screen) {
  screen.clear();
  if (&screen == &screens_[displayedScreen_]) isWindowGone_ = true;
}

void CaptionReceiver::noteWriting() {
  if (style_ != CaptionMode::PopOn) changed_ = true;
}

// Where the style writes: pop-on prepares the next caption, the others write what is seen.
std::size_t CaptionReceiver::writtenScreen() const {
  return style_ == CaptionMode::PopOn ? 1 - displayedScreen_ : displayedScreen_;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
