// SPDX-License-Identifier: MIT

// Digital captions (CEA-708), written the way a caption author thinks of them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace korr::encoders {

/// The parameters of DefineWindow (CEA-708-E, 8.10.5.2); rows and columns as they are counted.
struct DtvccWindow {
  bool visible = true;
  bool rowLock = true;
  bool columnLock = true;
  unsigned priority = 0;
  bool relative = false;
  unsigned vertical = 0;
  unsigned horizontal = 0;
  unsigned anchor = 0;
  unsigned rows = 1;
  unsigned columns = 42;
  unsigned windowStyle = 0;
  unsigned penStyle = 0;
};

/// The parameters of SetWindowAttributes (8.10.5.8).
struct DtvccWindowAttributes {
  unsigned fillOpacity = 0;
  unsigned fill = 0;  ///< rrggbb, two bits each
  unsigned border = 0;
  unsigned borderColour = 0;
  bool wordWrap = false;
  unsigned print = 0;
  unsigned scroll = 3;
  unsigned justify = 0;
};

/// The parameters of SetPenAttributes (8.10.5.9).
struct DtvccPen {
  unsigned tag = 0;
  unsigned offset = 1;
  unsigned size = 1;
  bool italic = false;
  bool underline = false;
  unsigned edge = 0;
  unsigned font = 0;
};

/// The parameters of SetPenColor (8.10.5.10); colours as rrggbb, two bits each.
struct DtvccPenColour {
  unsigned foreground = 0x3F;
  unsigned foregroundOpacity = 0;
  unsigned background = 0;
  unsigned backgroundOpacity = 0;
  unsigned edge = 0;
};

/// Builds the codes of one service.
class DtvccCodes {
 public:
  DtvccCodes& bytes(std::initializer_list<unsigned> values);

  /// UTF-8 as G0, G1 and G2 have it, else as two-byte characters in UTF-16.
  DtvccCodes& text(std::string_view utf8);

  /// Two-byte characters of EUC-KR; ASCII between them stays one byte.
  DtvccCodes& eucKr(std::string_view bytes);

  DtvccCodes& define(unsigned id, const DtvccWindow& window);
  DtvccCodes& attributes(const DtvccWindowAttributes& attributes);
  DtvccCodes& pen(const DtvccPen& pen);
  DtvccCodes& colour(const DtvccPenColour& colour);
  DtvccCodes& locate(unsigned row, unsigned column) { return bytes({0x92, row, column}); }
  DtvccCodes& select(unsigned id) { return bytes({0x80 + id}); }
  DtvccCodes& clear(unsigned windows) { return bytes({0x88, windows}); }
  DtvccCodes& display(unsigned windows) { return bytes({0x89, windows}); }
  DtvccCodes& hide(unsigned windows) { return bytes({0x8A, windows}); }
  DtvccCodes& toggle(unsigned windows) { return bytes({0x8B, windows}); }
  DtvccCodes& destroy(unsigned windows) { return bytes({0x8C, windows}); }
  DtvccCodes& delay(unsigned tenths) { return bytes({0x8D, tenths}); }
  DtvccCodes& cancelDelay() { return bytes({0x8E}); }
  DtvccCodes& reset() { return bytes({0x8F}); }
  DtvccCodes& backspace() { return bytes({0x08}); }
  DtvccCodes& formFeed() { return bytes({0x0C}); }
  DtvccCodes& carriageReturn() { return bytes({0x0D}); }
  DtvccCodes& horizontalCarriageReturn() { return bytes({0x0E}); }
  DtvccCodes& endOfText() { return bytes({0x03}); }

  const std::vector<std::uint8_t>& codes() const { return codes_; }

 private:
  void character(char32_t character);

  std::vector<std::uint8_t> codes_;
};

/// Wraps codes into service blocks, packets and cc_data triplets, packets numbered in sequence.
class DtvccChannel {
 public:
  static constexpr std::size_t kLargestBlock = 31;        ///< bytes of codes
  static constexpr std::size_t kLargestPacketData = 127;  ///< bytes after the header

  /// Blocks of one service, as many as the codes need, without cutting a packet short.
  DtvccChannel& add(unsigned service, const DtvccCodes& codes);
  DtvccChannel& addBytes(unsigned service, std::span<const std::uint8_t> codes);

  /// Begins a new packet with the next block.
  DtvccChannel& endPacket();

  /// A packet of these data bytes as they are.
  DtvccChannel& packet(std::span<const std::uint8_t> data);

  /// As after a loss.
  DtvccChannel& skipSequenceNumbers(unsigned count);

  /// All packets so far as triplets, three bytes each, leaving the channel empty but for its
  /// sequence number.
  std::vector<std::uint8_t> take();

 private:
  unsigned sequence_ = 0;
  std::vector<std::uint8_t> data_;  // of the packet in the making
  std::vector<std::uint8_t> triplets_;
};

}  // namespace korr::encoders
