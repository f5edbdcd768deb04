// SPDX-License-Identifier: MIT
#include "readers/video/picture_clock.h"

#include <algorithm>
#include <array>

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;

/// frame_rate_code, ISO/IEC 13818-2, table 6-4: the time of one frame.
constexpr std::array<MediaTime, 9> kFrameDurations{
    0,                       // forbidden
    kSecond * 1001 / 24000,  // 23.976 Hz
    kSecond / 24,
    kSecond / 25,
    kSecond * 1001 / 30000,  // 29.97 Hz
    kSecond / 30,
    kSecond / 50,
    kSecond * 1001 / 60000,  // 59.94 Hz
    kSecond / 60,
};

constexpr int kReferences = 1024;  // temporal_reference has 10 bits

}  // namespace

void PictureClock::onSequenceHeader(std::span<const std::uint8_t> header) {
  constexpr std::size_t kFrameRateByte = 3;  // after the sizes and aspect_ratio_information
  if (header.size() <= kFrameRateByte) return;
  const std::size_t frameRateCode = header[kFrameRateByte] & 0x0F;
  if (frameRateCode == 0 || frameRateCode >= kFrameDurations.size()) return;
  frameDuration_ = kFrameDurations[frameRateCode];
}

void PictureClock::onGroupOfPictures() {
  if (!anchorTime_) return;
  anchorTime_ = lastShown_ + frameDuration_;
  anchorReference_ = 0;
}

void PictureClock::onPictureHeader(std::span<const std::uint8_t> header) {
  if (header.size() < 2) return;
  temporalReference_ = header[0] << 2 | header[1] >> 6;
}

std::optional<MediaTime> PictureClock::timeOf(std::optional<MediaTime> pts) {
  if (pts) {
    anchorTime_ = pts;
    anchorReference_ = temporalReference_;
    const bool timeWentBack = *pts + kSecond < lastShown_;
    lastShown_ = timeWentBack ? *pts : std::max(lastShown_, *pts);
    return pts;
  }
  if (!anchorTime_) return {};
  const MediaTime time = shownAt(temporalReference_);
  lastShown_ = std::max(lastShown_, time);
  return time;
}

MediaTime PictureClock::shownAt(int temporalReference) const {
  const int ahead = (temporalReference - anchorReference_ + kReferences) % kReferences;
  if (ahead < kReferences / 2) return *anchorTime_ + static_cast<MediaTime>(ahead) * frameDuration_;
  const auto back = static_cast<MediaTime>(kReferences - ahead) * frameDuration_;
  return *anchorTime_ - std::min(*anchorTime_, back);
}

}  // namespace korr::txsub
