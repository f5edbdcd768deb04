// SPDX-License-Identifier: MIT
#include "testkit/encoders/ts_builder.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "testkit/encoders/bit_writer.h"

namespace korr::encoders {
namespace {

constexpr std::size_t kHeaderBytes = 4;
constexpr std::uint8_t kSyncByte = 0x47;
constexpr std::uint8_t kStuffing = 0xFF;

void add(Bytes& bytes, std::span<const std::uint8_t> more) {
  std::ranges::copy(more, std::back_inserter(bytes));
}

/// A PTS or DTS between its marker bits.
void putTime(BitWriter& bits, unsigned prefix, std::uint64_t ticks) {
  bits.put(prefix, 4).put(ticks >> 30 & 0x7, 3).put(1, 1);
  bits.put(ticks >> 15 & 0x7FFF, 15).put(1, 1).put(ticks & 0x7FFF, 15).put(1, 1);
}

Bytes pesTimes(const Pes& pes) {
  BitWriter bits;
  if (pes.pts) putTime(bits, pes.dts ? 0b0011 : 0b0010, *pes.pts);
  if (pes.pts && pes.dts) putTime(bits, 0b0001, *pes.dts);
  return bits.bytes();
}

/// An adaptation field of exactly `size` bytes, its length byte included.
Bytes adaptationField(std::size_t size, std::optional<std::uint64_t> pcr, bool discontinuity) {
  if (size == 0) return {};
  Bytes field{static_cast<std::uint8_t>(size - 1)};
  if (size > 1) {
    field.push_back(static_cast<std::uint8_t>((discontinuity ? 0x80 : 0) | (pcr ? 0x10 : 0)));
  }
  if (pcr) add(field, BitWriter{}.put(*pcr, 33).put(0x3F, 6).put(0, 9).bytes());
  field.resize(size, kStuffing);
  return field;
}

/// CRC_32 of sections (ISO/IEC 13818-1, annex A).
std::uint32_t crc32(std::span<const std::uint8_t> bytes) {
  std::uint32_t crc = 0xFFFF'FFFF;
  for (const std::uint8_t byte : bytes) {
    crc ^= static_cast<std::uint32_t>(byte) << 24;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ (crc >> 31 ? 0x04C1'1DB7U : 0U);
  }
  return crc;
}

/// The least an adaptation field with a PCR takes.
constexpr std::size_t kPcrField = 8;

/// A section's header around `body`, which begins behind last_section_number.
Bytes longSection(std::uint8_t tableId, std::uint16_t extension, TableVersion version,
                  std::span<const std::uint8_t> body) {
  BitWriter bits;
  bits.put(tableId, 8).put(0b1011, 4).put(body.size() + 9, 12).put(extension, 16);
  bits.put(0b11, 2).put(version.number, 5).put(version.isCurrent, 1);
  bits.put(version.section, 8).put(version.lastSection, 8);
  Bytes bytes = bits.bytes();
  add(bytes, body);
  return bytes;
}

}  // namespace

Bytes pesPacket(const Pes& pes, std::span<const std::uint8_t> payload) {
  Bytes times = pesTimes(pes);
  const unsigned flags = (pes.pts ? 0x80 : 0) | (pes.pts && pes.dts ? 0x40 : 0);
  times.resize(std::max(times.size(), pes.headerDataLength), kStuffing);
  const std::size_t length = pes.unbounded ? 0 : times.size() + 3 + payload.size();

  BitWriter bits;
  bits.put(1, 24).put(pes.streamId, 8).put(length, 16);
  bits.put(0x84, 8).put(flags, 8).put(times.size(), 8);  // data_alignment_indicator set
  Bytes packet = bits.bytes();
  add(packet, times);
  packet.insert(packet.end(), payload.begin(), payload.end());
  return packet;
}

TsBuilder& TsBuilder::pat(std::span<const TsProgram> programs, TableVersion version) {
  BitWriter body;
  for (const TsProgram& program : programs) {
    body.put(program.number, 16).put(0b111, 3).put(program.pmtPid, 13);
  }
  return section(0x0000, longSection(0x00, 1, version, body.bytes()));
}

TsBuilder& TsBuilder::pmt(const TsProgram& program, TableVersion version) {
  BitWriter head;
  head.put(0b111, 3).put(program.pcrPid, 13).put(0b1111, 4).put(0, 12);
  Bytes body = head.bytes();
  for (const TsStream& stream : program.streams) {
    BitWriter entry;
    entry.put(stream.type, 8).put(0b111, 3).put(stream.pid, 13);
    entry.put(0b1111, 4).put(stream.descriptors.size(), 12);
    add(body, entry.bytes());
    add(body, stream.descriptors);
  }
  return section(program.pmtPid, longSection(0x02, program.number, version, body));
}

TsBuilder& TsBuilder::tables(const TsProgram& program, TableVersion version) {
  return pat({&program, 1}, version).pmt(program, version);
}

TsBuilder& TsBuilder::sdt(std::uint16_t serviceId, std::string_view serviceName) {
  constexpr std::uint16_t kSdtPid = 0x0011;
  constexpr std::uint8_t kServiceDescriptor = 0x48;
  const std::size_t descriptorLength = serviceName.size() + 3;
  BitWriter bits;
  bits.put(1, 16).put(0xFF, 8);  // original_network_id
  bits.put(serviceId, 16).put(0b1111'1100, 8).put(0b100'0, 4).put(descriptorLength + 2, 12);
  bits.put(kServiceDescriptor, 8).put(descriptorLength, 8).put(0x01, 8);  // digital television
  bits.put(0, 8).put(serviceName.size(), 8);                              // no provider
  Bytes body = bits.bytes();
  body.insert(body.end(), serviceName.begin(), serviceName.end());
  return section(kSdtPid, longSection(0x42, 1, 0, body));
}

TsBuilder& TsBuilder::section(std::uint16_t pid, std::span<const std::uint8_t> body) {
  Bytes bytes{0};  // pointer_field
  add(bytes, body);
  add(bytes, BitWriter{}.put(crc32(body), 32).bytes());
  // Sections are filled up with 0xFF rather than with an adaptation field.
  constexpr std::size_t kPayload = kPacketBytes - kHeaderBytes;
  bytes.resize((bytes.size() + kPayload - 1) / kPayload * kPayload, kStuffing);
  std::span<const std::uint8_t> rest = bytes;
  for (bool first = true; !rest.empty(); first = false) packet(pid, first, {}, rest);
  return *this;
}

TsBuilder& TsBuilder::pes(std::uint16_t pid, std::span<const std::uint8_t> packetBytes,
                          std::optional<std::uint64_t> pcr) {
  bool first = true;
  while (!packetBytes.empty()) {
    packet(pid, first, first ? pcr : std::nullopt, packetBytes);
    first = false;
  }
  return *this;
}

void TsBuilder::packet(std::uint16_t pid, bool unitStart, std::optional<std::uint64_t> pcr,
                       std::span<const std::uint8_t>& payload) {
  const std::size_t room = kPacketBytes - kHeaderBytes - (pcr ? kPcrField : 0);
  const auto carried = payload.first(std::min(room, payload.size()));
  payload = payload.subspan(carried.size());
  const Bytes field = adaptationField(kPacketBytes - kHeaderBytes - carried.size(), pcr, false);
  BitWriter header;
  header.put(kSyncByte, 8).put(0, 1).put(unitStart, 1).put(0, 1).put(pid, 13);
  header.put(0, 2).put(!field.empty(), 1).put(1, 1).put(continuity_[pid]++ % 16, 4);
  raw(header.bytes()).raw(field).raw(carried);
}

TsBuilder& TsBuilder::pcr(std::uint16_t pid, std::uint64_t ticks, bool discontinuity) {
  BitWriter header;
  header.put(kSyncByte, 8).put(0, 3).put(pid, 13);
  header.put(0b00'10, 4).put((continuity_[pid] + 15) % 16, 4);  // counts payloads only
  return raw(header.bytes())
      .raw(adaptationField(kPacketBytes - kHeaderBytes, ticks, discontinuity));
}

TsBuilder& TsBuilder::nullPacket() {
  Bytes bytes{kSyncByte, 0x1F, 0xFF, 0x10};
  bytes.resize(kPacketBytes, kStuffing);
  return raw(bytes);
}

TsBuilder& TsBuilder::raw(std::span<const std::uint8_t> bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Bytes TsBuilder::take() {
  return std::exchange(bytes_, {});
}

}  // namespace korr::encoders
