// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_pes.h"

#include <bitstream/mpeg/pes.h>

#include <algorithm>

#include "readers/video/start_code.h"

namespace korr::txsub {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLargestPacket = PES_HEADER_SIZE + 0xFFFF;

/// Whether the packets of a stream have the header with flags and time stamps (table 2-21).
bool hasLongHeader(std::uint8_t streamId) {
  switch (streamId) {
    case PES_STREAM_ID_PSM:
    case PES_STREAM_ID_PADDING:
    case PES_STREAM_ID_PRIVATE_2:
    case PES_STREAM_ID_ECM:
    case PES_STREAM_ID_EMM:
    case PES_STREAM_ID_DSMCC:
    case PES_STREAM_ID_H222_1_E:
    case PES_STREAM_ID_PSD:
      return false;
    default:
      return true;
  }
}

std::optional<std::uint64_t> readPts(const std::uint8_t* header) {
  constexpr std::uint8_t kPtsSize = 5;
  const bool isThere = pes_has_pts(header) && pes_get_headerlength(header) >= kPtsSize;
  if (!isThere || !pes_validate_pts(header)) return {};
  return pes_get_pts(header);
}

/// nal_unit_type and what is around it, as the first units of a picture have them.
bool beginsH264(std::uint8_t header) {
  constexpr std::uint8_t kDelimiter = 9;
  constexpr std::uint8_t kSequenceParameterSet = 7;
  const std::uint8_t type = header & 0x1F;
  return header == kDelimiter || (type == kSequenceParameterSet && (header & 0x80) == 0);
}

bool beginsHevc(std::uint8_t first, std::uint8_t second) {
  constexpr std::uint8_t kVideoParameterSet = 32;
  constexpr std::uint8_t kDelimiter = 35;
  const std::uint8_t type = first >> 1;
  return second == 1 && type >= kVideoParameterSet && type <= kDelimiter;
}

bool beginsMpeg2(std::uint8_t startCode) {
  return startCode == 0xB3 || startCode == 0xB8 || startCode == 0x00;
}

}  // namespace

std::size_t pesHeaderSize(Bytes packet) {
  if (packet.size() < PES_HEADER_SIZE_NOPTS) return PES_HEADER_SIZE_NOPTS;
  return PES_HEADER_SIZE_NOPTS + std::size_t{pes_get_headerlength(packet.data())};
}

std::optional<PesHeader> parsePesHeader(Bytes packet) {
  const std::size_t size = pesHeaderSize(packet);
  if (packet.size() < size || !pes_validate(packet.data())) return {};
  const std::uint8_t streamId = pes_get_streamid(packet.data());
  if (!hasLongHeader(streamId) || !pes_validate_header(packet.data())) return {};
  return PesHeader{.streamId = streamId, .size = size, .pts = readPts(packet.data())};
}

bool looksLikeTeletext(Bytes payload) {
  constexpr std::uint8_t kUnitLength = 0x2C;
  return payload.size() >= 3 && payload[0] >= 0x10 && payload[0] <= 0x1F &&
         payload[2] == kUnitLength;
}

bool looksLikeDvbSubtitle(Bytes payload) {
  return payload.size() >= 3 && payload[0] == 0x20 && payload[1] == 0x00 && payload[2] == 0x0F;
}

std::optional<VideoCodec> videoCodecOf(Bytes payload) {
  const std::size_t at = findStartCode(payload, 0) + kStartCodePrefix;
  if (at + 2 > payload.size()) return {};
  if (beginsH264(payload[at])) return VideoCodec::H264;
  if (beginsHevc(payload[at], payload[at + 1])) return VideoCodec::Hevc;
  if (beginsMpeg2(payload[at])) return VideoCodec::Mpeg2;
  return {};
}

void PesAssembler::begin() {
  bytes_.clear();
  announcedSize_ = 0;
  isOpen_ = true;
}

void PesAssembler::append(Bytes bytes) {
  const std::size_t most = announcedSize_ != 0 ? announcedSize_ : kLargestPacket;
  const std::size_t room = most - std::min(most, bytes_.size());
  bytes = bytes.first(std::min(room, bytes.size()));
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  if (announcedSize_ == 0 && bytes_.size() >= PES_HEADER_SIZE) readLength();
}

void PesAssembler::readLength() {
  const std::size_t length = pes_get_length(bytes_.data());
  if (length == 0) return;
  announcedSize_ = PES_HEADER_SIZE + length;
  bytes_.resize(std::min(bytes_.size(), announcedSize_));
}

void PesAssembler::appendStuffing(std::size_t count) {
  constexpr std::uint8_t kStuffing = 0xFF;
  bytes_.resize(bytes_.size() + std::min(count, missing()), kStuffing);
}

std::size_t PesAssembler::missing() const {
  return announcedSize_ - std::min(announcedSize_, bytes_.size());
}

}  // namespace korr::txsub
