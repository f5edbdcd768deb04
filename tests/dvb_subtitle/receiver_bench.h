// SPDX-License-Identifier: MIT

// A decoder that follows a receiver, its log and what it showed as text.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dvb_subtitle/dvb_display_decoder.h"
#include "tests/dvb_subtitle/decoder_bench.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {

class ReceiverBench : public IDisplayListener {
 public:
  explicit ReceiverBench(std::optional<DvbPages> pages = {}) : decoder_(pages, *this, &logger_) {}

  /// Times in seconds.
  ReceiverBench& feed(const Bytes& field, std::uint64_t time) {
    decoder_.decode(field, time * kSecond);
    return *this;
  }
  ReceiverBench& feed(const DvbEncoder& field, std::uint64_t time) {
    return feed(field.bytes(), time);
  }

  /// What was told, "second picture" each; a picture that went is "-".
  std::vector<std::string> told;
  /// All of it, with the stream at its end.
  std::vector<std::string>& toldAtEnd(std::uint64_t time) {
    decoder_.finish(time * kSecond);
    return told;
  }

  std::vector<SubtitleBitmap> pictures;  // the same, without those that went
  std::vector<std::string>& log() { return logger_.lines; }
  DvbDisplayDecoder& decoder() { return decoder_; }

  void onDisplay(MediaTime time, Subtitle subtitle) override {
    EXPECT_GE(time, last_) << "displays come in the order of time";
    last_ = time;
    const SubtitleBitmap& bitmap = *subtitle.bitmap();
    told.push_back(std::to_string(time / kSecond) + ' ' + (bitmap.visible ? textOf(bitmap) : "-"));
    if (bitmap.visible) pictures.push_back(bitmap);
  }

 private:
  test_support::RecordingLogger logger_;
  MediaTime last_ = 0;
  DvbDisplayDecoder decoder_;
};

/// What a receiver shows of a field on its own.
inline std::string received(const DvbEncoder& field) {
  ReceiverBench bench;
  bench.feed(field, 10);
  return bench.pictures.empty() ? "" : textOf(bench.pictures.back());
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
