// SPDX-License-Identifier: MIT

// The tables that tell what a transport stream holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "readers/mpegts/ts_packet.h"
#include "readers/mpegts/ts_report.h"

namespace korr::txsub {

/// One elementary stream of a program, as the PMT describes it.
struct TsStreamEntry {
  std::uint16_t pid = 0;
  std::uint8_t streamType = 0;
  std::vector<std::uint8_t> descriptors;  ///< tag, length, body; one after the other

  friend bool operator==(const TsStreamEntry&, const TsStreamEntry&) = default;
};

/// A program map section (ISO/IEC 13818-1, 2.4.4.8).
struct TsProgramMap {
  std::uint16_t program = 0;
  std::uint16_t pcrPid = 0x1FFF;  ///< 0x1FFF: no PCR
  std::vector<TsStreamEntry> streams;

  friend bool operator==(const TsProgramMap&, const TsProgramMap&) = default;
};

/// Joins the payloads of one PID to sections (ISO/IEC 13818-1, 2.4.4).
class TsSectionAssembler {
 public:
  /// Calls `onSection(std::vector<std::uint8_t>& section)` for each section that ends in this
  /// payload.
  template <class OnSection>
  void take(std::span<const std::uint8_t> payload, bool unitStart, OnSection&& onSection) {
    if (unitStart) {
      if (payload.empty()) return;
      const std::size_t pointer = std::min<std::size_t>(payload[0], payload.size() - 1);
      if (inSection_) append(payload.subspan(1, pointer));
      if (isComplete()) onSection(section_);
      begin();
      payload = payload.subspan(1 + pointer);
    }
    while (inSection_ && !payload.empty() && !isStuffing(payload)) {
      payload = append(payload);
      if (!isComplete()) continue;
      onSection(section_);
      begin();
    }
  }

  /// Packets are missing: the section that they tore is dropped.
  void drop() { inSection_ = false; }

 private:
  void begin();
  bool isStuffing(std::span<const std::uint8_t> payload) const;
  bool isComplete() const;
  std::span<const std::uint8_t> append(std::span<const std::uint8_t> payload);

  std::vector<std::uint8_t> section_;
  bool inSection_ = false;
};

/// Follows the PAT, the PMTs that it names, and the SDT. Sections with a wrong CRC, and those that
/// are not valid yet, count for nothing.
class TsTables {
 public:
  explicit TsTables(TsReport& report);

  /// Whether packets of this PID carry tables.
  bool wants(std::uint16_t pid) const { return assemblers_.contains(pid); }

  /// One packet of a PID that is wanted. True when the tables have changed.
  bool take(const TsPacket& packet);

  /// Programs by their number, as far as their maps have come.
  const std::map<std::uint16_t, TsProgramMap>& programs() const { return maps_; }

  /// Whether there is a PAT, and the maps of all its programs.
  bool areComplete() const;

  /// The name of a program in the SDT (EN 300 468, 5.2.3), UTF-8; empty when there is none.
  std::string serviceName(std::uint16_t program) const;

  /// The PIDs of the PAT, the SDT and the maps.
  std::vector<std::uint16_t> pids() const;

 private:
  struct Assembler {
    TsSectionAssembler sections{};
    TsContinuity continuity{};
    bool isDamageReported = false;
  };

  bool takeSection(std::uint16_t pid, std::vector<std::uint8_t>& section);
  bool takePat(std::vector<std::uint8_t>& section);
  bool takePmt(std::uint16_t pid, std::vector<std::uint8_t>& section);
  bool takeSdt(std::vector<std::uint8_t>& section);
  bool updatePrograms();

  TsReport& report_;
  std::map<std::uint16_t, Assembler> assemblers_;                       // by PID
  std::map<std::uint8_t, std::map<std::uint16_t, std::uint16_t>> pat_;  // by section: map PIDs
  std::map<std::uint16_t, std::uint16_t> mapPids_;                      // by program
  std::map<std::uint16_t, TsProgramMap> maps_;                          // by program
  std::map<std::uint16_t, std::string> names_;                          // by program
};

}  // namespace korr::txsub
