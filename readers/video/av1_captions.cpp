// SPDX-License-Identifier: MIT
#include "readers/video/av1_captions.h"

#include <algorithm>

#include "readers/video/caption_user_data.h"

namespace korr::txsub {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kMostTripletBytes = 4096;  // of one frame
constexpr unsigned kMostReports = 20;

/// leb128() (4.10.5); nothing when it does not end.
std::optional<std::uint64_t> takeLeb128(Bytes& rest) {
  constexpr std::size_t kLongest = 8;
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < std::min(kLongest, rest.size()); ++i) {
    value |= static_cast<std::uint64_t>(rest[i] & 0x7F) << (7 * i);
    if ((rest[i] & 0x80) == 0) {
      rest = rest.subspan(i + 1);
      return value;
    }
  }
  return {};
}

}  // namespace

std::optional<Av1Unit> takeAv1Unit(Bytes& rest) {
  if (rest.empty()) return {};
  const std::uint8_t header = rest[0];
  constexpr std::uint8_t kForbiddenBit = 0x80;
  constexpr std::uint8_t kExtensionFlag = 0x04;
  constexpr std::uint8_t kHasSizeField = 0x02;
  const std::size_t headerSize = header & kExtensionFlag ? 2 : 1;
  if ((header & kForbiddenBit) || rest.size() < headerSize) return {};
  rest = rest.subspan(headerSize);

  Av1Unit unit{.type = header >> 3 & 0x0FU, .announced = rest.size(), .payload = {}};
  if (header & kHasSizeField) {
    const auto size = takeLeb128(rest);
    if (!size) return {};
    unit.announced = static_cast<std::size_t>(*size);
  }
  unit.payload = rest.first(std::min(unit.announced, rest.size()));
  rest = rest.subspan(unit.payload.size());
  return unit;
}

void Av1CaptionExtractor::take(std::optional<MediaTime> time, Bytes temporalUnit) {
  time_ = time.value_or(time_);
  triplets_.clear();
  while (const auto unit = takeAv1Unit(temporalUnit)) {
    if (unit->type != Av1Unit::kMetadata) continue;
    if (unit->payload.size() < unit->announced) {
      report("a metadata unit of " + std::to_string(unit->announced) + " bytes ends after " +
             std::to_string(unit->payload.size()) + "; read as far as it goes");
    }
    takeMetadata(unit->payload);
  }
  if (triplets_.empty()) return;
  if (!time) return report("captions without a time stamp; left out");
  listener_(*time, triplets_);
}

// metadata_obu() (5.8.1)
void Av1CaptionExtractor::takeMetadata(Bytes payload) {
  constexpr std::uint64_t kItuT35 = 4;  // metadata_type METADATA_TYPE_ITUT_T35
  if (takeLeb128(payload) != kItuT35) return;
  const auto captions = captionsOfRegisteredUserData(payload);
  if (!captions) return;
  const std::size_t present = captions->triplets.size() / kTripletBytes;
  if (present < captions->announced) {
    report(std::to_string(captions->announced - present) + " of " +
           std::to_string(captions->announced) +
           " caption triplets are cut off; the others are used");
  }
  if (triplets_.size() + captions->triplets.size() > kMostTripletBytes) return;
  triplets_.insert(triplets_.end(), captions->triplets.begin(), captions->triplets.end());
}

void Av1CaptionExtractor::report(const std::string& what) {
  if (reports_ >= kMostReports) return;
  const char* const last = ++reports_ == kMostReports ? " (further damage is not reported)" : "";
  log::write(logger_, log::Level::Warning, "%s, %.3f s: %s%s", stream_.c_str(),
             static_cast<double>(time_) / encoding::subtitling::kSecond, what.c_str(), last);
}

}  // namespace korr::txsub
