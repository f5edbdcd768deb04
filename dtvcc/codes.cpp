// SPDX-License-Identifier: MIT
#include "dtvcc/codes.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

// C1: CEA-708-E, 8.10.5; 0x93 to 0x96 are reserved and of one byte (7.1.5).
std::size_t c1Length(std::uint8_t code) {
  if (code >= kDefineWindow) return 7;
  switch (code) {
    case kClearWindows:
    case kDisplayWindows:
    case kHideWindows:
    case kToggleWindows:
    case kDeleteWindows:
    case kDelay:
      return 2;
    case kSetPenAttributes:
    case kSetPenLocation:
      return 3;
    case kSetPenColour:
      return 4;
    case kSetWindowAttributes:
      return 5;
    default:
      return 1;
  }
}

// What follows EXT1: G2 and G3 characters, C2 (7.1.10) by eights, C3 (7.1.11) of fixed and of
// variable length.
std::size_t extendedLength(std::span<const std::uint8_t> data) {
  if (data.empty()) return 1;
  const std::uint8_t code = data[0];
  if (code < 0x20) return 1u + code / 8u;
  if (code < 0x80 || code >= 0xA0) return 1;
  if (code < 0x88) return 5;
  if (code < 0x90) return 6;
  return data.size() < 2 ? 2 : 2u + (data[1] & 0x1Fu);
}

}  // namespace

std::size_t codeLength(std::span<const std::uint8_t> data) {
  const std::uint8_t code = data[0];
  if (code == kExtend) return 1 + extendedLength(data.subspan(1));
  if (code < 0x10) return 1;
  if (code < 0x18) return 2;
  if (code < 0x20) return 3;
  return code < 0x80 || code >= 0xA0 ? 1 : c1Length(code);
}

}  // namespace korr::encoding::subtitling::dtvcc
