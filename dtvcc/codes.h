// SPDX-License-Identifier: MIT

// The codes of a service by their names in CEA-708, and how long they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace korr::encoding::subtitling::dtvcc {

/// C0 (CEA-708-E, 7.1.4).
enum C0Code : std::uint8_t {
  kNul = 0x00,
  kEndOfText = 0x03,                 // ETX
  kBackspace = 0x08,                 // BS
  kFormFeed = 0x0C,                  // FF
  kCarriageReturn = 0x0D,            // CR
  kHorizontalCarriageReturn = 0x0E,  // HCR
  kExtend = 0x10,                    // EXT1
  kTwoByteCharacter = 0x18,          // P16
};

/// C1 (CEA-708-E, 7.1.5 and 8.10.5).
enum C1Code : std::uint8_t {
  kSetCurrentWindow = 0x80,     // CW0 to CW7
  kClearWindows = 0x88,         // CLW
  kDisplayWindows = 0x89,       // DSW
  kHideWindows = 0x8A,          // HDW
  kToggleWindows = 0x8B,        // TGW
  kDeleteWindows = 0x8C,        // DLW
  kDelay = 0x8D,                // DLY
  kDelayCancel = 0x8E,          // DLC
  kReset = 0x8F,                // RST
  kSetPenAttributes = 0x90,     // SPA
  kSetPenColour = 0x91,         // SPC
  kSetPenLocation = 0x92,       // SPL
  kSetWindowAttributes = 0x97,  // SWA
  kDefineWindow = 0x98,         // DF0 to DF7
};

/// Bytes that the code at the front of `data` takes with all that belongs to it, so that codes
/// which nobody knows yet are passed over as a whole (CEA-708-E, 7.1); more than `data` has when
/// its end is still to come. `data` is not empty.
std::size_t codeLength(std::span<const std::uint8_t> data);

/// The longest code: a variable one of C3.
inline constexpr std::size_t kLongestCode = 3 + 0x1F;

}  // namespace korr::encoding::subtitling::dtvcc
