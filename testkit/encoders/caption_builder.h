// SPDX-License-Identifier: MIT

// Line-21 byte pairs as cc_data triplets, written the way a caption author thinks of them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace korr::encoders {

/// Builds the triplets of one field, every byte with its parity bit. Codes are given in the form of
/// data channel 1 and field 1 and moved to the builder's.
class CaptionBuilder {
 public:
  explicit CaptionBuilder(int field = 1, int channel = 1) : field_(field), channel_(channel) {}

  /// One pair as it stands.
  CaptionBuilder& pair(std::uint8_t b1, std::uint8_t b2);

  /// One control code, in the channel's form. Sent once; a caller who wants the customary two says
  /// so by `twice`.
  CaptionBuilder& control(std::uint8_t b1, std::uint8_t b2);

  /// The last pair again.
  CaptionBuilder& twice();

  /// Basic characters, two a pair, the last one padded with 0x00.
  CaptionBuilder& text(std::string_view ascii);

  CaptionBuilder& resumeCaptionLoading() { return control(0x14, 0x20); }
  CaptionBuilder& resumeDirectCaptioning() { return control(0x14, 0x29); }
  /// `rows` 2 to 4.
  CaptionBuilder& rollUp(int rows) { return control(0x14, static_cast<std::uint8_t>(0x23 + rows)); }
  CaptionBuilder& carriageReturn() { return control(0x14, 0x2D); }
  CaptionBuilder& eraseDisplayedMemory() { return control(0x14, 0x2C); }
  CaptionBuilder& eraseNonDisplayedMemory() { return control(0x14, 0x2E); }
  CaptionBuilder& endOfCaption() { return control(0x14, 0x2F); }
  CaptionBuilder& backspace() { return control(0x14, 0x21); }

  /// A preamble address code: row 1 to 15, `attribute` as in bits 0 to 4 of its second byte (0x10
  /// is white without indent).
  CaptionBuilder& preamble(int row, std::uint8_t attribute = 0x10);

  /// Three bytes a pair.
  const std::vector<std::uint8_t>& triplets() const { return triplets_; }

  /// The triplets so far, leaving the builder empty.
  std::vector<std::uint8_t> take();

 private:
  int field_;
  int channel_;
  std::vector<std::uint8_t> triplets_;
};

}  // namespace korr::encoders
