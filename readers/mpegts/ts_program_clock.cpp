// SPDX-License-Identifier: MIT

#include "readers/mpegts/ts_program_clock.h"

#include <algorithm>

#include "readers/mpegts/ts_stream_kind.h"
#include "readers/video/random_access.h"

namespace korr::txsub {
namespace {

constexpr std::uint8_t kTimeAndDateTable = 0x70;
constexpr std::uint8_t kTimeOffsetTable = 0x73;
constexpr std::int64_t kUnixEpoch = 40587;  // modified Julian date of 1970-01-01
constexpr std::int64_t kMsPerDay = 24LL * 60 * 60 * 1000;

// Two decimal digits (EN 300 468, 5.2.5); nothing for what is none.
std::optional<int> readBcd(std::uint8_t byte, int most) {
  const int value = (byte >> 4) * 10 + (byte & 0xF);
  if ((byte >> 4) > 9 || (byte & 0xF) > 9 || value > most) return {};
  return value;
}

}  // namespace

void TsProgramClock::follow(const std::map<std::uint16_t, TsProgramMap>& programs) {
  for (const auto& [program, map] : programs) {
    const auto video = std::ranges::find_if(map.streams, [](const TsStreamEntry& entry) {
      const auto kind = kindOf(entry);
      return kind && kind->isVideo;
    });
    if (video == map.streams.end()) continue;
    Video& known = videos_[program];
    if (known.pid != video->pid) known = {.pid = video->pid};
  }
}

void TsProgramClock::takePicture(std::uint16_t pid, std::uint32_t program,
                                 const TsPicture& picture) {
  Video& video = videos_.try_emplace(program, Video{.pid = pid}).first->second;
  if (video.pid != pid) return;
  const TsClock& clock = times_[program].clock;
  if (clock.now() && !clock.place(picture.pts)) return;
  video.hasMarks = video.hasMarks || picture.isMarked;
  const bool isRandomAccess =
      video.hasMarks ? picture.isMarked
                     : picture.codec && beginsRandomAccess(*picture.codec, picture.start);
  listener_.onPicture(program, {.time = toMediaTime(picture.time), .ticks = picture.pts},
                      isRandomAccess);
}

void TsProgramClock::takePcr(std::uint32_t program, std::uint64_t pcr) {
  const auto now = times_[program].clock.now();
  if (now) listener_.onClock(program, {.time = toMediaTime(*now), .ticks = pcr});
}

void TsProgramClock::takeTimeOfDay(const TsPacket& packet) {
  const auto payload = packet.payload();
  if (!packet.hasUnitStart() || payload.empty()) return;
  const std::size_t begin = std::size_t{1} + payload[0];  // pointer_field
  if (begin >= payload.size()) return;
  if (const auto utc = readTimeOfDay(payload.subspan(begin))) listener_.onTimeOfDay(*utc);
}

std::optional<std::int64_t> readTimeOfDay(std::span<const std::uint8_t> section) {
  constexpr std::size_t kSize = 8;
  if (section.size() < kSize) return {};
  if (section[0] != kTimeAndDateTable && section[0] != kTimeOffsetTable) return {};
  const std::int64_t day = section[3] << 8 | section[4];
  const auto hour = readBcd(section[5], 23);
  const auto minute = readBcd(section[6], 59);
  const auto second = readBcd(section[7], 60);
  if (day < kUnixEpoch || !hour || !minute || !second) return {};
  return (day - kUnixEpoch) * kMsPerDay + ((*hour * 60LL + *minute) * 60 + *second) * 1000;
}

}  // namespace korr::txsub
