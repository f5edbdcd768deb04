// The filter's messages on their way to the host.
#pragma once

#include <streams.h>

#include "log/logger.h"
#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Hands messages to the host's logger, if there is one, else discards them. Threads may share it.
class ForwardingLogger final : public log::ILogger {
 public:
  /// Null: discard. When the call returns, the previous logger is out of use.
  void setTarget(mqs_subtitle_converter::ILogger* target) {
    const CAutoLock lock(&lock_);
    target_ = target;
  }

  void logV(log::Level level, const char* format, std::va_list arguments) override {
    forward(
        [&](auto& target) { target.Log(static_cast<std::uint32_t>(level), format, arguments); });
  }

  void nameBufferCounters(const char* name) override {
    forward([&](auto& target) { target.NameBufferCounters(name); });
  }

 private:
  template <class Call>
  void forward(Call call) {
    // Against setTarget: the target must not end while a message is on its way to it.
    const CAutoLock lock(&lock_);
    if (!target_) return;
    try {
      call(*target_);
    } catch (...) {  // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
  }

  CCritSec lock_;
  mqs_subtitle_converter::ILogger* target_ = nullptr;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
