// SPDX-License-Identifier: MIT

// What a decoder shows, as text.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "log/logger.h"
#include "model/display.h"

namespace korr::encoding::subtitling::disc {

/// Keeps each picture with its time: "1.5 s: 720x576" and its painted pixels.
class DisplayRecord final : public IDisplayListener {
 public:
  struct Shown {
    double seconds = 0;
    SubtitleBitmap bitmap;

    /// "#rrggbbaa" at a place; "-" where nothing is.
    std::string at(std::uint32_t x, std::uint32_t y) const {
      const auto* p = bitmap.pixels->data() + (std::size_t{y} * bitmap.width + x) * 4;
      char text[16];
      std::snprintf(text, sizeof text, "#%02x%02x%02x%02x", p[0], p[1], p[2], p[3]);
      return p[3] == 0 ? "-" : text;
    }

    /// A row's pixels that can be seen, from the first to the last, parted by blanks.
    std::string row(std::uint32_t y, std::uint32_t first, std::uint32_t count) const {
      std::string text;
      for (std::uint32_t x = first; x < first + count; ++x)
        text += (text.empty() ? "" : " ") + at(x, y);
      return text;
    }
  };

  void onDisplay(MediaTime time, Subtitle subtitle) override {
    EXPECT_TRUE(shown.empty() || time >= last_);
    last_ = time;
    shown.push_back({static_cast<double>(time) / kSecond, *subtitle.bitmap()});
  }

  std::vector<Shown> shown;

 private:
  MediaTime last_ = 0;
};

class LogLines final : public log::ILogger {
 public:
  void logV(log::Level, const char* format, std::va_list arguments) override {
    lines.push_back(util::vformat(format, arguments));
  }
  void nameBufferCounters(const char*) override {}

  std::vector<std::string> lines;
};

}  // namespace korr::encoding::subtitling::disc
