// SPDX-License-Identifier: MIT
#include "closed_caption/caption_decoder.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "closed_caption/caption_codes.h"
#include "closed_caption/character_sets.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

// Everything but the column, which alone never makes a new style, deliberately.
bool haveEqualStyles(const CaptionText::TextRun& left, const CaptionText::TextRun& right) {
  const auto styleOf = [](const CaptionText::TextRun& run) {
    return std::tie(run.foreground, run.background, run.backgroundOpacity, run.doubleSize,
                    run.underline, run.italic);
  };
  return styleOf(left) == styleOf(right);
}

// The attributes of a run without its text.
CaptionText::TextRun styleOf(const CaptionText::TextRun& run) {
  return {{},
          run.column,
          run.foreground,
          run.background,
          run.backgroundOpacity,
          run.doubleSize,
          run.underline,
          run.italic};
}

}  // namespace

void CaptionDecoder::executePrintable(BytePair pair) {
  if (mode_ == CaptionMode::None || mode_ == CaptionMode::Text || !currentRow_) return;
  append(basicCharacter(pair.b1));
  if (pair.b2 != 0) append(basicCharacter(pair.b2));

  if (publishEachPair_ && isRollUp(mode_)) {
    displayedMemory_ = workingMemory_;
    rollUp(displayedMemory_, mode_);
    changed_ = true;
  }
}

void CaptionDecoder::executeControl(BytePair pair) {
  if (pair.b2 >= kPreambleAddressCode) return executePreambleAddress(pair);
  if (pair.b2 < 0x20) return;
  if (pair.b1 == kMiscellaneous) return executeMiscellaneous(pair.b2);
  if (!currentRow_) return;

  switch (pair.b1) {
    case kBackgroundAttributes:
      return executeBackgroundAttribute(pair.b2);
    case kMidRowAndSpecialCharacters:
      return executeMidRowOrSpecialCharacter(pair.b2);
    // An extended character replaces the basic one sent before it for older receivers
    // (CEA-608, 6.4.2).
    case kExtendedSpanishFrench:
      backspace();
      return append(extendedSpanishFrench(pair.b2));
    case kExtendedPortugueseGermanDanish:
      backspace();
      return append(extendedPortugueseGermanDanish(pair.b2));
    case kTabOffsetsAndAttributes:
      return executeTabOffsetOrAttribute(pair.b2);
    default:
      return;
  }
}

CaptionText CaptionDecoder::takeScreen() {
  changed_ = false;
  return {displayedMemory_};
}

void CaptionDecoder::executeMiscellaneous(std::uint8_t b2) {
  switch (b2) {
    case kResumeCaptionLoading:
      mode_ = CaptionMode::PopOn;
      break;
    case kBackspace:
      backspace();
      break;
    case kRollUp2:
      mode_ = CaptionMode::RollUp2;
      break;
    case kRollUp3:
      mode_ = CaptionMode::RollUp3;
      break;
    case kRollUp4:
      mode_ = CaptionMode::RollUp4;
      break;
    case kResumeDirectCaptioning:
      mode_ = CaptionMode::PaintOn;
      break;
    case kTextRestart:
    case kResumeTextDisplay:
      mode_ = CaptionMode::Text;
      currentRow_ = nullptr;
      break;
    case kEraseDisplayedMemory:
      changed_ = true;
      displayedMemory_.clear();
      displayedCells_ = 0;
      break;
    case kCarriageReturn:
      carriageReturn();
      break;
    case kEraseNonDisplayedMemory:
      workingMemory_.clear();
      workingCells_ = 0;
      currentRow_ = nullptr;
      break;
    case kEndOfCaption:
      changed_ = true;
      displayedMemory_.swap(workingMemory_);
      std::swap(displayedCells_, workingCells_);
      currentRow_ = nullptr;
      break;
    default:  // AOF, AON, DER and FON have no effect
      break;
  }
}

