// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_stream_kind.h"

#include <algorithm>
#include <array>

#include "model/descriptors.h"
#include "readers/mpegts/ts_report.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::DescriptorTag;

// stream_type: ISO/IEC 13818-1, table 2-34.
constexpr std::uint8_t kMpeg1Video = 0x01;
constexpr std::uint8_t kMpeg2Video = 0x02;
constexpr std::uint8_t kPrivateData = 0x06;
constexpr std::uint8_t kH264Video = 0x1B;
constexpr std::uint8_t kHevcVideo = 0x24;
constexpr std::uint8_t kTimedText = 0x1D;  // ISO/IEC 14496-17
constexpr std::uint8_t kFirstUserPrivate = 0x80;
// User private ones that are in wide use.
constexpr std::uint8_t kScte27 = 0x82;  // ANSI/SCTE 27
constexpr std::uint8_t kPgs = 0x90;     // presentation graphics of Blu-ray Disc
constexpr std::uint8_t kTextSt = 0x92;  // text subtitles of Blu-ray Disc

constexpr TsStreamKind video(VideoCodec codec) {
  TsStreamKind kind;
  kind.type = SubtitleInputType::ClosedCaption;
  kind.isVideo = true;
  kind.codec = codec;
  return kind;
}

std::optional<TsStreamKind> kindOfPrivateData(const TsStreamEntry& entry) {
  bool isTeletext = false;
  bool isSubtitling = false;
  encoding::subtitling::forEachDescriptor(entry.descriptors, [&](DescriptorTag tag, const auto&) {
    isTeletext |= tag == DescriptorTag::Teletext || tag == DescriptorTag::VbiTeletext;
    isSubtitling |= tag == DescriptorTag::Subtitling;
  });
  if (isTeletext) return TsStreamKind{.type = SubtitleInputType::Teletext};
  if (isSubtitling) return TsStreamKind{.type = SubtitleInputType::DvbSubtitle};
  return {};
}

std::string otherPrivateData(const TsStreamEntry& entry) {
  constexpr std::uint8_t kTtmlSubtitling = 0x20;                        // EN 303 560, 5.2.1.1
  constexpr std::array<std::uint8_t, 2> kCaptionComponent = {0, 0x08};  // ARIB STD-B14
  std::string kind;
  encoding::subtitling::forEachDescriptor(
      entry.descriptors, [&](DescriptorTag tag, std::span<const std::uint8_t> body) {
        if (tag == DescriptorTag::Extension && !body.empty() && body[0] == kTtmlSubtitling) {
          kind = "TTML";
        } else if (tag == DescriptorTag::DataComponent && body.size() >= kCaptionComponent.size() &&
                   std::ranges::equal(body.first<2>(), kCaptionComponent)) {
          kind = "ARIB captions";
        }
      });
  return kind;
}

std::string otherKind(const TsStreamEntry& entry) {
  switch (entry.streamType) {
    case kPrivateData:
      return otherPrivateData(entry);
    case kTimedText:
      return "MPEG-4 timed text";
    case kScte27:
      return "SCTE 27";
    case kTextSt:
      return "TextST";
    default:
      return {};
  }
}

}  // namespace

std::string languageOf(const TsStreamEntry& entry) {
  std::string language;
  encoding::subtitling::forEachDescriptor(
      entry.descriptors, [&](DescriptorTag tag, std::span<const std::uint8_t> body) {
        const auto isLetter = [](std::uint8_t code) { return code >= 'a' && code <= 'z'; };
        if (tag != DescriptorTag::Language || body.size() < 3) return;
        if (std::ranges::all_of(body.first<3>(), isLetter))
          language.assign(body.begin(), body.begin() + 3);
      });
  return language;
}

std::string otherSubtitlesIn(const TsStreamEntry& entry) {
  const std::string kind = otherKind(entry);
  if (kind.empty()) return {};
  const std::string language = languageOf(entry);
  return pidName(entry.pid) + " (" + kind + (language.empty() ? "" : ", " + language) + ")";
}

std::optional<TsStreamKind> kindOf(const TsStreamEntry& entry) {
  switch (entry.streamType) {
    case kMpeg1Video:
    case kMpeg2Video:
      return video(VideoCodec::Mpeg2);
    case kH264Video:
      return video(VideoCodec::H264);
    case kHevcVideo:
      return video(VideoCodec::Hevc);
    case kPgs:
      return TsStreamKind{.type = SubtitleInputType::DvbSubtitle, .pictures = PictureSystem::Pgs};
    case kPrivateData:
      return kindOfPrivateData(entry);
    default:
      return {};
  }
}

std::optional<TsStreamKind> kindOf(const PesHeader& header, std::span<const std::uint8_t> payload) {
  if (isVideoStreamId(header.streamId)) {
    if (const auto codec = videoCodecOf(payload)) return video(*codec);
  }
  if (header.streamId != kPrivateStream1) return {};
  if (looksLikeTeletext(payload)) return TsStreamKind{.type = SubtitleInputType::Teletext};
  if (looksLikeDvbSubtitle(payload)) return TsStreamKind{.type = SubtitleInputType::DvbSubtitle};
  return {};
}

bool isPrivate(const TsStreamEntry& entry) {
  return entry.streamType == kPrivateData || entry.streamType >= kFirstUserPrivate;
}

}  // namespace korr::txsub
