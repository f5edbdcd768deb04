// SPDX-License-Identifier: MIT
#include "dtvcc/packet_assembler.h"

#include <utility>

namespace korr::encoding::subtitling::dtvcc {
namespace {

constexpr std::uint8_t kPacketStart = 0x01;  // in cc_type, beside the bit of DTVCC
constexpr unsigned kSequenceNumbers = 4;

// CEA-708-E, 5: packet_size_code counts pairs of bytes, 0 stands for 64 of them.
std::size_t sizeOf(std::uint8_t header) {
  const std::size_t code = header & 0x3F;
  return code == 0 ? PacketAssembler::kLargestPacket : 2 * code;
}

}  // namespace

bool PacketAssembler::takeLoss() {
  return std::exchange(hasLost_, false);
}

std::optional<std::span<const std::uint8_t>> PacketAssembler::takePair(
    std::span<const std::uint8_t, 3> triplet, MediaTime time) {
  if ((triplet[0] & kPacketStart) != 0) {
    start(triplet[1], time);
  } else if (size_ == 0) {
    return {};  // fill, or the rest of a packet whose start was lost
  }
  packet_[size_++] = triplet[1];
  packet_[size_++] = triplet[2];
  if (size_ < announced_) return {};
  size_ = 0;
  isLosing_ = false;
  return std::span<const std::uint8_t>(packet_).first(announced_).subspan(1);
}

void PacketAssembler::start(std::uint8_t header, MediaTime time) {
  const unsigned sequence = header >> 6;
  if (size_ != 0) {
    lose("a packet ends before its size", time);
  } else if (lastSequence_ && sequence != (*lastSequence_ + 1) % kSequenceNumbers) {
    lose("packets are missing", time);
  }
  lastSequence_ = sequence;
  announced_ = sizeOf(header);
  size_ = 0;
}

void PacketAssembler::lose(const char* what, MediaTime time) {
  hasLost_ = true;
  if (std::exchange(isLosing_, true)) return;
  log::write(logger_, log::Level::Warning,
             "digital captions at %.3f s: %s; their text is lost, the windows stay",
             static_cast<double>(time) / kSecond, what);
}

}  // namespace korr::encoding::subtitling::dtvcc
