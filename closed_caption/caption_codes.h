// SPDX-License-Identifier: MIT

// The control codes by their names in CEA-608, in the form of data channel 1 and field 1.
#pragma once

#include <cstdint>

#include "closed_caption/cc_data.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// First byte of a control pair (CEA-608, 8.4 and annex B).
enum ControlGroup : std::uint8_t {
  kBackgroundAttributes = 0x10,
  kMidRowAndSpecialCharacters = 0x11,
  kExtendedSpanishFrench = 0x12,
  kExtendedPortugueseGermanDanish = 0x13,
  kMiscellaneous = 0x14,
  kMiscellaneousField2 = 0x15,
  kTabOffsetsAndAttributes = 0x17,
};

/// Second byte of a miscellaneous control code.
enum MiscellaneousCode : std::uint8_t {
  kResumeCaptionLoading = 0x20,     // RCL
  kBackspace = 0x21,                // BS
  kDeleteToEndOfRow = 0x24,         // DER
  kRollUp2 = 0x25,                  // RU2
  kRollUp3 = 0x26,                  // RU3
  kRollUp4 = 0x27,                  // RU4
  kFlashOn = 0x28,                  // FON
  kResumeDirectCaptioning = 0x29,   // RDC
  kTextRestart = 0x2A,              // TR
  kResumeTextDisplay = 0x2B,        // RTD
  kEraseDisplayedMemory = 0x2C,     // EDM
  kCarriageReturn = 0x2D,           // CR
  kEraseNonDisplayedMemory = 0x2E,  // ENM
  kEndOfCaption = 0x2F,             // EOC
};

/// Second byte after kTabOffsetsAndAttributes.
enum AttributeCode : std::uint8_t {
  kTabOffset1 = 0x21,  // TO1
  kTabOffset2 = 0x22,  // TO2
  kTabOffset3 = 0x23,  // TO3
  kNormalSize = 0x24,
  kDoubleSize = 0x25,
  kBackgroundTransparent = 0x2D,     // BT
  kForegroundBlack = 0x2E,           // FA
  kForegroundBlackUnderline = 0x2F,  // FAU
};

/// From here on the second byte makes the pair a preamble address code.
inline constexpr std::uint8_t kPreambleAddressCode = 0x40;

/// The colour that a background attribute, mid-row or preamble code names: all three count up in
/// steps of two from white.
CaptionColour colourOf(std::uint8_t code);

/// Whether the last bit is set: underline, or a semi-transparent background.
inline bool isOdd(std::uint8_t code) {
  return (code & 1) != 0;
}

/// What a preamble address code says (CEA-608, table 53).
struct PreambleAddress {
  std::int32_t row = 0;      ///< 1 to 15
  std::uint32_t column = 0;  ///< 0 to 28
  CaptionColour foreground = CaptionColour::White;
  bool italic = false;
  bool underline = false;
};

/// `pair`: a preamble address code, 0x10 to 0x17 and 0x40 to 0x7F.
PreambleAddress preambleAddress(BytePair pair);

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
