// SPDX-License-Identifier: MIT
#include "readers/video/video_captions.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <utility>

#include "readers/video/start_code.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;

// A picture's captions take a hundred bytes; what is far larger is other metadata, or damage that
// swallowed a start code.
constexpr std::size_t kLargestUnit = 64 * 1024;
constexpr std::size_t kMostTripletBytes = 4096;  // of one picture
constexpr unsigned kMostReports = 20;

constexpr std::array<std::uint8_t, 2> kZeros{};

/// Zeros that end `bytes`, 2 at most: as many as a start code may have in front of its 01.
std::size_t trailingZeros(std::span<const std::uint8_t> bytes) {
  std::size_t zeros = 0;
  while (zeros < std::min(bytes.size(), kZeros.size()) && bytes[bytes.size() - 1 - zeros] == 0) {
    ++zeros;
  }
  return zeros;
}

}  // namespace

VideoCaptionExtractor::VideoCaptionExtractor(VideoCodec codec, CaptionListener listener,
                                             Context context)
    : codec_(codec), order_(std::move(listener)), context_(std::move(context)) {
}

void VideoCaptionExtractor::beginPes(std::optional<MediaTime> pts) {
  pesPts_ = pts;
}

void VideoCaptionExtractor::feed(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
  std::size_t from = zeros_ > 0 ? joinHeldZeros(bytes) : 0;
  for (;;) {
    const std::size_t to = findStartCode(bytes, from);
    if (to == bytes.size()) break;
    take(bytes.subspan(from, to - from));
    beginUnit();
    from = to + kStartCodePrefix;
  }
  const auto rest = bytes.subspan(from);
  if (rest.empty()) return;
  zeros_ = trailingZeros(rest);
  take(rest.first(rest.size() - zeros_));
}

std::size_t VideoCaptionExtractor::joinHeldZeros(std::span<const std::uint8_t> bytes) {
  const auto held = std::span(kZeros).first(zeros_);
  const bool bothWithOne = held.size() == 2 && bytes[0] == 1;
  const bool lastWithTwo = bytes.size() >= 2 && bytes[0] == 0 && bytes[1] == 1;
  if (bothWithOne || lastWithTwo) {
    take(held.first(held.size() - (bothWithOne ? 2 : 1)));
    beginUnit();
    zeros_ = 0;
    return bothWithOne ? 1 : 2;
  }
  if (bytes.size() == 1 && bytes[0] == 0) {  // still undecided
    take(held.first(held.size() - 1));
    zeros_ = 2;
    return 1;
  }
  take(held);
  zeros_ = 0;
  return 0;
}

void VideoCaptionExtractor::lostData() {
  forgetUnit();
  zeros_ = 0;
}

void VideoCaptionExtractor::flush() {
  finishUnit();
  finishPicture();
  order_.flush();
  zeros_ = 0;
  pesPts_.reset();
}

void VideoCaptionExtractor::take(std::span<const std::uint8_t> bytes) {
  if (unitState_ == UnitState::Head) {
    const std::size_t missing = unitHeadBytes(codec_) - unit_.size();
    const auto head = bytes.first(std::min(missing, bytes.size()));
    unit_.insert(unit_.end(), head.begin(), head.end());
    bytes = bytes.subspan(head.size());
    if (head.size() == missing) classifyUnit();
  }
  if (unitState_ != UnitState::Kept) return;
  if (unit_.size() + bytes.size() > kLargestUnit) return forgetUnit();
  unit_.insert(unit_.end(), bytes.begin(), bytes.end());
}

void VideoCaptionExtractor::beginUnit() {
  finishUnit();
  unitState_ = UnitState::Head;
}

void VideoCaptionExtractor::classifyUnit() {
  const UnitTraits traits = unitTraits(codec_, unit_);
  // A second PTS waiting tells pictures apart whose slices were lost.
  const bool pictureComplete = sliceSeen_ || (picturePts_ && pesPts_);
  if (!inPicture_ || (pictureComplete && traits.beginsAccessUnit)) beginPicture();
  if (traits.slice) sliceSeen_ = true;
  if (codec_ == VideoCodec::Mpeg2 && !traits.slice) readHeaders();
  unitState_ = traits.carriesCaptions ? UnitState::Kept : UnitState::PassedOver;
}

void VideoCaptionExtractor::finishUnit() {
  if (unitState_ == UnitState::Head) classifyUnit();  // shorter than a head
  if (unitState_ == UnitState::Kept) readCaptions();
  forgetUnit();
}

void VideoCaptionExtractor::forgetUnit() {
  unitState_ = UnitState::None;
  unit_.clear();
}

void VideoCaptionExtractor::readHeaders() {
  if (unit_.empty()) return;
  const auto body = std::span(unit_).subspan(1);
  switch (unit_.front()) {
    case 0x00:
      return clock_.onPictureHeader(body);
    case 0xB3:
      return clock_.onSequenceHeader(body);
    case 0xB8:
      return clock_.onGroupOfPictures();
    default:
      return;
  }
}

void VideoCaptionExtractor::readCaptions() {
  if (codec_ != VideoCodec::Mpeg2) return readSei();
  const auto captions = captionsOfUserData(std::span(unit_).subspan(unitHeaderBytes(codec_)));
  if (captions) addCaptions(*captions);
}

void VideoCaptionExtractor::readSei() {
  removeEmulationPrevention(unit_);
  while (!unit_.empty() && unit_.back() == 0) unit_.pop_back();  // of the next start code
  if (unit_.size() <= unitHeaderBytes(codec_)) return;

  auto rest = std::span<const std::uint8_t>(unit_).subspan(unitHeaderBytes(codec_));
  while (const auto message = takeSeiMessage(rest)) {
    if (message->payload.size() < message->announced) {
      report("an SEI message of %zu bytes ends after %zu; read as far as it goes",
             message->announced, message->payload.size());
    }
    if (message->type != SeiMessage::kUserDataRegistered) continue;
    const auto captions = captionsOfRegisteredUserData(message->payload);
    if (captions) addCaptions(*captions);
  }
}

void VideoCaptionExtractor::addCaptions(const CcData& captions) {
  const std::size_t present = captions.triplets.size() / kTripletBytes;
  if (present < captions.announced) {
    report("%zu of %zu caption triplets are cut off; the others are used",
           captions.announced - present, captions.announced);
  }
  if (triplets_.size() + captions.triplets.size() > kMostTripletBytes) return;
  triplets_.insert(triplets_.end(), captions.triplets.begin(), captions.triplets.end());
}

void VideoCaptionExtractor::beginPicture() {
  finishPicture();
  inPicture_ = true;
  picturePts_ = std::exchange(pesPts_, {});
}

void VideoCaptionExtractor::finishPicture() {
  if (!inPicture_) return;
  if (const auto time = clock_.timeOf(picturePts_)) {
    order_.push(*time, triplets_);
  } else if (!triplets_.empty()) {
    report("captions before the first time stamp; left out");
  }
  inPicture_ = false;
  sliceSeen_ = false;
  triplets_.clear();
}

void VideoCaptionExtractor::report(const char* format, ...) {
  if (reports_ >= kMostReports) return;
  ++reports_;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string what = util::vformat(format, arguments);
  va_end(arguments);

  const double seconds = static_cast<double>(picturePts_.value_or(0)) / kSecond;
  const char* last = reports_ == kMostReports ? " (further damage is not reported)" : "";
  log::write(context_.logger, log::Level::Warning, "%s, %.3f s: %s%s", context_.stream.c_str(),
             seconds, what.c_str(), last);
}

}  // namespace korr::txsub
