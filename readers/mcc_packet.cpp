// SPDX-License-Identifier: MIT
#include "readers/mcc_packet.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "readers/video/caption_user_data.h"

namespace korr::txsub {
namespace {

using Bytes = std::span<const std::uint8_t>;

// DID and SDID (SMPTE ST 334-1, 5 and 6).
constexpr std::uint8_t kCaptionsDid = 0x61;
constexpr std::uint8_t kDistributionPacketSdid = 0x01;
constexpr std::uint8_t kLine21Sdid = 0x02;
constexpr std::size_t kPacketHeader = 3;  // DID, SDID, data count

// Sections of a caption distribution packet (SMPTE ST 334-2, 5).
constexpr std::uint8_t kTimeCodeSection = 0x71;
constexpr std::uint8_t kCcDataSection = 0x72;
constexpr std::uint8_t kServiceInfoSection = 0x73;
constexpr std::uint8_t kFooterSection = 0x74;

// cdp_frame_rate (SMPTE ST 334-2, table 3), from 1 on.
constexpr std::array<util::TimeCodeRate, 8> kRates = {{
    {24000, 1001, 24, false},
    {24, 1, 24, false},
    {25, 1, 25, false},
    {30000, 1001, 30, false},
    {30, 1, 30, false},
    {50, 1, 50, false},
    {60000, 1001, 60, false},
    {60, 1, 60, false},
}};

constexpr auto kFill = [] {
  std::array<std::uint8_t, 27> fill{};
  for (std::size_t i = 0; i < fill.size(); i += 3) fill[i] = 0xFA;
  return fill;
}();
constexpr std::array<std::uint8_t, 3> kP = {0xFB, 0x80, 0x80};
constexpr std::array<std::uint8_t, 3> kQ = {0xFC, 0x80, 0x80};
constexpr std::array<std::uint8_t, 3> kR = {0xFD, 0x80, 0x80};
constexpr std::array<std::uint8_t, 2> kS = {0x96, 0x69};
constexpr std::array<std::uint8_t, 2> kT = {0x61, 0x01};
constexpr std::array<std::uint8_t, 4> kU = {0xE1, 0x00, 0x00, 0x00};
constexpr std::array<std::uint8_t, 1> kZ = {0x00};

std::uint8_t sumOf(Bytes bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

std::optional<std::uint8_t> digit(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
  return {};
}

// The bytes of a section with its id and of all that it says it holds; nothing for unknown ids
// below those that carry their length.
std::optional<std::size_t> sectionLength(Bytes section) {
  constexpr std::size_t kServiceInfo = 7;  // bytes a service
  if (section.size() < 2) return {};
  switch (section[0]) {
    case kTimeCodeSection:
      return 5;
    case kCcDataSection:
      return 2 + kTripletBytes * (section[1] & 0x1Fu);
    case kServiceInfoSection:
      return 2 + kServiceInfo * (section[1] & 0x0Fu);
    default:
      if (section[0] <= kFooterSection || section[0] > 0xEF) return {};
      return 2u + section[1];
  }
}

// SMPTE ST 334-2, 5.
std::optional<AncillaryCaptions> readDistributionPacket(Bytes packet) {
  constexpr std::size_t kHeader = 7;
  if (packet.size() < kHeader || !std::ranges::equal(packet.first(2), kS)) return {};
  const std::size_t length = packet[2];
  if (length < kHeader || length > packet.size()) return {};
  AncillaryCaptions captions;
  const unsigned rate = packet[3] >> 4;
  if (rate >= 1 && rate <= kRates.size()) captions.rate = kRates[rate - 1];
  Bytes rest = packet.subspan(kHeader, length - kHeader);
  while (!rest.empty() && rest[0] != kFooterSection) {
    const auto size = sectionLength(rest);
    if (!size || *size > rest.size()) return {};
    if (rest[0] == kCcDataSection) {
      const Bytes triplets = rest.subspan(2, *size - 2);
      captions.triplets.insert(captions.triplets.end(), triplets.begin(), triplets.end());
    }
    rest = rest.subspan(*size);
  }
  return captions;
}

// SMPTE ST 334-1, 6: the field, and two bytes of its line 21.
std::optional<AncillaryCaptions> readLine21(Bytes data) {
  if (data.size() < 3) return {};
  const bool isField1 = (data[0] & 0x80) != 0;
  const auto header = static_cast<std::uint8_t>(isField1 ? 0xFC : 0xFD);
  return AncillaryCaptions{.triplets = {header, data[1], data[2]}, .rate = {}};
}

unsigned rateCode(const util::TimeCodeRate& rate) {
  for (unsigned i = 0; i < kRates.size(); ++i) {
    if (kRates[i].numerator == rate.numerator && kRates[i].denominator == rate.denominator) {
      return i + 1;
    }
  }
  return 0;
}

}  // namespace

std::span<const std::uint8_t> mccLetter(char letter) {
  if (letter >= 'G' && letter <= 'O') {
    return Bytes(kFill).first(kTripletBytes * static_cast<std::size_t>(letter - 'G' + 1));
  }
  switch (letter) {
    case 'P':
      return kP;
    case 'Q':
      return kQ;
    case 'R':
      return kR;
    case 'S':
      return kS;
    case 'T':
      return kT;
    case 'U':
      return kU;
    case 'Z':
      return kZ;
    default:
      return {};
  }
}

std::optional<std::vector<std::uint8_t>> expandMcc(std::string_view data) {
  std::vector<std::uint8_t> bytes;
  while (!data.empty()) {
    const Bytes letter = mccLetter(data[0]);
    if (!letter.empty()) {
      bytes.insert(bytes.end(), letter.begin(), letter.end());
      data.remove_prefix(1);
      continue;
    }
    if (data.size() < 2) return {};
    const auto high = digit(data[0]);
    const auto low = digit(data[1]);
    if (!high || !low) return {};
    bytes.push_back(static_cast<std::uint8_t>(*high << 4 | *low));
    data.remove_prefix(2);
  }
  return bytes;
}

// U is left out: readers disagree on how many zeros it has.
std::string compressMcc(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kLetters = "ONMLKJIHGPQRSTZ";  // the longest first
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  while (!bytes.empty()) {
    const auto letter = std::ranges::find_if(kLetters, [bytes](char c) {
      const Bytes meaning = mccLetter(c);
      return meaning.size() <= bytes.size() &&
             std::ranges::equal(bytes.first(meaning.size()), meaning);
    });
    if (letter != kLetters.end()) {
      text += *letter;
      bytes = bytes.subspan(mccLetter(*letter).size());
    } else {
      text += kDigits[bytes[0] >> 4];
      text += kDigits[bytes[0] & 0x0F];
      bytes = bytes.subspan(1);
    }
  }
  return text;
}

std::optional<AncillaryCaptions> readAncillaryPacket(std::span<const std::uint8_t> packet) {
  if (packet.size() < kPacketHeader) return {};
  if (packet[0] != kCaptionsDid) return AncillaryCaptions{};
  const Bytes data = packet.subspan(kPacketHeader);
  const std::size_t count = packet[2];
  if (packet[1] == kLine21Sdid) return readLine21(data.first(std::min(count, data.size())));
  if (packet[1] != kDistributionPacketSdid) return AncillaryCaptions{};
  return readDistributionPacket(data);
}

std::vector<std::uint8_t> ancillaryPacket(std::span<const std::uint8_t> triplets,
                                          const util::TimeCodeRate& rate, std::uint16_t sequence) {
  constexpr std::uint8_t kFlags = 0x43;  // ccdata_present, caption_service_active, reserved
  constexpr std::size_t kWithoutTriplets = 13;
  const auto high = static_cast<std::uint8_t>(sequence >> 8);
  const auto low = static_cast<std::uint8_t>(sequence);
  const auto length = static_cast<std::uint8_t>(kWithoutTriplets + triplets.size());
  const auto rateAndReserved = static_cast<std::uint8_t>(rateCode(rate) << 4 | 0x0F);
  const auto count = static_cast<std::uint8_t>(0xE0 | triplets.size() / kTripletBytes);
  std::vector<std::uint8_t> packet;
  packet.reserve(3 + length + 1u);
  packet.insert(packet.end(), {kCaptionsDid, kDistributionPacketSdid, length});
  packet.insert(packet.end(), {kS[0], kS[1], length, rateAndReserved, kFlags, high, low});
  packet.insert(packet.end(), {kCcDataSection, count});
  packet.insert(packet.end(), triplets.begin(), triplets.end());
  packet.insert(packet.end(), {kFooterSection, high, low});
  // packet_checksum makes the sum of the packet 0; that of ancillary data is the sum itself.
  packet.push_back(static_cast<std::uint8_t>(-sumOf(Bytes(packet).subspan(kPacketHeader))));
  packet.push_back(sumOf(packet));
  return packet;
}

}  // namespace korr::txsub
