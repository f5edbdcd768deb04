// SPDX-License-Identifier: MIT

// Transport streams, packet by packet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace korr::encoders {

using Bytes = std::vector<std::uint8_t>;

/// A PES packet (ISO/IEC 13818-1, 2.4.3.6). Times in ticks of 90 kHz.
struct Pes {
  static constexpr std::uint8_t kVideo = 0xE0;
  static constexpr std::uint8_t kPrivateStream1 = 0xBD;  ///< teletext, DVB subtitles

  std::uint8_t streamId = kVideo;
  std::optional<std::uint64_t> pts{};
  std::optional<std::uint64_t> dts{};
  /// PES_header_data_length at least, the rest stuffed; teletext asks for 0x24 (EN 300 472, 4.2).
  std::size_t headerDataLength = 0;
  /// PES_packet_length 0, as video has it; other streams must have their length.
  bool unbounded = false;
};
Bytes pesPacket(const Pes& pes, std::span<const std::uint8_t> payload);

/// One elementary stream in a PMT.
struct TsStream {
  static constexpr std::uint8_t kMpeg2Video = 0x02;
  static constexpr std::uint8_t kPrivateData = 0x06;
  static constexpr std::uint8_t kH264 = 0x1B;

  std::uint16_t pid = 0;
  std::uint8_t type = kPrivateData;
  Bytes descriptors{};
};

/// One program: its number, its PMT.
struct TsProgram {
  std::uint16_t number = 1;
  std::uint16_t pmtPid = 0x1000;
  std::uint16_t pcrPid = 0x1FFF;  ///< 0x1FFF: none
  std::vector<TsStream> streams{};
};

/// What the header of a section says beside its table.
struct TableVersion {
  TableVersion(unsigned versionNumber = 0) : number(versionNumber) {}

  unsigned number;
  bool isCurrent = true;  ///< current_next_indicator
  unsigned section = 0;
  unsigned lastSection = 0;
};

/// Appends packets of 188 bytes and counts continuity for each PID.
class TsBuilder {
 public:
  static constexpr std::size_t kPacketBytes = 188;

  TsBuilder& pat(std::span<const TsProgram> programs, TableVersion version = {});
  TsBuilder& pmt(const TsProgram& program, TableVersion version = {});
  /// A PAT and the PMT of the only program.
  TsBuilder& tables(const TsProgram& program, TableVersion version = {});
  /// The name of one service in an SDT (EN 300 468, 5.2.3).
  TsBuilder& sdt(std::uint16_t serviceId, std::string_view serviceName);

  /// A PES packet, cut into transport packets, the last of them stuffed. `pcr`, in ticks of 90 kHz,
  /// goes into the first.
  TsBuilder& pes(std::uint16_t pid, std::span<const std::uint8_t> packet,
                 std::optional<std::uint64_t> pcr = {});

  /// A packet with a PCR and no payload.
  TsBuilder& pcr(std::uint16_t pid, std::uint64_t ticks, bool discontinuity = false);

  /// A null packet.
  TsBuilder& nullPacket();

  /// Bytes as they are, to damage a stream.
  TsBuilder& raw(std::span<const std::uint8_t> bytes);

  const Bytes& bytes() const { return bytes_; }
  std::size_t size() const { return bytes_.size(); }

  /// The bytes so far; counting goes on.
  Bytes take();

 private:
  /// A section with its CRC after `body`, behind a pointer_field.
  TsBuilder& section(std::uint16_t pid, std::span<const std::uint8_t> body);

  void packet(std::uint16_t pid, bool unitStart, std::optional<std::uint64_t> pcr,
              std::span<const std::uint8_t>& payload);

  Bytes bytes_;
  std::map<std::uint16_t, unsigned> continuity_;
};

}  // namespace korr::encoders
