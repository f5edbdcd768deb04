// The control codes by their names in CEA-608, in the form of data channel 1 and field 1.
#pragma once

#include <cstdint>

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
  kRollUp2 = 0x25,                  // RU2
  kRollUp3 = 0x26,                  // RU3
  kRollUp4 = 0x27,                  // RU4
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

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
