// SPDX-License-Identifier: MIT

// Where the system's messages go.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "util/exception.h"

namespace korr::log::inline v2_1 {

enum class Level : std::uint32_t {
  Error = 0,
  Warning = 1,
  Information = 2,
};

/// Takes messages. Plain virtual functions and no destructor, so that a host built with another
/// compiler can implement it; nobody deletes through it. Called from any thread, never throws.
class ILogger {
 public:
  /// One message: a printf format and its arguments. No line feed at its end.
  virtual void logV(Level level, const char* format, std::va_list arguments) = 0;

  /// Names the buffer counters of an output.
  virtual void nameBufferCounters(const char* name) = 0;

 protected:
  ~ILogger() = default;
};

/// Sends one printf-style message to `logger`; nothing happens when it is null.
TESSARY_PRINTF(3, 4)
inline void write(ILogger* logger, Level level, const char* format, ...) {
  if (!logger) return;
  std::va_list arguments;
  va_start(arguments, format);
  logger->logV(level, format, arguments);
  va_end(arguments);
}

/// The built-in logger: discards everything.
class DiscardingLogger final : public ILogger {
 public:
  void logV(Level, const char*, std::va_list) override {}
  void nameBufferCounters(const char*) override {}
};

}  // namespace korr::log::inline v2_1
