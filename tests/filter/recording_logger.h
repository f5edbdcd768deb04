// SPDX-License-Identifier: MIT

// A logger of the filter that keeps what it is told.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "sdk/include/TXSubtitleConverter.h"
#include "util/exception.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Keeps the filter's messages, each with its level before it.
class RecordingLogger final : public mqs_subtitle_converter::ILogger {
 public:
  void STDMETHODCALLTYPE Log(std::uint32_t level, const char* format,
                             std::va_list arguments) override {
    keep(std::to_string(level) + " " + util::vformat(format, arguments));
  }
  void STDMETHODCALLTYPE NameBufferCounters(const char* name) override {
    keep(std::string("counters ") + name);
  }

  std::vector<std::string> take() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  void keep(std::string line) {
    const std::scoped_lock lock(mutex_);
    lines_.push_back(std::move(line));
  }

  std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
