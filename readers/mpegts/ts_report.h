// SPDX-License-Identifier: MIT

// What a transport stream reader says about damage.
#pragma once

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

#include "log/logger.h"

namespace korr::txsub {

/// For messages: "PID 0x0100".
inline std::string pidName(std::uint16_t pid) {
  std::array<char, sizeof "PID 0x0100"> name{};
  std::snprintf(name.data(), name.size(), "PID 0x%04X", pid & 0x1FFFU);
  return name.data();
}

/// Sends warnings on, but no more than anybody reads: damage comes in thousands.
class TsReport {
 public:
  /// `logger` may be null.
  explicit TsReport(log::ILogger* logger) : logger_(logger) {}

  /// printf-style: what, where, what is done about it.
  TESSARY_PRINTF(2, 3)
  void warn(const char* format, ...) {
    if (count_ > kMost) return;
    std::va_list arguments;
    va_start(arguments, format);
    if (logger_ && count_ < kMost) logger_->logV(log::Level::Warning, format, arguments);
    va_end(arguments);
    if (count_++ == kMost) {
      log::write(logger_, log::Level::Warning, "further damage is not reported");
    }
  }

 private:
  static constexpr unsigned kMost = 50;

  log::ILogger* logger_;
  unsigned count_ = 0;
};

}  // namespace korr::txsub
