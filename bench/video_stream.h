// SPDX-License-Identifier: MIT

// Video that looks like a broadcast to whoever searches it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "testkit/encoders/ts_builder.h"

namespace korr::bench {

using encoders::Bytes;

/// What entropy-coded pictures look like to whoever searches them: noise in which emulation
/// prevention has left no start code.
class Noise {
 public:
  Noise() {
    std::mt19937 random{1};
    unsigned zeros = 0;
    for (std::uint8_t& byte : bytes_) {
      byte = static_cast<std::uint8_t>(random());
      if (zeros >= 2 && byte <= 3) byte = 4;
      zeros = byte == 0 ? zeros + 1 : 0;
    }
  }

  std::span<const std::uint8_t> take(std::size_t size) {
    if (position_ + size > bytes_.size()) position_ = 0;
    const auto taken = std::span<const std::uint8_t>(bytes_).subspan(position_, size);
    position_ += size;
    return taken;
  }

 private:
  Bytes bytes_ = Bytes(4'000'000);
  std::size_t position_ = 0;
};

/// H.264 at 29.97 Hz as I P B B P B B ..., four slices a picture, groups of 15.
class VideoStream {
 public:
  static constexpr std::uint64_t kFrameTicks = 3003;  ///< of 90 kHz
  static constexpr std::size_t kFramesPerSecond = 30;

  /// The cc_data triplets of a picture, counted in the order of showing; none for no captions.
  using Captions = std::function<Bytes(std::size_t shown)>;

  /// A picture takes `pictureBytes` on average.
  VideoStream(std::uint16_t pid, std::size_t pictureBytes, Captions captions)
      : pid_(pid), pictureBytes_(pictureBytes), captions_(std::move(captions)) {}

  /// Adds the next picture in coding order, with a PCR.
  void addPicture(encoders::TsBuilder& stream);

  bool nextBeginsGroup() const;
  std::uint64_t nextDts() const { return kFirstDts + coded_ * kFrameTicks; }
  std::size_t picturesAdded() const { return coded_; }
  Noise& noise() { return noise_; }

 private:
  static constexpr std::uint64_t kFirstDts = 900'000;

  Bytes picture(std::size_t shown, bool idr, std::size_t size);

  std::uint16_t pid_;
  std::size_t pictureBytes_;
  Captions captions_;
  Noise noise_;
  std::size_t coded_ = 0;
};

/// Calls `addMore` until `size` bytes of transport packets are in `file`.
void writeStream(std::ostream& file, std::size_t size,
                 const std::function<void(encoders::TsBuilder& stream)>& addMore);

}  // namespace korr::bench
