// SPDX-License-Identifier: MIT

// One transport packet, and the order of those of one PID.
#pragma once

#include <bitstream/mpeg/ts.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace korr::txsub {

/// Looks at one packet of 188 bytes (ISO/IEC 13818-1, 2.4.3.2); owns nothing.
class TsPacket {
 public:
  explicit TsPacket(const std::uint8_t* bytes) : bytes_(bytes) {}

  std::uint16_t pid() const { return ts_get_pid(bytes_); }
  bool hasUnitStart() const { return ts_get_unitstart(bytes_); }
  bool isDamaged() const { return ts_get_transporterror(bytes_); }
  bool isScrambled() const { return ts_get_scrambling(bytes_) != 0; }
  bool hasPayload() const { return ts_has_payload(bytes_); }
  std::uint8_t continuity() const { return ts_get_cc(bytes_); }

  /// The first and the last bytes after the header: enough to tell a packet from its neighbours.
  std::uint64_t fingerprint() const {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::memcpy(&first, bytes_ + TS_HEADER_SIZE, sizeof first);
    std::memcpy(&last, bytes_ + TS_SIZE - sizeof last, sizeof last);
    return first * 31 + last;
  }

  bool hasDiscontinuity() const { return adaptationLength() > 0 && tsaf_has_discontinuity(bytes_); }
  bool hasRandomAccess() const { return adaptationLength() > 0 && tsaf_has_randomaccess(bytes_); }
  /// 33 bits at 90 kHz.
  std::optional<std::uint64_t> pcr() const {
    constexpr std::size_t kFlagsAndPcr = 7;
    if (adaptationLength() < kFlagsAndPcr || !tsaf_has_pcr(bytes_)) return {};
    return tsaf_get_pcr(bytes_);
  }

  /// Empty when there is none, or when the adaptation field claims more than there is.
  std::span<const std::uint8_t> payload() const {
    if (!hasPayload()) return {};
    const std::size_t begin =
        TS_HEADER_SIZE + (ts_has_adaptation(bytes_) ? 1U + ts_get_adaptation(bytes_) : 0U);
    if (begin >= TS_SIZE) return {};
    return {bytes_ + begin, TS_SIZE - begin};
  }

 private:
  std::size_t adaptationLength() const {
    return ts_has_adaptation(bytes_) ? ts_get_adaptation(bytes_) : 0;
  }

  const std::uint8_t* bytes_;
};

/// Counts the packets of one PID (ISO/IEC 13818-1, 2.4.3.3, continuity_counter). Packets that are
/// not alike under one number are no duplicates: their multiplexer does not count.
class TsContinuity {
 public:
  struct Step {
    unsigned lost = 0;         ///< packets missing before this one, modulo 16
    bool isDuplicate = false;  ///< has been seen
  };

  Step next(const TsPacket& packet) {
    if (!packet.hasPayload()) return {};
    const std::uint8_t count = packet.continuity();
    const std::uint64_t fingerprint = packet.fingerprint();
    Step step;
    if (last_ && !packet.hasDiscontinuity()) {
      step.isDuplicate = count == *last_ && fingerprint == fingerprint_;
      if (count != *last_) step.lost = (count - *last_ - 1U) % 16;
    }
    last_ = count;
    fingerprint_ = fingerprint;
    return step;
  }

 private:
  std::optional<std::uint8_t> last_;
  std::uint64_t fingerprint_ = 0;
};

}  // namespace korr::txsub