void CaptionDecoder::carriageReturn() {
  if (!isRollUp(mode_)) return;
  rollUp(workingMemory_, mode_);
  displayedMemory_ = workingMemory_;
  workingCells_ = displayedCells_ = 0;
  currentRow_ = &rowAt(workingMemory_, kBottomRow, mode_);
  currentRow_->runs.emplace_back();
  currentRow_->mode = mode_;
  changed_ = true;
}

// Opens a run on a row, which keeps what it holds (CEA-608 clears it), deliberately.
void CaptionDecoder::executePreambleAddress(BytePair pair) {
  if (mode_ == CaptionMode::None || mode_ == CaptionMode::Text || !takeCell()) return;
  const PreambleAddress address = preambleAddress(pair);
  currentRow_ = &rowAt(workingMemory_, isRollUp(mode_) ? kBottomRow : address.row, mode_);

  TextRun& run = currentRow_->runs.emplace_back();
  run.column = address.column;
  run.foreground = address.foreground;
  run.italic = address.italic;
  run.underline = address.underline;
}

void CaptionDecoder::executeBackgroundAttribute(std::uint8_t b2) {
  if (b2 > 0x2F) return;
  TextRun style = styleOf(currentRow_->runs.back());
  style.background = colourOf(b2);
  style.backgroundOpacity = isOdd(b2) ? CaptionOpacity::SemiTransparent : CaptionOpacity::Opaque;
  changeStyle(style);
}

// Underline and italics stay on until the next run of another row, deliberately.
void CaptionDecoder::executeMidRowOrSpecialCharacter(std::uint8_t b2) {
  if (b2 >= 0x30) return append(specialCharacter(b2));
  TextRun style = styleOf(currentRow_->runs.back());
  if (b2 < 0x2E) {
    style.foreground = colourOf(b2);
  } else {
    style.italic = true;
  }
  if (isOdd(b2)) style.underline = true;
  changeStyle(style);
}

void CaptionDecoder::executeTabOffsetOrAttribute(std::uint8_t b2) {
  TextRun style = styleOf(currentRow_->runs.back());
  switch (b2) {
    case kTabOffset1:
    case kTabOffset2:
    case kTabOffset3:
      style.column += b2 - 0x20u;
      break;
    case kNormalSize:
    case kDoubleSize:
      style.doubleSize = b2 == kDoubleSize ? 1 : 0;
      break;
    case kBackgroundTransparent:
      style.backgroundOpacity = CaptionOpacity::Transparent;
      break;
    case kForegroundBlackUnderline:
      style.underline = true;
      [[fallthrough]];
    case kForegroundBlack:
      style.foreground = CaptionColour::Black;
      break;
    default:
      return;
  }
  changeStyle(style);
}

// Takes back the last character of the row, whichever of its runs holds it.
void CaptionDecoder::backspace() {
  if (!currentRow_) return;
  auto& runs = currentRow_->runs;
  const auto run = std::find_if(runs.rbegin(), runs.rend(),
                                [](const TextRun& candidate) { return !candidate.glyphs.empty(); });
  if (run != runs.rend()) run->glyphs.pop_back();
}

void CaptionDecoder::append(GlyphText glyph) {
  constexpr std::size_t kColumns = 32;
  if (!takeCell()) return;
  auto& glyphs = currentRow_->runs.back().glyphs;
  if (glyphs.empty()) glyphs.reserve(kColumns);
  glyphs.push_back(glyph);
}

// Counts one more character or run. Paint-on captions, say, are written into a memory that they
// never erase; the pen leaves a full one.
bool CaptionDecoder::takeCell() {
  if (isFull()) {
    currentRow_ = nullptr;
    return false;
  }
  ++workingCells_;
  return true;
}

// A new run starts at the column of the run before it: text does not count, deliberately.
void CaptionDecoder::changeStyle(const TextRun& style) {
  TextRun& last = currentRow_->runs.back();
  if (haveEqualStyles(style, last)) return;
  if (last.glyphs.empty()) {
    last = style;
  } else if (takeCell()) {
    currentRow_->runs.push_back(style);
  }
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
