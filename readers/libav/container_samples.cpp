// SPDX-License-Identifier: MIT
#include "readers/libav/container_samples.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "model/descriptors.h"
#include "readers/dvb_data_field.h"

namespace korr::txsub {
namespace {

using Bytes = std::vector<std::uint8_t>;
using encoding::subtitling::DescriptorTag;

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
  bytes.reserve(bytes.size() + more.size());
  std::ranges::copy(more, std::back_inserter(bytes));
}

std::size_t bigEndian(std::span<const std::uint8_t> bytes) {
  std::size_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return value;
}

/// Takes `count` bytes off `rest`, or as many as there are.
std::span<const std::uint8_t> take(std::span<const std::uint8_t>& rest, std::size_t count) {
  const auto taken = rest.first(std::min(count, rest.size()));
  rest = rest.subspan(taken.size());
  return taken;
}

/// ISO_639_language_code: three letters, "und" when there are none.
std::array<std::uint8_t, 3> languageCode(std::string_view language) {
  if (language.size() < 3) language = "und";
  return {static_cast<std::uint8_t>(language[0]), static_cast<std::uint8_t>(language[1]),
          static_cast<std::uint8_t>(language[2])};
}

/// The first of the languages that commas separate.
std::string_view takeLanguage(std::string_view& languages) {
  const std::string_view language = languages.substr(0, languages.find(','));
  languages.remove_prefix(std::min(language.size() + 1, languages.size()));
  return language;
}

Bytes descriptor(DescriptorTag tag, const Bytes& body) {
  constexpr std::size_t kLongestBody = 255;
  if (body.empty() || body.size() > kLongestBody) return {};
  Bytes bytes{static_cast<std::uint8_t>(tag), static_cast<std::uint8_t>(body.size())};
  append(bytes, body);
  return bytes;
}

}  // namespace

std::optional<std::size_t> nalLengthBytes(VideoCodec codec,
                                          std::span<const std::uint8_t> configuration) {
  const std::size_t lengthByte = codec == VideoCodec::Hevc ? 21 : 4;  // lengthSizeMinusOne
  const bool isRecord = codec != VideoCodec::Mpeg2 && configuration.size() > lengthByte &&
                        configuration[0] == 1;  // configurationVersion
  if (!isRecord) return {};
  return (configuration[lengthByte] & 3) + 1;
}

std::optional<std::span<const std::uint8_t>> takeLengthPrefixedUnit(
    std::span<const std::uint8_t>& rest, std::size_t lengthBytes) {
  if (rest.size() <= lengthBytes) return {};
  const std::size_t length = bigEndian(take(rest, lengthBytes));
  return take(rest, length);
}

std::vector<std::uint8_t> dvbSubtitleDataField(std::span<const std::uint8_t> sample) {
  constexpr std::uint8_t kSyncByte = 0x0F;
  constexpr std::uint8_t kEndMarker = 0xFF;
  Bytes field;
  const bool bareSegments = !sample.empty() && sample.front() == kSyncByte;
  if (bareSegments) field = {0x20, 0x00};  // data_identifier, subtitle_stream_id
  append(field, sample);
  field.resize(upToEndMarker(field).size());
  if (bareSegments && field.back() != kEndMarker) field.push_back(kEndMarker);
  return field;
}

std::vector<std::uint8_t> teletextDataField(std::span<const std::uint8_t> sample) {
  constexpr std::uint8_t kEbuData = 0x10;  // data_identifier 0x10 to 0x1F
  Bytes field;
  if (!sample.empty() && (sample.front() & 0xF0) != kEbuData) field.push_back(kEbuData);
  append(field, sample);
  return field;
}

std::vector<std::uint8_t> subtitlingDescriptor(std::string_view language,
                                               std::span<const std::uint8_t> pages) {
  constexpr std::uint8_t kNormalSubtitles = 0x10;
  constexpr std::size_t kPageIds = 4;
  if (pages.size() < kPageIds) return {};
  Bytes body;
  append(body, languageCode(language));
  body.push_back(pages.size() > kPageIds ? pages[kPageIds] : kNormalSubtitles);
  append(body, pages.first(kPageIds));
  return descriptor(DescriptorTag::Subtitling, body);
}

std::vector<std::uint8_t> teletextDescriptor(std::string_view languages,
                                             std::span<const std::uint8_t> pages) {
  Bytes body;
  for (; pages.size() >= 2; pages = pages.subspan(2)) {
    append(body, languageCode(takeLanguage(languages)));
    append(body, pages.first(2));
  }
  return descriptor(DescriptorTag::Teletext, body);
}

}  // namespace korr::txsub
