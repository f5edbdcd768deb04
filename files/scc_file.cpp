// SPDX-License-Identifier: MIT
#include "files/scc_file.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using encoding::subtitling::MediaTime;

constexpr std::size_t kTripletBytes = 3;
constexpr std::uint8_t kValid = 0x04;
constexpr std::uint8_t kType = 0x03;
constexpr std::uint8_t kParity = 0x80;

// Frames without a pair that are filled up within a line; a longer pause begins another line.
constexpr std::uint64_t kLongestPause = 4;
constexpr const char* kLineEnd = "\n\n";

}  // namespace

SccFile::SccFile(const CaptionFileRequest& request) : file_(request.path), logger_(request.logger) {
  rate_.dropFrame = request.dropFrame;
  file_.write("Scenarist_SCC V1.0\n\n");
}

void SccFile::write(std::span<const std::uint8_t> triplets, MediaTime time) {
  const std::uint64_t ticks = kSecond * rate_.denominator;
  const std::uint64_t frame = (time * rate_.numerator + ticks / 2) / ticks;
  for (; triplets.size() >= kTripletBytes; triplets = triplets.subspan(kTripletBytes)) {
    const bool isEmpty = ((triplets[1] | triplets[2]) & ~kParity) == 0;
    if ((triplets[0] & kValid) == 0 || isEmpty) continue;
    switch (triplets[0] & kType) {
      case 0:
        add(triplets[1], triplets[2], frame, field1_);
        break;
      case 1:
        hasField2_ = true;
        if (field1_.nextFrame == 0) add(triplets[1], triplets[2], frame, field2_);
        break;
      default:
        hasDigital_ = true;
    }
  }
  if (field1_.nextFrame == 0) return;
  file_.write(std::exchange(field1_.lines, {}));
  field2_.lines.clear();
}

void SccFile::add(std::uint8_t b1, std::uint8_t b2, std::uint64_t frame, Field& field) const {
  char pair[8];
  std::snprintf(pair, sizeof pair, "%02x%02x", static_cast<unsigned>(b1),
                static_cast<unsigned>(b2));
  const auto beginLine = [&](std::uint64_t at, const char* first) {
    field.lines += util::timeCodeOfFrame(at, rate_) + '\t' + first;
    field.nextFrame = at + 1;
  };
  if (field.nextFrame == 0 && frame > 0) beginLine(0, "8080");  // readers count from its hour
  if (field.nextFrame == 0 || frame > field.nextFrame + kLongestPause) {
    if (field.nextFrame != 0) field.lines += kLineEnd;
    return beginLine(frame, pair);
  }
  for (; field.nextFrame < frame; ++field.nextFrame) field.lines += " 8080";
  field.lines += ' ';
  field.lines += pair;
  ++field.nextFrame;
}

void SccFile::finish() {
  const bool isField1 = field1_.nextFrame != 0;
  const Field& field = isField1 ? field1_ : field2_;
  if (field.nextFrame != 0) file_.write(field.lines + kLineEnd);
  if (hasDigital_ || (isField1 && hasField2_)) {
    log::write(logger_, log::Level::Warning,
               "SCC files hold field %d only: %sdigital captions are left out; .mcc files hold all "
               "of them",
               isField1 || !hasField2_ ? 1 : 2, isField1 || !hasField2_ ? "CC3, CC4 and " : "");
  }
  file_.commit();
}

}  // namespace korr::txsub
