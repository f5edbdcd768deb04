// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_stream_kind.h"

#include "model/descriptors.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::DescriptorTag;

// stream_type: ISO/IEC 13818-1, table 2-34.
constexpr std::uint8_t kMpeg1Video = 0x01;
constexpr std::uint8_t kMpeg2Video = 0x02;
constexpr std::uint8_t kPrivateData = 0x06;
constexpr std::uint8_t kH264Video = 0x1B;
constexpr std::uint8_t kHevcVideo = 0x24;
constexpr std::uint8_t kFirstUserPrivate = 0x80;

constexpr TsStreamKind video(VideoCodec codec) {
  return {.type = SubtitleInputType::ClosedCaption, .isVideo = true, .codec = codec};
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

}  // namespace

std::optional<TsStreamKind> kindOf(const TsStreamEntry& entry) {
  switch (entry.streamType) {
    case kMpeg1Video:
    case kMpeg2Video:
      return video(VideoCodec::Mpeg2);
    case kH264Video:
      return video(VideoCodec::H264);
    case kHevcVideo:
      return video(VideoCodec::Hevc);
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
