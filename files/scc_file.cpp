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

}  // namespace

SccFile::SccFile(const CaptionFileRequest& request) : file_(request.path), logger_(request.logger) {
  rate_.dropFrame = request.dropFrame;
  file_.write("Scenarist_SCC V1.0\n\n");
}

void SccFile::write(std::span<const std::uint8_t> triplets, MediaTime time) {
  const std::uint64_t ticks = kSecond * rate_.denominator;
  const std::uint64_t frame = (time * rate_.numerator + ticks / 2) / ticks;
  for (; triplets.size() >= kTripletBytes; triplets = triplets.subspan(kTripletBytes)) {
    if ((triplets[0] & kValid) == 0) continue;
    const bool isEmpty = ((triplets[1] | triplets[2]) & ~kParity) == 0;
    if ((triplets[0] & kType) != 0) {
      hasOthers_ = hasOthers_ || !isEmpty;
    } else if (!isEmpty) {
      add(triplets[1], triplets[2], frame);
    }
  }
}

void SccFile::add(std::uint8_t b1, std::uint8_t b2, std::uint64_t frame) {
  char pair[8];
  std::snprintf(pair, sizeof pair, " %02x%02x", static_cast<unsigned>(b1),
                static_cast<unsigned>(b2));
  frame = std::max(frame, nextFrame_);
  if (line_.empty() && nextFrame_ == 0) {
    // Readers count from the hour of the first line.
    line_ = util::timeCodeOfFrame(0, rate_) + '\t';
    if (frame > 0) line_ += "8080";
    nextFrame_ = frame > 0 ? 1 : 0;
  }
  if (frame > nextFrame_ + kLongestPause) {
    endLine();
    line_ = util::timeCodeOfFrame(frame, rate_) + '\t';
    line_ += pair + 1;
  } else {
    for (; nextFrame_ < frame; ++nextFrame_) line_ += " 8080";
    line_ += line_.back() == '\t' ? pair + 1 : pair;
  }
  nextFrame_ = frame + 1;
}

void SccFile::endLine() {
  if (line_.empty()) return;
  file_.write(std::exchange(line_, {}) + "\n\n");
}

void SccFile::finish() {
  endLine();
  if (hasOthers_) {
    log::write(logger_, log::Level::Warning,
               "SCC files hold field 1 only: CC3, CC4 and digital captions are left out; .mcc "
               "files hold all of them");
  }
  file_.commit();
}

}  // namespace korr::txsub
