// SPDX-License-Identifier: MIT

// PES packets and what their payloads show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "readers/video/video_syntax.h"

namespace korr::txsub {

/// The header of a PES packet (ISO/IEC 13818-1, 2.4.3.7).
struct PesHeader {
  std::uint8_t streamId = 0;
  std::size_t size = 0;                ///< bytes up to the payload
  std::optional<std::uint64_t> pts{};  ///< 33 bits at 90 kHz
};

/// How many bytes `parsePesHeader` needs, as far as the first bytes of the packet tell.
std::size_t pesHeaderSize(std::span<const std::uint8_t> packet);

/// Nothing when these bytes begin no PES packet, one without payload, or have not all come yet.
[[nodiscard]] std::optional<PesHeader> parsePesHeader(std::span<const std::uint8_t> packet);

constexpr bool isVideoStreamId(std::uint8_t id) {
  return id >= 0xE0 && id <= 0xEF;
}
constexpr bool isAudioStreamId(std::uint8_t id) {
  return id >= 0xC0 && id <= 0xDF;
}
inline constexpr std::uint8_t kPrivateStream1 = 0xBD;

/// Whether the payload of a PES packet is a teletext data field (EN 300 472, 4.3).
bool looksLikeTeletext(std::span<const std::uint8_t> payload);

/// Whether the payload of a PES packet is a DVB subtitle data field (EN 300 743, 7.1).
bool looksLikeDvbSubtitle(std::span<const std::uint8_t> payload);

/// The codec whose headers begin this payload of a video stream.
std::optional<VideoCodec> videoCodecOf(std::span<const std::uint8_t> payload);

/// Joins the payloads of one PID to one PES packet at a time, of at most 64 kB.
class PesAssembler {
 public:
  /// A packet begins.
  void begin();

  void append(std::span<const std::uint8_t> bytes);

  /// Stands in for bytes that are missing, but not beyond the end of the packet.
  void appendStuffing(std::size_t count);

  /// The packet comes to nothing, or has been used.
  void end() { isOpen_ = false; }

  bool isOpen() const { return isOpen_; }

  /// Whether all that PES_packet_length announces has come; never, when that is 0.
  bool isComplete() const { return announcedSize_ != 0 && bytes_.size() >= announcedSize_; }

  /// Bytes that are to come; 0 where PES_packet_length is 0.
  std::size_t missing() const;

  std::span<const std::uint8_t> bytes() const { return bytes_; }

 private:
  void readLength();

  std::vector<std::uint8_t> bytes_;
  std::size_t announcedSize_ = 0;  // of the whole packet; 0 while it is not known
  bool isOpen_ = false;
};

}  // namespace korr::txsub
